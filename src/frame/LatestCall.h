#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace Qel {

/// Runs a function once for any number of requests that come in while events are handled, and
/// never while the remote service is busy: what a quickly moving focus asks for is loaded for the
/// place where it came to rest.
class LatestCall : public QObject
{
public:
    explicit LatestCall(std::function<void()> function, QObject *parent = nullptr);

    void Request() { timer_.start(); } ///< runs the function from the event loop, once
    void Cancel() { timer_.stop(); }   ///< forgets a request that has not run yet

private:
    void Run();

    std::function<void()> function_;
    QTimer timer_;
};

} // namespace Qel
