#include "store/QueryRunner.h"

#include "store/Schema.h"
#include "store/UnionScope.h"

#include <QCryptographicHash>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

/// Longer texts (lists of thousands of keys) hardly come twice and would fill the memory: what a
/// database makes of one may take ten times its size.
constexpr qsizetype KeptTextBytes = 16 << 10;

/// What the statement itself is to blame for is said of it; the rest is the server's failure.
[[noreturn]] void Blame(const EStoreError &error, const QueryLimits &limits)
{
    switch (error.WhichKind()) {
    case EStoreError::Kind::TooComplex:
        throw Sql::ESqlError("sql.limit", u"嵌套过深或列过多，超出数据库的限度"_s);
    case EStoreError::Kind::TooMuch:
        throw Sql::ESqlError(
            "sql.limit",
            u"中间结果过大：内存超过 %1 字节，或一个值超过 1048576 字节"_s.arg(limits.memory));
    case EStoreError::Kind::BadValue:
        throw Sql::ESqlError("sql.value", error.Reason());
    default:
        throw;
    }
}

[[noreturn]] void TooLarge(const QString &what, qint64 limit)
{
    throw EQueryTooLarge(u"查询结果过大：超过 %1 %2，请缩小查询范围。"_s.arg(limit).arg(what));
}

} // namespace

QByteArray StatementHash(const QString &oracleText)
{
    constexpr qsizetype shownDigits = 16;
    return QCryptographicHash::hash(oracleText.toUtf8(), QCryptographicHash::Sha256)
        .toHex()
        .left(shownDigits);
}

QueryRunner::QueryRunner(Connection &connection, const QueryLimits &limits)
    : connection_(connection)
    , limits_(limits)
{
    connection_.LimitMemory(limits.memory);
}

QueryResult QueryRunner::Run(const QString &oracleText, int page, int pageSize,
                             const std::optional<QStringList> &unions)
{
    lastTables_.clear();
    const QByteArray text = oracleText.toUtf8();
    const auto compile = [&] {
        std::optional<Sql::RowScope> scope;
        if (unions)
            scope = UnionScope(*unions);
        return Sql::Compile(text, SchemaCatalog(), connection_.CurrentDialect(), {},
                            scope ? &*scope : nullptr);
    };
    // A text has no zero byte, so no text of one scope is taken for that of another.
    const QByteArray kept = unions ? text + '\0' + unions->join(u',').toUtf8() : text;
    std::optional<Sql::CompiledQuery> once;
    const Sql::CompiledQuery &query =
        text.size() > KeptTextBytes ? once.emplace(compile()) : compiled_.Get(kept, compile);
    lastTables_ = query.tables;
    const auto forget = qScopeGuard([&] { once_.reset(); });
    try {
        return Run(query, page, pageSize);
    } catch (const EStoreError &error) {
        Blame(error, limits_);
    }
}

QueryResult QueryRunner::Run(const Sql::CompiledQuery &query, int page, int pageSize)
{
    const Snapshot snapshot(connection_); // the total and the page are of one state
    if (pageSize == 0) {
        RowSetBuilder rows = Fetch(query.all, query.fields);
        const qint64 count = rows.RowCount();
        return {count, count, rows.Finish()};
    }
    const qint64 offset = static_cast<qint64>(page - 1) * pageSize;
    const bool many = !query.candidates.empty() && Count(query.candidates) == Sql::ManyCandidates;
    RowSetBuilder rows = Fetch(query.Page(pageSize, offset, many), query.fields);
    const qint64 count = rows.RowCount();
    // A page that is not full is the last one and shows how many rows there are; a filter that
    // finds next to nothing is then not searched for twice.
    const bool last = count < pageSize && (count > 0 || offset == 0);
    const qint64 total = last ? offset + count : Count(query.Total(many));
    return {total, count, rows.Finish(total)};
}

Statement &QueryRunner::Prepared(const std::string &sql)
{
    const auto prepare = [&] {
        return connection_.PrepareQuery(QByteArrayView(sql.data(), std::ssize(sql)));
    };
    if (std::ssize(sql) <= KeptTextBytes)
        return *prepared_.Get(sql, prepare);
    once_ = prepare();
    return *once_;
}

qint64 QueryRunner::Count(const std::string &sql)
{
    Statement &statement = Prepared(sql);
    const auto reset = qScopeGuard([&] { statement.Reset(); });
    return statement.Step() ? statement.ColumnInt(0) : 0;
}

RowSetBuilder QueryRunner::Fetch(const std::string &sql, const FieldDefs &fields)
{
    Statement &statement = Prepared(sql);
    const auto reset = qScopeGuard([&] { statement.Reset(); });
    RowSetBuilder rows(fields);
    const int columns = static_cast<int>(fields.size());
    while (statement.Step()) {
        if (rows.RowCount() >= limits_.rows)
            TooLarge(u"行"_s, limits_.rows);
        for (int column = 0; column < columns; ++column) {
            if (statement.IsNull(column))
                rows.AddNull();
            else
                rows.AddCell(statement.ColumnBytes(column));
        }
        rows.EndRow();
        if (rows.ByteCount() > limits_.bytes)
            TooLarge(u"字节"_s, limits_.bytes);
    }
    return rows;
}

} // namespace Qel::Store
