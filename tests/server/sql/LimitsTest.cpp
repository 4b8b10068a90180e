#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <memory>
#include <optional>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr int MaxDepth = Sql::Limits{}.maxDepth;
/// Every kind of nesting works at least to here, whatever the database; what people write has three
/// or four levels.
constexpr int Guaranteed = 6;

/// A statement with one thing inside the other, `depth` times. The organisations are 200001 to
/// 200008.
struct Nesting
{
    const char *name;
    QString before;
    QString open;
    QString core;
    QString close;
    QString after;
    int rowsEven = 1; ///< of the answer at an even depth
    int rowsOdd = 1;

    QString Statement(int depth) const
    {
        return before + open.repeated(depth) + core + close.repeated(depth) + after;
    }
};

const QString Where = u"SELECT ORG_ID FROM BAS_ORG WHERE "_s;
const QString One = u" FROM BAS_ORG WHERE ORG_ID='200001'"_s;
const QString IsFirst = u"ORG_ID='200001'"_s;

const QList<Nesting> &Nestings()
{
    static const QList<Nesting> all{
        {"brackets round a condition", Where, u"("_s, IsFirst, u")"_s, {}},
        {"brackets round a value", u"SELECT "_s, u"("_s, u"ORG_ID"_s, u")"_s, One},
        {"AND in OR", Where, u"("_s, IsFirst, u" OR (ORG_ID='0' AND ORG_ID='1'))"_s, {}},
        {"OR to the right",
         Where,
         u"(ORG_ID='0' OR (ORG_NAME='0' AND "_s,
         IsFirst,
         u"))"_s,
         {},
         0,
         0},
        {"NOT", Where, u"NOT "_s, IsFirst, {}, {}, 1, 7},
        {"NOT in brackets", Where, u"NOT ("_s, IsFirst, u")"_s, {}, 1, 7},
        {"minus", Where, u"- "_s, u"200001"_s, u""_s, u" = ORG_ID"_s, 1, 0},
        {"minus in brackets", Where, u"-("_s, u"200001"_s, u")"_s, u" = ORG_ID"_s, 1, 0},
        {"plus", Where, u"+"_s, u"200001"_s, u""_s, u" = ORG_ID"_s},
        {"function of one argument", u"SELECT "_s, u"UPPER("_s, u"ORG_ID"_s, u")"_s, One},
        {"function, first argument", u"SELECT "_s, u"NVL("_s, u"ORG_ID"_s, u",'x')"_s, One},
        {"function, last argument", u"SELECT "_s, u"NVL(ORG_ABBR,"_s, u"ORG_ID"_s, u")"_s, One},
        {"NVL2", u"SELECT "_s, u"NVL2(ORG_ID,"_s, u"ORG_ID"_s, u",'x')"_s, One},
        {"TRIM", u"SELECT "_s, u"TRIM("_s, u"ORG_ID"_s, u")"_s, One},
        {"CAST", u"SELECT "_s, u"CAST("_s, u"ORG_ID"_s, u" AS CHAR(10))"_s, One},
        {"CASE in ELSE", u"SELECT "_s, u"CASE WHEN ORG_ID='0' THEN 'a' ELSE "_s, u"ORG_ID"_s,
         u" END"_s, One},
        {"CASE in THEN", u"SELECT "_s, u"CASE WHEN ORG_ID='200001' THEN "_s, u"ORG_ID"_s, u" END"_s,
         One},
        {"CASE in WHEN", u"SELECT "_s, u"CASE WHEN "_s, u"ORG_ID"_s,
         u"='200001' THEN '200001' END"_s, One},
        {"CASE of CASE", u"SELECT "_s, u"CASE "_s, u"ORG_ID"_s,
         u" WHEN '200001' THEN '200001' END"_s, One},
        {"DECODE, default", u"SELECT "_s, u"DECODE(ORG_ID,'0','a',"_s, u"ORG_ID"_s, u")"_s, One},
        {"DECODE of DECODE", u"SELECT "_s, u"DECODE("_s, u"ORG_ID"_s, u",'0','a','1','b','c')"_s,
         One},
        {"concatenation to the left", u"SELECT "_s, {}, u"ORG_ID"_s, u"||'a'"_s, One},
        {"concatenation to the right", u"SELECT "_s, u"ORG_ID||("_s, u"'a'"_s, u")"_s, One},
        {"sum to the left", u"SELECT "_s, {}, u"ORG_ID"_s, u"+1"_s, One},
        {"sum to the right", u"SELECT "_s, u"1+("_s, u"ORG_ID"_s, u")"_s, One},
        {"product in a sum", u"SELECT "_s, u"1+2*("_s, u"ORG_ID"_s, u")"_s, One},
        {"division", u"SELECT "_s, u"(1/"_s, u"2"_s, u")"_s, One},
        {"value in IN", Where + u"ORG_ID IN ("_s, u"NVL(ORG_ABBR,"_s, u"'200001'"_s, u")"_s, u")"_s,
         0, 0},
        {"value in BETWEEN",
         Where + u"ORG_ID BETWEEN '200001' AND "_s,
         u"NVL(NULL,"_s,
         u"'200001'"_s,
         u")"_s,
         {}},
        {"LIKE pattern", Where + u"ORG_ID LIKE "_s, u"('%'||"_s, u"'200001'"_s, u")"_s, {}},
        {"derived tables", {}, u"SELECT * FROM ("_s, u"SELECT * FROM BAS_ORG"_s, u")"_s, {}, 8, 8},
        {"derived tables with a condition",
         {},
         u"SELECT * FROM ("_s,
         Where + IsFirst,
         u") A WHERE A.ORG_ID='200001'"_s,
         {}},
        {"derived tables of distinct rows",
         {},
         u"SELECT DISTINCT ORG_ID FROM ("_s,
         u"SELECT ORG_ID FROM BAS_ORG"_s,
         u")"_s,
         {},
         8,
         8},
        {"derived tables in order",
         {},
         u"SELECT * FROM ("_s,
         u"SELECT * FROM BAS_ORG"_s,
         u") A ORDER BY A.ORG_NAME"_s,
         {},
         8,
         8},
        {"derived tables cut",
         {},
         u"SELECT * FROM ("_s,
         u"SELECT * FROM BAS_ORG"_s,
         u") A WHERE ROWNUM <= 3"_s,
         {},
         3,
         3},
        {"derived tables, the second",
         {},
         u"SELECT A.ORG_ID FROM BAS_ORG A,("_s,
         u"SELECT ORG_ID FROM BAS_ORG"_s,
         u") B WHERE A.ORG_ID=B.ORG_ID"_s,
         {},
         8,
         8},
        {"derived tables, outer",
         {},
         u"SELECT A.ORG_ID FROM BAS_ORG A,("_s,
         u"SELECT ORG_ID FROM BAS_ORG"_s,
         u") B WHERE A.ORG_ID=B.ORG_ID(+)"_s,
         {},
         8,
         8},
        {"IN", Where, u"ORG_ID IN (SELECT ORG_ID FROM BAS_ORG WHERE "_s, IsFirst, u")"_s, {}},
        {"NOT IN",
         Where,
         u"ORG_ID NOT IN (SELECT ORG_ID FROM BAS_ORG WHERE "_s,
         IsFirst,
         u")"_s,
         {},
         1,
         7},
        {"EXISTS", Where, u"EXISTS (SELECT 1 FROM BAS_ORG WHERE "_s, IsFirst, u")"_s, {}, 8, 8},
        {"NOT EXISTS",
         Where + u"ORG_ID='200001' AND "_s,
         u"NOT EXISTS (SELECT 1 FROM BAS_ORG WHERE "_s,
         IsFirst,
         u")"_s,
         {},
         1,
         0},
        {"scalar sub-selects",
         Where,
         u"ORG_ID = (SELECT MAX(ORG_ID) FROM BAS_ORG WHERE "_s,
         IsFirst,
         u")"_s,
         {}},
        {"scalar sub-selects in the select list", u"SELECT "_s, u"(SELECT MAX("_s, u"ORG_ID"_s,
         u") FROM BAS_ORG)"_s, One},
        {"everything",
         Where,
         u"(NVL('a',CASE WHEN ORG_ID='0' THEN 'b'||('c') END)='a' AND ORG_ID IN"
         " (SELECT ORG_ID FROM (SELECT ORG_ID FROM BAS_ORG) WHERE "_s,
         IsFirst,
         u"))"_s,
         {}},
    };
    return all;
}

} // namespace

