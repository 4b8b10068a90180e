#include "admin/Integrity.h"

#include "store/Schema.h"

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

struct Reference
{
    const char *table;
    const char *column;
    const char *target;
    const char *key;
};

/// Deleted rows count as there: logs and old rows go on naming them. Not among these: the region
/// of an organisation, which may be missing, and who stored a row, which is a matter of record.
constexpr Reference References[] = {
    {"BAS_ORG_AFFILIATION", "ORG_ID", "BAS_ORG", "ORG_ID"},
    {"BAS_ORG_AFFILIATION", "PARENT_ORGID", "BAS_ORG", "ORG_ID"},
    {"BAS_PRODUCT", "FACTORY_ID", "BAS_ORG", "ORG_ID"},
    {"USR_USER", "ORG_ID", "BAS_ORG", "ORG_ID"},
    {"UNI_UNION", "PARENT_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_UNION", "REGION_ID", "BAS_REGION", "REGION_ID"},
    {"UNI_UNION", "MASTER_ORGID", "BAS_ORG", "ORG_ID"},
    {"UNI_ORG_TYPE", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_ORG", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_ORG", "ORG_ID", "BAS_ORG", "ORG_ID"},
    {"UNI_ORG", "ORG_TYPE_ID", "UNI_ORG_TYPE", "ORG_TYPE_ID"},
    {"UNI_USER_UNION", "USER_ID", "USR_USER", "USER_ID"},
    {"UNI_USER_UNION", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_UNION_RULE", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_ORG_RULE", "ORG_ID", "BAS_ORG", "ORG_ID"},
    {"UNI_PRODUCT", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"UNI_PRODUCT", "PRODUCT_ID", "BAS_PRODUCT", "PRODUCT_ID"},
    {"PRC_UNI_PRICE_TYPE", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"PRC_UNI_PRICE_TYPE", "SALE_ORGID", "BAS_ORG", "ORG_ID"},
    {"PRC_UNI_PRICE_PRODUCT", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"PRC_UNI_PRICE_PRODUCT", "SALE_ORGID", "BAS_ORG", "ORG_ID"},
    {"PRC_UNI_PRICE_PRODUCT", "SEND_ORGID", "BAS_ORG", "ORG_ID"},
    {"PRC_UNI_PRICE_PRODUCT", "PRODUCT_ID", "BAS_PRODUCT", "PRODUCT_ID"},
    {"PRC_UNI_PRICE_ORG", "UNION_ID", "UNI_UNION", "UNION_ID"},
    {"PRC_UNI_PRICE_ORG", "SALE_ORGID", "BAS_ORG", "ORG_ID"},
    {"PRC_UNI_PRICE_ORG", "BUY_ORGID", "BAS_ORG", "ORG_ID"},
    {"PRC_UNI_PRICE_ORG", "PRICE_TYPE_ID", "PRC_UNI_PRICE_TYPE", "PRICE_TYPE_ID"},
    {"STK_ORG_SET", "OWNER_ORGID", "BAS_ORG", "ORG_ID"},
    {"STK_ORG_SET", "ORG_ID", "BAS_ORG", "ORG_ID"},
    {"TRA_ORDER", "BUY_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_ORDER", "SALE_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_ORDER", "SEND_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_ORDER_ITEM", "ORD_ID", "TRA_ORDER", "ORD_ID"},
    {"TRA_ORDER_ITEM", "PRODUCT_ID", "BAS_PRODUCT", "PRODUCT_ID"},
    {"TRA_SEND", "ORD_ITEM_ID", "TRA_ORDER_ITEM", "ORD_ITEM_ID"},
    {"TRA_SEND", "PRODUCT_ID", "BAS_PRODUCT", "PRODUCT_ID"},
    {"TRA_SEND", "BUY_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_SEND", "SALE_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_RETURN", "SEND_ID", "TRA_SEND", "SEND_ID"},
    {"TRA_BUY_CATALOG", "BUY_ORGID", "BAS_ORG", "ORG_ID"},
    {"TRA_USER_BUY_CATALOG", "CATALOG_ID", "TRA_BUY_CATALOG", "CATALOG_ID"},
    {"TRA_USER_BUY_CATALOG", "USER_ID", "USR_USER", "USER_ID"},
    {"TRA_USER_BUY_CATALOG", "BUY_ORGID", "BAS_ORG", "ORG_ID"},
    {"SYS_AFFICHE", "UNION_ID", "UNI_UNION", "UNION_ID"},
};

/// Columns of which only one live row may have the same values; what is NULL is not counted.
struct OnlyLive
{
    const char *table;
    const char *columns; ///< parted by commas; the first is the one that is named
    const char *mark;    ///< the column in which D marks a deleted row
};

