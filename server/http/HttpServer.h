#pragma once

#include "http/Message.h"
#include "http/Pace.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <memory>

namespace Qel::Http {

class Metrics;

struct ServerOptions
{
    QString host;     ///< numeric address
    quint16 port = 0; ///< 0: any free one
    /// PEM files; both empty: without TLS. Read again at SIGHUP.
    QString certificate;
    QString key;
    QString metricsHost; ///< of Door::Metrics, always without TLS; empty: there is none
    quint16 metricsPort = 0;
    std::size_t bodyLimit = 8u << 20;  ///< bytes of one request's body
    std::size_t bodyRoom = 256u << 20; ///< bytes of all large bodies together
    int connectionLimit = 1'000;
    /// From the first byte of a request to the last of its answer; a TLS handshake counts.
    std::chrono::milliseconds requestTime{60'000};
    std::chrono::milliseconds idleTime{120'000}; ///< a kept connection without a request
    Patience patience;
    std::chrono::milliseconds drainTime{10'000}; ///< for running requests when the server stops
    int readers = 4;                             ///< threads of Lane::Read
    int writers = 1;                             ///< threads of Lane::Write
    /// Requests of Lane::Write that wait are handled together, on one thread; else each by itself.
    bool gathersWrites = false;
};

/// An HTTP/1.1 server: one thread for the network, threads for the handler. A slow or silent
/// client holds a connection and nothing else, and that not for long; when connections run out,
/// the one gives way that has waited longest without a whole request, strangers first.
class HttpServer
{
public:
    /// Binds and listens: from here on clients can connect. Throws EQelError if it cannot.
    /// `handler` and `metrics` must outlive the server.
    HttpServer(const ServerOptions &options, Handler &handler, Metrics &metrics);
    ~HttpServer();
    Q_DISABLE_COPY_MOVE(HttpServer)

    quint16 Port() const;
    quint16 MetricsPort() const; ///< 0: there is none

    /// Serves until Stop, SIGTERM or SIGINT; then refuses what comes, lets running requests end
    /// and returns, or ends the process if they do not end within drainTime.
    void Run();
    Clock::time_point DrainEnd() const; ///< after Run: when drainTime is over
    void Stop();                        ///< from any thread

private:
    class Impl;
    std::unique_ptr<Impl> d_;
};

} // namespace Qel::Http
