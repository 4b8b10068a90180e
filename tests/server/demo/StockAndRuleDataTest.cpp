#include "SampleDatabase.h"

#include "managers/PostRunner.h"
#include "store/Credentials.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// The sample stock permissions and rules of organisations, and what docs/manual/sample-answers.md
/// says of them. The last tests change the data.
class StockAndRuleDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile file(QStringLiteral(QEL_MANUAL));
        QVERIFY(file.open(QIODevice::ReadOnly));
        manual_ = QString::fromUtf8(file.readAll());
        data_ = std::make_unique<SampleDatabase>();
        const QByteArray token = "0123456789abcdef";
        Store::SetToken(*data_->connection, u"admin"_s, token);
        operator_ = *Store::FindOperator(*data_->connection, u"admin"_s, token);
    }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        const auto row = [](const char *name, const QByteArray &rows, int count) {
            QTest::newRow(name) << rows << count;
        };
        const QByteArray open = "STK_ORG_SET WHERE LAST_OPERATE <> 'D'";
        row("permissions", open, 3000);
        row("owners", "(SELECT DISTINCT OWNER_ORGID FROM " + open + ')', 216);
        row("organisations with rules", "(SELECT DISTINCT ORG_ID FROM UNI_ORG_RULE)", 200);
        const QByteArray rule = "UNI_ORG_RULE WHERE RULE_CODE = ";
        row("approved by a superior", rule + "'ORG_SJJGSH' AND RULE_VALUE = '1'", 72);
        row("superiors on file", rule + "'ORG_SJJGSH_ORGID'", 85);
        row("whose orders expire", rule + "'ORG_DDYXQ' AND RULE_VALUE = '1'", 133);
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    void HoldsOfEachKind_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::newRow("taken back") << QByteArray("STK_ORG_SET WHERE LAST_OPERATE = 'D'");
        for (const QByteArray flag : {"0", "1"}) {
            QTest::newRow(("SHOW_QTY " + flag).constData())
                << "STK_ORG_SET WHERE LAST_OPERATE <> 'D' AND SHOW_QTY = '" + flag + '\'';
            QTest::newRow(("ORG_HPTX " + flag).constData())
                << "UNI_ORG_RULE WHERE RULE_CODE = 'ORG_HPTX' AND RULE_VALUE = '" + flag + '\'';
        }
    }
    void HoldsOfEachKind()
    {
        QFETCH(QByteArray, rows);
        QVERIFY(data_->Number("SELECT COUNT(*) FROM " + rows) >= 40);
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &rows) {
            QTest::newRow(name) << rows;
        };
        row("stock open to its owner", "STK_ORG_SET WHERE OWNER_ORGID = ORG_ID");
        row("permission without a group in common",
            "STK_ORG_SET S WHERE LAST_OPERATE <> 'D' AND NOT EXISTS (SELECT 1 FROM UNI_ORG A, "
            "UNI_ORG B WHERE A.ORG_ID = S.OWNER_ORGID AND B.ORG_ID = S.ORG_ID AND "
            "A.UNION_ID = B.UNION_ID AND A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D')");
        row("superior that is not the one of the affiliation",
            "UNI_ORG_RULE R WHERE RULE_CODE = 'ORG_SJJGSH_ORGID' AND NOT EXISTS (SELECT 1 FROM "
            "BAS_ORG_AFFILIATION A WHERE A.ORG_ID = R.ORG_ID AND A.PARENT_ORGID = R.RULE_VALUE)");
        row("approval without a superior",
            "UNI_ORG_RULE R WHERE RULE_CODE = 'ORG_SJJGSH' AND RULE_VALUE = '1' AND NOT EXISTS "
            "(SELECT 1 FROM UNI_ORG_RULE S WHERE S.ORG_ID = R.ORG_ID AND "
            "S.RULE_CODE = 'ORG_SJJGSH_ORGID')");
        row("validity without days",
            "UNI_ORG_RULE R, UNI_ORG_RULE D WHERE R.RULE_CODE = 'ORG_DDYXQ' AND "
            "R.RULE_VALUE = '1' AND D.ORG_ID = R.ORG_ID AND D.RULE_CODE = 'ORG_DDYXQ_TS' AND "
            "NOT COALESCE(D.RULE_VALUE, '') GLOB '[1-9]*'");
        row("rule that the screen does not read",
            "UNI_ORG_RULE WHERE RULE_CODE NOT IN ('ORG_SJJGSH', 'ORG_SJJGSH_ORGID', 'ORG_DDYXQ', "
            "'ORG_DDYXQ_TS', 'ORG_HPTX')");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    // --- What the page of the answers says -------------------------------------------------------

    void OneOwnerHasNoCandidatesLeft()
    {
        const QString owner = OrgId(u"中卫淳元医药有限公司"_s);
        QCOMPARE(Viewers(owner), 76);
        QCOMPARE(data_->Number(u"SELECT COUNT(DISTINCT B.ORG_ID) FROM UNI_ORG A, UNI_ORG B WHERE "
                               "A.ORG_ID = '%1' AND B.UNION_ID = A.UNION_ID AND B.ORG_ID <> '%1' "
                               "AND A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D'"_s.arg(owner)
                                   .toUtf8()),
                 76);
    }

    void StockIsOpened()
    {
        QCOMPARE(Stock(u"资阳昶宁医药有限公司"_s, u"丹东尧山药品配送有限公司"_s), u"1"_s);
    }

    void StockIsNotOpenedToWhoLeftTheGroup()
    {
        const QString owner = u"广州灵素医药股份有限公司"_s;
        const QString viewer = u"丹东锦澜药业股份有限公司"_s;
        data_->connection->Run("UPDATE UNI_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = ?1 AND "
                               "UNION_ID = (SELECT UNION_ID FROM UNI_UNION WHERE UNION_NAME = ?2)",
                               {OrgId(viewer), Named(u"宜宾市医疗机构采购联合体"_s)});
        QCOMPARE(Stock(owner, viewer), u"-2"_s);
    }

    void StockIsNotOpenedToWhoIsDeleted()
    {
        DeleteAsThePageSays(u"丽水衡信制药有限公司"_s);
        QCOMPARE(Stock(u"广州灵素医药股份有限公司"_s, u"丽水衡信制药有限公司"_s), u"0"_s);
    }

    void PermissionIsDeletedByBoth()
    {
        const QString owner = u"广州灵素医药股份有限公司"_s;
        const int before = Viewers(OrgId(owner));
        QCOMPARE(Stock(owner, u"眉山石泉药业有限公司"_s, u"D"_s), u"1"_s);
        for (int colleague = 0; colleague < 2; ++colleague)
            QCOMPARE(Stock(owner, u"延安沛霖生物制药有限公司"_s, u"D"_s), u"1"_s);
        QCOMPARE(Viewers(OrgId(owner)), before - 2);
    }

    void RulesAreAsThePageSays()
    {
        const QString org = OrgId(u"杭州市中医院"_s);
        QCOMPARE(Rules(org),
                 u"ORG_DDYXQ=1 ORG_DDYXQ_TS=60 ORG_HPTX=1 ORG_SJJGSH=1 ORG_SJJGSH_ORGID="_s +
                     OrgId(u"杭州市第一人民医院"_s));
        QVERIFY(Rules(OrgId(u"杭州市中心医院"_s)).contains(u"ORG_SJJGSH=0"_s));
        QVERIFY(!Rules(OrgId(u"温州市第一人民医院"_s)).isEmpty());
    }

    void SuperiorsAreAsThePageSays()
    {
        QCOMPARE(Superior(OrgId(u"杭州市中心医院"_s)), OrgId(u"杭州市第一人民医院"_s));
        QCOMPARE(Superior(OrgId(u"温州市第二人民医院"_s)), QString());
    }

    void ApprovalIsSwitchedOn()
    {
        const QString org = OrgId(u"杭州市中心医院"_s);
        QCOMPARE(Rule(org, {{u"ORG_SJJGSH"_s, u"1"_s}, {u"ORG_SJJGSH_ID"_s, Superior(org)}}),
                 u"1"_s);
        QVERIFY(Rules(org).contains(u"ORG_SJJGSH=1 ORG_SJJGSH_ORGID="_s + Superior(org)));
    }

    void ValidityWithoutDaysIsRefused()
    {
        QCOMPARE(
            Rule(OrgId(u"淳安县中医院"_s), {{u"ORG_DDYXQ"_s, u"1"_s}, {u"ORG_DDYXQ_TS"_s, {}}}),
            u"0"_s);
    }

    void RulesOfADeletedOrganisationAreRefused()
    {
        const QString org = OrgId(u"慈溪市康复医院"_s);
        data_->connection->Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = ?1", {org});
        QCOMPARE(Rule(org, {{u"ORG_HPTX"_s, u"1"_s}}), u"0"_s);
    }

