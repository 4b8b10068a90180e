#include "remote/InputShield.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWidget>
#include <QWindow>

namespace Qel {

namespace {

bool IsInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::NonClientAreaMouseButtonPress:
    case QEvent::NonClientAreaMouseButtonRelease:
    case QEvent::NonClientAreaMouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::Gesture:
    case QEvent::GestureOverride:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

} // namespace

InputShield::InputShield(QObject *parent)
    : QObject(parent)
{
    doubleClick_.setSingleShot(true);
    connect(&doubleClick_, &QTimer::timeout, this, [this] {
        if (!raised_)
            qApp->removeEventFilter(this);
    });
}

void InputShield::Raise(bool forPost)
{
    raised_ = true;
    buttonDown_ = QGuiApplication::mouseButtons() != Qt::NoButton;
    if (forPost)
        doubleClick_.start(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    qApp->installEventFilter(this);
}

void InputShield::Lower()
{
    raised_ = false;
    exempt_.clear();
    if (!doubleClick_.isActive())
        qApp->removeEventFilter(this);
    if (release_ && releaseReceiver_)
        QCoreApplication::postEvent(releaseReceiver_, release_.release());
    release_.reset();
}

void InputShield::SetExempt(QWidget *window)
{
    exempt_ = window;
}

bool InputShield::eventFilter(QObject *watched, QEvent *event)
{
    if (!raised_) // only a second click is still waited for
        return event->type() == QEvent::MouseButtonDblClick && doubleClick_.isActive();
    if (!IsInput(event->type()) || IsExempt(watched))
        return false;
    if (event->type() == QEvent::MouseButtonRelease) {
        if (watched->isWindowType()) // the window's own bookkeeping of pressed buttons
            return false;
        KeepRelease(watched, *static_cast<QMouseEvent *>(event));
    }
    event->setAccepted(event->type() != QEvent::Close && event->type() != QEvent::DragEnter);
    return true;
}

bool InputShield::IsExempt(const QObject *receiver) const
{
    if (!exempt_)
        return false;
    if (receiver->isWidgetType()) {
        const auto *widget = static_cast<const QWidget *>(receiver);
        return widget == exempt_ || exempt_->isAncestorOf(widget);
    }
    return receiver == exempt_->windowHandle();
}

void InputShield::KeepRelease(QObject *receiver, const QMouseEvent &release)
{
    if (!buttonDown_ || release_)
        return;
    releaseReceiver_ = receiver;
    release_.reset(release.clone());
}

} // namespace Qel
