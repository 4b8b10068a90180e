#pragma once

#include "sql/Compile.h"

#include <QStringList>

namespace Qel::Store {

/// What is left of the tables for somebody who is limited to these groups:
///   * of a table with a column UNION_ID the rows of the groups;
///   * the master data that lists of groups show: regions, organisations, products, users;
///   * of the change log the entries about such rows, as far as their keys tell the group;
///   * of every other table nothing: it is not there.
Sql::RowScope UnionScope(const QStringList &unions);

/// Whether rows of this table belong to a group: it has a column UNION_ID.
bool BelongsToUnions(const QString &table);

} // namespace Qel::Store
