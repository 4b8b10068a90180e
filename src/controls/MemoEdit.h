#pragma once

#include <QPlainTextEdit>

namespace Qel {

/// A plain memo into which at most maxLength characters go (0: any number). What the user types,
/// pastes or composes beyond that is cut off at its end; the text around it stays. A longer text
/// set by code is shown whole.
class MemoEdit : public QPlainTextEdit
{
    Q_OBJECT
    Q_PROPERTY(int maxLength READ MaxLength WRITE SetMaxLength)

public:
    using QPlainTextEdit::QPlainTextEdit;

    int MaxLength() const { return maxLength_; }
    void SetMaxLength(int maxLength) { maxLength_ = maxLength; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    int Room() const; ///< characters that still go in, with the selection given up

    int maxLength_ = 0;
};

} // namespace Qel