constexpr OnlyLive OnlyLiveRows[] = {
    {"UNI_UNION", "UNION_CODE", "LAST_OPERATE"},
    {"UNI_UNION", "MASTER_ORGID", "LAST_OPERATE"},
    {"BAS_ORG_AFFILIATION", "TREE_CODE", "ENABLE_FLAG"},
    {"BAS_ORG_AFFILIATION", "ORG_ID", "ENABLE_FLAG"},
    {"PRC_UNI_PRICE_TYPE", "PRICE_FIELD,UNION_ID,SALE_ORGID", "LAST_OPERATE"},
    {"TRA_BUY_CATALOG", "CATALOG_NAME,BUY_ORGID", "LAST_OPERATE"},
};

QString KeyList(const QString &table, const QString &alias)
{
    QStringList columns = KeyColumns(table);
    for (QString &column : columns)
        column = alias + u'.' + column;
    return columns.join(u", "_s);
}

class Search
{
public:
    Search(Store::Connection &connection, const std::function<bool(const BadRow &)> &report)
        : connection_(connection)
        , report_(report)
    {
    }

    /// `sql` gives the wrong value and the columns of the key; `text` has a place for the value.
    bool Run(const char *code, const QString &table, const QString &column, const QString &sql,
             const QString &text, const QString &target = {})
    {
        const auto statement = connection_.Prepare(sql.toUtf8());
        while (statement->Step()) {
            BadRow row{QString::fromLatin1(code), table, column, {}, {}, target};
            row.text = text.arg(statement->ColumnText(0));
            for (int cell = 1; cell < statement->ColumnCount(); ++cell)
                row.key += statement->ColumnText(cell);
            if (!report_(row))
                return false;
        }
        return true;
    }

private:
    Store::Connection &connection_;
    const std::function<bool(const BadRow &)> &report_;
};

bool FindBadKeys(Search &search)
{
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        const QString name = QString::fromStdString(table.name);
        if (table.primaryKey.size() != 1 || name.startsWith("SRV_"_L1))
            continue;
        const QString key = KeyColumns(name).first();
        // What is left of digits when all of them are taken away.
        const QString sql = u"SELECT A.%1, A.%1 FROM %2 A WHERE"
                            " TRIM(A.%1, '0123456789') <> '' ORDER BY A.%1"_s.arg(key, name);
        if (!search.Run("data.key", name, key, sql, u"主键“%1”不是数字"_s))
            return false;
    }
    return true;
}

bool FindOrphans(Search &search)
{
    for (const Reference &reference : References) {
        const QString table = QString::fromLatin1(reference.table);
        const QString column = QString::fromLatin1(reference.column);
        const QString target = QString::fromLatin1(reference.target);
        const QString sql =
            u"SELECT A.%1, %2 FROM %3 A WHERE A.%1 IS NOT NULL AND NOT EXISTS"
            " (SELECT 1 FROM %4 B WHERE B.%5 = A.%1) ORDER BY %2"_s.arg(
                column, KeyList(table, u"A"_s), table, target, QString::fromLatin1(reference.key));
        if (!search.Run("data.reference", table, column, sql,
                        u"%2 中没有“%1”"_s.arg(u"%1"_s, target), target))
            return false;
    }
    return true;
}

bool FindSecondLiveRows(Search &search)
{
    for (const OnlyLive &rule : OnlyLiveRows) {
        const QString table = QString::fromLatin1(rule.table);
        const QString mark = QString::fromLatin1(rule.mark);
        const QStringList columns = QString::fromLatin1(rule.columns).split(u',');
        const QString key = KeyColumns(table).first();
        QStringList same;
        for (const QString &column : columns)
            same += u"B.%1 = A.%1"_s.arg(column);
        const QString sql =
            u"SELECT A.%1, A.%2 FROM %3 A WHERE A.%4 <> 'D' AND EXISTS"
            " (SELECT 1 FROM %3 B WHERE %5 AND B.%4 <> 'D' AND B.%2 < A.%2)"
            " ORDER BY A.%2"_s.arg(columns.first(), key, table, mark, same.join(u" AND "_s));
        if (!search.Run("data.live", table, columns.first(), sql, u"“%1”与另一有效行重复"_s))
            return false;
    }
    return true;
}

} // namespace

QStringList KeyColumns(const QString &table)
{
    QStringList names;
    const Sql::Table *found = Store::SchemaCatalog().Find(table.toStdString());
    for (const int position : found->primaryKey)
        names += QString::fromStdString(found->columns[static_cast<std::size_t>(position)].name);
    return names;
}

void FindBadRows(Store::Connection &connection, const std::function<bool(const BadRow &)> &report)
{
    Search search(connection, report);
    if (FindBadKeys(search) && FindOrphans(search))
        FindSecondLiveRows(search);
}

} // namespace Qel::Admin
