#include "ManagerSite.h"
#include "managers/PostRunner.h"
#include "support/ServerProcess.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

const QString UniUnion = u"com.business.admin.UniUnion"_s;
const QString Affiches = u"com.notic.NoticManager"_s;

/// A site with an operator whose token reaches group 300002 alone.
struct LimitedSite : ManagerSite
{
    LimitedSite()
    {
        Connection().Execute(
            "INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID)"
            " VALUES ('600001','300002'), ('600001','300004');"
            "INSERT INTO SYS_AFFICHE (ID, UNION_ID, AFFICHE_TITLE) VALUES ('900001','300002','甲'),"
            " ('900002','300004','乙')");
    }

    /// "code: message" of the refusal; otherwise the codes of the results.
    QString Try(const QString &manager, const QString &method, const QList<Wire::NamedValues> &rows)
    {
        Store::Operator limited = Admin();
        limited.unions = QStringList{u"300002"_s};
        try {
            QStringList codes;
            const auto answer = Managers::RunPost(
                Connection(), limited, {.request = {manager, method, rows}, .key = {}, .body = {}});
            for (const Wire::ResultRow &row : answer.rows)
                codes += row.code;
            return codes.join(u' ');
        } catch (const Managers::EPostError &error) {
            return QString::fromLatin1(error.Code()) + u": "_s + error.Message();
        }
    }
};

Wire::NamedValues Group(const QString &id, const QString &parent, const QString &code)
{
    return {{u"UNION_ID"_s, id},
            {u"PARENT_ID"_s, parent},
            {u"UNION_CODE"_s, code},
            {u"UNION_NAME"_s, u"新名称"_s},
            {u"UNION_TYPE"_s, u"2"_s},
            {u"REGION_ID"_s, u"100001"_s},
            {u"MASTER_ORGID"_s, u"200005"_s},
            {u"REMARK"_s, {}}};
}

Wire::NamedValues MemberType(const QString &id, const QString &unionId)
{
    return {{u"ORG_TYPE_ID"_s, id},     {u"ORG_TYPE_NAME"_s, u"新类型"_s},
            {u"UNION_ID"_s, unionId},   {u"BUYER_FLAG"_s, u"1"_s},
            {u"SALER_FLAG"_s, u"0"_s},  {u"SENDER_FLAG"_s, u"0"_s},
            {u"ADMIN_FLAG"_s, u"0"_s},  {u"REMARK"_s, {}},
            {u"LAST_OPERATE"_s, u"1"_s}};
}

Wire::NamedValues Announcement(const QString &id, const QString &unionId)
{
    return {{u"ID"_s, id},
            {u"START_DATE"_s, u"2026-01-01"_s},
            {u"END_DATE"_s, {}},
            {u"AFFICHE_TYPE"_s, u"1"_s},
            {u"AFFICHE_TITLE"_s, u"标题"_s},
            {u"AFFICHE_CONTENT"_s, u"内容"_s},
            {u"UNION_ID"_s, unionId},
            {u"PUBLIC_FLAG"_s, u"1"_s},
            {u"SALER_FLAG"_s, u"0"_s},
            {u"BUYER_FLAG"_s, u"0"_s},
            {u"ENABLE_FLAG"_s, u"0"_s}};
}

} // namespace

class ScopeTest : public QObject
{
    Q_OBJECT

private slots:
    void StoresRowsOfOwnGroup()
    {
        LimitedSite site;
        QCOMPARE(site.Try(UniUnion, u"insert_update_UniUnion"_s,
                          {Group(u"300002"_s, u"300001"_s, u"000101"_s)}),
                 u"1"_s);
        QCOMPARE(site.Try(UniUnion, u"insert_update_UniOrgType"_s,
                          {MemberType({}, u"300002"_s), MemberType(u"400001"_s, u"300002"_s)}),
                 u"1 1"_s);
        QCOMPARE(site.Try(Affiches, u"insertUpdateNotic"_s, {Announcement({}, u"300002"_s)}),
                 u"1"_s);
        QCOMPARE(site.Try(Affiches, u"deleteNotic"_s, {{{u"ID"_s, u"900001"_s}}}), u"1"_s);
        // A record that is gone is the method's business.
        QCOMPARE(site.Try(Affiches, u"deleteNotic"_s, {{{u"ID"_s, u"900009"_s}}}), u"0"_s);
    }

