#pragma once

#include "store/Database.h"

#include <QList>
#include <QString>

namespace Qel::Admin {

/// Something about a database that is not as the server needs it.
struct CheckFinding
{
    QString code;  ///< stable, for programs: "schema.column", "data.reference"
    QString place; ///< "BAS_ORG.ORG_NAME"
    QString text;  ///< for the administrator
};

/// Looks at everything and changes nothing. The codes:
///   schema.version   no tables, or those of another version; nothing else is then looked at
///   schema.table schema.column schema.type schema.index schema.function    missing, or different
///   server.encoding server.collation server.setting                        PostgreSQL's
///   role.missing role.reads role.writes    the role of queries: not there, may not, or may too
///   role.functions                         it may call what does more than give a result
///   much file.damaged     SQLite's own check of the file data.null data.empty data.sequence     a
///   row, or a counter, that breaks what is written data.key data.reference data.live      see
///   Integrity.h
/// At most `limit` findings of each code.
QList<CheckFinding> CheckDatabase(Store::Database &database, int limit = 100);

} // namespace Qel::Admin
