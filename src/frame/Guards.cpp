#include "frame/Guards.h"

#include <QAction>
#include <QApplication>
#include <QVariant>
#include <QWidget>

namespace Qel {

namespace {

constexpr char HoldCount[] = "qelHoldCount";
constexpr char EnabledByRule[] = "qelEnabledByRule";

bool IsEnabled(const QObject *object)
{
    if (const auto *action = qobject_cast<const QAction *>(object))
        return action->isEnabled();
    const auto *widget = qobject_cast<const QWidget *>(object);
    return widget && !widget->testAttribute(Qt::WA_ForceDisabled);
}

void SetEnabled(QObject *object, bool enabled)
{
    if (auto *action = qobject_cast<QAction *>(object))
        action->setEnabled(enabled);
    else if (auto *widget = qobject_cast<QWidget *>(object))
        widget->setEnabled(enabled);
}

void ApplyRule(QObject *object, bool enabled)
{
    if (object->property(HoldCount).toInt() > 0)
        object->setProperty(EnabledByRule, enabled);
    else
        SetEnabled(object, enabled);
}

} // namespace

void SetEnabledByRule(QAction *action, bool enabled)
{
    ApplyRule(action, enabled);
}

void SetEnabledByRule(QWidget *widget, bool enabled)
{
    ApplyRule(widget, enabled);
}

DisableWhile::DisableWhile(QAction *action)
{
    Hold(action);
}

DisableWhile::DisableWhile(QWidget *widget)
{
    Hold(widget);
}

void DisableWhile::Hold(QObject *object)
{
    held_ = object;
    const int holds = object->property(HoldCount).toInt();
    if (holds == 0)
        object->setProperty(EnabledByRule, IsEnabled(object));
    object->setProperty(HoldCount, holds + 1);

    QWidget *before = QApplication::focusWidget();
    SetEnabled(object, false);
    if (before && before != QApplication::focusWidget()) {
        // The toolkit has moved the focus to the next control. It waits at the window instead,
        // where a later setFocus of the handler can be told from this.
        focusBefore_ = before;
        focusParked_ = before->window();
        focusParked_->setFocus();
    }
}

DisableWhile::~DisableWhile()
{
    if (!held_)
        return;
    const int holds = held_->property(HoldCount).toInt() - 1;
    if (holds > 0) {
        held_->setProperty(HoldCount, holds);
        return;
    }
    const bool enabled = held_->property(EnabledByRule).toBool();
    held_->setProperty(HoldCount, QVariant());
    held_->setProperty(EnabledByRule, QVariant());
    SetEnabled(held_, enabled);

    const QWidget *now = QApplication::focusWidget();
    if (focusBefore_ && (!now || now == focusParked_) && focusBefore_->isEnabled() &&
        focusBefore_->isVisible())
        focusBefore_->setFocus();
}

WaitCursor::WaitCursor()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

WaitCursor::~WaitCursor()
{
    QApplication::restoreOverrideCursor();
}

} // namespace Qel
