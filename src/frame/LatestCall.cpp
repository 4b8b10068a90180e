#include "frame/LatestCall.h"

#include "frame/DataModule.h"

#include <utility>

namespace Qel {

namespace {
constexpr int RetryMilliseconds = 20;
}

LatestCall::LatestCall(std::function<void()> function, QObject *parent)
    : QObject(parent)
    , function_(std::move(function))
{
    timer_.setSingleShot(true);
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &LatestCall::Run);
}

void LatestCall::Run()
{
    // The event loop of a call that is under way: its handler comes first.
    const bool busy = DataModule().SoapCtrl().IsRunning();
    timer_.setInterval(busy ? RetryMilliseconds : 0);
    if (busy)
        timer_.start();
    else
        function_();
}

} // namespace Qel
