#include "store/UnionScope.h"

#include "store/Schema.h"

#include <algorithm>
#include <iterator>

namespace Qel::Store {

namespace {

constexpr std::string_view UnionColumn = "UNION_ID";
constexpr std::string_view LogTable = "SYS_UPDATE_LOG";
constexpr std::string_view SharedTables[] = {"BAS_REGION", "BAS_ORG", "CAT_ORG", "BAS_PRODUCT",
                                             "USR_USER"};

/// UNION_ID IN ('1','2') for the column. Names stand without quotes: PostgreSQL keeps those of the
/// schema in lower case.
std::string In(std::string_view column, const QStringList &unions)
{
    std::string text = std::string(column) + " IN (";
    const char *separator = "'";
    for (const QString &id : unions) {
        text += separator + QString(id).replace(u'\'', QStringLiteral("''")).toStdString() + '\'';
        separator = ",'";
    }
    return text + ')';
}

/// Which entries of the log are about rows of the groups in this table; empty: its entries do not
/// tell. An entry has the first two keys of its record.
std::string LogCondition(const Sql::Table &table, const QStringList &unions)
{
    const auto place =
        std::find(table.primaryKey.begin(), table.primaryKey.end(), table.IndexOf(UnionColumn));
    const auto position = std::distance(table.primaryKey.begin(), place);
    const std::string begin = "(TABLE_NAME = '" + table.name + "' AND ";
    if (table.primaryKey.size() > 2)
        return {}; // the quotations to buyers are logged by seller and buyer, without the group
    if (place != table.primaryKey.end())
        return begin + In(position == 0 ? "KEY_ID1" : "KEY_ID2", unions) + ')';
    const std::string key = table.columns[static_cast<std::size_t>(table.primaryKey[0])].name;
    return begin + "KEY_ID1 IN (SELECT " + key + " FROM " + table.name + " WHERE " +
           In(UnionColumn, unions) + "))";
}

} // namespace

Sql::RowScope UnionScope(const QStringList &unions)
{
    Sql::RowScope scope;
    std::string log;
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        if (table.IndexOf(UnionColumn) < 0)
            continue;
        scope[table.name] = In(UnionColumn, unions);
        const std::string condition = LogCondition(table, unions);
        if (!condition.empty())
            log += (log.empty() ? "" : " OR ") + condition;
    }
    scope[std::string(LogTable)] = log;
    for (const std::string_view table : SharedTables)
        scope[std::string(table)] = {};
    return scope;
}

bool BelongsToUnions(const QString &table)
{
    const Sql::Table *found = SchemaCatalog().Find(table.toStdString());
    return found && found->IndexOf(UnionColumn) >= 0;
}

} // namespace Qel::Store
