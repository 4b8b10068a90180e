#pragma once

#include "managers/Method.h"
#include "store/WriterPool.h"

#include <QByteArray>

#include <exception>
#include <functional>
#include <span>

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

/// Who posts what.
struct Submission
{
    Store::Operator user;
    Post post;
};

/// Finds that out on the connection on which the post then runs; changes nothing. Called before
/// each try.
using Prepare = std::function<Submission(Store::Connection &)>;

/// RunPost on a connection of the pool, again and again while other posts come in between, until
/// the deadline. Where a connection broke during the COMMIT, the key tells whether that took
/// effect. Throws what `prepare` throws, and EPostError with "post.not_done" or "post.unknown" when
/// the time is up.
Wire::PostAnswer SubmitPost(Store::WriterPool &writers,
                            Store::WriterPool::Clock::time_point deadline, const Prepare &prepare);

/// A post among several.
struct PostInGroup
{
    Store::WriterPool::Clock::time_point deadline;
    Prepare prepare;
    Wire::PostAnswer answer = {};
    std::exception_ptr failure = {}; ///< what SubmitPost would have thrown
};

/// SubmitPost for each, in their order. They share a transaction, so that one wait for the disk
/// serves all of them, and each is a part of it that is undone alone; those that cannot be a part,
/// and all of them if the whole fails, run by themselves. For a database that shares transactions.
void SubmitPosts(Store::WriterPool &writers, std::span<PostInGroup> posts);

} // namespace Qel::Managers