/// What is larger or deeper than allowed is answered with sql.limit, never as a failure of the
/// server and never with the half of it.
class LimitsTest : public QObject
{
    Q_OBJECT

private slots:
    void EveryNestingIsAnsweredOrRefused_data()
    {
        QTest::addColumn<qsizetype>("at");
        for (qsizetype at = 0; at < Nestings().size(); ++at)
            QTest::newRow(Nestings()[at].name) << at;
    }

    /// Depth for depth: the right number of rows up to some depth, sql.limit from there on.
    void EveryNestingIsAnsweredOrRefused()
    {
        QFETCH(qsizetype, at);
        const Nesting &nesting = Nestings()[at];
        // PostgreSQL takes its time to plan a join of forty tables.
        const int step = TestsRunOnPostgres() ? 9 : 1;
        int deepest = 0;
        for (int depth = 1; depth <= MaxDepth + 1; depth += depth < Guaranteed ? 1 : step) {
            const std::optional<int> rows = Rows(nesting.Statement(depth));
            if (!rows)
                continue;
            QVERIFY2(deepest >= depth - step,
                     qPrintable(u"one behind %1 is refused, %2 not"_s.arg(deepest).arg(depth)));
            QCOMPARE(*rows, depth % 2 == 0 ? nesting.rowsEven : nesting.rowsOdd);
            deepest = depth;
        }
        QVERIFY2(deepest >= Guaranteed && deepest <= MaxDepth,
                 qPrintable(QString::number(deepest)));
    }

