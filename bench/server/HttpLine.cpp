#include "HttpLine.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace Qel::Bench {

namespace {

[[noreturn]] void GiveUp(const QByteArray &what)
{
    std::fprintf(stderr, "%s\n", what.constData());
    std::exit(EXIT_FAILURE);
}

} // namespace

HttpLine::HttpLine(quint16 port)
    : socket_(::socket(AF_INET, SOCK_STREAM, 0))
{
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        GiveUp("no connection");
}

HttpLine::~HttpLine()
{
    ::close(socket_);
}

QByteArray HttpLine::Ask(const QByteArray &request)
{
    if (::write(socket_, request.constData(), size_t(request.size())) != request.size())
        GiveUp("not sent");
    QByteArray answer;
    qsizetype whole = -1;
    char buffer[65536];
    while (whole < 0 || answer.size() < whole) {
        const ssize_t got = ::read(socket_, buffer, sizeof buffer);
        if (got <= 0)
            GiveUp("connection lost");
        answer.append(buffer, got);
        const qsizetype head = answer.indexOf("\r\n\r\n");
        if (whole >= 0 || head < 0)
            continue;
        const QByteArray lines = answer.left(head + 2).toLower();
        const qsizetype at = lines.indexOf("content-length:");
        whole =
            head + 4 +
            (at < 0 ? 0
                    : lines.mid(at + 15, lines.indexOf('\r', at) - at - 15).trimmed().toLongLong());
    }
    if (!answer.startsWith("HTTP/1.1 200"))
        GiveUp(answer);
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

} // namespace Qel::Bench
