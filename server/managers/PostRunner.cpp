#include "managers/PostRunner.h"

#include "store/Clock.h"

#include <QCryptographicHash>

#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

constexpr int KeptHours = 72;

/// Of the operator too: a key is one operator's own.
QString BodyHash(const Store::Operator &user, const QByteArray &body)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(user.userId.toUtf8() + '\n');
    hash.addData(body);
    return QString::fromLatin1(hash.result().toHex());
}

/// The answer that the key's post got; nothing if the key is new.
std::optional<Wire::PostAnswer> KeptAnswer(Store::Connection &connection, const QString &key,
                                           const QString &bodyHash)
{
    const auto statement =
        connection.Prepare("SELECT BODY_HASH, ANSWER FROM SRV_IDEMPOTENCY WHERE KEY = ?1");
    statement->Bind(1, key);
    if (!statement->Step())
        return std::nullopt;
    if (statement->ColumnText(0) != bodyHash)
        throw EPostError("post.key_reused", u"同一提交标识用于不同的内容，已拒绝。"_s);
    return Wire::DecodePostAnswer(QByteArray::fromBase64(statement->ColumnBytes(1).toByteArray()),
                                  Wire::Format::Cbor);
}

void KeepAnswer(Store::Connection &connection, const QString &key, const QString &bodyHash,
                const Wire::PostAnswer &answer)
{
    connection.Run("INSERT INTO SRV_IDEMPOTENCY (KEY, BODY_HASH, ANSWER, CREATED)"
                   " VALUES (?1, ?2, ?3, ?4)",
                   {key, bodyHash,
                    QString::fromLatin1(Wire::Encode(answer, Wire::Format::Cbor).toBase64()),
                    Store::DateText(QDateTime::currentDateTime())});
}

void DropExpiredKeys(Store::Connection &connection)
{
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-KeptHours * 3600);
    connection.Run("DELETE FROM SRV_IDEMPOTENCY WHERE CREATED < ?1", {Store::DateText(oldest)});
}

Wire::ResultRow RunRow(PostContext &context, const Method &method, const PostedRow &row)
{
    const QString lastUser = row[u"LAST_USER"_s];
    context.lastUser = lastUser.isEmpty() ? context.user.userName : lastUser;
    try {
        return method.run(context, row);
    } catch (const Store::EStoreError &error) {
        if (error.WhichKind() != Store::EStoreError::Kind::Constraint)
            throw;
        return {Failed, {}};
    }
}

Wire::PostAnswer RunAsOne(PostContext &context, const Method &method,
                          const QList<Wire::NamedValues> &rows)
{
    Wire::PostAnswer answer;
    if (rows.isEmpty())
        answer.rows.append({Stored, {}}); // screens read the first result
    Store::Savepoint savepoint(context.connection);
    for (const auto &row : rows) {
        answer.rows.append(RunRow(context, method, PostedRow(row)));
        const QString code = answer.rows.last().code;
        if (code != Stored) {
            context.changes.clear();
            answer.rows.fill({code, {}}, rows.size());
            return answer;
        }
    }
    if (method.finish)
        method.finish(context, rows);
    savepoint.Keep();
    return answer;
}

Wire::PostAnswer RunRowByRow(PostContext &context, const Method &method,
                             const QList<Wire::NamedValues> &rows)
{
    Wire::PostAnswer answer;
    for (const auto &values : rows) {
        const PostedRow row(values);
        const qsizetype changesBefore = context.changes.size();
        Store::Savepoint savepoint(context.connection);
        Wire::ResultRow result = RunRow(context, method, row);
        for (const QString &name : method.echo)
            result.values.append({name, row[name]});
        answer.rows.append(result);
        if (result.code == Stored)
            savepoint.Keep();
        else
            context.changes.resize(changesBefore);
    }
    return answer;
}

} // namespace

Wire::PostAnswer RunPost(Store::Connection &connection, const Store::Operator &user,
                         const Post &post)
{
    const Wire::PostRequest &request = post.request;
    const Method *method = FindMethod(request.manager, request.method);
    if (!method)
        throw EPostError(
            "post.unknown_method",
            u"服务器没有方法 %1/%2。"_s.arg(request.manager.left(100), request.method.left(100)));
    CheckRows(*method, request.rows, user);

    Store::Transaction transaction(connection);
    const QString key = QString::fromLatin1(post.key);
    const QString bodyHash = BodyHash(user, post.body);
    if (!key.isEmpty()) {
        DropExpiredKeys(connection);
        if (auto kept = KeptAnswer(connection, key, bodyHash))
            return *kept;
    }
    PostContext context{connection, user, Store::Now(), {}};
    const Wire::PostAnswer answer =
        (method->RowByRow() ? RunRowByRow : RunAsOne)(context, *method, request.rows);
    WriteLog(context);
    if (!key.isEmpty())
        KeepAnswer(connection, key, bodyHash, answer);
    transaction.Commit();
    return answer;
}

} // namespace Qel::Managers
