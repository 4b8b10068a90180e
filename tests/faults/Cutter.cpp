#include "faults/Cutter.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Qel::Faults {

Cutter::Cutter()
    : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(listener_, reinterpret_cast<sockaddr *>(&address), size);
    ::listen(listener_, 16);
    ::getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &size);
    port_ = ntohs(address.sin_port);
}

Cutter::~Cutter()
{
    ::close(listener_);
}

void Cutter::Cut(const QList<qsizetype> &lengths, bool reset)
{
    const std::lock_guard lock(lock_);
    lengths_ = lengths;
    reset_ = reset;
    cuts_ = 0;
    requests_ = 0;
}

int Cutter::Cuts() const
{
    const std::lock_guard lock(lock_);
    return cuts_;
}

int Cutter::Requests() const
{
    const std::lock_guard lock(lock_);
    return requests_;
}

qsizetype Cutter::LastAnswerSize() const
{
    const std::lock_guard lock(lock_);
    return lastAnswerSize_;
}

void Cutter::CountRequest()
{
    const std::lock_guard lock(lock_);
    ++requests_;
}

std::optional<qsizetype> Cutter::TakeLength()
{
    const std::lock_guard lock(lock_);
    return lengths_.isEmpty() ? std::nullopt : std::optional(lengths_.takeFirst());
}

void Cutter::CountAnswer(qsizetype size, bool isCut)
{
    const std::lock_guard lock(lock_);
    lastAnswerSize_ = size;
    cuts_ += isCut;
}

void Cutter::PrepareClose(int socket) const
{
    const std::lock_guard lock(lock_);
    if (!reset_)
        return;
    const linger atOnce{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

} // namespace Qel::Faults
