#include "faults/StreamCutter.h"

#include "faults/Line.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace Qel::Faults {

namespace {

constexpr int LookTime = 50; ///< milliseconds between two looks at whether to stop

} // namespace

StreamCutter::StreamCutter(quint16 serverPort)
    : serverPort_(serverPort)
    , thread_([this] { Run(); })
{
}

StreamCutter::~StreamCutter()
{
    stop_ = true;
    thread_.join();
    for (const Pair &pair : pairs_)
        Close(pair);
}

void StreamCutter::Run()
{
    while (!stop_) {
        std::vector<pollfd> watched{{Listener(), POLLIN, 0}};
        for (const Pair &pair : pairs_) {
            watched.push_back({pair.client, POLLIN, 0});
            watched.push_back({pair.server, POLLIN, 0});
        }
        if (::poll(watched.data(), watched.size(), LookTime) <= 0)
            continue;
        std::size_t at = 1;
        for (auto pair = pairs_.begin(); pair != pairs_.end(); at += 2) {
            if ((watched[at].revents == 0 || PassOn(*pair, false)) &&
                (watched[at + 1].revents == 0 || PassOn(*pair, true))) {
                ++pair;
                continue;
            }
            Close(*pair);
            pair = pairs_.erase(pair);
        }
        if (watched[0].revents != 0)
            Accept();
    }
}

void StreamCutter::Accept()
{
    CountRequest();
    const int client = ::accept4(Listener(), nullptr, nullptr, SOCK_CLOEXEC);
    pairs_.push_back({client, ConnectedSocket(serverPort_), TakeLength()});
}

bool StreamCutter::PassOn(Pair &pair, bool fromServer)
{
    char buffer[65536];
    const ssize_t got = ::recv(fromServer ? pair.server : pair.client, buffer, sizeof buffer, 0);
    if (got <= 0)
        return false;
    qsizetype passed = got;
    bool isCut = false;
    if (fromServer) {
        const qsizetype left = pair.length ? *pair.length - pair.sent : passed;
        passed = std::min(passed, left);
        isCut = passed < got;
        pair.sent += got;
        CountAnswer(pair.sent, isCut);
    }
    ::send(fromServer ? pair.client : pair.server, buffer, std::size_t(passed), MSG_NOSIGNAL);
    if (isCut)
        PrepareClose(pair.client);
    return !isCut;
}

void StreamCutter::Close(const Pair &pair) const
{
    ::close(pair.client);
    ::close(pair.server);
}

} // namespace Qel::Faults
