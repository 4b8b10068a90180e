#pragma once

#include <QPlainTextEdit>

namespace Qel {

/// A plain memo that holds at most maxLength characters (0: any number). What is typed or pasted
/// beyond the limit is cut off at the place where it goes in; the text around it stays.
class MemoEdit : public QPlainTextEdit
{
    Q_OBJECT
    Q_PROPERTY(int maxLength READ MaxLength WRITE SetMaxLength)

public:
    explicit MemoEdit(QWidget *parent = nullptr);

    int MaxLength() const { return maxLength_; }
    void SetMaxLength(int maxLength);

private:
    void CutInsertion(int position, int added);

    int maxLength_ = 0;
    bool cutting_ = false;
};

} // namespace Qel
