#include "store/LargestKey.h"

using namespace Qt::StringLiterals;

namespace Qel::Store {

qint64 LargestKey(Connection &connection, const QString &table, const QString &keyColumn)
{
    // What is left of digits when all of them are taken away.
    const QString sql = u"SELECT MAX(CAST(%1 AS BIGINT)) FROM %2 WHERE LENGTH(%1) <= 18"
                        " AND COALESCE(TRIM(%1, '0123456789'), '') = ''"_s.arg(keyColumn, table);
    return connection.QueryText(sql.toUtf8()).value_or(u"0"_s).toLongLong();
}

} // namespace Qel::Store
