#include "store/Connection.h"

#include <QStringEncoder>
#include <QVarLengthArray>

namespace Qel::Store {

void Statement::Bind(int parameter, const QString &text)
{
    QStringEncoder encoder(QStringEncoder::Utf8);
    QVarLengthArray<char, 512> utf8(encoder.requiredSpace(text.size()));
    const char *end = encoder.appendToBuffer(utf8.data(), text);
    Bind(parameter, QByteArrayView(utf8.data(), end));
}

void Statement::Send()
{
    while (Step()) {
    }
}

RowLater Statement::AskRow()
{
    return [row = FirstRow()] { return row; };
}

std::optional<QStringList> Statement::FirstRow()
{
    if (!Step())
        return std::nullopt;
    QStringList row;
    const int columns = ColumnCount();
    row.reserve(columns);
    for (int column = 0; column < columns; ++column)
        row.append(ColumnText(column));
    return row;
}

/// A kept statement with its values bound, for as long as one helper works with it.
class Connection::InUse
{
public:
    InUse(Connection &connection, QByteArrayView sql, const Values &values)
        : statement_(
              *connection.prepared_.Get(sql.toByteArray(), [&] { return connection.Prepare(sql); }))
    {
        int parameter = 0;
        for (const Value &value : values) {
            ++parameter;
            if (const auto *text = std::get_if<QString>(&value))
                statement_.Bind(parameter, *text);
            else if (const auto *number = std::get_if<qint64>(&value))
                statement_.BindInt(parameter, *number);
            else
                statement_.BindNull(parameter);
        }
    }
    ~InUse() { statement_.Reset(); }
    Q_DISABLE_COPY_MOVE(InUse)

    Statement *operator->() const { return &statement_; }

private:
    Statement &statement_;
};

qint64 Connection::Run(QByteArrayView sql, const Values &values)
{
    const InUse statement(*this, sql, values);
    while (statement->Step()) {
    }
    return ChangedRows();
}

void Connection::Send(QByteArrayView sql, const Values &values)
{
    InUse(*this, sql, values)->Send();
}

RowLater Connection::AskRow(QByteArrayView sql, const Values &values)
{
    return InUse(*this, sql, values)->AskRow();
}

std::optional<QStringList> Connection::QueryRow(QByteArrayView sql, const Values &values)
{
    return InUse(*this, sql, values)->FirstRow();
}

std::optional<QString> Connection::QueryText(QByteArrayView sql, const Values &values)
{
    const InUse statement(*this, sql, values);
    if (!statement->Step() || statement->IsNull(0))
        return std::nullopt;
    return statement->ColumnText(0);
}

bool Connection::Exists(QByteArrayView sql, const Values &values)
{
    return InUse(*this, sql, values)->Step();
}

void Connection::InsertRows(QByteArrayView table, QByteArrayView columns, const NextRow &next)
{
    QByteArrayList places;
    for (qsizetype place = 0; place <= columns.count(','); ++place)
        places += '?' + QByteArray::number(place + 1);
    const auto statement = Prepare("INSERT INTO " + table.toByteArray() + " (" +
                                   columns.toByteArray() + ") VALUES (" + places.join(',') + ')');
    QList<QByteArrayView> row(places.size());
    while (next(row)) {
        for (int column = 0; column < row.size(); ++column)
            statement->Bind(column + 1, row[column]);
        statement->Step();
        statement->Reset();
    }
}

Transaction::Transaction(Connection &connection)
    : connection_(connection)
{
    connection_.Begin(Connection::Scope::Write);
}

Transaction::~Transaction()
{
    if (open_ && !connection_.IsAtRest())
        connection_.Rollback();
}

void Transaction::Commit()
{
    try {
        connection_.Commit();
    } catch (const EStoreError &error) {
        if (error.WhichKind() != EStoreError::Kind::Lost)
            throw;
        throw EStoreError(EStoreError::Kind::InDoubt, error.Message(), error.Reason());
    }
    open_ = false;
}

Snapshot::Snapshot(Connection &connection)
    : connection_(connection)
{
    connection_.Begin(Connection::Scope::Snapshot);
}

Snapshot::~Snapshot()
{
    connection_.Rollback(); // nothing was changed
}

Savepoint::Savepoint(Connection &connection)
    : connection_(connection)
{
    connection_.Execute("SAVEPOINT part");
}

Savepoint::~Savepoint()
{
    if (!open_)
        return;
    try {
        connection_.Execute("ROLLBACK TO part; RELEASE part");
    } catch (const EStoreError &) {
        // The database has already rolled back by itself (full disk, lost connection).
    }
}

void Savepoint::Keep()
{
    connection_.Execute("RELEASE part");
    open_ = false;
}

} // namespace Qel::Store
