#include "dataset/RowSet.h"
#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "store/UnionScope.h"
#include "support/TestDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

const QStringList Scope{u"300001"_s, u"300002"_s};

/// Rows of every table that belongs to groups, for every group, with entries of the log about them.
void Enrich(TestDatabase &data)
{
    data.Connection().Execute(
        "INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID, ORG_TYPE_NAME)"
        " SELECT '4' || substr(UNION_ID, 2), UNION_ID, '类型' || UNION_ID FROM UNI_UNION;"
        "INSERT INTO UNI_ORG (UNION_ID, ORG_ID, ORG_TYPE_ID)"
        " SELECT U.UNION_ID, O.ORG_ID, '4' || substr(U.UNION_ID, 2) FROM UNI_UNION U, BAS_ORG O"
        "  WHERE O.ORG_ID > '200004' AND NOT (U.UNION_ID = '300002' AND O.ORG_ID = '200007');"
        "INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID)"
        " SELECT USER_ID, UNION_ID FROM USR_USER, UNI_UNION;"
        "INSERT INTO PRC_UNI_PRICE_ORG (UNION_ID, SALE_ORGID, BUY_ORGID)"
        " SELECT UNION_ID, '200001', ORG_ID FROM UNI_ORG;"
        "INSERT INTO SYS_AFFICHE (ID, UNION_ID, AFFICHE_TITLE)"
        " SELECT '9' || substr(UNION_ID, 2), UNION_ID, '公告' FROM UNI_UNION;"
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1)"
        " SELECT '71' || UNION_ID, 'UNI_UNION', UNION_ID FROM UNI_UNION;"
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1)"
        " SELECT '72' || ORG_TYPE_ID, 'UNI_ORG_TYPE', ORG_TYPE_ID FROM UNI_ORG_TYPE;"
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2)"
        " SELECT '73' || UNION_ID || USER_ID, 'UNI_USER_UNION', USER_ID, UNION_ID"
        "  FROM UNI_USER_UNION;"
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2)"
        " SELECT '74' || UNION_ID || ORG_ID, 'UNI_ORG', UNION_ID, ORG_ID FROM UNI_ORG;"
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2)"
        " VALUES ('7500', 'PRC_UNI_PRICE_ORG', '200001', '200007'),"
        "        ('7600', 'TRA_ORDER', '900001', NULL)");
}

/// Takes out by hand what the scope leaves out: the naive way to the same answers.
void Cut(TestDatabase &data)
{
    const QByteArray others = " WHERE UNION_ID IS NULL OR UNION_ID NOT IN ('300001','300002')";
    data.Connection().Execute(
        "DELETE FROM SYS_UPDATE_LOG WHERE TABLE_NAME IN ('PRC_UNI_PRICE_ORG', 'TRA_ORDER')"
        " OR (TABLE_NAME IN ('UNI_UNION','UNI_ORG') AND KEY_ID1 NOT IN ('300001','300002'))"
        " OR (TABLE_NAME = 'UNI_USER_UNION' AND KEY_ID2 NOT IN ('300001','300002'))"
        " OR (TABLE_NAME = 'UNI_ORG_TYPE' AND KEY_ID1 NOT IN ('400001','400002'))");
    for (const char *table : {"UNI_UNION", "UNI_ORG_TYPE", "UNI_ORG", "UNI_USER_UNION",
                              "PRC_UNI_PRICE_ORG", "SYS_AFFICHE"})
        data.Connection().Execute("DELETE FROM " + QByteArray(table) + others);
}

QStringList Rows(const RowSet &set)
{
    QStringList rows;
    for (int row = 0; row < set.RowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < set.FieldCount(); ++column)
            cells += set.IsNull(row, column) ? u"-"_s : set.Text(row, column);
        rows += cells.join(u'|');
    }
    return rows;
}

} // namespace

class RowScopeTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Enrich(whole_);
        Enrich(cut_);
        Cut(cut_);
    }

    void GivesWhatSmallerDatabaseWouldGive_data()
    {
        QTest::addColumn<QString>("sql");
        const auto row = [](const char *name, const QString &sql) { QTest::newRow(name) << sql; };
        row("a table", u"SELECT * FROM UNI_UNION ORDER BY UNION_ID"_s);
        row("an alias", u"SELECT X.UNION_NAME FROM UNI_UNION X WHERE X.UNION_ID <> '300001'"_s);
        row("lower case", u"select u.union_id from uni_union u"_s);
        row("a condition that names others",
            u"SELECT * FROM UNI_ORG WHERE UNION_ID = '300004' OR 1 = 1"_s);
        row("the same table twice",
            u"SELECT A.UNION_ID, B.UNION_ID FROM UNI_UNION A, UNI_UNION B"_s);
        row("a sub-select in FROM",
            u"SELECT * FROM (SELECT * FROM (SELECT UNION_ID FROM UNI_ORG))"_s);
        row("a sub-select in IN",
            u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN (SELECT MASTER_ORGID FROM UNI_UNION)"_s);
        row("NOT IN", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID NOT IN"
                      " (SELECT MASTER_ORGID FROM UNI_UNION WHERE MASTER_ORGID IS NOT NULL)"_s);
        row("EXISTS", u"SELECT O.ORG_ID FROM BAS_ORG O WHERE EXISTS"
                      " (SELECT 1 FROM UNI_UNION U WHERE U.MASTER_ORGID = O.ORG_ID)"_s);
        row("NOT EXISTS", u"SELECT O.ORG_ID FROM BAS_ORG O WHERE NOT EXISTS"
                          " (SELECT 1 FROM UNI_UNION U WHERE U.MASTER_ORGID = O.ORG_ID)"_s);
        row("a sub-select as a value",
            u"SELECT O.ORG_ID, (SELECT COUNT(*) FROM UNI_ORG M WHERE M.ORG_ID = O.ORG_ID) N"
            " FROM BAS_ORG O"_s);
        row("an outer join to it", u"SELECT O.ORG_ID, U.UNION_NAME FROM BAS_ORG O, UNI_UNION U"
                                   " WHERE O.ORG_ID = U.MASTER_ORGID(+) ORDER BY O.ORG_ID"_s);
        row("an outer join to several",
            u"SELECT O.ORG_ID, M.UNION_ID FROM BAS_ORG O, UNI_ORG M WHERE O.ORG_ID = M.ORG_ID(+)"_s);
        row("an outer join from it",
            u"SELECT M.UNION_ID, M.ORG_ID, U.UNION_NAME FROM UNI_ORG M, UNI_UNION U"
            " WHERE M.UNION_ID = U.UNION_ID(+)"_s);
        row("outer joins in a row",
            u"SELECT O.ORG_ID, U.UNION_ID, T.ORG_TYPE_NAME FROM BAS_ORG O, UNI_UNION U,"
            " UNI_ORG_TYPE T WHERE O.ORG_ID = U.MASTER_ORGID(+) AND U.UNION_ID = T.UNION_ID(+)"_s);
        row("an outer join with its own condition",
            u"SELECT O.ORG_ID, U.UNION_ID FROM BAS_ORG O, UNI_UNION U"
            " WHERE O.ORG_ID = U.MASTER_ORGID(+) AND U.UNION_ID(+) > '300003'"_s);
        row("rows without a partner",
            u"SELECT O.ORG_ID FROM BAS_ORG O, UNI_UNION U"
            " WHERE O.ORG_ID = U.MASTER_ORGID(+) AND U.UNION_ID IS NULL"_s);
        row("COUNT", u"SELECT COUNT(*) N, COUNT(DISTINCT ORG_ID) M FROM UNI_ORG"_s);
        row("COUNT of nothing", u"SELECT COUNT(*) N FROM UNI_ORG WHERE UNION_ID = '300004'"_s);
        row("MAX", u"SELECT MAX(UNION_ID) N, MIN(UNION_ID) M FROM UNI_UNION"_s);
        row("GROUP BY", u"SELECT UNION_ID, COUNT(*) N FROM UNI_ORG GROUP BY UNION_ID"_s);
        row("HAVING", u"SELECT ORG_ID FROM UNI_ORG GROUP BY ORG_ID HAVING COUNT(*) > 1"_s);
        row("DISTINCT", u"SELECT DISTINCT UNION_ID FROM UNI_USER_UNION"_s);
        row("ROWNUM", u"SELECT UNION_ID FROM UNI_UNION WHERE ROWNUM <= 3"_s);
        row("numbered rows",
            u"SELECT ROWNUM R, A.* FROM (SELECT UNION_ID FROM UNI_UNION ORDER BY UNION_NAME) A"_s);
        row("CASE over a sub-select",
            u"SELECT CASE WHEN EXISTS (SELECT 1 FROM UNI_UNION WHERE UNION_ID = '300004')"
            " THEN 'seen' ELSE 'not' END X FROM BAS_REGION"_s);
        row("sorted by what is not shown",
            u"SELECT ORG_ID FROM UNI_ORG ORDER BY UNION_ID DESC, ORG_ID"_s);
        row("prices", u"SELECT * FROM PRC_UNI_PRICE_ORG"_s);
        row("announcements", u"SELECT B.*, C.UNION_NAME FROM UNI_USER_UNION A, SYS_AFFICHE B,"
                             " UNI_UNION C WHERE A.UNION_ID = B.UNION_ID"
                             " AND B.UNION_ID = C.UNION_ID AND A.USER_ID = '600001'"_s);
        row("the log", u"SELECT * FROM SYS_UPDATE_LOG"_s);
        row("the log of one record",
            u"SELECT LOG_ID FROM SYS_UPDATE_LOG WHERE TABLE_NAME = 'UNI_UNION'"
            " AND KEY_ID1 = '300004'"_s);
        row("master data", u"SELECT A.*, B.* FROM USR_USER A, BAS_ORG B, BAS_REGION C"
                           " WHERE A.ORG_ID = B.ORG_ID"_s);
    }
    void GivesWhatSmallerDatabaseWouldGive()
    {
        QFETCH(QString, sql);
        Store::QueryRunner whole(*reader_, {});
        const auto cutReader = cut_.Database().OpenReader();
        Store::QueryRunner cut(*cutReader, {});
        const auto expected = cut.Run(sql, 0, 0);
        const auto given = whole.Run(sql, 0, 0, Scope);
        QCOMPARE(given.total, expected.total);
        QStringList expectedRows = Rows(RowSet::Load(expected.block));
        QStringList givenRows = Rows(RowSet::Load(given.block));
        expectedRows.sort();
        givenRows.sort();
        QCOMPARE(givenRows, expectedRows);
        QStringList paged;
        for (int page = 1; (page - 1) * 2 < expected.total; ++page) {
            const auto part = whole.Run(sql, page, 2, Scope);
            QCOMPARE(part.total, expected.total);
            paged += Rows(RowSet::Load(part.block));
        }
        paged.sort();
        QCOMPARE(paged, expectedRows);
    }

    void WithoutScopeSeesEverything()
    {
        Store::QueryRunner runner(*reader_, {});
        const QString sql = u"SELECT UNION_ID FROM UNI_UNION"_s;
        QCOMPARE(runner.Run(sql, 0, 0).total, 5);
        // Nor is a text that is kept compiled for one taken for the other.
        QCOMPARE(runner.Run(sql, 0, 0, Scope).total, 2);
        QCOMPARE(runner.Run(sql, 0, 0, QStringList{u"300004"_s}).total, 1);
        QCOMPARE(runner.Run(sql, 0, 0).total, 5);
    }

    void TablesOfNoGroupAreClosed_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("orders") << u"SELECT * FROM TRA_ORDER"_s;
        QTest::newRow("stock") << u"SELECT * FROM STK_ORG_SET"_s;
        QTest::newRow("rules of organisations") << u"SELECT * FROM UNI_ORG_RULE"_s;
        QTest::newRow("affiliation") << u"SELECT * FROM BAS_ORG_AFFILIATION"_s;
        QTest::newRow("drug stores") << u"SELECT * FROM TRA_BUY_CATALOG"_s;
        QTest::newRow("inside") << u"SELECT UNION_ID FROM UNI_UNION WHERE EXISTS"
                                   " (SELECT 1 FROM TRA_ORDER)"_s;
    }
    void TablesOfNoGroupAreClosed()
    {
        QFETCH(QString, sql);
        Store::QueryRunner runner(*reader_, {});
        try {
            runner.Run(sql, 0, 0, Scope);
            QFAIL("it was read");
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(error.Code(), std::string("sql.scope"));
        }
    }

    void EveryTableHasItsPlace()
    {
        // A new table is closed until somebody says what a group's operator may see of it.
        const Sql::RowScope scope = Store::UnionScope(Scope);
        QStringList open;
        for (const auto &[table, condition] : scope)
            open += QString::fromStdString(table) + (condition.empty() ? u" whole"_s : QString());
        QCOMPARE(open, (QStringList{
                           u"BAS_ORG whole"_s, u"BAS_PRODUCT whole"_s, u"BAS_REGION whole"_s,
                           u"CAT_ORG whole"_s, u"PRC_UNI_PRICE_ORG"_s, u"PRC_UNI_PRICE_PRODUCT"_s,
                           u"PRC_UNI_PRICE_TYPE"_s, u"SYS_AFFICHE"_s, u"SYS_UPDATE_LOG"_s,
                           u"UNI_ORG"_s, u"UNI_ORG_TYPE"_s, u"UNI_PRODUCT"_s, u"UNI_UNION"_s,
                           u"UNI_UNION_RULE"_s, u"UNI_USER_UNION"_s, u"USR_USER whole"_s}));
    }

private:
    TestDatabase whole_;
    std::unique_ptr<Store::Connection> reader_ = whole_.Database().OpenReader();
    TestDatabase cut_;
};

QTEST_GUILESS_MAIN(RowScopeTest)
#include "RowScopeTest.moc"
