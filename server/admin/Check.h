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
///   schema.version            no tables, or those of another version; nothing else is looked at
///   schema.table .column .type .index .function .search              missing, or different
///   server.encoding .collation .setting                              PostgreSQL's
///   role.missing .reads .writes .functions
///                             the role of queries: not there, may not, or may too much
///   file.damaged              SQLite's own check of the file
///   data.null .empty .sequence .search
///                             a row, a counter or a search index that breaks what is written
///   data.key .reference .live see Integrity.h
/// At most `limit` findings of each code.
QList<CheckFinding> CheckDatabase(Store::Database &database, int limit = 100);

} // namespace Qel::Admin
