#include "CheckSupport.h"
#include "admin/SiteExport.h"
#include "admin/SiteImport.h"
#include "managers/PostRunner.h"
#include "store/Schema.h"
#include "support/AdminRun.h"
#include "support/TestDatabase.h"

#include <QCryptographicHash>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

QByteArray Bytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The files of a folder with their contents.
QMap<QString, QByteArray> Contents(const QString &folder)
{
    QMap<QString, QByteArray> contents;
    for (const QString &name : QDir(folder).entryList(QDir::Files))
        contents[name] = Bytes(folder + u'/' + name);
    return contents;
}

/// A site with everything that a text or a number can hold, always on SQLite, and its files.
struct Source
{
    Source()
    {
        Store::CreateSchema(*connection);
        connection->Execute(
            "INSERT INTO BAS_REGION (REGION_ID, PARENT_ID, REGION_NAME) VALUES"
            " ('100001','-1','浙江省');"
            "INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR, ORG_ADDRESS, LAST_UPDATE)"
            " VALUES ('200001','H1','省药品采购服务中心','a,b','say \"so\"','2026-03-05 13:07:00'),"
            " ('200002','H2','two' || char(10) || 'lines', 'x' || char(13) || char(10) || 'y',"
            "  ' blanks ', NULL), ('200010','H3','\xf0\xa0\xae\xb7 outside', '\"', ',', NULL);"
            "INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID) VALUES"
            " ('600001','admin','系统管理员','200001');"
            "INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL, RETAIL_PRICE) VALUES"
            " ('500001','P1',12.5), ('500002','P2',0), ('500003','P3',99999999.99),"
            " ('500004','P4',0.000001), ('500005','P5',-3), ('500006','P6',NULL);"
            "INSERT INTO UNI_UNION (UNION_ID, UNION_CODE, UNION_NAME, MASTER_ORGID) VALUES"
            " ('300001','0001','浙江采购联合体','200001'), ('300002','0002','江苏采购联合体',NULL);"
            "INSERT INTO TRA_ORDER (ORD_ID, ITEM_COUNT, ITEM_MONEY) VALUES ('900001', 3, 0.000123456789012345);"
            "INSERT INTO SYS_AFFICHE (ID, UNION_ID) VALUES ('910001','300001');"
            "INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES ('SYS_AFFICHE', 910007),"
            " ('UNI_UNION', 300003);");
        Store::SetToken(*connection, u"admin"_s, TestDatabase::AdminToken);
    }

    QString Export(bool withServerTables = false)
    {
        Admin::ExportSite(*connection, Path(), withServerTables);
        return Path();
    }
    QString Path() const { return folder.filePath(u"site"_s); }
    void Replace(const QString &table, const QByteArray &from, const QByteArray &to) const
    {
        const QString path = Path() + u'/' + table + u".csv"_s;
        QByteArray bytes = Bytes(path);
        QVERIFY2(bytes.contains(from), from.constData());
        bytes.replace(bytes.indexOf(from), from.size(), to);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    QTemporaryDir folder;
    std::unique_ptr<Store::Database> database =
        Store::Database::Open(u"sqlite:"_s + folder.filePath(u"source.sqlite"_s));
    std::unique_ptr<Store::Connection> connection = database->OpenWriter();
};

QStringList Texts(const Admin::ImportResult &result)
{
    QStringList texts;
    for (const Admin::ImportFinding &finding : result.findings)
        texts += finding.Text();
    return texts;
}

} // namespace

class SiteTest : public QObject
{
    Q_OBJECT

private slots:
    void ComesBackByteForByte()
    {
        Source source;
        const QString first = source.Export();
        TestDatabase target(TestDatabase::Content::Tables); // on PostgreSQL in that run
        const auto result = Admin::ImportSite(target.Connection(), first, {});
        QCOMPARE(Texts(result), QStringList());
        QCOMPARE(result.rows, 15);
        const QString second = source.folder.filePath(u"second"_s);
        Admin::ExportSite(target.Connection(), second, false);
        QCOMPARE(Contents(second), Contents(first));
        QCOMPARE(Problems(target.Database()), QStringList());
    }