    void RefusesOthers_data()
    {
        QTest::addColumn<QString>("manager");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QList<Wire::NamedValues>>("rows");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QString &manager, const QString &method,
                            const QList<Wire::NamedValues> &rows, const QString &message) {
            QTest::newRow(name) << manager << method << rows << message;
        };
        const QString foreign = u"其中没有集团 300004"_s;
        row("another group", UniUnion, u"insert_update_UniUnion"_s,
            {Group(u"300004"_s, {}, u"0002"_s)}, foreign);
        row("a new group", UniUnion, u"insert_update_UniUnion"_s, {Group({}, {}, u"0009"_s)},
            u"不能新增集团"_s);
        row("its own place in the tree", UniUnion, u"insert_update_UniUnion"_s,
            {Group(u"300002"_s, u"300004"_s, u"000201"_s)}, u"不能改变集团的上级和编码"_s);
        row("its own code", UniUnion, u"insert_update_UniUnion"_s,
            {Group(u"300002"_s, u"300001"_s, u"000109"_s)}, u"不能改变集团的上级和编码"_s);
        row("deleting another", UniUnion, u"delete_UniUnion"_s, {{{u"UNION_ID"_s, u"300004"_s}}},
            foreign);
        row("one of two rows", UniUnion, u"insert_update_UniOrgType"_s,
            {MemberType({}, u"300002"_s), MemberType({}, u"300004"_s)}, foreign);
        row("another's record under its own id", UniUnion, u"insert_update_UniOrgType"_s,
            {MemberType(u"400004"_s, u"300002"_s)}, foreign);
        row("deletion by the record alone", Affiches, u"deleteNotic"_s, {{{u"ID"_s, u"900002"_s}}},
            foreign);
        row("publication by the record alone", Affiches, u"confirmNotic"_s,
            {{{u"ID"_s, u"900002"_s}, {u"ENABLE_FLAG"_s, u"1"_s}}}, foreign);
        row("another's announcement pulled over", Affiches, u"insertUpdateNotic"_s,
            {Announcement(u"900002"_s, u"300002"_s)}, foreign);
        row("its announcement given away", Affiches, u"insertUpdateNotic"_s,
            {Announcement(u"900001"_s, u"300004"_s)}, foreign);
        row("a member of another", u"com.business.admin.UniUnionOrg"_s, u"delete_UniOrg"_s,
            {{{u"UNION_ID"_s, u"300004"_s}, {u"ORG_ID"_s, u"200005"_s}}}, foreign);
        row("a user of another", u"com.business.admin.UniUser"_s, u"insertUniUser"_s,
            {{{u"USER_ID"_s, u"600002"_s}, {u"UNION_ID"_s, u"300004"_s}}}, foreign);
        row("a product of another", u"com.business.admin.Uni_Product"_s, u"move_in_Uni_Product"_s,
            {{{u"UNION_ID"_s, u"300004"_s}, {u"PRODUCT_ID"_s, u"500001"_s}}}, foreign);
        row("what belongs to no group", u"com.business.rollback.BusDataRollBack"_s,
            u"ReceiveRollBack"_s, {{{u"SEND_ID"_s, u"92000001"_s}}}, u"不能调用 ReceiveRollBack"_s);
        row("stock", u"com.business.stock.StockManager"_s, u"stockOrgManager"_s,
            {{{u"OWNER_ORGID"_s, u"200001"_s},
              {u"ORG_ID"_s, u"200007"_s},
              {u"SHOW_QTY"_s, u"1"_s},
              {u"LAST_OPERATE"_s, u"1"_s}}},
            u"不能调用 stockOrgManager"_s);
    }
    void RefusesOthers()
    {
        QFETCH(QString, manager);
        QFETCH(QString, method);
        QFETCH(QList<Wire::NamedValues>, rows);
        QFETCH(QString, message);
        LimitedSite site;
        QCOMPARE(site.Try(manager, method, rows),
                 u"post.scope: 当前令牌只限于部分集团，%1。"_s.arg(message));
        QCOMPARE(site.Logged(), 0);
    }

    void EveryMethodOfOtherTablesIsRefused()
    {
        QStringList open;
        for (const Managers::Method &method : Managers::Methods())
            if (!method.parameters.contains(u"UNION_ID"_s))
                open += method.name;
        // Those that name no group are refused, or find it through the announcement.
        open.removeIf([](const QString &name) { return name.endsWith(u"Notic"_s); });
        LimitedSite site;
        QVERIFY(open.size() >= 10);
        for (const Managers::Method &method : Managers::Methods()) {
            if (!open.contains(method.name))
                continue;
            Wire::NamedValues row;
            for (const QString &parameter : method.parameters + method.flags)
                row.append({parameter, u"1"_s});
            const QString answer = site.Try(method.manager, method.name, {row});
            QVERIFY2(answer.startsWith(u"post.scope: "_s), qPrintable(method.name + answer));
        }
    }

    void OverTheWireItIsForbidden()
    {
        LimitedSite site;
        const auto token =
            Store::AddToken(site.Connection(), u"admin"_s, {.label = {}, .unions = {u"300002"_s}});
        const ServerProcess server({u"--database"_s, site.Url()});
        const auto call = [&](const QByteArray &path, const QByteArray &body) {
            return server.Call({.path = path, .body = body, .credential = "admin:" + token.token});
        };
        const auto query = [&](const QByteArray &sql) {
            return call("/NorvaneSelectServlet",
                        R"({"sql":")" + sql + R"(","page":0,"pageSize":0,"queryType":1})");
        };
        HttpReply reply = query("SELECT UNION_ID FROM UNI_UNION");
        QCOMPARE(reply.status, 200);
        QVERIFY2(reply.body.contains(R"("rows":[["300002"]])"), reply.body.constData());
        reply = query("SELECT * FROM TRA_ORDER");
        QCOMPARE(reply.status, 403);
        QVERIFY(reply.body.contains("\"sql.scope\""));
        reply = call("/NorvaneServlet", R"({"manager":"com.business.admin.UniUnion",)"
                                        R"("method":"delete_UniUnion",)"
                                        R"("rows":[[["UNION_ID","300004"]]]})");
        QCOMPARE(reply.status, 403);
        QVERIFY(reply.body.contains("\"post.scope\""));
    }
};

QTEST_GUILESS_MAIN(ScopeTest)
#include "ScopeTest.moc"
