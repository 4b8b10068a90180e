#include "managers/KeptAnswers.h"

#include "managers/Method.h"
#include "store/Clock.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Managers {

namespace {

constexpr auto KeptFor = 72h;
constexpr qint64 DroppedAtOnce = 1'000; ///< a few milliseconds, for which posts may have to wait
constexpr auto SweepTime = 10s;

QString OldestDate()
{
    thread_local Store::RecentDate oldest(KeptFor);
    return oldest.Text();
}

} // namespace

std::optional<Wire::PostAnswer> FindKeptAnswer(Store::Connection &connection, const QString &key,
                                               const QString &bodyHash)
{
    const auto kept =
        connection.QueryRow("SELECT BODY_HASH, ANSWER FROM SRV_IDEMPOTENCY WHERE KEY = ?1"
                            " AND CREATED >= ?2",
                            {key, OldestDate()});
    if (!kept)
        return std::nullopt;
    if (kept->at(0) != bodyHash)
        throw EPostError("post.key_reused", u"同一提交标识用于不同的内容，已拒绝。"_s);
    return Wire::DecodePostAnswer(QByteArray::fromBase64(kept->at(1).toLatin1()),
                                  Wire::Format::Cbor);
}

void KeepAnswer(const PostContext &post, const QString &key, const QString &bodyHash,
                const Wire::PostAnswer &answer)
{
    static constexpr char Insert[] =
        "INSERT INTO SRV_IDEMPOTENCY (KEY, BODY_HASH, ANSWER, CREATED) VALUES (?1, ?2, ?3, ?4)";
    Store::Values values{key, bodyHash,
                         QString::fromLatin1(Wire::Encode(answer, Wire::Format::Cbor).toBase64()),
                         post.now};
    if (!post.withSavepoints)
        return post.Write(Insert, values);
    values.append(OldestDate());
    const qint64 stored = post.connection.Run(
        Insert + QByteArray(" ON CONFLICT (KEY) DO UPDATE SET BODY_HASH = excluded.BODY_HASH,"
                            " ANSWER = excluded.ANSWER, CREATED = excluded.CREATED"
                            " WHERE SRV_IDEMPOTENCY.CREATED < ?5"),
        values);
    if (stored == 0)
        throw Store::EStoreError(Store::EStoreError::Kind::Conflict,
                                 u"同一提交标识同时由另一请求使用"_s);
}

void DropExpiredAnswers(Store::WriterPool &writers)
{
    const QString oldest = OldestDate();
    qint64 dropped = DroppedAtOnce;
    while (dropped == DroppedAtOnce) {
        writers.Run(
            Store::WriterPool::Clock::now() + SweepTime, [&](Store::Connection &connection) {
                dropped = connection.Run("DELETE FROM SRV_IDEMPOTENCY WHERE KEY IN (SELECT KEY"
                                         " FROM SRV_IDEMPOTENCY WHERE CREATED < ?1 LIMIT ?2)",
                                         {oldest, DroppedAtOnce});
            });
    }
}

AnswerSweeper::AnswerSweeper(Store::WriterPool &writers, std::chrono::milliseconds interval)
    : sweep_(interval, Store::NowAndThen::First::AfterOneInterval,
             [&writers](const std::stop_token &) { DropExpiredAnswers(writers); })
{
}

} // namespace Qel::Managers
