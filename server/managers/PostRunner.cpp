#include "managers/PostRunner.h"

#include "managers/KeptAnswers.h"
#include "managers/Scope.h"
#include "store/Clock.h"

#include <QCryptographicHash>

#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

/// Of the operator too: a key is one operator's own.
QString BodyHash(const Store::Operator &user, const QByteArray &body)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(user.userId.toUtf8() + '\n');
    hash.addData(body);
    return QString::fromLatin1(hash.result().toHex());
}

/// Nothing if the database refused the row.
std::optional<Wire::ResultRow> RunRow(PostContext &context, const Method &method,
                                      const PostedRow &row)
{
    const QString lastUser = row[u"LAST_USER"_s];
    context.lastUser = lastUser.isEmpty() ? context.user.userName : lastUser;
    try {
        return method.run(context, row);
    } catch (const Store::EStoreError &error) {
        if (error.WhichKind() != Store::EStoreError::Kind::Constraint)
            throw;
        return std::nullopt;
    }
}

/// Undoes what a refused row, or a refused list, has stored. Only few refusals come after something
/// was stored, and a savepoint costs two statements: a post is run without them first, and from its
/// beginning with them where one would have been needed.
class Undo
{
public:
    explicit Undo(PostContext &context)
        : context_(context)
        , changesBefore_(context.changes.size())
    {
        if (context.withSavepoints)
            savepoint_.emplace(context.connection);
    }

    /// False: cannot be undone alone.
    bool Refuse(bool byDatabase)
    {
        const bool possible =
            savepoint_ || (!byDatabase && context_.changes.size() == changesBefore_);
        context_.changes.resize(changesBefore_);
        savepoint_.reset();
        return possible;
    }
    void Keep()
    {
        if (savepoint_)
            savepoint_->Keep();
    }

private:
    PostContext &context_;
    qsizetype changesBefore_;
    std::optional<Store::Savepoint> savepoint_;
};

/// Nothing: to be run again with savepoints.
using Outcome = std::optional<Wire::PostAnswer>;

Outcome RunAsOne(PostContext &context, const Method &method, const QList<Wire::NamedValues> &rows)
{
    Wire::PostAnswer answer;
    if (rows.isEmpty())
        answer.rows.append({Stored, {}}); // screens read the first result
    Undo undo(context);
    for (const auto &row : rows) {
        const auto result = RunRow(context, method, PostedRow(row));
        answer.rows.append(result.value_or(Wire::ResultRow{Failed, {}}));
        const QString code = answer.rows.last().code;
        if (code != Stored) {
            answer.rows.fill({code, {}}, rows.size());
            return undo.Refuse(/*byDatabase=*/!result) ? Outcome(answer) : std::nullopt;
        }
    }
    if (method.finish)
        method.finish(context, rows);
    undo.Keep();
    return answer;
}

Outcome RunRowByRow(PostContext &context, const Method &method,
                    const QList<Wire::NamedValues> &rows)
{
    Wire::PostAnswer answer;
    for (const auto &values : rows) {
        const PostedRow row(values);
        Undo undo(context);
        const auto result = RunRow(context, method, row);
        answer.rows.append(result.value_or(Wire::ResultRow{Failed, {}}));
        for (const QString &name : method.echo)
            answer.rows.last().values.append({name, row[name]});
        if (answer.rows.last().code == Stored)
            undo.Keep();
        else if (!undo.Refuse(/*byDatabase=*/!result))
            return std::nullopt;
    }
    return answer;
}

/// One transaction: all of it or nothing.
Outcome RunOnce(Store::Connection &connection, const Store::Operator &user, const Post &post,
                const Method &method, const QString &bodyHash, bool withSavepoints)
{
    Store::Transaction transaction(connection);
    CheckScope(connection, method, post.request.rows, user);
    PostContext context{.connection = connection,
                        .user = user,
                        .now = Store::Now(),
                        .lastUser = {},
                        .withSavepoints = withSavepoints};
    const Outcome answer =
        (method.RowByRow() ? RunRowByRow : RunAsOne)(context, method, post.request.rows);
    if (!answer)
        return std::nullopt;
    WriteLog(context);
    if (!post.key.isEmpty())
        KeepAnswer(context, QString::fromLatin1(post.key), bodyHash, *answer);
    transaction.Commit();
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

    const QString bodyHash = BodyHash(user, post.body);
    const auto findKept = [&]() -> Outcome {
        if (post.key.isEmpty())
            return std::nullopt;
        return FindKeptAnswer(connection, QString::fromLatin1(post.key), bodyHash);
    };
    // A key is new nearly always. Where it is not, no answer of this run is kept.
    try {
        if (auto answer = RunOnce(connection, user, post, *method, bodyHash, false))
            return *std::move(answer);
    } catch (const EPostError &) {
        if (auto kept = findKept())
            return *std::move(kept);
        throw;
    } catch (const Store::EStoreError &error) {
        // Of the key, or of a change whose end nobody waited for.
        if (error.WhichKind() != Store::EStoreError::Kind::Constraint)
            throw;
    }
    if (auto kept = findKept())
        return *std::move(kept);
    auto answer = RunOnce(connection, user, post, *method, bodyHash, true);
    Q_ASSERT(answer); // with savepoints everything can be undone
    return *std::move(answer);
}

} // namespace Qel::Managers
