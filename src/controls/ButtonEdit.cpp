#include "controls/ButtonEdit.h"

#include <QEvent>
#include <QKeyEvent>
#include <QToolButton>

namespace Qel {

namespace {

constexpr int ButtonPadding = 6; // beside the caption
constexpr int ButtonGap = 1;

} // namespace

ButtonEdit::ButtonEdit(QWidget *parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textEdited, this,
            [this](const QString &typed) { SetChoice({}, typed); });
}

QStringList ButtonEdit::Buttons() const
{
    QStringList captions;
    for (const QToolButton *button : buttons_)
        captions.append(button->text());
    return captions;
}

void ButtonEdit::SetButtons(const QStringList &captions)
{
    qDeleteAll(std::exchange(buttons_, {}));
    for (int i = 0; i < captions.size(); ++i) {
        auto *button = new QToolButton(this);
        button->setObjectName(QStringLiteral("button%1").arg(i));
        button->setText(captions[i]);
        button->setFocusPolicy(Qt::NoFocus);
        button->setCursor(Qt::ArrowCursor);
        connect(button, &QToolButton::clicked, this, [this, i] { emit ButtonClicked(i); });
        button->show();
        buttons_.append(button);
    }
    NameButtons();
    PlaceButtons();
    updateGeometry();
}

void ButtonEdit::SetButtonEnabled(int button, bool enabled)
{
    buttons_.at(button)->setEnabled(enabled);
}

bool ButtonEdit::IsButtonEnabled(int button) const
{
    return buttons_.at(button)->isEnabled();
}

void ButtonEdit::PressButton(int button)
{
    if (button >= 0 && button < buttons_.size())
        buttons_.at(button)->click();
}

void ButtonEdit::SetChoice(const QString &value, const QString &text)
{
    const bool isOther = chosenValue_ != value;
    chosenValue_ = value;
    if (this->text() != text)
        setText(text);
    if (isOther)
        emit ChoiceChanged();
}

QSize ButtonEdit::sizeHint() const
{
    return QLineEdit::sizeHint() + QSize(ButtonsWidth(), 0);
}

/// A reader hears "选择 所在地区", not just "选择".
void ButtonEdit::NameButtons()
{
    for (QToolButton *button : buttons_) {
        const QString name = button->text() + u' ' + accessibleName();
        button->setAccessibleName(name.trimmed());
    }
}

int ButtonEdit::ButtonWidth(const QToolButton *button) const
{
    return fontMetrics().horizontalAdvance(button->text()) + 2 * ButtonPadding;
}

int ButtonEdit::ButtonsWidth() const
{
    int width = 0;
    for (const QToolButton *button : buttons_)
        width += ButtonWidth(button) + ButtonGap;
    return width;
}

void ButtonEdit::PlaceButtons()
{
    const int inset = hasFrame() ? 2 : 0;
    int right = width() - inset;
    for (auto it = buttons_.crbegin(); it != buttons_.crend(); ++it) {
        const int buttonWidth = ButtonWidth(*it);
        (*it)->setGeometry(right - buttonWidth, inset, buttonWidth, height() - 2 * inset);
        right -= buttonWidth + ButtonGap;
    }
    setTextMargins(0, 0, ButtonsWidth(), 0);
}

bool ButtonEdit::event(QEvent *event)
{
    // F4 and Alt+Down belong to the edit even where a window has a shortcut on them.
    if (event->type() == QEvent::ShortcutOverride && !buttons_.isEmpty() &&
        IsPressKey(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::Show)
        NameButtons(); // the layout has named the edit by now
    return QLineEdit::event(event);
}

bool ButtonEdit::IsPressKey(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    return (event.key() == Qt::Key_F4 && modifiers == Qt::NoModifier) ||
           (event.key() == Qt::Key_Down && modifiers == Qt::AltModifier);
}

void ButtonEdit::keyPressEvent(QKeyEvent *event)
{
    if (!buttons_.isEmpty() && IsPressKey(*event)) {
        PressButton(0);
        return;
    }
    if (clearable_ && isReadOnly() && event->key() == Qt::Key_Delete) {
        ClearChoice();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void ButtonEdit::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    PlaceButtons();
}

void ButtonEdit::changeEvent(QEvent *event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        PlaceButtons();
        updateGeometry();
    }
}

} // namespace Qel
