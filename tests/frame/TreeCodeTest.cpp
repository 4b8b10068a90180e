#include "frame/TreeCode.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

class TreeCodeTest : public QObject
{
    Q_OBJECT

private slots:
    void ProposesTheNextCode_data()
    {
        QTest::addColumn<bool>("topLevel");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("proposal");
        QTest::newRow("largest top-level code is 0012") << true << u"13"_s << u"0013"_s;
        QTest::newRow("no top-level row yet") << true << u"1"_s << u"0001"_s;
        QTest::newRow("four digits") << true << u"1234"_s << u"1234"_s;
        QTest::newRow("top level is full") << true << u"10000"_s << u""_s;
        QTest::newRow("children up to 001309") << false << u"1310"_s << u"10"_s;
        QTest::newRow("no children") << false << u"01"_s << u"01"_s;
        QTest::newRow("one digit is left") << false << u"1"_s << u"01"_s;
        QTest::newRow("after 99 comes 00") << false << u"1400"_s << u"00"_s;
    }
    void ProposesTheNextCode()
    {
        QFETCH(bool, topLevel);
        QFETCH(QString, answer);
        QFETCH(QString, proposal);
        QCOMPARE(TreeCode::Propose(topLevel, answer), proposal);
    }

    void CodeIsSplitBeforeItsLastTwoDigits_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("own");
        QTest::newRow("top level") << u"0013"_s << u""_s << u"0013"_s;
        QTest::newRow("shorter than any") << u"13"_s << u""_s << u"13"_s;
        QTest::newRow("second level") << u"001309"_s << u"0013"_s << u"09"_s;
        QTest::newRow("deepest level") << u"001309020304"_s << u"0013090203"_s << u"04"_s;
        QTest::newRow("none") << u""_s << u""_s << u""_s;
    }
    void CodeIsSplitBeforeItsLastTwoDigits()
    {
        QFETCH(QString, code);
        const TreeCode::Parts parts = TreeCode::Split(code);
        QTEST(parts.parent, "parent");
        QTEST(parts.own, "own");
    }
};

QTEST_GUILESS_MAIN(TreeCodeTest)
#include "TreeCodeTest.moc"
