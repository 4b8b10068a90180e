#include "managers/PostRunner.h"

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

} // namespace

void PreparePost(Store::WriterPool &writers, Store::WriterPool::Clock::time_point deadline,
                 const std::function<void(Store::Connection &)> &work)
{
    try {
        writers.Run(deadline, work);
    } catch (const Store::EStoreError &error) {
        if (IsOfTime(error))
            throw Explained(error, /*isUnknown=*/false);
        throw;
    }
}

Wire::PostAnswer SubmitPost(Store::WriterPool &writers,
                            Store::WriterPool::Clock::time_point deadline,
                            const Store::Operator &user, const Post &post)
{
    for (bool inDoubt = false;; inDoubt = true) {
        try {
            Wire::PostAnswer answer;
            writers.Run(deadline, [&](Store::Connection &connection) {
                answer = RunPost(connection, user, post);
            });
            return answer;
        } catch (const Store::EStoreError &error) {
            const bool isDoubtful = error.WhichKind() == Kind::InDoubt;
            // Run again, the post finds its key; or it waits for the COMMIT that still has it.
            if (isDoubtful && !post.key.isEmpty())
                continue;
            if (inDoubt || isDoubtful || IsOfTime(error))
                throw Explained(error, inDoubt || isDoubtful);
            throw;
        }
    }
}

} // namespace Qel::Managers
