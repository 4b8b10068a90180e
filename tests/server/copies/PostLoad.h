#pragma once

#include "support/ServerProcess.h"

#include <atomic>
#include <thread>
#include <vector>

namespace Qel {

QString TypeQuery(const QString &name);

/// A new member type, which any number of operators may add at once.
HttpCall NewType(const QString &name, const QByteArray &key = {});
HttpCall Query(const QString &sql, const QByteArray &position = {});

qint64 RowsOf(const HttpReply &reply);  ///< of the answer to a query; -1: it was an error
QString CodeOf(const HttpReply &reply); ///< of the first result; empty: it was an error

/// Operators at work: each stores a type, under the same key until it is acknowledged, and then
/// asks the next address for it.
class PostLoad
{
public:
    PostLoad(const std::vector<quint16> &ports, int operators);
    ~PostLoad() { End(); }
    Q_DISABLE_COPY_MOVE(PostLoad)

    void End();

    std::atomic<int> acknowledged = 0;
    std::atomic<int> failedPosts = 0;
    std::atomic<int> failedQueries = 0;
    std::atomic<int> unseen = 0; ///< queries that did not show what their operator had stored

private:
    void Work(int number);

    std::vector<quint16> ports_;
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> threads_;
};

} // namespace Qel