    void BracketsReachExactlyTheStatedDepth()
    {
        const Nesting &brackets = Nestings()[0];
        // the statement itself and the name inside count too
        QCOMPARE(Rows(brackets.Statement(MaxDepth - 2)).value_or(0), 1);
        ExpectLimit(brackets.Statement(MaxDepth - 1), Where.size() + MaxDepth - 1,
                    u"嵌套超过 60 层"_s);
    }

    void NestedDecodeDoesNotDoubleForEver()
    {
        const QString bomb = u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = "_s +
                             u"DECODE("_s.repeated(50) + u"ORG_ID"_s +
                             u",'1','2','3','4','5')"_s.repeated(50);
        try {
            Run(bomb);
            QFAIL("was run");
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(QString::fromStdString(error.Code()), u"sql.limit"_s);
            QVERIFY2(error.Message().endsWith(u"DECODE 展开后过长"_s), qPrintable(error.Message()));
        }
    }

    void SixtyPiecesAreConcatenated()
    {
        const RowSet rows = Run(u"SELECT ORG_ID"_s + u"||'a'"_s.repeated(MaxDepth - 2) + One);
        QCOMPARE(rows.Text(0, 0), u"200001"_s + QString(MaxDepth - 2, u'a'));
    }

    void TextOfOneMebibyteButNotMore()
    {
        constexpr int most = 1 << 20;
        const QString statement = Where + IsFirst;
        QCOMPARE(Rows(statement.leftJustified(most)).value_or(0), 1);
        ExpectLimit(statement.leftJustified(most + 1), most, u"语句超过 1048576 字节"_s);
        // bytes count, not characters
        const QString wide = Where + u"ORG_NAME<>'"_s + QString(most / 3, u'药') + u'\'';
        ExpectLimit(wide, most, u"语句超过 1048576 字节"_s);
    }

