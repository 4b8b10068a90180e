#include "faults/Line.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace Qel::Faults {

namespace {

constexpr timeval Patience{30, 0};

} // namespace

qsizetype WholeMessage(const QByteArray &message)
{
    const qsizetype head = message.indexOf("\r\n\r\n");
    if (head < 0)
        return -1;
    const QByteArray lines = message.first(head + 2).toLower();
    constexpr QByteArrayView field = "\ncontent-length:";
    const qsizetype at = lines.indexOf(field);
    if (at < 0)
        return head + 4;
    const qsizetype from = at + field.size();
    return head + 4 + lines.mid(from, lines.indexOf('\r', from) - from).trimmed().toLongLong();
}

int ConnectedSocket(quint16 port)
{
    const int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(made, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0)
        return made;
    ::close(made);
    return -1;
}

Line::Line(quint16 port)
    : socket_(ConnectedSocket(port))
{
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &Patience, sizeof Patience);
}

Line::~Line()
{
    Close();
}

HttpReply Line::Ask(const QByteArray &request)
{
    const QByteArray answer = AskBytes(request);
    if (answer.isEmpty())
        return {};
    return {answer.mid(9, 3).toInt(), {}, answer.mid(answer.indexOf("\r\n\r\n") + 4)};
}

QByteArray Line::AskBytes(const QByteArray &request)
{
    if (!IsOpen() || ::send(socket_, request.constData(), size_t(request.size()), MSG_NOSIGNAL) !=
                         request.size()) {
        Close();
        return {};
    }
    QByteArray answer;
    char buffer[65536];
    qsizetype whole = -1;
    while (whole < 0 || answer.size() < whole) {
        const ssize_t got = ::recv(socket_, buffer, sizeof buffer, 0);
        if (got <= 0) {
            Close();
            return {};
        }
        answer.append(buffer, got);
        if (whole < 0)
            whole = WholeMessage(answer);
    }
    return answer;
}

void Line::Close()
{
    if (socket_ >= 0)
        ::close(socket_);
    socket_ = -1;
}

} // namespace Qel::Faults
