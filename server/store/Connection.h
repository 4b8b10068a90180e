#pragma once

#include "dataset/QelError.h"
#include "sql/Compile.h"
#include "store/LruCache.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

/// The database behind the server. Everything above this folder speaks to these classes and not
/// to a driver; SQL text that differs between databases is made by whoever asks CurrentDialect().
namespace Qel::Store {

using Sql::Dialect;

/// A statement failed. The message is for the log, an operator gets it only through the error
/// answer's reference.
class EStoreError : public EQelError
{
public:
    enum class Kind {
        Failure,    ///< anything else
        Constraint, ///< a key, a check or a NOT NULL refused the row
        Stopped,    ///< the connection's StopWhen said so
        TooComplex, ///< nested deeper, or wider, than the database was built for
        TooMuch,    ///< needs more memory, or makes longer texts, than one statement may
        BadValue,   ///< a function of the query language refused a value
        Conflict,   ///< others came in between; the transaction may be run again from its beginning
        Lost,       ///< the connection broke; what was not committed is undone
        InDoubt,    ///< it broke while a COMMIT was on its way, which took effect or did not
    };

    EStoreError(Kind kind, const QString &message, const QString &reason = {})
        : EQelError(message)
        , kind_(kind)
        , reason_(reason)
    {
    }

    Kind WhichKind() const { return kind_; }
    const QString &Reason() const { return reason_; } ///< in the database's own words

private:
    Kind kind_;
    QString reason_;
};

/// A row that was asked for before it is needed: waits for it, and gives it as QueryRow does.
using RowLater = std::function<std::optional<QStringList>()>;

/// One prepared statement. Belongs to its connection, which must outlive it, and to one thread.
/// Parameters count from 1 ("?1" in the text), columns from 0. Every member throws EStoreError.
class Statement
{
public:
    virtual ~Statement() = default;

    /// Copied. An empty text is bound as NULL: like the query language, the database knows no
    /// empty text.
    virtual void Bind(int parameter, QByteArrayView utf8) = 0;
    virtual void BindNull(int parameter) = 0;
    virtual void BindInt(int parameter, qint64 value) = 0;
    void Bind(int parameter, const QString &text);

    virtual bool Step() = 0;  ///< true: a row stands ready; false: the statement has finished
    virtual void Reset() = 0; ///< ready to run again; the bound values stay

    // See Connection::Send and Connection::AskRow.
    virtual void Send();
    virtual RowLater AskRow();

    virtual int ColumnCount() const = 0;
    virtual QString ColumnName(int column) const = 0;
    virtual bool IsNull(int column) const = 0;
    /// The value as UTF-8 text, valid until the next Step or Reset; numbers in plain decimal
    /// notation without trailing zeros. Empty for NULL.
    virtual QByteArrayView ColumnBytes(int column) = 0;
    virtual qint64 ColumnInt(int column) = 0;
    QString ColumnText(int column) { return QString::fromUtf8(ColumnBytes(column)); }
    /// The first row's columns, NULL as an empty text; nothing if there is no row.
    std::optional<QStringList> FirstRow();
};

/// A parameter of the one-line helpers below.
using Value = std::variant<std::nullptr_t, qint64, QString>;
using Values = QList<Value>;

/// One session with the database. One thread at a time.
class Connection
{
public:
    virtual ~Connection() = default;

    virtual Dialect CurrentDialect() const = 0;

    /// Whether a statement of the program's own may read the server's tables ("SRV_...").
    virtual bool SeesServerTables() const { return true; }

    /// Runs one or several statements that take no parameters and give no rows.
    virtual void Execute(QByteArrayView sql) = 0;
    virtual std::unique_ptr<Statement> Prepare(QByteArrayView sql) = 0;
    /// For text that came from a client, however well it was checked before: the statement can
    /// read, but neither change anything nor see the server's own tables ("SRV_...").
    virtual std::unique_ptr<Statement> PrepareQuery(QByteArrayView sql) = 0;
    virtual qint64 ChangedRows() const = 0; ///< by the last INSERT, UPDATE or DELETE

