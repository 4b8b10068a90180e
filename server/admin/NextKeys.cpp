#include "admin/NextKeys.h"

namespace Qel::Admin {

QMap<QString, qint64> NextKeys(Store::Connection &connection)
{
    QMap<QString, qint64> next;
    const auto read = [&](QByteArrayView sql) {
        const auto statement = connection.Prepare(sql);
        while (statement->Step())
            next[statement->ColumnText(0)] = statement->ColumnInt(1);
    };
    read("SELECT NAME, NEXT FROM SRV_SEQUENCE");
    if (connection.CurrentDialect() == Store::Dialect::PostgreSql)
        read("SELECT upper(substr(sequencename, 9)), last_value + 1 FROM pg_sequences"
             " WHERE schemaname = current_schema() AND sequencename LIKE 'srv\\_key\\_%'"
             " AND last_value > 0");
    return next;
}

} // namespace Qel::Admin
