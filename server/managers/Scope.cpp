#include "managers/Scope.h"

#include "store/Schema.h"
#include "store/UnionScope.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString UnionId = u"UNION_ID"_s;
const QString GroupTable = u"UNI_UNION"_s;

[[noreturn]] void Refuse(const QString &what)
{
    throw EPostError("post.scope", u"当前令牌只限于部分集团，%1。"_s.arg(what));
}

/// The one column that names a record of the table; empty if it takes several.
QString KeyOf(const QString &table)
{
    const Sql::Table *found = Store::SchemaCatalog().Find(table.toStdString());
    if (!found || found->primaryKey.size() != 1)
        return {};
    return QString::fromStdString(
        found->columns[static_cast<std::size_t>(found->primaryKey[0])].name);
}

/// The group that the record belongs to now; nothing if there is no such record.
std::optional<QString> OwnerOf(Store::Connection &connection, const QString &table,
                               const QString &key, const QString &id)
{
    const QString sql = u"SELECT COALESCE(UNION_ID, '-') FROM %1 WHERE %2 = ?1"_s.arg(table, key);
    return connection.QueryText(sql.toUtf8(), {id});
}

/// Its place decides about the groups above and below it.
void CheckPlace(Store::Connection &connection, const PostedRow &row)
{
    const auto stored = connection.QueryRow(
        "SELECT PARENT_ID, UNION_CODE FROM UNI_UNION WHERE UNION_ID = ?1", {row[UnionId]});
    if (stored && *stored != row.Of({u"PARENT_ID"_s, u"UNION_CODE"_s}))
        Refuse(u"不能改变集团的上级和编码"_s);
}

} // namespace

void CheckScope(Store::Connection &connection, const Method &method,
                const QList<Wire::NamedValues> &rows, const Store::Operator &user)
{
    if (!user.unions)
        return;
    if (!Store::BelongsToUnions(method.table))
        Refuse(u"不能调用 %1"_s.arg(method.name));
    const auto check = [&](const QString &unionId) {
        if (!user.unions->contains(unionId))
            Refuse(unionId.isEmpty() ? u"不能新增集团"_s : u"其中没有集团 %1"_s.arg(unionId));
    };
    const QString key = KeyOf(method.table);
    for (const Wire::NamedValues &values : rows) {
        const PostedRow row(values);
        if (method.parameters.contains(UnionId))
            check(row[UnionId]);
        if (method.table == GroupTable && row.Has(u"PARENT_ID"_s))
            CheckPlace(connection, row);
        if (key.isEmpty() || key == UnionId || row[key].isEmpty())
            continue;
        if (const auto owner = OwnerOf(connection, method.table, key, row[key]))
            check(*owner);
    }
}

} // namespace Qel::Managers