    /// Gives the next row as one text a column, the empty one for NULL; false: there is none.
    using NextRow = std::function<bool(QList<QByteArrayView> &row)>;
    /// Stores many rows the quickest way that the database has. `columns` are parted by commas.
    virtual void InsertRows(QByteArrayView table, QByteArrayView columns, const NextRow &next);

    /// Connected, and in no transaction: fit for somebody else's work.
    virtual bool IsAtRest() const = 0;

    /// A name of the state of the last commit, for Shows; empty if the database has no copies.
    virtual QByteArray Position() { return {}; }
    /// Whether what is read from now on has all that `position` names; a copy of the database
    /// follows at a distance.
    virtual bool Shows(const QByteArray &) { return true; }
    virtual bool IsCopy() const { return false; }

    /// Asked now and then while a statement runs; true ends it with Kind::Stopped. Empty: never.
    virtual void StopWhen(std::function<bool()> condition) = 0;

    /// What a PrepareQuery statement may hold in this process beside its answer, in bytes; more
    /// ends it with Kind::TooMuch. Without effect where another process does the work.
    virtual void LimitMemory(qint64 bytes) { Q_UNUSED(bytes) }

    // For the guards below. A connection that was lost is made anew by the next Begin, or by the
    // next statement outside of a transaction; what is left of a transaction says Lost again. A
    // Write within a Write is a part of it and can be undone alone, where transactions are shared.
    enum class Scope { Write, Snapshot };
    virtual void Begin(Scope scope) = 0;
    virtual void Commit() = 0;
    virtual void Rollback() noexcept = 0;

    // One line a statement, which stays prepared for the next time: a post of many rows prepares
    // each text once. For texts of the program's own, of which there are few.

    /// Binds, runs to the end; returns the number of changed rows.
    qint64 Run(QByteArrayView sql, const Values &values = {});
    /// Run for a change of which nobody asks how it ended. In a transaction the database may be
    /// told of it together with the next statement. What goes wrong is thrown by one of the
    /// statements that follow, at the latest by Commit, which then has no effect.
    void Send(QByteArrayView sql, const Values &values = {});
    /// QueryRow for what others can be asked meanwhile. Wrong goes what goes wrong as with Send.
    RowLater AskRow(QByteArrayView sql, const Values &values = {});
    /// The first row's columns, NULL as an empty text; nothing if there is no row.
    std::optional<QStringList> QueryRow(QByteArrayView sql, const Values &values = {});
    /// The first column of the first row; nothing if there is no row or it is NULL.
    std::optional<QString> QueryText(QByteArrayView sql, const Values &values = {});
    /// Whether the statement gives at least one row.
    bool Exists(QByteArrayView sql, const Values &values = {});

protected:
    /// For a driver's destructor: statements end before their session.
    void ForgetPrepared() { prepared_.Clear(); }

private:
    class InUse;

    LruCache<QByteArray, std::unique_ptr<Statement>> prepared_{128};
};

/// A write transaction for a scope: rolled back unless Commit was reached. All of them, on however
/// many connections, leave what they would leave one after the other. SQLite has them wait for one
/// another; elsewhere any statement, COMMIT too, may end in Kind::Conflict. The state that one
/// reads is that of its first statement.
class Transaction
{
public:
    explicit Transaction(Connection &connection);
    ~Transaction();
    Q_DISABLE_COPY_MOVE(Transaction)

    void Commit();

private:
    Connection &connection_;
    bool open_ = true;
};

/// For a scope, everything that is read is of one state, whatever is committed meanwhile.
class Snapshot
{
public:
    explicit Snapshot(Connection &connection);
    ~Snapshot();
    Q_DISABLE_COPY_MOVE(Snapshot)

private:
    Connection &connection_;
};

/// A part of a transaction that can be undone alone: undone unless Keep was reached.
class Savepoint
{
public:
    explicit Savepoint(Connection &connection);
    ~Savepoint();
    Q_DISABLE_COPY_MOVE(Savepoint)

    void Keep();

private:
    Connection &connection_;
    bool open_ = true;
};

} // namespace Qel::Store
