#include "controls/MemoEdit.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextCursor>
#include <QTextDocument>

#include <limits>

namespace Qel {

namespace {

bool InsertsCharacter(const QKeyEvent &event)
{
    const bool shortcut = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    const bool newLine = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    const QString text = event.text();
    return newLine || (!shortcut && !text.isEmpty() && text.front().isPrint());
}

} // namespace

int MemoEdit::Room() const
{
    if (maxLength_ <= 0)
        return std::numeric_limits<int>::max();
    const QTextCursor cursor = textCursor();
    const int selected = cursor.selectionEnd() - cursor.selectionStart();
    // The document counts a closing paragraph mark that is no part of the text.
    return qMax(0, maxLength_ - (document()->characterCount() - 1 - selected));
}

void MemoEdit::keyPressEvent(QKeyEvent *event)
{
    if (InsertsCharacter(*event) && Room() == 0)
        event->accept();
    else
        QPlainTextEdit::keyPressEvent(event);
}

void MemoEdit::inputMethodEvent(QInputMethodEvent *event)
{
    event->setCommitString(event->commitString().left(Room()), event->replacementStart(),
                           event->replacementLength());
    QPlainTextEdit::inputMethodEvent(event);
}

void MemoEdit::insertFromMimeData(const QMimeData *source)
{
    QMimeData fitting;
    fitting.setText(source->text().left(Room()));
    QPlainTextEdit::insertFromMimeData(&fitting);
}

} // namespace Qel
