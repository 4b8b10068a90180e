#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>

namespace Qel::Test {

// What every form has to keep. Each rule looks at a form that is shown, on the tab pages that are
// in front, and gives one line a fault, which names the control.

/// Texts that are wider or higher than the room they have: labels, buttons, boxes to tick, titles
/// of group boxes, tabs, column headers, choices of combo boxes, hints and masks of edits.
QStringList ClippedTexts(const QWidget &form);

/// Controls that lie over a sibling, reach out of their parent or have no size.
QStringList MisplacedControls(const QWidget &form);

/// Steps of the Tab key that go backwards: up without going to the right, or left without going
/// down; groups that are left and entered again; controls for input that Tab does not reach, and
/// read-only edits without a button that it does.
QStringList TabOrderFaults(const QWidget &form);

/// The focus chain of the form's window, which a tab stop that names a control with pages breaks:
/// it comes back to the window in both directions and leaves no control out.
QStringList FocusChainFaults(const QWidget &form);

/// The control that a dialog starts on: there is none, it is disabled, or it is a tab.
QStringList DefaultFocusFaults(const QWidget &form);

/// Mnemonics and shortcuts that two controls or actions claim.
QStringList KeysUsedTwice(const QWidget &form);

/// Buttons, paging bars and enabled actions that nobody listens to.
QStringList UnhandledButtons(const QWidget &form);

/// All of them, on every tab page, and the first two again at the form's least size.
QStringList FormFaults(QWidget &form);

// --- For the rules -----------------------------------------------------------------------------

/// The descendants of `parent` in its own window that can be seen, outermost first. What is inside
/// an edit, a list or another control that is one thing to the user is left out, but for the
/// buttons of edits.
QList<QWidget *> ShownControls(const QWidget &parent);

/// Made of parts that lie over each other by themselves: edits, lists, tabs, splitters.
bool IsComposite(const QWidget &widget);

/// An edit with buttons inside of which at least one is not disabled for good.
bool OffersButtons(const QWidget &widget);

/// Its object name, or what it says, or its class.
QString NameOf(const QWidget &widget);

} // namespace Qel::Test
