#pragma once

#include <QList>
#include <QString>

#include <functional>

namespace Qel {

// The four message boxes of the library: modal, owned by the dialog in front or else by the
// application's main window, text shown as it is (never as rich text). The captions in use are
// "提示", "警告" and "错误"; a few messages have none.

void InfoBox(const QString &text, const QString &caption);
void WarningBox(const QString &text, const QString &caption);
void ErrorBox(const QString &text, const QString &caption);

/// Yes and No; Yes is the default button unless `defaultNo`. True unless the answer is No
/// (closing the box and Esc mean No).
bool QuestionBox(const QString &text, const QString &caption, bool defaultNo = false);

enum class TBoxIcon { Information, Warning, Error, Question };
enum class TBoxButton { Ok, Yes, No };

/// One message box as it is shown.
struct TMessageBox
{
    TBoxIcon icon;
    QString text;
    QString caption;
    QList<TBoxButton> buttons;
    TBoxButton defaultButton;
};

/// While one lives, message boxes are not shown: it writes each one down and answers. For tests.
/// The last one made is in force.
class MessageBoxHook
{
public:
    using TAnswer = std::function<TBoxButton(const TMessageBox &)>;

    /// Answers with `answer`, or without one with the box's default button.
    explicit MessageBoxHook(TAnswer answer = {});
    ~MessageBoxHook();
    Q_DISABLE_COPY_MOVE(MessageBoxHook)

    void SetAnswer(TAnswer answer);
    const QList<TMessageBox> &Boxes() const { return boxes_; } ///< in the order of showing
    void Clear() { boxes_.clear(); }

private:
    friend TBoxButton ShowMessageBox(const TMessageBox &box);

    TAnswer answer_;
    QList<TMessageBox> boxes_;
    MessageBoxHook *outer_;
};

/// What the four routines come down to: the hook's answer if there is a hook, otherwise a real
/// box (objectName "MessageBox", buttons "Ok", "Yes", "No").
TBoxButton ShowMessageBox(const TMessageBox &box);

} // namespace Qel
