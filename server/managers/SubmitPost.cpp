#include "managers/PostRunner.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

using Kind = Store::EStoreError::Kind;

/// What the operator is told of a failure after which nobody can know, or after which it is
/// certain that nothing was written.
EPostError Explained(const Store::EStoreError &error, bool isUnknown)
{
    if (isUnknown)
        return {"post.unknown",
                u"保存时与数据库的连接中断，无法确定是否已保存，请查询核对后再操作。"_s,
                error.Message()};
    return {"post.not_done", u"未能在规定时间内完成保存，没有保存任何内容，请稍后重试。"_s,
            error.Message()};
}

bool IsOfTime(const Store::EStoreError &error)
{
    const Kind kind = error.WhichKind();
    return kind == Kind::Conflict || kind == Kind::Lost || kind == Kind::Stopped;
}

/// A post among several that share a transaction.
struct Part
{
    explicit Part(PostInGroup &shared)
        : post(shared)
    {
    }

    void Run(Store::Connection &connection)
    {
        isDone = true;
        post.failure = nullptr;
        try {
            const auto [user, asked] = post.prepare(connection);
            hasKey = !asked.key.isEmpty();
            post.answer = RunPost(connection, user, asked);
        } catch (const Store::EStoreError &) {
            isDone = false; // by itself it may go better, or says why not
        } catch (...) {
            post.failure = std::current_exception();
        }
    }

    PostInGroup &post;
    bool hasKey = false;
    bool isDone = false; ///< with an answer or a failure
};

/// Those that are not done afterwards have had no effect, or their keys tell of it.
void RunTogether(Store::WriterPool &writers, std::vector<Part> &parts)
{
    const auto deadlineOf = [](const Part &part) { return part.post.deadline; };
    const auto first = deadlineOf(*std::ranges::min_element(parts, {}, deadlineOf));
    try {
        writers.Run(first, [&](Store::Connection &connection) {
            Store::Transaction shared(connection);
            for (Part &part : parts) {
                part.Run(connection);
                if (connection.IsAtRest()) // it made the database undo everything
                    throw Store::EStoreError(Kind::Failure, u"共用的事务已撤销"_s);
            }
            shared.Commit();
        });
    } catch (const Store::EStoreError &error) {
        const bool inDoubt = error.WhichKind() == Kind::InDoubt;
        for (Part &part : parts) {
            part.isDone = inDoubt && !part.hasKey;
            if (part.isDone)
                part.post.failure = std::make_exception_ptr(Explained(error, inDoubt));
        }
    }
}

} // namespace

Wire::PostAnswer SubmitPost(Store::WriterPool &writers,
                            Store::WriterPool::Clock::time_point deadline, const Prepare &prepare)
{
    bool hasKey = false;
    for (bool inDoubt = false;; inDoubt = true) {
        try {
            Wire::PostAnswer answer;
            writers.Run(deadline, [&](Store::Connection &connection) {
                const auto [user, post] = prepare(connection);
                hasKey = !post.key.isEmpty();
                answer = RunPost(connection, user, post);
            });
            return answer;
        } catch (const Store::EStoreError &error) {
            const bool isDoubtful = error.WhichKind() == Kind::InDoubt;
            // Run again, the post finds its key; or it waits for the COMMIT that still has it.
            if (isDoubtful && hasKey)
                continue;
            if (inDoubt || isDoubtful || IsOfTime(error))
                throw Explained(error, inDoubt || isDoubtful);
            throw;
        }
    }
}

void SubmitPosts(Store::WriterPool &writers, std::span<PostInGroup> posts)
{
    std::vector<Part> parts(posts.begin(), posts.end());
    RunTogether(writers, parts);
    for (const Part &part : parts) {
        if (part.isDone)
            continue;
        PostInGroup &post = part.post;
        try {
            post.failure = nullptr;
            post.answer = SubmitPost(writers, post.deadline, post.prepare);
        } catch (...) {
            post.failure = std::current_exception();
        }
    }
}

} // namespace Qel::Managers
