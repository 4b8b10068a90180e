#include "frame/MisCommon.h"

#include "frame/LibrarySide.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <array>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

MessageBoxHook *currentHook = nullptr;

struct ButtonLook
{
    QMessageBox::StandardButton button;
    const char16_t *text;
    const char *name;
};

/// By TBoxButton.
constexpr std::array ButtonLooks{
    ButtonLook{QMessageBox::Ok, u"确定", "Ok"},
    ButtonLook{QMessageBox::Yes, u"是", "Yes"},
    ButtonLook{QMessageBox::No, u"否", "No"},
};

/// By TBoxIcon.
constexpr std::array Icons{QMessageBox::Information, QMessageBox::Warning, QMessageBox::Critical,
                           QMessageBox::Question};

const ButtonLook &LookOf(TBoxButton button)
{
    return ButtonLooks.at(static_cast<std::size_t>(button));
}

void ShowWithOk(TBoxIcon icon, const QString &text, const QString &caption)
{
    ShowMessageBox({icon, text, caption, {TBoxButton::Ok}, TBoxButton::Ok});
}

TBoxButton ShowRealBox(const TMessageBox &box)
{
    QMessageBox window(DialogOwner());
    window.setObjectName(u"MessageBox"_s);
    window.setIcon(Icons.at(static_cast<std::size_t>(box.icon)));
    window.setTextFormat(Qt::PlainText);
    window.setText(box.text);
    window.setWindowTitle(box.caption);
    window.setWindowModality(Qt::ApplicationModal);
    for (const TBoxButton button : box.buttons) {
        const ButtonLook &look = LookOf(button);
        QPushButton *shown = window.addButton(look.button);
        shown->setText(QString::fromUtf16(look.text));
        shown->setObjectName(QString::fromLatin1(look.name));
    }
    window.setDefaultButton(LookOf(box.defaultButton).button);
    const int pressed = window.exec();
    for (const TBoxButton button : box.buttons) {
        if (LookOf(button).button == pressed)
            return button;
    }
    return box.buttons.last(); // closed without a button
}

} // namespace

void InfoBox(const QString &text, const QString &caption)
{
    ShowWithOk(TBoxIcon::Information, text, caption);
}

void WarningBox(const QString &text, const QString &caption)
{
    ShowWithOk(TBoxIcon::Warning, text, caption);
}

void ErrorBox(const QString &text, const QString &caption)
{
    ShowWithOk(TBoxIcon::Error, text, caption);
}

bool QuestionBox(const QString &text, const QString &caption, bool defaultNo)
{
    const TBoxButton pressed = ShowMessageBox({TBoxIcon::Question,
                                               text,
                                               caption,
                                               {TBoxButton::Yes, TBoxButton::No},
                                               defaultNo ? TBoxButton::No : TBoxButton::Yes});
    return pressed != TBoxButton::No;
}

MessageBoxHook::MessageBoxHook(TAnswer answer)
    : answer_(std::move(answer))
    , outer_(std::exchange(currentHook, this))
{
}

MessageBoxHook::~MessageBoxHook()
{
    currentHook = outer_;
}

void MessageBoxHook::SetAnswer(TAnswer answer)
{
    answer_ = std::move(answer);
}

TBoxButton ShowMessageBox(const TMessageBox &box)
{
    if (!currentHook)
        return ShowRealBox(box);
    currentHook->boxes_.append(box);
    return currentHook->answer_ ? currentHook->answer_(box) : box.defaultButton;
}

} // namespace Qel
