#pragma once

#include "dataset/RowSet.h"
#include "store/Connection.h"
#include "store/LruCache.h"

#include <QByteArray>
#include <QStringList>

#include <QString>
#include <optional>

#include <string>
#include <vector>

namespace Qel::Store {

/// What one query may cost. Whatever goes beyond is an error, never a shorter answer.
struct QueryLimits
{
    qint64 rows = 200'000;
    qint64 bytes = 256ll << 20; ///< of the row block
    /// What the statement may hold beside it where the database works in this process: sorting an
    /// unpaged list of 200,000 rows takes a few hundred bytes for each.
    qint64 memory = 512ll << 20;
};

/// An answer would be larger than QueryLimits allows.
class EQueryTooLarge : public EQelError
{
public:
    using EQelError::EQelError;
};

struct QueryResult
{
    qint64 total = 0; ///< rows that the statement selects, over all pages
    qint64 count = 0; ///< rows of the page
    QByteArray block; ///< as RowSet::Load reads it, with the total
};

/// What a log calls a statement by: the first 16 hexadecimal digits of the SHA-256 of its text as
/// the client sent it, in UTF-8. The same text, the same name; literals in it stay secret.
QByteArray StatementHash(const QString &oracleText);

/// Runs the SELECT texts of clients on one connection. Keeps the last texts compiled and their
/// statements prepared, because screens send the same few texts again and again.
class QueryRunner
{
public:
    QueryRunner(Connection &connection, const QueryLimits &limits);

    /// `page` from 1 with `pageSize` rows, or both 0: every row. Throws Sql::ESqlError,
    /// EQueryTooLarge, EStoreError. `unions`: the groups whose rows alone there are; see
    /// UnionScope.
    QueryResult Run(const QString &oracleText, int page, int pageSize,
                    const std::optional<QStringList> &unions = {});

    /// The tables that the last Run read, or was about to read when it failed; upper case, each
    /// once. Empty if the statement was refused before.
    const std::vector<std::string> &LastTables() const { return lastTables_; }

private:
    QueryResult Run(const Sql::CompiledQuery &query, int page, int pageSize);
    Statement &Prepared(const std::string &sql);
    qint64 Count(const std::string &sql);
    RowSetBuilder Fetch(const std::string &sql, const FieldDefs &fields);

    Connection &connection_;
    QueryLimits limits_;
    std::vector<std::string> lastTables_;
    LruCache<QByteArray, Sql::CompiledQuery> compiled_{64};
    LruCache<std::string, std::unique_ptr<Statement>> prepared_{64};
    std::unique_ptr<Statement> once_; ///< of a text that is too long to be kept
};

} // namespace Qel::Store
