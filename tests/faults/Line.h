#pragma once

#include "support/ServerProcess.h"

namespace Qel::Faults {

/// The length of the whole HTTP message that begins with these bytes; -1: its head is not there
/// yet.
qsizetype WholeMessage(const QByteArray &message);

/// A socket that is connected to the port of this machine; -1: nobody listens there.
int ConnectedSocket(quint16 port);

/// A connection to a server over a plain socket, kept alive. Any thread may use it, one at a time.
class Line
{
public:
    explicit Line(quint16 port);
    ~Line();
    Q_DISABLE_COPY_MOVE(Line)

    bool IsOpen() const { return socket_ >= 0; }

    /// Sends the bytes of a request and reads the whole answer; status 0 if the connection ended
    /// before that, or half a minute passed, and then it is closed.
    HttpReply Ask(const QByteArray &request);
    /// The same as the bytes that came; empty if not all did.
    QByteArray AskBytes(const QByteArray &request);

private:
    void Close();

    int socket_;
};

} // namespace Qel::Faults
