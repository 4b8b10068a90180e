#include "store/Connection.h"

namespace Qel::Store {

namespace {

void ExecuteQuietly(Connection &connection, QByteArrayView sql)
{
    try {
        connection.Execute(sql);
    } catch (const EStoreError &) {
        // The database has already rolled back by itself (full disk, lost connection).
    }
}

} // namespace

void Statement::Bind(int parameter, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    Bind(parameter, QByteArrayView(utf8));
}

std::unique_ptr<Statement> Connection::PrepareWith(QByteArrayView sql,
                                                   std::initializer_list<Value> values)
{
    auto statement = Prepare(sql);
    int parameter = 0;
    for (const Value &value : values) {
        ++parameter;
        if (const auto *text = std::get_if<QString>(&value))
            statement->Bind(parameter, *text);
        else if (const auto *number = std::get_if<qint64>(&value))
            statement->BindInt(parameter, *number);
        else
            statement->BindNull(parameter);
    }
    return statement;
}

qint64 Connection::Run(QByteArrayView sql, std::initializer_list<Value> values)
{
    const auto statement = PrepareWith(sql, values);
    while (statement->Step()) {
    }
    return ChangedRows();
}

std::optional<QString> Connection::QueryText(QByteArrayView sql,
                                             std::initializer_list<Value> values)
{
    const auto statement = PrepareWith(sql, values);
    if (!statement->Step() || statement->IsNull(0))
        return std::nullopt;
    return statement->ColumnText(0);
}

bool Connection::Exists(QByteArrayView sql, std::initializer_list<Value> values)
{
    return PrepareWith(sql, values)->Step();
}

Transaction::Transaction(Connection &connection)
    : connection_(connection)
{
    connection_.Execute(connection_.CurrentDialect() == Dialect::Sqlite ? "BEGIN IMMEDIATE"
                                                                        : "BEGIN");
}

Transaction::~Transaction()
{
    if (open_)
        ExecuteQuietly(connection_, "ROLLBACK");
}

void Transaction::Commit()
{
    connection_.Execute("COMMIT");
    open_ = false;
}

Snapshot::Snapshot(Connection &connection)
    : connection_(connection)
{
    connection_.Execute(connection_.CurrentDialect() == Dialect::Sqlite
                            ? "BEGIN"
                            : "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
}

Snapshot::~Snapshot()
{
    ExecuteQuietly(connection_, "ROLLBACK"); // nothing was changed
}

Savepoint::Savepoint(Connection &connection)
    : connection_(connection)
{
    connection_.Execute("SAVEPOINT part");
}

Savepoint::~Savepoint()
{
    if (open_)
        ExecuteQuietly(connection_, "ROLLBACK TO part; RELEASE part");
}

void Savepoint::Keep()
{
    connection_.Execute("RELEASE part");
    open_ = false;
}

} // namespace Qel::Store