private:
    /// The name, which the page must hold.
    QString Named(const QString &name) const
    {
        return manual_.contains(name) ? name : u"not in the page: "_s + name;
    }
    QString OrgId(const QString &name)
    {
        return data_->Text("SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME = '" + Named(name).toUtf8() +
                           '\'');
    }
    QString Superior(const QString &orgId)
    {
        return data_->Text("SELECT PARENT_ORGID FROM BAS_ORG_AFFILIATION WHERE ORG_ID = '" +
                           orgId.toUtf8() + '\'');
    }
    int Viewers(const QString &owner)
    {
        return data_->Number("SELECT COUNT(*) FROM STK_ORG_SET WHERE LAST_OPERATE <> 'D' AND "
                             "OWNER_ORGID = '" +
                             owner.toUtf8() + '\'');
    }
    /// "CODE=VALUE CODE=VALUE", by code.
    QString Rules(const QString &orgId)
    {
        return data_->Text("SELECT GROUP_CONCAT(RULE_CODE || '=' || COALESCE(RULE_VALUE, ''), ' ')"
                           " FROM (SELECT * FROM UNI_ORG_RULE WHERE ORG_ID = '" +
                           orgId.toUtf8() + "' ORDER BY RULE_CODE)");
    }

    void DeleteAsThePageSays(const QString &name)
    {
        const QString sql =
            u"UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_NAME = '%1'"_s.arg(name);
        QVERIFY(manual_.contains(sql));
        data_->connection->Execute(sql.toUtf8());
    }

    QString Post(const QString &manager, const QString &method,
                 const QList<Wire::NamedValues> &rows)
    {
        const auto answer =
            Managers::RunPost(*data_->connection, operator_,
                              {.request = {manager, method, rows}, .key = {}, .body = {}});
        return answer.rows.front().code;
    }
    QString Stock(const QString &owner, const QString &viewer, const QString &operation = u"1"_s)
    {
        return Post(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s,
                    {{{u"OWNER_ORGID"_s, OrgId(owner)},
                      {u"LAST_OPERATE"_s, operation},
                      {u"ORG_ID"_s, OrgId(viewer)},
                      {u"SHOW_QTY"_s, u"0"_s}}});
    }
    QString Rule(const QString &orgId, const QList<std::pair<QString, QString>> &values)
    {
        QList<Wire::NamedValues> rows;
        for (const auto &[code, value] : values) {
            const bool isText = code == u"ORG_SJJGSH_ID"_s || code == u"ORG_DDYXQ_TS"_s;
            rows.append({{u"ORG_ID"_s, orgId},
                         {u"RULE_CODE"_s, code},
                         {u"RULE_NAME"_s, u"规则"_s},
                         {u"RULE_VALUE"_s, value},
                         {u"VALUE_TYPE"_s, isText ? u"S"_s : u"B"_s},
                         {u"REMARK"_s, {}},
                         {u"ENABLE_FLAG"_s, u"1"_s},
                         {u"LAST_OPERATE"_s, u"1"_s}});
        }
        return Post(u"com.business.admin.RuleManager"_s, u"insertUpdateOrgRule"_s, rows);
    }

    QString manual_;
    std::unique_ptr<SampleDatabase> data_;
    Store::Operator operator_;
};

QTEST_GUILESS_MAIN(StockAndRuleDataTest)
#include "StockAndRuleDataTest.moc"
