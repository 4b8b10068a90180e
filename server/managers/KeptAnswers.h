#pragma once

#include "store/NowAndThen.h"
#include "store/WriterPool.h"
#include "wire/Wire.h"

#include <chrono>
#include <optional>

/// What posts with an idempotency key were answered. Kept for 72 hours.
namespace Qel::Managers {

struct PostContext;

/// The answer that the key's post got; nothing if the key is new. Throws EPostError if the key's
/// post was another one. For outside of the post's transaction: an index that many posts look into
/// and write to would have them fail one another.
std::optional<Wire::PostAnswer> FindKeptAnswer(Store::Connection &connection, const QString &key,
                                               const QString &bodyHash);

/// In the post's transaction. If the key is in use, a post without savepoints ends in
/// Kind::Constraint, thrown by this or a later statement; one with savepoints takes a key that
/// expired and was not dropped yet, and else ends in Kind::Conflict, because another post was
/// faster.
void KeepAnswer(const PostContext &post, const QString &key, const QString &bodyHash,
                const Wire::PostAnswer &answer);

/// Forgets the answers that have been kept for long enough, a part at a time.
void DropExpiredAnswers(Store::WriterPool &writers);

/// Does so now and then, on a thread of its own, so that no post pays for it.
class AnswerSweeper
{
public:
    explicit AnswerSweeper(Store::WriterPool &writers,
                           std::chrono::milliseconds interval = std::chrono::minutes(1));

private:
    Store::NowAndThen sweep_;
};

} // namespace Qel::Managers
