#include "store/QueryRunner.h"

#include "store/Schema.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

/// Longer texts (lists of thousands of keys) hardly come twice and would fill the memory.
constexpr qsizetype KeptTextBytes = 16 << 10;

[[noreturn]] void TooLarge(const QString &what, qint64 limit)
{
    throw EQueryTooLarge(u"查询结果过大：超过 %1 %2，请缩小查询范围。"_s.arg(limit).arg(what));
}

} // namespace

QueryRunner::QueryRunner(Connection &connection, const QueryLimits &limits)
    : connection_(connection)
    , limits_(limits)
{
}

QueryResult QueryRunner::Run(const QString &oracleText, int page, int pageSize)
{
    const QByteArray text = oracleText.toUtf8();
    const auto compile = [&] {
        return Sql::Compile(text, SchemaCatalog(), connection_.CurrentDialect());
    };
    std::optional<Sql::CompiledQuery> once;
    const Sql::CompiledQuery &query =
        text.size() > KeptTextBytes ? once.emplace(compile()) : compiled_.Get(text, compile);

    const Snapshot snapshot(connection_); // the total and the page are of one state
    const bool paged = pageSize != 0;
    const qint64 total = paged ? Count(query.count) : 0;
    RowSetBuilder rows =
        Fetch(paged ? query.Page(pageSize, static_cast<qint64>(page - 1) * pageSize) : query.all,
              query.fields);
    const qint64 count = rows.RowCount();
    return {paged ? total : count, count, paged ? rows.Finish(total) : rows.Finish()};
}

Statement &QueryRunner::Prepared(const std::string &sql)
{
    return *prepared_.Get(
        sql, [&] { return connection_.PrepareQuery(QByteArrayView(sql.data(), std::ssize(sql))); });
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
