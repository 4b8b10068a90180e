#pragma once

#include "wire/Wire.h"

#include <QProcess>
#include <QStringList>
#include <QTcpSocket>

namespace Qel {

/// What came back over the wire.
struct HttpReply
{
    int status = 0; ///< 0: no answer
    QByteArray contentType;
    QByteArray body = {};
    QByteArray head = {}; ///< status line and headers

    QByteArray Header(const QByteArray &name) const; ///< empty: it is not there
};

/// One connection to a server, spoken to byte by byte.
class RawClient
{
public:
    explicit RawClient(quint16 port);

    void Send(const QByteArray &bytes);
    HttpReply Receive(); ///< one whole answer
    bool WaitForClose(int milliseconds);
    QTcpSocket &Socket() { return socket_; }

private:
    QTcpSocket socket_;
    QByteArray pending_;
};

struct HttpCall
{
    QByteArray method = "POST";
    QByteArray path = {};
    QByteArray body = {};
    Wire::Format format = Wire::Format::Json;
    QByteArray credential = "admin:0123456789abcdef-admin"; ///< empty: no header
    QByteArray key = {};                                    ///< Idempotency-Key
    QByteArray accept = {};                                 ///< empty: as the body's format
    QByteArray position = {};                               ///< QEL-Position
};

/// The bytes of the request.
QByteArray ToBytes(const HttpCall &call);

/// Arguments for a server whose figures are asked for.
inline const QStringList WithMetrics{QStringLiteral("--metrics-listen"),
                                     QStringLiteral("127.0.0.1:0")};

/// qel-server as a process of its own on a free loopback port.
class ServerProcess
{
public:
    /// Waits until it listens; `arguments` beside --listen. Standard error goes to `logFile` if one
    /// is named: under load nobody empties a pipe.
    explicit ServerProcess(const QStringList &arguments, const QString &logFile = {});
    ~ServerProcess();

    quint16 Port() const { return port_; }
    QProcess &Process() { return process_; }
    QByteArray Log(); ///< standard error so far
    /// Waits until the log has this text.
    bool WaitForLog(const QByteArray &text, int milliseconds = 5'000);

    /// One sample of the figures, as "name" or "name{labels}"; 0 if it is not there. For a server
    /// that was started with WithMetrics.
    double Metric(const QByteArray &sample);
    bool WaitForMetric(const QByteArray &sample, double atLeast);
    QByteArray MetricsPage();
    quint16 MetricsPort();

    HttpReply Call(const HttpCall &call) const; ///< on a connection of its own
    Wire::PostAnswer Post(const Wire::PostRequest &request, const QByteArray &key = {},
                          Wire::Format format = Wire::Format::Json) const;
    HttpReply Query(const QString &sql, int page = 0, int pageSize = 0,
                    Wire::Format format = Wire::Format::Json) const;

private:
    QProcess process_;
    quint16 port_ = 0;
    quint16 metricsPort_ = 0;
    QByteArray log_;
};

} // namespace Qel
