#include "SampleDatabase.h"

#include "demo/OfficeTime.h"
#include "store/QueryRunner.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

/// A table whose changes are logged, with the key by which the log names its rows.
struct LoggedTable
{
    QByteArray name;
    QByteArray key1;
    QByteArray key2; ///< empty where the key is one column
};

const QList<LoggedTable> LoggedTables{
    {"UNI_UNION", "UNION_ID", {}},
    {"UNI_ORG_TYPE", "ORG_TYPE_ID", {}},
    {"UNI_ORG", "UNION_ID", "ORG_ID"},
    {"UNI_USER_UNION", "USER_ID", "UNION_ID"},
    {"UNI_PRODUCT", "UNION_ID", "PRODUCT_ID"},
    {"UNI_UNION_RULE", "UNION_ID", "RULE_CODE"},
    {"UNI_ORG_RULE", "ORG_ID", "RULE_CODE"},
    {"STK_ORG_SET", "OWNER_ORGID", "ORG_ID"},
    {"PRC_UNI_PRICE_TYPE", "PRICE_TYPE_ID", {}},
    {"PRC_UNI_PRICE_PRODUCT", "PRICE_ID", {}},
};

/// The condition that entry L is about row R of this table.
QByteArray IsAbout(const LoggedTable &table)
{
    return "L.TABLE_NAME = '" + table.name + "' AND L.KEY_ID1 = R." + table.key1 + " AND " +
           (table.key2.isEmpty() ? QByteArray("L.KEY_ID2 IS NULL") : "L.KEY_ID2 = R." + table.key2);
}

/// What the screens of the groups ask, with %1 for the group's key, and how many rows at least
/// every group must answer.
struct ScreenQuery
{
    const char *name;
    QString sql;
    int least;
};

const QString CatalogueSql =
    u" SELECT A.*,    '0' AS SELECTED,    B.PRODUCT_SERIAL,    B.PRODUCT_NAME,    B.DOSE_NAME,    "
    "B.FULL_SPEC,    B.WRAP_NAME,    B.TRADE_NAME,    B.FACTORY_NAME,    B.FACTORY_ABBR  FROM "
    "UNI_PRODUCT A,    BAS_PRODUCT B  WHERE A.Union_ID='%1'   AND A.PRODUCT_ID=B.PRODUCT_ID    AND "
    "nvl(A.LAST_OPERATE,'null') <> 'D' "_s;

const ScreenQuery ScreenQueries[]{
    {"members of the focused group",
     u" SELECT A.UNION_ID,C.ORG_TYPE_ID,C.ORG_TYPE_NAME,C.BUYER_FLAG, C.SALER_FLAG, C.SENDER_FLAG, "
     "C.ADMIN_FLAG, C.REMARK,  B.ORG_ID, B.ORG_CODE, B.ORG_NAME  FROM Uni_ORG A, BAS_ORG B, "
     "UNI_ORG_TYPE C  WHERE A.ORG_ID=B.ORG_ID   AND A.LAST_OPERATE <> 'D'   AND A.ORG_TYPE_ID = "
     "C.ORG_TYPE_ID    AND A.UNION_ID= '%1'"_s,
     32},
    {"member types to choose from",
     u" select * from uni_org_type where last_operate <> 'D' and union_ID = '%1'"_s, 6},
    {"candidates for members",
     u" SELECT '0' AS SELECTED,    '0' AS BUYER_FLAG,    '0' AS SALER_FLAG,    '0' AS SENDER_FLAG,  "
     "  '0' AS ADMIN_FLAG,    CAST('' AS CHAR(10)) AS ORG_TYPE_ID,    CAST(' ' AS VARCHAR2(100)) AS "
     "REMARK,    A.org_id, a.org_name   FROM BAS_ORG A,     (      SELECT ORG_ID FROM UNI_ORG      "
     "WHERE NVL(LAST_OPERATE, '0') <> 'D'        AND Union_ID='%1'    ) B  WHERE A.ENABLE_FLAG= '1' "
     "   AND B.ORG_ID IS NULL    AND A.ORG_ID=B.ORG_ID(+)  ORDER BY A.ORG_NAME "_s,
     1000},
    {"member types to edit",
     u"Select a.* from uni_Org_type a where a.LAST_OPERATE <>'D'  and a.Union_ID = '%1'"_s, 6},
    {"candidates for the auditor",
     u" SELECT    A.*   FROM UNI_UNION C,    UNI_ORG B,    BAS_ORG A  WHERE C.UNION_ID='%1'   AND "
     "C.UNION_ID=B.UNION_ID    AND B.ORG_ID=A.ORG_ID    AND B.LAST_OPERATE <> 'D' "_s,
     32},
    {"catalogue", CatalogueSql, 300},
    {"catalogue, not enabled", u"SELECT * FROM ("_s + CatalogueSql + u") WHERE ENABLE_FLAG='0'"_s,
     10},
    {"catalogue, enabled", u"SELECT * FROM ("_s + CatalogueSql + u") WHERE ENABLE_FLAG='1'"_s, 200},
    {"catalogue, disabled", u"SELECT * FROM ("_s + CatalogueSql + u") WHERE ENABLE_FLAG='2'"_s, 10},
    {"candidates for the catalogue",
     u" SELECT '0' AS SELECTED,A.* FROM BAS_PRODUCT A,    ( SELECT A.PRODUCT_ID        FROM "
     "UNI_PRODUCT A        WHERE A.UNION_ID='%1'         AND nvl(A.LAST_OPERATE,'null') <> 'D'      "
     "  ) B  WHERE NVL(A.LAST_OPERATE,'NULL')<>'D'    AND A.PRODUCT_ID=B.PRODUCT_ID(+)    AND "
     "A.ENABLE_FLAG='1'    AND B.PRODUCT_ID IS  NULL "_s,
     1000},
};

} // namespace

class GroupDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void EveryGroupAnswersItsScreens_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<int>("least");
        for (const ScreenQuery &query : ScreenQueries)
            QTest::newRow(query.name) << query.sql << query.least;
    }
    void EveryGroupAnswersItsScreens()
    {
        QFETCH(QString, sql);
        QFETCH(int, least);
        const auto reader = data_->database->OpenReader();
        Store::QueryRunner runner(*reader, {});
        for (const QString &group : LiveGroups()) {
            const auto page = runner.Run(sql.arg(group), 1, 200);
            QVERIFY2(page.total >= least, qPrintable(u"%1: %2"_s.arg(group).arg(page.total)));
        }
    }

    void EveryCatalogueRowHasALog()
    {
        const auto reader = data_->database->OpenReader();
        Store::QueryRunner runner(*reader, {});
        for (const QString &group : LiveGroups()) {
            const QString product =
                data_->Text("SELECT MAX(PRODUCT_ID) FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D'"
                            " AND UNION_ID = '" +
                            group.toUtf8() + '\'');
            const QString log = u" SELECT * FROM SYS_UPDATE_LOG WHERE TABLE_NAME='UNI_PRODUCT'"
                                " AND KEY_ID1='%1' AND KEY_ID2='%2'"_s.arg(group, product);
            QVERIFY2(runner.Run(log, 0, 0).count >= 1, qPrintable(group));
        }
    }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        const auto row = [](const char *name, const QByteArray &rows, int count) {
            QTest::newRow(name) << rows << count;
        };
        const QByteArray live = " WHERE LAST_OPERATE <> 'D'";
        const QByteArray on = "UNI_UNION_RULE" + live + " AND RULE_CODE = 'UNI_JTCGDSH' AND ";
        row("groups with a catalogue", "(SELECT DISTINCT UNION_ID FROM UNI_PRODUCT" + live + ")",
            60);
        row("groups with rules", "(SELECT DISTINCT UNION_ID FROM UNI_UNION_RULE" + live + ")", 20);
        row("groups whose orders are audited", on + "RULE_VALUE = '1'", 15);
        row("groups whose audit is switched off", on + "RULE_VALUE = '0'", 5);
        row("auditors", "UNI_UNION_RULE" + live + " AND RULE_CODE = 'UNI_JTCGDSH_ORGID'", 20);
        row("kinds of change of a catalogue row",
            "(SELECT DISTINCT OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME = 'UNI_PRODUCT')",
            6);
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &rows) {
            QTest::newRow(name) << rows;
        };
        row("group with fewer than four combinations of roles",
            "(SELECT UNION_ID FROM UNI_ORG_TYPE WHERE LAST_OPERATE <> 'D' GROUP BY UNION_ID HAVING "
            "COUNT(DISTINCT BUYER_FLAG || SALER_FLAG || SENDER_FLAG || ADMIN_FLAG) < 4)");
        row("group in which a role is missing",
            "(SELECT UNION_ID FROM UNI_ORG_TYPE WHERE LAST_OPERATE <> 'D' GROUP BY UNION_ID HAVING "
            "MIN(MAX(BUYER_FLAG), MAX(SALER_FLAG), MAX(SENDER_FLAG), MAX(ADMIN_FLAG)) = '0')");
        row("catalogue of another size",
            "(SELECT UNION_ID FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D' GROUP BY UNION_ID "
            "HAVING COUNT(*) NOT BETWEEN 300 AND 3000)");
        row("catalogue row of an unknown status",
            "UNI_PRODUCT WHERE ENABLE_FLAG NOT IN ('0', '1', '2')");
        row("catalogue row of a deleted group or product",
            "UNI_PRODUCT A WHERE NOT EXISTS (SELECT 1 FROM UNI_UNION B, BAS_PRODUCT C WHERE "
            "B.UNION_ID = A.UNION_ID AND C.PRODUCT_ID = A.PRODUCT_ID AND B.LAST_OPERATE <> 'D' "
            "AND C.LAST_OPERATE <> 'D')");
        row("product of a sub-group that its parent has not",
            "UNI_PRODUCT A, UNI_UNION B WHERE A.UNION_ID = B.UNION_ID AND B.PARENT_ID IS NOT NULL "
            "AND A.LAST_OPERATE <> 'D' AND NOT EXISTS (SELECT 1 FROM UNI_PRODUCT C WHERE "
            "C.UNION_ID = B.PARENT_ID AND C.PRODUCT_ID = A.PRODUCT_ID "
            "AND C.LAST_OPERATE <> 'D')");
        row("auditor who is no member",
            "UNI_UNION_RULE A WHERE RULE_CODE = 'UNI_JTCGDSH_ORGID' AND NOT EXISTS (SELECT 1 "
            "FROM UNI_ORG B WHERE B.UNION_ID = A.UNION_ID AND B.ORG_ID = A.RULE_VALUE "
            "AND B.LAST_OPERATE <> 'D')");
        row("rule of another form",
            "UNI_UNION_RULE WHERE NOT (RULE_CODE = 'UNI_JTCGDSH' AND VALUE_TYPE = 'B' AND "
            "RULE_NAME = '集团审核启用标志' AND RULE_VALUE IN ('0', '1') OR "
            "RULE_CODE = 'UNI_JTCGDSH_ORGID' AND VALUE_TYPE = 'S' AND "
            "RULE_NAME = '集团审核机构ID') OR ENABLE_FLAG <> '1' OR LAST_OPERATE <> '1'");
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            const auto name = QByteArray::fromStdString(table.name);
            for (const Sql::Column &column : table.columns) {
                if (column.name == "LAST_OPERATE" || column.name == "ENABLE_FLAG") {
                    const auto flag = QByteArray::fromStdString(column.name);
                    row((name + '.' + flag + " without a value").constData(),
                        name + " WHERE " + flag + " IS NULL");
                }
            }
        }

        for (const LoggedTable &table : LoggedTables) {
            const QByteArray about = IsAbout(table);
            const QByteArray last =
                "(SELECT MAX(LOG_ID) FROM SYS_UPDATE_LOG L WHERE " + about + ')';
            row((table.name + " whose first entry is no insertion").constData(),
                table.name + " R WHERE COALESCE((SELECT OPTION_TYPE FROM SYS_UPDATE_LOG L WHERE " +
                    about + " ORDER BY LOG_ID LIMIT 1), '') <> '1'");
            row((table.name + " that is not stamped with its last entry").constData(),
                table.name + " R, SYS_UPDATE_LOG E WHERE E.LOG_ID = " + last +
                    " AND (R.LAST_UPDATE <> E.OPTION_DATE OR R.LAST_USER_ID <> E.USER_ID "
                    "OR R.LAST_USER <> E.USER_NAME)");
            row((table.name + " whose last entry says otherwise whether it is deleted").constData(),
                table.name + " R, SYS_UPDATE_LOG E WHERE E.LOG_ID = " + last +
                    " AND (R.LAST_OPERATE = 'D') <> (E.OPTION_TYPE = '5')");
            row((table.name + " that is logged and not there").constData(),
                "SYS_UPDATE_LOG L WHERE L.TABLE_NAME = '" + table.name +
                    "' AND NOT EXISTS (SELECT 1 FROM " + table.name + " R WHERE " + about + ')');
        }
        const QByteArray lastStatus = // of the entries that set it
            "(SELECT OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME = 'UNI_PRODUCT' AND "
            "KEY_ID1 = A.UNION_ID AND KEY_ID2 = A.PRODUCT_ID AND OPTION_TYPE IN ('1', '2', '3', '4') "
            "ORDER BY LOG_ID DESC LIMIT 1)";
        row("disabled without an entry that says so",
            "UNI_PRODUCT A WHERE (ENABLE_FLAG = '2') <> (" + lastStatus + " = '4')");
        row("approved and not enabled",
            "UNI_PRODUCT A WHERE ENABLE_FLAG <> '1' AND " + lastStatus + " = '3'");
        row("log entry by nobody",
            "SYS_UPDATE_LOG A WHERE NOT EXISTS (SELECT 1 FROM USR_USER B WHERE "
            "B.USER_ID = A.USER_ID AND B.USER_NAME = A.USER_NAME AND B.LAST_OPERATE <> 'D')");
        row("log entries out of the order of time",
            "(SELECT OPTION_DATE < LAG(OPTION_DATE) OVER (ORDER BY LOG_ID) AS BEFORE "
            "FROM SYS_UPDATE_LOG) WHERE BEFORE");
        row("entry before the group was founded",
            "SYS_UPDATE_LOG L, SYS_UPDATE_LOG G WHERE L.TABLE_NAME IN ('UNI_ORG', 'UNI_PRODUCT', "
            "'UNI_UNION_RULE') AND G.TABLE_NAME = 'UNI_UNION' AND G.KEY_ID1 = L.KEY_ID1 AND "
            "G.OPTION_TYPE = '1' AND L.OPTION_DATE <= G.OPTION_DATE");
        row("entry on a Sunday or a Saturday",
            "SYS_UPDATE_LOG WHERE strftime('%w', OPTION_DATE) IN ('0', '6')");
        row("entry outside office hours",
            "SYS_UPDATE_LOG WHERE TIME(OPTION_DATE) NOT BETWEEN '08:30:00' AND '11:59:59' "
            "AND TIME(OPTION_DATE) NOT BETWEEN '13:30:00' AND '17:59:59'");
        row("entry of a group in the future",
            "SYS_UPDATE_LOG WHERE OPTION_DATE >= '2025-07-01' AND TABLE_NAME NOT LIKE 'TRA%' "
            "AND TABLE_NAME <> 'SYS_AFFICHE'");
        row("entry in the future",
            "SYS_UPDATE_LOG WHERE OPTION_DATE >= '" + Today.toString(Qt::ISODate).toUtf8() + '\'');
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    void OfficeTimeSkipsLunchNightsAndWeekends()
    {
        constexpr Demo::OfficeTime hour = 60 * 60;
        QCOMPARE(Demo::OfficeTimeText(0), u"2024-03-01 08:30:00"_s); // a Friday
        QCOMPARE(Demo::OfficeTimeText(3 * hour + hour / 2 - 1), u"2024-03-01 11:59:59"_s);
        QCOMPARE(Demo::OfficeTimeText(3 * hour + hour / 2), u"2024-03-01 13:30:00"_s);
        QCOMPARE(Demo::OfficeTimeText(Demo::OfficeDay - 1), u"2024-03-01 17:59:59"_s);
        QCOMPARE(Demo::OfficeTimeText(Demo::OfficeDay), u"2024-03-04 08:30:00"_s);
        QCOMPARE(Demo::OfficeTimeText(5 * Demo::OfficeDay), u"2024-03-08 08:30:00"_s);
    }

    void LastMorningIsOfTheWorkingDayBefore_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QString>("morning");
        const auto row = [](const char *name, QDate today, const QString &morning) {
            QTest::newRow(name) << today << morning;
        };
        row("Tuesday", {2026, 11, 17}, u"2026-11-16 08:30:00"_s);
        row("Saturday", {2026, 11, 21}, u"2026-11-20 08:30:00"_s);
        row("Sunday", {2026, 11, 22}, u"2026-11-20 08:30:00"_s);
        row("Monday", {2026, 11, 23}, u"2026-11-20 08:30:00"_s);
        row("the first morning", {2024, 3, 1}, u"2024-03-01 08:30:00"_s);
        row("long before it", {2020, 1, 1}, u"2024-03-01 08:30:00"_s);
    }
    void LastMorningIsOfTheWorkingDayBefore()
    {
        QFETCH(QDate, today);
        QTEST(Demo::OfficeTimeText(Demo::LastMorningBefore(today)), "morning");
    }

private:
    QStringList LiveGroups()
    {
        QStringList groups;
        const auto rows = data_->connection->Prepare(
            "SELECT UNION_ID FROM UNI_UNION WHERE LAST_OPERATE <> 'D' ORDER BY UNION_ID");
        while (rows->Step())
            groups += rows->ColumnText(0);
        return groups;
    }

    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(GroupDataTest)
#include "GroupDataTest.moc"
