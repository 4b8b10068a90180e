#include "ManagerSite.h"

#include "managers/PostRunner.h"
#include "store/QueryRunner.h"

using namespace Qt::StringLiterals;

namespace Qel {

ManagerSite::ManagerSite()
{
    Store::Transaction transaction(Connection());
    AddMemberTypes();
    AddProducts();
    transaction.Commit();
}

void ManagerSite::AddMemberTypes()
{
    const QList<QStringList> types{
        {u"400001"_s, u"300002"_s, u"医疗机构"_s, u"1"_s, u"0"_s, u"0"_s, u"1"_s},
        {u"400002"_s, u"300002"_s, u"经营企业"_s, u"0"_s, u"1"_s, u"1"_s, u"1"_s},
        {u"400003"_s, u"300002"_s, u"临时采购单位"_s, u"1"_s, u"0"_s, u"0"_s, u"D"_s},
        {u"400004"_s, u"300004"_s, u"医疗机构"_s, u"1"_s, u"0"_s, u"0"_s, u"1"_s},
    };
    for (const QStringList &type : types)
        Connection().Run("INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID, ORG_TYPE_NAME,"
                         " BUYER_FLAG, SALER_FLAG, SENDER_FLAG, LAST_OPERATE)"
                         " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                         Store::Values(type.begin(), type.end()));
}

void ManagerSite::AddProducts()
{
    for (int number = 1; number <= 5; ++number) {
        const QString id = QString::number(500000 + number);
        Connection().Run("INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL, PRODUCT_NAME,"
                         " ENABLE_FLAG, LAST_OPERATE) VALUES (?1, ?2, ?3, ?4, ?5)",
                         {id, u'P' + id, u"第%1药"_s.arg(number), number == 4 ? u"0"_s : u"1"_s,
                          number == 5 ? u"D"_s : u"1"_s});
    }
    Connection().Run("INSERT INTO UNI_PRODUCT (UNION_ID, PRODUCT_ID, ENABLE_FLAG, LAST_OPERATE)"
                     " VALUES ('300002', '500001', '1', '1'), ('300002', '500002', '2', 'D')");
}

Wire::PostAnswer ManagerSite::Post(const QString &manager, const QString &method,
                                   const QList<Wire::NamedValues> &rows)
{
    return Managers::RunPost(Connection(), Admin(),
                             {.request = {manager, method, rows}, .key = {}, .body = {}});
}

QString ManagerSite::PostBeside(const Wire::PostRequest &request)
{
    Store::WriterPool writers(Database());
    const auto deadline = Store::WriterPool::Clock::now() + std::chrono::minutes(1);
    const Managers::Submission submission{Admin(), {.request = request, .key = {}, .body = {}}};
    return Managers::SubmitPost(writers, deadline, [&](Store::Connection &) { return submission; })
        .rows.value(0)
        .code;
}

QString ManagerSite::Codes(const QString &manager, const QString &method,
                           const QList<Wire::NamedValues> &rows)
{
    QStringList codes;
    for (const Wire::ResultRow &result : Post(manager, method, rows).rows)
        codes += result.code;
    return codes.join(u' ');
}

QByteArray ManagerSite::Refusal(const QString &manager, const QString &method,
                                const QList<Wire::NamedValues> &rows)
{
    try {
        Post(manager, method, rows);
        return "none";
    } catch (const Managers::EPostError &error) {
        return error.Code();
    }
}

QStringList ManagerSite::Log()
{
    return Texts("SELECT TABLE_NAME||'/'||KEY_ID1||'/'||coalesce(KEY_ID2,'-')||'/'||USER_ID||'/'||"
                 "USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG ORDER BY CAST(LOG_ID AS BIGINT)");
}

QString ManagerSite::Row(const QByteArray &sql)
{
    return Connection().QueryRow(sql).value_or(QStringList()).join(u'/');
}

QStringList ManagerSite::Texts(const QByteArray &sql)
{
    const auto statement = Connection().Prepare(sql);
    QStringList texts;
    while (statement->Step())
        texts += statement->ColumnText(0);
    return texts;
}

void ManagerSite::Trap(Trouble trouble, const QByteArray &where, const QByteArray &condition)
{
    const bool constraint = trouble == Trouble::Constraint;
    if (Connection().CurrentDialect() == Store::Dialect::Sqlite) {
        Connection().Execute(
            "CREATE TRIGGER TRAP " + where + " WHEN " + condition + " BEGIN SELECT " +
            (constraint ? "RAISE(ABORT, 'trap')" : "no_such_function()") + "; END");
        return;
    }
    Connection().Execute("CREATE FUNCTION TRAP() RETURNS trigger LANGUAGE plpgsql AS"
                         " $$BEGIN RAISE EXCEPTION 'trap' USING ERRCODE = '" +
                         QByteArray(constraint ? "23514" : "42883") +
                         "'; END$$; CREATE TRIGGER TRAP " + where + " FOR EACH ROW WHEN (" +
                         condition + ") EXECUTE FUNCTION TRAP()");
}

RowSet ManagerSite::Query(const QString &sql)
{
    const auto reader = Database().OpenReader();
    Store::QueryRunner runner(*reader, {});
    return RowSet::Load(runner.Run(sql, 0, 0).block);
}

Wire::NamedValues ByAdmin(Wire::NamedValues row)
{
    row.append({u"LOG_USER_ID"_s, TestDatabase::Admin().userId});
    row.append({u"LOG_USER_NAME"_s, TestDatabase::Admin().userName});
    return row;
}

} // namespace Qel
