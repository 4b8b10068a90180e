#pragma once

#include "managers/Method.h"
#include "store/WriterPool.h"

#include <QByteArray>

#include <functional>

namespace Qel::Managers {

struct Post
{
    Wire::PostRequest request;
    QByteArray key;  ///< idempotency key; empty: none
    QByteArray body; ///< as it was sent: what the key stands for
};

/// Runs a post in one transaction. Every row is stored, or none, and after a refusal every result
/// row carries the refusal's code; a method that works row by row gives each row its own. A list
/// without rows, where the method takes one, is answered with one result.
///
/// A post with a key takes effect once: the answer is kept with the key for 72 hours, and the
/// same post again gets it without doing anything. Throws EPostError, EStoreError; after a
/// Conflict it may be called again.
Wire::PostAnswer RunPost(Store::Connection &connection, const Store::Operator &user,
                         const Post &post);

/// Calls `work`, which reads what has to be known before a post, on a connection of the pool.
/// Throws EPostError with "post.not_done" when the time is up.
void PreparePost(Store::WriterPool &writers, Store::WriterPool::Clock::time_point deadline,
                 const std::function<void(Store::Connection &)> &work);

/// RunPost on a connection of the pool, again and again while other posts come in between, until
/// the deadline. Where a connection broke during the COMMIT, the key tells whether that took
/// effect. Throws EPostError with "post.not_done" or "post.unknown" when the time is up.
Wire::PostAnswer SubmitPost(Store::WriterPool &writers,
                            Store::WriterPool::Clock::time_point deadline,
                            const Store::Operator &user, const Post &post);

} // namespace Qel::Managers
