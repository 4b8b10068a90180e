#pragma once

#include "dataset/QelError.h"
#include "managers/Audit.h"
#include "store/Connection.h"
#include "store/Credentials.h"
#include "wire/Wire.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

/// What posts do. One file a manager class, one function a method; Methods() is the table of them.
namespace Qel::Managers {

/// A post that is refused as a whole before anything is written. Code() is one of
///   post.unknown_method  no such manager class or method
///   post.bad_row         no rows or too many, a parameter that is unknown, doubled or missing,
///                        a value that does not fit, a record that an earlier row names
///   post.operator        a row names another operator than the credential
///   post.scope           the operator's token is limited to groups, and this is about others
///   post.key_reused      the idempotency key came before with another body
///   post.not_done        others came in between, or the database was slow or away, for too long
/// or one of which nobody knows whether it was written:
///   post.unknown         the connection to the database broke during the COMMIT
class EPostError : public EQelError
{
public:
    EPostError(const QByteArray &code, const QString &message, const QString &detail = {})
        : EQelError(message)
        , code_(code)
        , detail_(detail)
    {
    }

    const QByteArray &Code() const { return code_; }
    const QString &Detail() const { return detail_; } ///< for the log; may be empty

private:
    QByteArray code_;
    QString detail_;
};

/// A look at one posted row, which has a dozen values at most and must outlive it.
class PostedRow
{
public:
    explicit PostedRow(const Wire::NamedValues &values)
        : values_(values)
    {
    }

    /// Empty if the row has no such value.
    QString operator[](const QString &name) const;
    bool Has(const QString &name) const;
    /// The values of these parameters, in their order.
    QStringList Of(const QStringList &names) const;

private:
    const Wire::NamedValues &values_;
};

/// What a method works with: one transaction and who acts.
struct PostContext
{
    Store::Connection &connection;
    const Store::Operator &user;
    QString now;                      ///< the moment of the post, as dates are stored
    QString lastUser;                 ///< what the row at hand leaves as LAST_USER
    QList<LoggedChange> changes = {}; ///< so far; see LogChange
    bool withSavepoints = false;      ///< what the database refuses is undone by itself
    QSet<QStringList> found = {};     ///< references of earlier rows that no row of the method ends

    /// Runs a statement that changes rows and of which nobody asks how many. Without savepoints
    /// nobody waits for its end either: what refuses it undoes the post as a whole.
    void Write(QByteArrayView sql, const Store::Values &values) const
    {
        if (withSavepoints)
            connection.Run(sql, values);
        else
            connection.Send(sql, values);
    }
};

/// Result codes as the screens read them; what the two refusals mean is the method's own.
inline const QString Stored = QStringLiteral("1");
inline const QString Failed = QStringLiteral("0");
inline const QString FirstRefusal = QStringLiteral("-1");
inline const QString SecondRefusal = QStringLiteral("-2");

/// As LAST_OPERATE: removes the row. Everything else stores it as live.
inline const QString Deletion = QStringLiteral("D");

inline bool IsFlag(const QString &value)
{
    return value == QStringLiteral("0") || value == QStringLiteral("1");
}

/// Stores one row or refuses it. A refusal may leave changes behind: the caller undoes them.
using MethodFunction = Wire::ResultRow (*)(PostContext &post, const PostedRow &row);

/// What the rows mean as a list, once each of them is stored.
using FinishFunction = void (*)(PostContext &post, const QList<Wire::NamedValues> &rows);

struct Method
{
    QString manager;
    QString name;
    QString table;          ///< whose columns give the sizes of the parameters
    QStringList parameters; ///< columns of that table; the operator's parameters come beside them
    QStringList key;        ///< those that name a record; a list names each record once
    MethodFunction run;
    QStringList echo = {};           ///< see RowByRow
    bool takesNoRows = false;        ///< an empty list is stored, too
    QStringList flags = {};          ///< parameters that are no columns: "0" or "1"
    FinishFunction finish = nullptr; ///< of all rows or none only; null: the rows are all there is

    /// Each row is stored or refused by itself, and its result gives its `echo` parameters back.
    /// Otherwise all rows are stored or none.
    bool RowByRow() const { return !echo.isEmpty(); }
};

/// The methods of a manager whose rows consist of a record's keys alone, answered row by row; each
/// result gives the `echo` key back.
QList<Method> MethodsOfKeys(const QString &manager, const QString &table, const QStringList &keys,
                            const QString &echo,
                            const QList<std::pair<QString, MethodFunction>> &methods);

const QList<Method> &Methods();

/// Null: there is none.
const Method *FindMethod(const QString &manager, const QString &name);

/// Throws EPostError if the rows are not what the method takes or name another operator.
void CheckRows(const Method &method, const QList<Wire::NamedValues> &rows,
               const Store::Operator &user);

} // namespace Qel::Managers
