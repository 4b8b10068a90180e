#include "faults/CuttingProxy.h"

#include "faults/Line.h"

#include <arpa/inet.h>
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
    , listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(listener_, reinterpret_cast<sockaddr *>(&address), size);
    ::listen(listener_, 16);
    ::getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Run(); });
}

CuttingProxy::~CuttingProxy()
{
    stop_ = true;
    thread_.join();
    for (const Peer &peer : peers_)
        ::close(peer.socket);
    ::close(listener_);
}

void CuttingProxy::Cut(const QList<qsizetype> &lengths, bool reset)
{
    const std::lock_guard lock(lock_);
    lengths_ = lengths;
    reset_ = reset;
    requests_ = 0;
}

void CuttingProxy::SetAccept(const QByteArray &mediaType)
{
    const std::lock_guard lock(lock_);
    accept_ = mediaType;
}

int CuttingProxy::Requests() const
{
    const std::lock_guard lock(lock_);
    return requests_;
}

qsizetype CuttingProxy::LastAnswerSize() const
{
    const std::lock_guard lock(lock_);
    return lastAnswerSize_;
}

void CuttingProxy::Run()
{
    while (!stop_) {
        std::vector<pollfd> watched{{listener_, POLLIN, 0}};
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
            peers_.push_back({::accept(listener_, nullptr, nullptr), {}});
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

bool CuttingProxy::Answer(Peer &peer, QByteArray request)
{
    const std::lock_guard lock(lock_);
    ++requests_;
    if (!accept_.isEmpty())
        request = WithAccept(request, accept_);
    const QByteArray answer = Line(serverPort_).AskBytes(request);
    lastAnswerSize_ = answer.size();
    const bool isCut = !lengths_.isEmpty();
    const qsizetype length = isCut ? std::min(lengths_.takeFirst(), answer.size()) : answer.size();
    ::send(peer.socket, answer.constData(), std::size_t(length), MSG_NOSIGNAL);
    if (isCut && reset_) {
        const linger atOnce{1, 0};
        ::setsockopt(peer.socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    return !isCut;
}

} // namespace Qel::Faults
