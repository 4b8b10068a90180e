#pragma once

struct sqlite3;

namespace Qel::Sql {

/// Makes a SQLite connection fit for what Compile() prints: registers the functions QEL_... that
/// SQLite lacks, and makes LIKE sensitive to case (PRAGMA case_sensitive_like). To be called once
/// for every connection, right after it is opened. Throws EQelError.
///
/// Results: a number is delivered by SQLite as INTEGER wherever it is whole; a REAL cell that is
/// whole must be shown without a fraction. A function that meets a text which is no number or date
/// fails the statement with SQLITE_ERROR and a message for the operator.
void PrepareSqliteConnection(sqlite3 *database);

} // namespace Qel::Sql
