#pragma once

#include "store/Connection.h"
#include "store/Schema.h"

#include <QList>
#include <QString>

#include <optional>

/// What a database has, in the words that Schema.h has for what it should have.
namespace Qel::Admin {

struct StoredColumn
{
    QString name;
    QString type; ///< with the collation of a text on PostgreSQL
    bool notNull = false;
};

QList<StoredColumn> StoredColumns(Store::Connection &connection, const QString &table);

/// The columns of the primary key: "A, B".
QString StoredKey(Store::Connection &connection, const QString &table);

/// "A, B", with " UNIQUE" behind it; nothing if the table has no such index, or it cannot
/// be used.
std::optional<QString> StoredIndex(Store::Connection &connection, const QString &table,
                                   const QString &name);

/// The form of the part of a search index with this name; nothing: it is not there, or cannot be
/// used.
std::optional<QString> StoredSearchObject(Store::Connection &connection, const QString &name);

} // namespace Qel::Admin
