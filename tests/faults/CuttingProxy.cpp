#include "faults/CuttingProxy.h"

#include "faults/Line.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace Qel::Faults {

namespace {

constexpr int LookTime = 50; ///< milliseconds between two looks at whether to stop

QByteArray WithAccept(QByteArray request, const QByteArray &mediaType)
{
    constexpr QByteArrayView field = "\r\nAccept: ";
    const qsizetype at = request.indexOf(field);
    const qsizetype end = request.indexOf("\r\n", at + field.size());
    return at < 0 ? request : request.replace(at, end - at, field.toByteArray() + mediaType);
}

} // namespace

CuttingProxy::CuttingProxy(quint16 serverPort)
    : serverPort_(serverPort)
    , thread_([this] { Run(); })
{
}

CuttingProxy::~CuttingProxy()
{
    stop_ = true;
    thread_.join();
    for (const Peer &peer : peers_)
        ::close(peer.socket);
}

void CuttingProxy::SetAccept(const QByteArray &mediaType)
{
    const std::lock_guard lock(acceptLock_);
    accept_ = mediaType;
}

void CuttingProxy::Run()
{
    while (!stop_) {
        std::vector<pollfd> watched{{Listener(), POLLIN, 0}};
        for (const Peer &peer : peers_)
            watched.push_back({peer.socket, POLLIN, 0});
        if (::poll(watched.data(), watched.size(), LookTime) <= 0)
            continue;
        for (std::size_t at = watched.size() - 1; at > 0; --at) {
            if (watched[at].revents == 0 || Serve(peers_[at - 1]))
                continue;
            ::close(peers_[at - 1].socket);
            peers_.erase(peers_.begin() + std::ptrdiff_t(at - 1));
        }
        if (watched[0].revents != 0)
            peers_.push_back({::accept(Listener(), nullptr, nullptr), {}});
    }
}

bool CuttingProxy::Serve(Peer &peer)
{
    char buffer[65536];
    const ssize_t got = ::recv(peer.socket, buffer, sizeof buffer, 0);
    if (got <= 0)
        return false;
    peer.received.append(buffer, got);
    const qsizetype whole = WholeMessage(peer.received);
    if (whole < 0 || peer.received.size() < whole)
        return true;
    const QByteArray request = peer.received.first(whole);
    peer.received.remove(0, whole);
    return Answer(peer, request);
}

bool CuttingProxy::Answer(const Peer &peer, QByteArray request)
{
    CountRequest();
    {
        const std::lock_guard lock(acceptLock_);
        if (!accept_.isEmpty())
            request = WithAccept(request, accept_);
    }
    const QByteArray answer = Line(serverPort_).AskBytes(request);
    const qsizetype length = TakeLength().value_or(answer.size());
    const bool isCut = length < answer.size();
    CountAnswer(answer.size(), isCut);
    ::send(peer.socket, answer.constData(), std::size_t(std::min(length, answer.size())),
           MSG_NOSIGNAL);
    if (isCut)
        PrepareClose(peer.socket);
    return !isCut;
}

} // namespace Qel::Faults