    void FortyTablesButNotMore()
    {
        const auto statement = [](int inFrom) {
            QStringList from;
            QStringList where;
            for (int i = 1; i <= inFrom; ++i) {
                from << u"BAS_ORG T%1"_s.arg(i);
                where << u"T%1.ORG_ID='200001'"_s.arg(i);
            }
            // two more tables and a derived one, which counts too
            return u"SELECT T1.ORG_ID FROM "_s + from.join(u',') + u" WHERE "_s +
                   where.join(u" AND "_s) +
                   u" AND T1.ORG_ID IN (SELECT ORG_ID FROM (SELECT ORG_ID FROM BAS_ORG), BAS_REGION)"_s;
        };
        QCOMPARE(Rows(statement(37)).value_or(0), 1);
        const QString more = statement(38);
        ExpectLimit(more, more.indexOf(u"BAS_REGION"), u"表超过 40 个"_s);
    }

    void FiftyThousandLiteralsButNotMore()
    {
        const auto statement = [](int count) {
            return Where + u"ORG_ID IN ("_s + u"'0',"_s.repeated(count - 1) + u"'200001')"_s;
        };
        QCOMPARE(Rows(statement(50'000)).value_or(0), 1);
        const QString more = statement(50'001);
        ExpectLimit(more, more.size() - 9, u"常量超过 50000 个"_s);
    }

    void LiteralOfFourThousandBytesButNotMore()
    {
        const auto statement = [](const QString &literal) {
            return Where + u"ORG_ID='200001' AND ORG_NAME<>'"_s + literal + u'\'';
        };
        const qsizetype position = statement({}).size() - 2;
        QCOMPARE(Rows(statement(QString(4'000, u'x'))).value_or(0), 1);
        ExpectLimit(statement(QString(4'001, u'x')), position, u"一个常量超过 4000 字节"_s);
        // bytes of the value: a doubled apostrophe is one, a Chinese character three
        QCOMPARE(Rows(statement(u"''"_s.repeated(4'000))).value_or(0), 1);
        ExpectLimit(statement(u"''"_s.repeated(4'001)), position, u"一个常量超过 4000 字节"_s);
        QCOMPARE(Rows(statement(QString(1'333, u'药'))).value_or(0), 1);
        ExpectLimit(statement(QString(1'334, u'药')), position, u"一个常量超过 4000 字节"_s);
    }

    /// Texts that grow as they are put together, and a sort of what one list makes with itself:
    /// neither may fill the server's memory until the statement's time is up.
    void WhatGrowsWhileItRunsIsStopped()
    {
        if (TestsRunOnPostgres())
            QSKIP("PostgreSQL sorts on disk, in a process of its own");
        const QString grown =
            u"SELECT '%1' AS C FROM BAS_ORG WHERE ORG_ID='200001'"_s.arg(QString(1'000, u'x'));
        const QString tenfold = u"SELECT C||C||C||C||C||C||C||C||C||C AS C FROM ("_s;
        QCOMPARE(Run(tenfold + tenfold + grown + u"))"_s).Text(0, 0).size(), 100'000);
        const QString message = u"中间结果过大：内存超过 %1 字节，或一个值超过 1048576 字节"_s;
        ExpectLimit(tenfold.repeated(4) + grown + u"))))"_s, -1, message.arg(512 << 20));

        Store::QueryRunner small(*reader_, {.memory = 4 << 20});
        const QString sorted = u"SELECT A.ORG_NAME FROM BAS_ORG A,BAS_ORG B,BAS_ORG C,BAS_ORG D%1"
                               " ORDER BY A.ORG_NAME||B.ORG_NAME"_s;
        QCOMPARE(small.Run(sorted.arg(u""_s), 0, 0).count, 4'096);
        try {
            small.Run(sorted.arg(u",BAS_ORG E,BAS_ORG F"_s), 0, 0);
            QFAIL("was run");
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(QString::fromStdString(error.Code()), u"sql.limit"_s);
            QCOMPARE(error.Message(), u"查询语句："_s + message.arg(4 << 20));
        }
        // the connection is as good as before
        QCOMPARE(small.Run(sorted.arg(u""_s), 0, 0).count, 4'096);
        QCOMPARE(small.Run(sorted.arg(u",BAS_ORG E,BAS_ORG F"_s), 1, 10).total, 262'144);
    }

    void ThousandColumnsButNotMore()
    {
        const QString columns = u"ORG_ID,"_s.repeated(999);
        QCOMPARE(Run(u"SELECT "_s + columns + u"ORG_ID"_s + One).Fields().size(), 1000);
        QString more = u"SELECT "_s + columns + u"ORG_ID,ORG_NAME"_s + One;
        ExpectLimit(more, more.indexOf(u"ORG_NAME"), u"列超过 1000 个"_s);
        QCOMPARE(Rows(Where + IsFirst + u" ORDER BY "_s + columns + u"ORG_ID"_s).value_or(0), 1);
        more = Where + IsFirst + u" ORDER BY "_s + columns + u"ORG_ID,ORG_NAME"_s;
        ExpectLimit(more, more.indexOf(u"ORG_NAME"), u"列超过 1000 个"_s);
        QCOMPARE(Rows(Where + IsFirst + u" GROUP BY "_s + columns + u"ORG_ID"_s).value_or(0), 1);
        more = Where + IsFirst + u" GROUP BY "_s + columns + u"ORG_ID,ORG_NAME"_s;
        ExpectLimit(more, more.indexOf(u"ORG_NAME"), u"列超过 1000 个"_s);
    }

    void ColumnsOfAStarCountToo()
    {
        QStringList from;
        for (int i = 1; i <= 40; ++i)
            from << u"TRA_SEND T%1"_s.arg(i);
        ExpectLimit(u"SELECT * FROM "_s + from.join(u','), 7, u"列超过 1000 个"_s);
    }

    void WhatTheDatabaseDoesNotTakeIsALimitToo()
    {
        const Nesting &derived = *std::ranges::find_if(Nestings(), [](const Nesting &one) {
            return qstrcmp(one.name, "derived tables") == 0;
        });
        const QString half(3'000, u'a');
        const QString like = Where + u"ORG_NAME LIKE '"_s + half + u"'||'"_s + half + u'\'';
        if (TestsRunOnPostgres()) { // takes both
            QCOMPARE(Rows(derived.Statement(30)).value_or(0), 8);
            QCOMPARE(Rows(like).value_or(-1), 0);
            return;
        }
        ExpectLimit(derived.Statement(30), -1, u"嵌套过深或列过多，超出数据库的限度"_s);
        ExpectLimit(like, -1, u"嵌套过深或列过多，超出数据库的限度"_s);
    }

private:
    RowSet Run(const QString &sql) { return RowSet::Load(runner_.Run(sql, 0, 0).block); }

    /// The number of rows, the total of the counting text being the same; nothing: sql.limit.
    std::optional<int> Rows(const QString &sql)
    {
        try {
            const int rows = Run(sql).RowCount();
            const auto page = runner_.Run(sql, 1, 100);
            return page.total == rows && page.count == rows ? rows : -1;
        } catch (const Sql::ESqlError &error) {
            if (error.Code() == "sql.limit" && !error.Message().isEmpty())
                return std::nullopt;
            throw;
        }
    }

    void ExpectLimit(const QString &sql, qsizetype position, const QString &message)
    {
        try {
            Run(sql);
            QFAIL("was run");
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(QString::fromStdString(error.Code()), u"sql.limit"_s);
            QCOMPARE(error.Position(), position);
            QCOMPARE(error.Message(),
                     position < 0 ? u"查询语句："_s + message
                                  : u"查询语句第 %1 字节处：%2"_s.arg(position).arg(message));
        }
    }

    TestDatabase data_;
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

QTEST_GUILESS_MAIN(LimitsTest)
#include "LimitsTest.moc"
