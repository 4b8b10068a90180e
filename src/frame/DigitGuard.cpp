#include "frame/DigitGuard.h"

#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>

namespace Qel {

namespace {

bool IsDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool TypesSomethingElse(const QKeyEvent &event)
{
    const QString text = event.text();
    const bool shortcut = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    return !shortcut && !text.isEmpty() && text.front().isPrint() && !IsDigit(text.front());
}

bool StaysInField(Qt::FocusReason reason)
{
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
}

} // namespace

DigitGuard::DigitGuard(QLineEdit *edit)
    : QObject(edit)
    , edit_(edit)
{
    edit->installEventFilter(this);
    edit->setInputMethodHints(edit->inputMethodHints() | Qt::ImhDigitsOnly);
}

bool DigitGuard::IsDigits(QStringView text)
{
    return std::ranges::all_of(text, IsDigit);
}

bool DigitGuard::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && TypesSomethingElse(*static_cast<QKeyEvent *>(event)))
        return true;
    if (event->type() == QEvent::FocusOut &&
        !StaysInField(static_cast<QFocusEvent *>(event)->reason()))
        // From the event loop: a message box inside a focus change would swallow the click that
        // caused it.
        QMetaObject::invokeMethod(this, &DigitGuard::Left, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

void DigitGuard::Left()
{
    if (edit_->isVisible() && !IsDigits(edit_->text()))
        emit LeftWithIllegal();
}

} // namespace Qel