    void FormOfTheFiles()
    {
        Source source;
        const QString folder = source.Export();
        QCOMPARE(Bytes(folder + u"/BAS_PRODUCT.csv"_s).split('\n').value(3).left(15),
                 QByteArray("500003,P3,,,,,,"));
        const QByteArray organisations = Bytes(folder + u"/BAS_ORG.csv"_s);
        QVERIFY(organisations.startsWith("ORG_ID,ORG_CODE,ORG_NAME,ORG_ABBR,"));
        // Quoted where it must be, and NULL is nothing between commas.
        QVERIFY(organisations.contains("\r\n200001,H1,省药品采购服务中心,\"a,b\",,,,,"
                                       "\"say \"\"so\"\"\",,1,1,,,2026-03-05 13:07:00\r\n"));
        QVERIFY(organisations.contains("\r\n200002,H2,\"two\nlines\",\"x\r\ny\",,,,, blanks ,,"));
        const QByteArray manifest = Bytes(folder + u"/manifest.json"_s);
        const QByteArray hash =
            QCryptographicHash::hash(organisations, QCryptographicHash::Sha256).toHex();
        QVERIFY(manifest.contains("\"schema\": 4") && manifest.contains(hash));
        QVERIFY(!QFileInfo(folder).permission(QFile::ReadOther));
        // The server's own tables stay at home.
        QVERIFY(!QDir(folder).entryList().join(u' ').contains(u"SRV_"_s));
        QVERIFY(!manifest.contains("SRV_"));
    }

    void TokensComeAlongIfAskedFor()
    {
        Source source;
        const QString folder = source.Export(true);
        QVERIFY(QFileInfo::exists(folder + u"/SRV_TOKEN.csv"_s));
        TestDatabase target(TestDatabase::Content::Tables);
        QCOMPARE(Texts(Admin::ImportSite(target.Connection(), folder, {})), QStringList());
        QVERIFY(Store::FindOperator(target.Connection(), u"admin"_s, TestDatabase::AdminToken));
    }

    void NewKeysGoOnBehindThoseOfTheSite()
    {
        Source source;
        source.Export();
        TestDatabase target(TestDatabase::Content::Tables);
        Admin::ImportSite(target.Connection(), source.Path(), {});
        QCOMPARE(target.Text("SELECT NEXT FROM SRV_SEQUENCE WHERE NAME = 'SYS_AFFICHE'"),
                 u"910007"_s); // 910002 to 910006 were announcements that are gone
        const auto answer = Managers::RunPost(target.Connection(), TestDatabase::Admin(),
                                              {.request = {u"com.business.admin.UniUnion"_s,
                                                           u"insert_update_UniUnion"_s,
                                                           {{{u"UNION_ID"_s, {}},
                                                             {u"PARENT_ID"_s, {}},
                                                             {u"UNION_CODE"_s, u"0007"_s},
                                                             {u"UNION_NAME"_s, u"新集团"_s},
                                                             {u"UNION_TYPE"_s, u"1"_s},
                                                             {u"REGION_ID"_s, u"100001"_s},
                                                             {u"MASTER_ORGID"_s, u"200002"_s},
                                                             {u"REMARK"_s, {}}}}},
                                               .key = {},
                                               .body = {}});
        QCOMPARE(answer.rows.value(0).code, u"1"_s);
        QCOMPARE(answer.rows.value(0).values.value(0).second, u"300003"_s);
        // And an export of it says so, by whatever the database counts.
        const auto manifest =
            Admin::ExportSite(target.Connection(), source.folder.filePath(u"second"_s), false);
        QCOMPARE(manifest.sequences[u"UNI_UNION"_s], 300004);
        QCOMPARE(Problems(target.Database()), QStringList());
    }

    void KeysTooLongToBeCountedComeAlong()
    {
        Source source;
        source.connection->Execute(
            "INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID) VALUES"
            " ('12', '300001'), ('99999999999999999999', '300001');"
            "INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES ('UNI_ORG_TYPE', 5)");
        source.Export();
        TestDatabase target(TestDatabase::Content::Tables);
        QCOMPARE(Texts(Admin::ImportSite(target.Connection(), source.Path(), {})), QStringList());
        QCOMPARE(target.Text("SELECT NEXT FROM SRV_SEQUENCE WHERE NAME = 'UNI_ORG_TYPE'"), u"13"_s);
        QCOMPARE(Problems(target.Database()), QStringList());
    }

