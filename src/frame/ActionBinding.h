#pragma once

class QWidget;

namespace Qel {

/// Ties a form's layout to its actions, as the layout itself says it:
///  - a button with a property "action" shows that action's text, unless the layout gives it one of
///    its own, follows its enabling and triggers it;
///  - a widget with a property "menuActions" (names, "-" for a separator) shows those actions as
///    its context menu;
///  - a level of a LevelGrid has the actions of its levelMenus as its context menu.
/// Names are object names of actions below `form`. A name without an action is a mistake in the
/// layout and raises EQelError.
void BindActions(QWidget *form);

} // namespace Qel
