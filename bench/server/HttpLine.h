#pragma once

#include <QByteArray>

namespace Qel::Bench {

/// One kept-alive connection to a server on this machine, over a plain socket without delay.
class HttpLine
{
public:
    explicit HttpLine(quint16 port);
    ~HttpLine();
    Q_DISABLE_COPY_MOVE(HttpLine)

    /// Sends the bytes of a request, reads the whole answer, returns its body. Ends the program
    /// with a message if the status is not 200.
    QByteArray Ask(const QByteArray &request);

private:
    int socket_;
};

} // namespace Qel::Bench
