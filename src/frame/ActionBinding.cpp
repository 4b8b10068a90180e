#include "frame/ActionBinding.h"

#include "controls/LevelGrid.h"
#include "dataset/QelError.h"

#include <QAbstractButton>
#include <QAction>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

QAction *ActionOf(const QWidget *form, const QString &name)
{
    if (auto *action = form->findChild<QAction *>(name))
        return action;
    throw EQelError(u"窗体 %1 没有动作 %2"_s.arg(form->objectName(), name));
}

void BindButton(QAbstractButton *button, QAction *action)
{
    const bool hasOwnText = !button->text().isEmpty();
    const auto follow = [button, action, hasOwnText] {
        if (!hasOwnText)
            button->setText(action->text());
        button->setEnabled(action->isEnabled());
    };
    QObject::connect(action, &QAction::changed, button, follow);
    QObject::connect(button, &QAbstractButton::clicked, action, &QAction::trigger);
    follow();
}

QList<QAction *> MenuOf(const QWidget *form, QObject *owner, const QStringList &names)
{
    QList<QAction *> actions;
    for (const QString &name : names) {
        if (name == u"-"_s) {
            actions.append(new QAction(owner));
            actions.last()->setSeparator(true);
        } else {
            actions.append(ActionOf(form, name));
        }
    }
    return actions;
}

void BindMenu(const QWidget *form, QWidget *widget, const QStringList &names)
{
    widget->addActions(MenuOf(form, widget, names));
    widget->setContextMenuPolicy(Qt::ActionsContextMenu);
}

} // namespace

void BindActions(QWidget *form)
{
    const auto widgets = form->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        const QString action = widget->property("action").toString();
        if (auto *button = qobject_cast<QAbstractButton *>(widget); button && !action.isEmpty())
            BindButton(button, ActionOf(form, action));
        const QStringList menu = widget->property("menuActions").toStringList();
        if (!menu.isEmpty())
            BindMenu(form, widget, menu);
        if (const auto *grid = qobject_cast<LevelGrid *>(widget)) {
            for (GridLevel *level : grid->AllLevels())
                level->SetActions(MenuOf(form, level, level->MenuActions()));
        }
    }
}

} // namespace Qel