    void Finds_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QStringList>("findings");
        const auto row = [](const char *name, const char *table, const QByteArray &from,
                            const QByteArray &to, const QStringList &findings) {
            QTest::newRow(name) << QString::fromLatin1(table) << from << to << findings;
        };
        row("an unknown column", "BAS_ORG", "ORG_KIND", "ORG_CLASS",
            {u"BAS_ORG.csv:1: ORG_CLASS: 没有这一列，或重复"_s,
             u"BAS_ORG.csv:1: ORG_KIND: 缺少这一列"_s});
        row("a column twice", "BAS_ORG", "ORG_KIND", "ORG_NAME",
            {u"BAS_ORG.csv:1: ORG_NAME: 没有这一列，或重复"_s,
             u"BAS_ORG.csv:1: ORG_NAME: 没有这一列，或重复"_s,
             u"BAS_ORG.csv:1: ORG_KIND: 缺少这一列"_s});
        row("a cell too few", "BAS_ORG", "200001,H1,", "200001,",
            {u"BAS_ORG.csv:2: 应有 15 个单元，实有 14 个"_s});
        row("a text too long", "UNI_UNION", "江苏采购联合体", QByteArray("苏").repeated(51),
            {u"UNI_UNION.csv:3: UNION_NAME: 文本过长：至多 50 个字符，实有 51 个"_s});
        row("an empty text", "UNI_UNION", "江苏采购联合体", "\"\"",
            {u"UNI_UNION.csv:3: UNION_NAME: 文本是空的；没有值时两个逗号之间什么也不写"_s});
        row("no UTF-8", "UNI_UNION", "江苏采购联合体", "\xBD\xAD",
            {u"UNI_UNION.csv:3: UNION_NAME: 不是 UTF-8 文本"_s});
        row("half a surrogate", "UNI_UNION", "江苏采购联合体", "\xED\xA0\x80",
            {u"UNI_UNION.csv:3: UNION_NAME: 不是 UTF-8 文本"_s});
        row("nothing where something must be", "UNI_UNION", "300002,", ",",
            {u"UNI_UNION.csv:3: UNION_ID: 不能没有值"_s});
        row("a bad number", "BAS_PRODUCT", "99999999.99", "1e7",
            {u"BAS_PRODUCT.csv:4: RETAIL_PRICE: “1e7”不是数字"_s});
        row("a number with commas", "BAS_PRODUCT", "99999999.99", "\"99,999\"",
            {u"BAS_PRODUCT.csv:4: RETAIL_PRICE: “99,999”不是数字"_s});
        row("a bad whole number", "TRA_ORDER", ",3,", ",3.5,",
            {u"TRA_ORDER.csv:2: ITEM_COUNT: “3.5”不是整数"_s});
        row("a day that there is not", "BAS_ORG", "2026-03-05 13:07:00", "2026-02-29 13:07:00",
            {u"BAS_ORG.csv:2: LAST_UPDATE: “2026-02-29 13:07:00”不是“年-月-日 时:分:秒”的日期"_s});
        row("a date without its time", "BAS_ORG", "2026-03-05 13:07:00", "2026-03-05",
            {u"BAS_ORG.csv:2: LAST_UPDATE: “2026-03-05”不是“年-月-日 时:分:秒”的日期"_s});
        row("a key twice", "BAS_PRODUCT", "500006", "500001",
            {u"BAS_PRODUCT.csv:7: PRODUCT_ID: 与前面的行重复"_s});
        row("a code twice", "BAS_PRODUCT", "P6", "P1",
            {u"BAS_PRODUCT.csv:7: PRODUCT_SERIAL: 与前面的行重复"_s});
        row("a key that is no number", "BAS_PRODUCT", "500006", "5x",
            {u"BAS_PRODUCT.csv:7: PRODUCT_ID: 主键“5x”不是数字"_s});
        row("a reference into nothing", "UNI_UNION", ",200001,", ",200009,",
            {u"UNI_UNION.csv:2: MASTER_ORGID: BAS_ORG 中没有“200009”"_s});
        row("a live code twice", "UNI_UNION", ",,0002", ",,0001",
            {u"UNI_UNION.csv:3: UNION_CODE: “0001”与另一有效行重复"_s});
        row("a quote out of place", "UNI_UNION", "江苏采购联合体", "a\"b",
            {u"UNI_UNION.csv:3: 引号只能在单元的开头和结尾"_s});
        row("a quote that does not end", "UNI_UNION", "江苏采购联合体", "\"a",
            {u"UNI_UNION.csv:3: 引号没有结束"_s});
        row("text behind a quote", "UNI_UNION", "江苏采购联合体", "\"a\"b",
            {u"UNI_UNION.csv:3: 单元之后应是逗号或行尾"_s});
        // Lines are counted as they stand in the file: a text of two lines lies before.
        row("behind a text of several lines", "BAS_ORG", "200010,", "20001x,",
            {u"BAS_ORG.csv:6: ORG_ID: 主键“20001x”不是数字"_s});
    }
    void Finds()
    {
        QFETCH(QString, table);
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QStringList, findings);
        if (!QFileInfo::exists(source_.Path()))
            source_.Export(); // once for all rows: each puts back what it changed
        const QString path = source_.Path() + u'/' + table + u".csv"_s;
        const auto restore = qScopeGuard([path, whole = Bytes(path)] {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(whole) == whole.size());
        });
        source_.Replace(table, from, to);
        const auto result =
            Admin::ImportSite(target_.Connection(), source_.Path(), {.edited = true});
        QCOMPARE(Texts(result), findings);
        QCOMPARE(target_.Number("SELECT COUNT(*) FROM BAS_ORG"), 0);
    }

    void TellsEverythingAtOnce()
    {
        Source source;
        source.Export();
        source.Replace(u"BAS_ORG"_s, "2026-03-05 13:07:00", "yesterday");
        source.Replace(u"BAS_PRODUCT"_s, "12.5", "cheap");
        source.Replace(u"SYS_AFFICHE"_s, "300001", "300009");
        TestDatabase target(TestDatabase::Content::Tables);
        const auto result = Admin::ImportSite(target.Connection(), source.Path(), {.edited = true});
        // Not that a group is led by an organisation which could not come in.
        QCOMPARE(
            Texts(result),
            (QStringList{u"BAS_ORG.csv:2: LAST_UPDATE: “yesterday”不是“年-月-日 时:分:秒”的日期"_s,
                         u"BAS_PRODUCT.csv:2: RETAIL_PRICE: “cheap”不是数字"_s,
                         u"SYS_AFFICHE.csv:2: UNION_ID: UNI_UNION 中没有“300009”"_s}));
        const auto few =
            Admin::ImportSite(target.Connection(), source.Path(), {.edited = true, .findings = 2});
        QCOMPARE(few.findings.size(), 2);
    }

    void FilesAreThoseOfTheManifest()
    {
        Source source;
        source.Export();
        source.Replace(u"UNI_UNION"_s, "江苏采购联合体", "江苏采购联合会");
        TestDatabase target(TestDatabase::Content::Tables);
        QCOMPARE(Texts(Admin::ImportSite(target.Connection(), source.Path(), {})),
                 QStringList{u"UNI_UNION.csv: 内容与清单中的 SHA-256 不符"_s});
        QVERIFY(QFile::remove(source.Path() + u"/TRA_SEND.csv"_s));
        const QStringList texts =
            Texts(Admin::ImportSite(target.Connection(), source.Path(), {.edited = true}));
        QCOMPARE(texts.size(), 1);
        QVERIFY(texts.first().startsWith(u"TRA_SEND.csv: 不能读："_s));
        QVERIFY(QFile::remove(source.Path() + u"/manifest.json"_s));
        QVERIFY_THROWS_EXCEPTION(EQelError,
                                 Admin::ImportSite(target.Connection(), source.Path(), {}));
    }

    void RefusesDatabaseWithRows()
    {
        Source source;
        source.Export();
        TestDatabase target;
        try {
            Admin::ImportSite(target.Connection(), source.Path(), {});
            QFAIL("it was imported");
        } catch (const EQelError &error) {
            QCOMPARE(error.Message(), u"数据库不是空的：表 BAS_REGION 中有数据。"_s);
        }
    }

    void CommandsDoTheSame()
    {
        Source source;
        TestDatabase target(TestDatabase::Content::Nothing);
        const QMap<QString, QString> from{
            {u"QEL_DATABASE"_s, u"sqlite:"_s + source.folder.filePath(u"source.sqlite"_s)}};
        const QMap<QString, QString> into{{u"QEL_DATABASE"_s, target.Url()}};
        AdminRun run = RunAdmin({u"export"_s, source.Path()}, from);
        QCOMPARE(run.err, QString());
        QVERIFY(run.out.startsWith(u"BAS_REGION\t1\nBAS_ORG\t3\n"_s));
        QCOMPARE(RunAdmin({u"export"_s, source.Path()}, from).err,
                 u"qel-server: 目录 %1 不是空的。\n"_s.arg(source.Path()));
        run = RunAdmin({u"import"_s, source.Path(), u"--dry-run"_s}, into);
        QCOMPARE(run.err, u"15 行没有问题，没有导入。\n"_s);
        QCOMPARE(run.status, 0);
        QCOMPARE(target.Number("SELECT COUNT(*) FROM BAS_ORG"), 0);
        source.Replace(u"UNI_UNION"_s, ",,0002", ",,0001");
        run = RunAdmin({u"import"_s, source.Path()}, into);
        QCOMPARE(run.status, 1);
        QCOMPARE(run.out, u"UNI_UNION.csv: 内容与清单中的 SHA-256 不符\n"
                          "UNI_UNION.csv:3: UNION_CODE: “0001”与另一有效行重复\n"_s);
        QCOMPARE(run.err, u"2 处问题，没有导入任何数据。\n"_s);
        source.Replace(u"UNI_UNION"_s, ",0001,江苏", ",0002,江苏");
        run = RunAdmin({u"import"_s, source.Path()}, into);
        QCOMPARE(run.err, u"已导入 15 行。\n"_s);
        QCOMPARE(target.Number("SELECT COUNT(*) FROM BAS_ORG"), 3);
    }

private:
    Source source_;
    TestDatabase target_{TestDatabase::Content::Tables};
};

QTEST_GUILESS_MAIN(SiteTest)
#include "SiteTest.moc"
