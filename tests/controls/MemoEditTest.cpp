#include "controls/MemoEdit.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

class MemoEditTest : public QObject
{
    Q_OBJECT

private slots:
    void TypingStopsAtTheLimit()
    {
        MemoEdit memo;
        memo.SetMaxLength(3);
        QTest::keyClicks(&memo, u"abcd"_s);
        QCOMPARE(memo.toPlainText(), u"abc"_s);
    }

    void PastedTextIsCutWhereItGoesIn()
    {
        MemoEdit memo;
        memo.SetMaxLength(6);
        memo.setPlainText(u"甲乙丙"_s);
        memo.moveCursor(QTextCursor::Start);
        memo.moveCursor(QTextCursor::NextCharacter);
        QGuiApplication::clipboard()->setText(u"123456"_s);
        memo.paste();
        QCOMPARE(memo.toPlainText(), u"甲123乙丙"_s);
    }

    void ComposedTextIsCutToo()
    {
        MemoEdit memo;
        memo.SetMaxLength(2);
        QInputMethodEvent event;
        event.setCommitString(u"中国药"_s);
        QCoreApplication::sendEvent(&memo, &event);
        QCOMPARE(memo.toPlainText(), u"中国"_s);
    }

    void LineBreaksCount()
    {
        MemoEdit memo;
        memo.SetMaxLength(3);
        QTest::keyClicks(&memo, u"a"_s);
        QTest::keyClick(&memo, Qt::Key_Return);
        QTest::keyClicks(&memo, u"bc"_s);
        QTest::keyClick(&memo, Qt::Key_Return);
        QCOMPARE(memo.toPlainText(), u"a\nb"_s);
    }

    void SelectionGivesItsRoom()
    {
        MemoEdit memo;
        memo.SetMaxLength(3);
        memo.setPlainText(u"甲乙丙"_s);
        memo.selectAll();
        QTest::keyClicks(&memo, u"xyzw"_s);
        QCOMPARE(memo.toPlainText(), u"xyz"_s);
    }

    void TextSetByCodeIsShownWhole()
    {
        MemoEdit memo;
        memo.SetMaxLength(3);
        memo.setPlainText(u"甲乙丙丁"_s);
        QTest::keyClicks(&memo, u"x"_s);
        QCOMPARE(memo.toPlainText(), u"甲乙丙丁"_s);
        QTest::keyClick(&memo, Qt::Key_Delete);
        QCOMPARE(memo.toPlainText(), u"乙丙丁"_s);
    }

    void UndoTakesACutPasteBack()
    {
        MemoEdit memo;
        memo.SetMaxLength(4);
        memo.setPlainText(u"甲"_s);
        memo.moveCursor(QTextCursor::End);
        QGuiApplication::clipboard()->setText(u"12345"_s);
        memo.paste();
        QCOMPARE(memo.toPlainText(), u"甲123"_s);
        memo.undo();
        QCOMPARE(memo.toPlainText(), u"甲"_s);
    }

    void WithoutALimitNothingIsCut()
    {
        MemoEdit memo;
        memo.setPlainText(QString(5000, u'甲'));
        QCOMPARE(memo.toPlainText().size(), 5000);
    }
};

QTEST_MAIN(MemoEditTest)
#include "MemoEditTest.moc"
