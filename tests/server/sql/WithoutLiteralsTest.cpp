#include "sql/WithoutLiterals.h"

#include <QTest>

using Qel::Sql::WithoutLiterals;
using namespace Qt::StringLiterals;

class WithoutLiteralsTest : public QObject
{
    Q_OBJECT

private slots:
    void LiteralsGiveWay_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("shown");
        QTest::newRow("text") << u"SELECT A FROM T WHERE NAME = '张伟'"_s
                              << u"SELECT A FROM T WHERE NAME = ?"_s;
        QTest::newRow("quote inside") << u"SELECT A FROM T WHERE B='it''s' AND C='x'"_s
                                      << u"SELECT A FROM T WHERE B=? AND C=?"_s;
        QTest::newRow("number") << u"select a from t where price > 12.50"_s
                                << u"select a from t where price > ?"_s;
        QTest::newRow("number in a name")
            << u"SELECT ORG_ID2 FROM T1"_s << u"SELECT ORG_ID2 FROM T1"_s;
        QTest::newRow("quoted name")
            << u"SELECT A \"13800138000\" FROM T"_s << u"SELECT A ? FROM T"_s;
        QTest::newRow("lines") << u"SELECT A\n  FROM T\n"_s << u"SELECT A FROM T"_s;
    }
    void LiteralsGiveWay()
    {
        QFETCH(QString, statement);
        QFETCH(QString, shown);
        QCOMPARE(WithoutLiterals(statement.toUtf8()), shown);
    }

    void NothingIsShownWhereLiteralsHaveNoEnd()
    {
        QCOMPARE(WithoutLiterals("SELECT A FROM T WHERE NAME = 'secret"), QString());
        QCOMPARE(WithoutLiterals("SELECT A FROM T WHERE NAME = 'a' -- 'secret"), QString());
    }
};

QTEST_GUILESS_MAIN(WithoutLiteralsTest)
#include "WithoutLiteralsTest.moc"
