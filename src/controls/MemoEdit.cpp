#include "controls/MemoEdit.h"

#include <QScopedValueRollback>
#include <QTextBlock>
#include <QTextDocument>

namespace Qel {

MemoEdit::MemoEdit(QWidget *parent)
    : QPlainTextEdit(parent)
{
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int position, int, int added) { CutInsertion(position, added); });
}

void MemoEdit::SetMaxLength(int maxLength)
{
    maxLength_ = maxLength;
    CutInsertion(0, int(toPlainText().size()));
}

void MemoEdit::CutInsertion(int position, int added)
{
    // The document counts a closing paragraph mark that is no part of the text.
    const int over = document()->characterCount() - 1 - maxLength_;
    if (cutting_ || maxLength_ <= 0 || over <= 0)
        return;
    const QScopedValueRollback guard(cutting_, true);
    const int end = qMin(position + added, document()->characterCount() - 1);
    QTextCursor cursor(document());
    cursor.joinPreviousEditBlock();
    cursor.setPosition(end);
    cursor.setPosition(qMax(0, end - over), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.endEditBlock();
}

} // namespace Qel
