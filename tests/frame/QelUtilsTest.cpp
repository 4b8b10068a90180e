#include "frame/QelUtils.h"

#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "dataset/ClientDataSet.h"
#include "support/ScriptedServer.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qel;
using Qel::Test::Rows;
using namespace Qt::StringLiterals;

namespace {

QDateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

} // namespace

class QelUtilsTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Literals ------------------------------------------------------------------------------

    void QuotedDoublesSingleQuotes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << u"abc"_s << u"'abc'"_s;
        QTest::newRow("empty") << QString() << u"''"_s;
        QTest::newRow("quotes") << u"a'b''"_s << u"'a''b'''''"_s;
        QTest::newRow("backslash stays") << u"a\\b"_s << u"'a\\b'"_s;
    }
    void QuotedDoublesSingleQuotes()
    {
        QFETCH(QString, text);
        QTEST(Quoted(text), "expected");
    }

    void DateLiteral_data()
    {
        QTest::addColumn<QDateTime>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("midnight") << At(2024, 3, 5)
                                  << u"to_date('2024-03-05 00:00:00','yyyy-mm-dd HH24:MI:SS')"_s;
        QTest::newRow("afternoon") << At(1999, 12, 31, 15, 4, 9)
                                   << u"to_date('1999-12-31 15:04:09','yyyy-mm-dd HH24:MI:SS')"_s;
        QTest::newRow("milliseconds vanish")
            << QDateTime(QDate(2024, 3, 5), QTime(23, 59, 59, 999))
            << u"to_date('2024-03-05 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s;
    }
    void DateLiteral()
    {
        QFETCH(QDateTime, value);
        QTEST(ToDateSQL(value), "expected");
    }

    // --- Date ranges ---------------------------------------------------------------------------

    void DateRange_data()
    {
        QTest::addColumn<QDateTime>("from");
        QTest::addColumn<QDateTime>("to");
        QTest::addColumn<QString>("expected");
        const QString march = u"to_date('2024-03-05 00:00:00','yyyy-mm-dd HH24:MI:SS')"_s;
        const QString marchEnd = u"to_date('2024-03-05 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s;
        const QString mayEnd = u"to_date('2024-05-01 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s;
        const QString both = u"a.CREATE_DATE between "_s + march + u" and "_s + mayEnd;
        QTest::newRow("from only")
            << At(2024, 3, 5) << QDateTime() << u"a.CREATE_DATE >= "_s + march;
        QTest::newRow("from only keeps its time")
            << At(2024, 3, 5, 8, 30) << QDateTime()
            << u"a.CREATE_DATE >= to_date('2024-03-05 08:30:00','yyyy-mm-dd HH24:MI:SS')"_s;
        QTest::newRow("to only goes to the end of its day")
            << QDateTime() << At(2024, 3, 5, 8, 30) << u"a.CREATE_DATE <= "_s + marchEnd;
        QTest::newRow("both") << At(2024, 3, 5) << At(2024, 5, 1) << both;
        QTest::newRow("both lose their times")
            << At(2024, 3, 5, 13, 1, 2) << At(2024, 5, 1, 6, 7, 8) << both;
        QTest::newRow("from later than to is swapped") << At(2024, 5, 1) << At(2024, 3, 5) << both;
        QTest::newRow("one day") << At(2024, 3, 5) << At(2024, 3, 5)
                                 << u"a.CREATE_DATE between "_s + march + u" and "_s + marchEnd;
    }
    void DateRange()
    {
        QFETCH(QDateTime, from);
        QFETCH(QDateTime, to);
        QTEST(DateRangeCondition(u"a.CREATE_DATE"_s, from, to), "expected");
    }

    void TwoEmptyDatesGiveABetweenOverTheEmptyDateOnPurpose()
    {
        QCOMPARE(DateRangeCondition(u"D"_s, QDateTime(), QDateTime()),
                 u"D between to_date('0000-00-00 00:00:00','yyyy-mm-dd HH24:MI:SS') and "
                 "to_date('0000-00-00 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s);
    }

    void DateRangeReadsEditors()
    {
        DateEdit from;
        DateEdit to;
        from.SetValue(At(2024, 5, 1));
        QCOMPARE(DateRangeCondition(u"D"_s, from, to),
                 u"D >= to_date('2024-05-01 00:00:00','yyyy-mm-dd HH24:MI:SS')"_s);
        to.SetValue(At(2024, 3, 5));
        QCOMPARE(DateRangeCondition(u"D"_s, from, to),
                 u"D between to_date('2024-03-05 00:00:00','yyyy-mm-dd HH24:MI:SS') and "
                 "to_date('2024-05-01 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s);
    }

    void EmptyDateIsTheEditorsEmptyValue()
    {
        DateEdit edit;
        QVERIFY(IsDateEmpty(edit));
        QCOMPARE(edit.DayNumber(), -700000.0);
        edit.SetValue(At(2024, 3, 5));
        QVERIFY(!IsDateEmpty(edit));
        edit.Clear();
        QVERIFY(IsDateEmpty(edit));
    }

    // --- Search conditions ---------------------------------------------------------------------

    void LikeFilterExtendsTheResult_data()
    {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("expected");
        QTest::newRow("two columns, trimmed, upper case, quotes doubled")
            << u"A.ORG_CODE,A.ORG_NAME"_s << u" ab'c "_s << QString()
            << u"((UPPER(A.ORG_CODE) like '%AB''C%') or (UPPER(A.ORG_NAME) like '%AB''C%'))"_s;
        QTest::newRow("result holds X")
            << u"c"_s << u"v"_s << u"X"_s << u"(X or (UPPER(c) like '%V%'))"_s;
        QTest::newRow("empty list leaves the result") << QString() << u"v"_s << u"X"_s << u"X"_s;
        QTest::newRow("empty list leaves an empty result")
            << QString() << u"v"_s << QString() << QString();
        QTest::newRow("blanks separate too")
            << u" a, b c "_s << u"v"_s << QString()
            << u"((UPPER(a) like '%V%') or (UPPER(b) like '%V%') or (UPPER(c) like '%V%'))"_s;
        QTest::newRow("wildcards act as wildcards")
            << u"c"_s << u"a%b_"_s << QString() << u"((UPPER(c) like '%A%B_%'))"_s;
        QTest::newRow("Chinese") << u"c"_s << u"集团a"_s << QString()
                                 << u"((UPPER(c) like '%集团A%'))"_s;
        QTest::newRow("empty value")
            << u"c"_s << QString() << QString() << u"((UPPER(c) like '%%'))"_s;
    }
    void LikeFilterExtendsTheResult()
    {
        QFETCH(QString, fields);
        QFETCH(QString, value);
        QFETCH(QString, before);
        QString result = before;
        LikeFilter(fields, value, result);
        QTEST(result, "expected");
    }

    void AndLikeIsAConditionOnlyForATextThatSaysSomething()
    {
        QCOMPARE(AndLike(u"a,b"_s, u" x "_s),
                 u" AND ((UPPER(a) like '%X%') or (UPPER(b) like '%X%'))"_s);
        QCOMPARE(AndLike(u"a"_s, u"x"_s, u" and "), u" and ((UPPER(a) like '%X%'))"_s);
        QCOMPARE(AndLike(u"a,b"_s, u"  "_s), QString());
    }

    // --- Select all ----------------------------------------------------------------------------

    void SetAllFieldValueSetsEveryRowAndKeepsTheCurrentOne_data()
    {
        QTest::addColumn<bool>("flag");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all") << true << u"1"_s;
        QTest::newRow("none") << false << u"0"_s;
    }
    void SetAllFieldValueSetsEveryRowAndKeepsTheCurrentOne()
    {
        QFETCH(bool, flag);
        QFETCH(QString, expected);
        ClientDataSet table;
        table.Open(
            Rows({u"ID"_s, u"SELECTED"_s}, {{u"1"_s, u"0"_s}, {u"2"_s, u"1"_s}, {u"3"_s, u"0"_s}}));
        table.SetRecNo(1);
        SetAllFieldValue(table, flag, u"SELECTED"_s, u"1"_s, u"0"_s);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(table.TextAt(row, 1), expected);
        QCOMPARE(table.FieldText(u"ID"), u"2"_s);
        QVERIFY(!table.ControlsDisabled());
        QVERIFY(!table.IsEditing());
    }

    void SetAllFieldValueWithoutTheColumnChangesNothing()
    {
        ClientDataSet table;
        table.Open(Rows({u"ID"_s}, {{u"1"_s}}));
        const QSignalSpy changed(&table, &ClientDataSet::Changed);
        SetAllFieldValue(table, true, u"SELECTED"_s, u"1"_s, u"0"_s);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(table.FieldText(u"ID"), u"1"_s);
    }

    void SetAllFieldValueTakesEmptyAndClosedTables()
    {
        ClientDataSet table;
        SetAllFieldValue(table, true, u"SELECTED"_s, u"1"_s, u"0"_s);
        QVERIFY(!table.IsActive());
        table.Open(Rows({u"SELECTED"_s}, {}));
        SetAllFieldValue(table, true, u"SELECTED"_s, u"1"_s, u"0"_s);
        QCOMPARE(table.RecordCount(), 0);
    }

    // --- Product captions ----------------------------------------------------------------------

    void ProductCaptions_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("herbal");
        QTest::addColumn<QString>("other");
        QTest::newRow("name") << u"PRODUCT_NAME"_s << u"品 名"_s << u"通用名"_s;
        QTest::newRow("trade") << u"TRADE_NAME"_s << u"产 地"_s << u"商品名"_s;
        QTest::newRow("factory") << u"FACTORY_NAME"_s << u"厂家"_s << u"生产企业"_s;
        QTest::newRow("full spec") << u"FULL_SPEC"_s << u"规 格"_s << u"规格包装"_s;
        QTest::newRow("spec") << u"SPEC"_s << u"规 格"_s << u"规格"_s;
        QTest::newRow("cost") << u"COST_PRICE"_s << u"十克零售价"_s << u"成本价"_s;
        QTest::newRow("hit") << u"HIT_PRICE"_s << u"批发价"_s << u"成交价"_s;
    }
    void ProductCaptions()
    {
        QFETCH(QString, field);
        DataGrid grid;
        grid.SetColumns({field + u"|before|80||"_s});
        SetProductCaptions(u"02"_s, grid);
        QTEST(grid.ColumnCaption(field), "herbal");
        QVERIFY(grid.IsColumnVisible(field));
        SetProductCaptions(u"01"_s, grid);
        QTEST(grid.ColumnCaption(field), "other");
        QVERIFY(grid.IsColumnVisible(field));
    }

    void ProductColumnsHiddenForHerbalPieces_data()
    {
        QTest::addColumn<QString>("field");
        for (const char *field : {"DOSE_NAME", "WRAP_NAME", "PRODUCT_LEVEL"})
            QTest::newRow(field) << QString::fromLatin1(field);
    }
    void ProductColumnsHiddenForHerbalPieces()
    {
        QFETCH(QString, field);
        DataGrid grid;
        grid.SetColumns({field + u"|before|80||"_s});
        SetProductCaptions(u"02"_s, grid);
        QVERIFY(!grid.IsColumnVisible(field));
        SetProductCaptions(QString(), grid);
        QVERIFY(grid.IsColumnVisible(field));
        QCOMPARE(grid.ColumnCaption(field), u"before"_s);
    }

    void ProductCaptionsOfAGridWithoutSpecChangeOnlyTheColumnsItHas()
    {
        DataGrid grid;
        grid.SetColumns({u"PRODUCT_NAME|before|80||"_s, u"ORG_NAME|机构|80||"_s});
        SetProductCaptions(u"02"_s, grid);
        QCOMPARE(grid.ColumnCaption(u"PRODUCT_NAME"), u"品 名"_s);
        QCOMPARE(grid.ColumnCaption(u"ORG_NAME"), u"机构"_s);
        QCOMPARE(grid.ColumnIndex(u"SPEC"), -1);
        QCOMPARE(grid.Columns().size(), 2);
    }
};

QTEST_MAIN(QelUtilsTest)
#include "QelUtilsTest.moc"
