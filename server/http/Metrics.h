#pragma once

#include <QByteArray>

#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>

namespace Qel::Http {

/// One request as the figures count it.
struct Served
{
    QByteArray route; ///< of a short list, never what a client wrote
    int status = 0;
    std::chrono::microseconds took{};
    qint64 rows = 0;  ///< in the answer
    qint64 bytes = 0; ///< of the answer's body
};

/// What the server has done since it was started, for the monitoring of the site. From any
/// thread. The single numbers are set by whoever knows them.
class Metrics
{
public:
    using Number = std::atomic<qint64>;

    void Count(const Served &served);
    /// The first result code of a post that was run; a refused one is a request with another
    /// status.
    void CountPost(const QByteArray &code);

    Number connectionsAccepted = 0;
    Number connectionsRefused = 0; ///< there was no room
    Number connectionsGaveWay = 0; ///< closed to make room
    Number connectionsSlow = 0;    ///< closed with a request half sent
    Number answersNotTaken = 0;    ///< half sent: the client was gone or slow
    Number handshakesFailed = 0;
    Number connectionsWaiting = 0; ///< now, without a whole request
    Number connectionsAnswering = 0;
    Number requestsHandling = 0; ///< now, on a thread
    Number postsRepeated = 0;    ///< transactions run again because another one was in the way
    Number loginsFailed = 0;
    Number loginsBlocked = 0; ///< not looked at after too many
    Number readersOpen = 0;   ///< connections to the database
    Number readersBusy = 0;
    Number writersMost = 0;

    /// All of it in the Prometheus text format, version 0.0.4.
    QByteArray Text() const;

    static constexpr char ContentType[] = "text/plain; version=0.0.4; charset=utf-8";

private:
    /// Upper bounds in microseconds; one more counter holds what took longer.
    static constexpr std::array<qint64, 12> Bounds{500,     1'000,   2'500,     5'000,
                                                   10'000,  25'000,  50'000,    100'000,
                                                   250'000, 500'000, 1'000'000, 10'000'000};
    struct Route
    {
        std::array<qint64, 6> byClass{}; ///< of the status, divided by 100
        std::array<qint64, Bounds.size() + 1> byTime{};
        qint64 microseconds = 0;
        qint64 rows = 0;
        qint64 bytes = 0;
    };

    mutable std::mutex lock_;
    std::map<QByteArray, Route> routes_;
    std::map<QByteArray, qint64> posts_;
    const std::chrono::system_clock::time_point begin_ = std::chrono::system_clock::now();
};

} // namespace Qel::Http
