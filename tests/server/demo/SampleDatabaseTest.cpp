#include "SampleDatabase.h"

#include "store/Credentials.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

class SampleDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        const auto row = [](const char *name, const QByteArray &rows, int count) {
            QTest::newRow(name) << rows << count;
        };
        const QByteArray live = " WHERE LAST_OPERATE <> 'D'";
        row("divisions of China", "BAS_REGION WHERE CHINA_FLAG = '1'", 3351);
        row("provinces", "BAS_REGION WHERE CHINA_FLAG = '1' AND PARENT_ID = '-1'", 31);
        row("organisations", "BAS_ORG" + live, 1200);
        row("groups", "UNI_UNION" + live, 60);
        row("groups of 4 digits", "UNI_UNION" + live + " AND LENGTH(UNION_CODE) = 4", 8);
        row("groups of 6 digits", "UNI_UNION" + live + " AND LENGTH(UNION_CODE) = 6", 22);
        row("groups of 8 digits", "UNI_UNION" + live + " AND LENGTH(UNION_CODE) = 8", 20);
        row("groups of 10 digits", "UNI_UNION" + live + " AND LENGTH(UNION_CODE) = 10", 10);
        row("memberships", "UNI_ORG" + live, 4000);
        row("products", "BAS_PRODUCT" + live, 5000);
        row("users", "USR_USER" + live, 3198);
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    void HasSomeOfEach_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("least");
        const auto row = [](const QByteArray &rows, int least) {
            QTest::newRow(rows.constData()) << rows << least;
        };
        for (char type = '1'; type <= '6'; ++type)
            row("BAS_ORG WHERE LAST_OPERATE <> 'D' AND ORG_TYPE = '" + QByteArray(1, type) + "'",
                30);
        for (const char *type : {"1", "2", "3"})
            row(QByteArray("UNI_UNION WHERE UNION_TYPE = '") + type + "'", 8);
        row("BAS_REGION WHERE CHINA_FLAG = '0'", 5);
        row("BAS_ORG WHERE ENABLE_FLAG = '0'", 1);
        row("BAS_ORG WHERE LAST_OPERATE = 'D'", 1);
        row("BAS_PRODUCT WHERE ENABLE_FLAG = '0'", 1);
        row("BAS_PRODUCT WHERE LAST_OPERATE = 'D'", 1);
        row("BAS_PRODUCT WHERE PRODUCT_CLASS = '02'", 300);
        row("BAS_PRODUCT WHERE TRADE_NAME IS NULL", 300);
        row("USR_USER WHERE ENABLE_FLAG = '0'", 1);
        row("USR_USER WHERE LAST_OPERATE = 'D'", 1);
        row("UNI_UNION WHERE LAST_OPERATE = 'D' AND ENABLE_FLAG = 'D'", 1);
        row("UNI_ORG_TYPE WHERE LAST_OPERATE = 'D'", 1);
        row("UNI_ORG WHERE LAST_OPERATE = 'D'", 1);
        row("UNI_USER_UNION WHERE LAST_OPERATE = 'D'", 1);
        for (const char *flag : {"BUYER_FLAG", "SALER_FLAG", "SENDER_FLAG", "ADMIN_FLAG"})
            row(QByteArray("UNI_ORG A, UNI_ORG_TYPE B WHERE A.ORG_TYPE_ID = B.ORG_TYPE_ID AND B.") +
                    flag + " = '1'",
                50);
    }
    void HasSomeOfEach()
    {
        QFETCH(QByteArray, rows);
        QFETCH(int, least);
        const int count = data_->Number("SELECT COUNT(*) FROM " + rows);
        QVERIFY2(count >= least, QByteArray::number(count).constData());
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &rows) {
            QTest::newRow(name) << rows;
        };
        const auto reference = [&](const QByteArray &table, const QByteArray &column,
                                   const QByteArray &target, const QByteArray &key) {
            row((table + '.' + column + " that leads nowhere").constData(),
                table + " WHERE " + column + " IS NOT NULL AND " + column + " NOT IN (SELECT " +
                    key + " FROM " + target + ')');
        };
        row("region below nothing", "BAS_REGION WHERE PARENT_ID <> '-1' AND PARENT_ID NOT IN "
                                    "(SELECT REGION_ID FROM BAS_REGION)");
        reference("BAS_ORG", "REGION_ID", "BAS_REGION", "REGION_ID");
        reference("CAT_ORG", "ORG_ID", "BAS_ORG", "ORG_ID");
        reference("BAS_PRODUCT", "FACTORY_ID", "BAS_ORG", "ORG_ID");
        reference("USR_USER", "ORG_ID", "BAS_ORG", "ORG_ID");
        reference("UNI_UNION", "PARENT_ID", "UNI_UNION", "UNION_ID");
        reference("UNI_UNION", "REGION_ID", "BAS_REGION", "REGION_ID");
        reference("UNI_UNION", "MASTER_ORGID", "BAS_ORG", "ORG_ID");
        reference("UNI_ORG_TYPE", "UNION_ID", "UNI_UNION", "UNION_ID");
        reference("UNI_ORG", "UNION_ID", "UNI_UNION", "UNION_ID");
        reference("UNI_ORG", "ORG_ID", "BAS_ORG", "ORG_ID");
        reference("UNI_USER_UNION", "USER_ID", "USR_USER", "USER_ID");
        reference("UNI_USER_UNION", "UNION_ID", "UNI_UNION", "UNION_ID");
        for (const char *table : {"BAS_REGION", "BAS_ORG", "UNI_UNION", "UNI_ORG"})
            reference(table, "LAST_USER_ID", "USR_USER", "USER_ID");

        row("group code of other than digits", "UNI_UNION WHERE UNION_CODE GLOB '*[^0-9]*'");
        row("group code that does not begin with its parent's",
            "UNI_UNION A, UNI_UNION B WHERE A.PARENT_ID = B.UNION_ID AND "
            "SUBSTR(A.UNION_CODE, 1, LENGTH(A.UNION_CODE) - 2) <> B.UNION_CODE");
        row("group at the top with a long code",
            "UNI_UNION WHERE PARENT_ID IS NULL AND LENGTH(UNION_CODE) <> 4");
        row("group below with a top code",
            "UNI_UNION WHERE PARENT_ID IS NOT NULL AND LENGTH(UNION_CODE) < 6");
        row("live code twice", "(SELECT UNION_CODE FROM UNI_UNION WHERE LAST_OPERATE <> 'D' "
                               "GROUP BY UNION_CODE HAVING COUNT(*) > 1)");
        row("live group below a deleted one",
            "UNI_UNION A, UNI_UNION B WHERE A.PARENT_ID = B.UNION_ID AND A.LAST_OPERATE <> 'D' "
            "AND B.LAST_OPERATE = 'D'");
        row("organisation that leads two groups",
            "(SELECT MASTER_ORGID FROM UNI_UNION WHERE LAST_OPERATE <> 'D' GROUP BY MASTER_ORGID "
            "HAVING COUNT(*) > 1)");
        row("group without a leader", "UNI_UNION WHERE MASTER_ORGID IS NULL");
        row("leader who is no member",
            "UNI_UNION A WHERE A.LAST_OPERATE <> 'D' AND NOT EXISTS (SELECT 1 FROM UNI_ORG B "
            "WHERE B.UNION_ID = A.UNION_ID AND B.ORG_ID = A.MASTER_ORGID "
            "AND B.LAST_OPERATE <> 'D')");
        row("flags of a deleted group that differ",
            "UNI_UNION WHERE (LAST_OPERATE = 'D') <> (ENABLE_FLAG = 'D')");
        row("member whose type is not its group's",
            "UNI_ORG A WHERE NOT EXISTS (SELECT 1 FROM UNI_ORG_TYPE B "
            "WHERE B.ORG_TYPE_ID = A.ORG_TYPE_ID AND B.UNION_ID = A.UNION_ID "
            "AND B.LAST_OPERATE <> 'D')");
        row("member of a deleted group",
            "UNI_ORG A, UNI_UNION B WHERE A.UNION_ID = B.UNION_ID AND B.LAST_OPERATE = 'D' "
            "AND A.LAST_OPERATE <> 'D'");
        row("maker that is no manufacturer",
            "BAS_PRODUCT A, BAS_ORG B WHERE A.FACTORY_ID = B.ORG_ID AND "
            "(B.ORG_TYPE <> '1' OR A.FACTORY_NAME <> B.ORG_NAME)");
        row("price that is none", "BAS_PRODUCT WHERE RETAIL_PRICE IS NULL OR RETAIL_PRICE <= 0");

        for (const auto &[table, name] : std::initializer_list<std::pair<QByteArray, QByteArray>>{
                 {"BAS_ORG", "ORG_NAME"},
                 {"BAS_PRODUCT", "PRODUCT_NAME"},
                 {"BAS_PRODUCT", "TRADE_NAME"}}) {
            for (const char *initials : {"_PY", "_WB"})
                row((table + '.' + name + initials + " of another length").constData(),
                    table + " WHERE LENGTH(" + name + ") <> LENGTH(" + name + initials + ')');
        }
        row("organisation without initials", "BAS_ORG WHERE ORG_NAME_PY IS NULL");
        row("initials of other than capitals",
            "BAS_ORG WHERE ORG_NAME_PY GLOB '*[^A-Z]*' OR ORG_NAME_WB GLOB '*[^A-Z]*'");
        row("organisation called with digits or letters",
            "BAS_ORG WHERE ORG_NAME GLOB '*[0-9a-zA-Z]*'");
        row("user called with digits or letters", "USR_USER WHERE USER_NAME GLOB '*[0-9a-zA-Z]*'");
        row("name of a trial", "BAS_ORG WHERE ORG_NAME LIKE '%测试%'");
        row("organisation's name twice",
            "(SELECT ORG_NAME FROM BAS_ORG GROUP BY ORG_NAME HAVING COUNT(*) > 1)");
        row("group's name of over 24 characters", "UNI_UNION WHERE LENGTH(UNION_NAME) > 24");
        row("same pack of one maker twice",
            "(SELECT 1 FROM BAS_PRODUCT GROUP BY PRODUCT_NAME, TRADE_NAME, DOSE_NAME, FULL_SPEC, "
            "FACTORY_ID HAVING COUNT(*) > 1)");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    /// No text may be longer than the schema says its column holds.
    void EveryTextFitsItsColumn()
    {
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            for (const Sql::Column &column : table.columns) {
                if (column.size == 0)
                    continue;
                const auto name = QByteArray::fromStdString(column.name);
                const int longest = data_->Number("SELECT MAX(LENGTH(" + name + ")) FROM " +
                                                  QByteArray::fromStdString(table.name));
                QVERIFY2(longest <= column.size, (table.name + "." + column.name).c_str());
            }
        }
    }

    void EveryRegionIsNamedFromTheTopDown()
    {
        const QByteArray name = "SELECT FULL_NAME FROM BAS_REGION WHERE REGION_CODE = ";
        QCOMPARE(data_->Text(name + "'330106'"), u"浙江省杭州市西湖区"_s);
        QCOMPARE(data_->Text(name + "'110105'"), u"北京市朝阳区"_s); // 市辖区 is left out
        QCOMPARE(data_->Text(name + "'1101'"), u"北京市"_s);
    }

    void OperatorSignsInAndSeesEveryGroup()
    {
        const QByteArray token = "a token of some length";
        Store::SetToken(*data_->connection, u"admin"_s, token);
        const auto found = Store::FindOperator(*data_->connection, u"admin"_s, token);
        data_->connection->Execute("DELETE FROM SRV_TOKEN");
        QVERIFY(found);
        QCOMPARE(found->userName, u"系统管理员"_s);
        QCOMPARE(data_->Text("SELECT ORG_TYPE FROM BAS_ORG WHERE ORG_NAME = '" +
                             found->orgName.toUtf8() + '\''),
                 u"6"_s);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM UNI_USER_UNION A, UNI_UNION B WHERE "
                               "A.UNION_ID = B.UNION_ID AND A.LAST_OPERATE <> 'D' AND "
                               "B.LAST_OPERATE <> 'D' AND A.USER_ID = '" +
                               found->userId.toUtf8() + '\''),
                 60);
    }

    void NextKeysAreFree_data()
    {
        QTest::addColumn<QByteArray>("key");
        for (const char *key : {"REGION_ID", "ORG_ID", "UNION_ID", "ORG_TYPE_ID", "PRODUCT_ID",
                                "USER_ID", "LOG_ID", "PRICE_TYPE_ID", "PRICE_ID", "ORD_ID",
                                "ORD_ITEM_ID", "SEND_ID", "RETURN_ID", "ID", "CATALOG_ID"})
            QTest::newRow(key) << QByteArray(key);
    }
    void NextKeysAreFree()
    {
        static const QHash<QByteArray, QByteArray> tables{{"REGION_ID", "BAS_REGION"},
                                                          {"ORG_ID", "BAS_ORG"},
                                                          {"UNION_ID", "UNI_UNION"},
                                                          {"ORG_TYPE_ID", "UNI_ORG_TYPE"},
                                                          {"PRODUCT_ID", "BAS_PRODUCT"},
                                                          {"USER_ID", "USR_USER"},
                                                          {"LOG_ID", "SYS_UPDATE_LOG"},
                                                          {"PRICE_TYPE_ID", "PRC_UNI_PRICE_TYPE"},
                                                          {"PRICE_ID", "PRC_UNI_PRICE_PRODUCT"},
                                                          {"ORD_ID", "TRA_ORDER"},
                                                          {"ORD_ITEM_ID", "TRA_ORDER_ITEM"},
                                                          {"SEND_ID", "TRA_SEND"},
                                                          {"RETURN_ID", "TRA_RETURN"},
                                                          {"ID", "SYS_AFFICHE"},
                                                          {"CATALOG_ID", "TRA_BUY_CATALOG"}};
        QFETCH(QByteArray, key);
        const QByteArray table = tables.value(key);
        QCOMPARE(data_->Number("SELECT NEXT FROM SRV_SEQUENCE WHERE NAME = '" + table + '\''),
                 data_->Number("SELECT MAX(" + key + ") FROM " + table) + 1);
    }

    void IsTheSameEveryTime()
    {
        SampleDatabase other(SampleDatabase::Source::Filled);
        QCOMPARE(other.ContentHash(), data_->ContentHash());
    }

private:
    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(SampleDatabaseTest)
#include "SampleDatabaseTest.moc"
