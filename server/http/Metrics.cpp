#include "http/Metrics.h"

#include <QFile>

#include <sys/resource.h>

#include <algorithm>
#include <iterator>

namespace Qel::Http {

namespace {

constexpr const char *PostCodes[] = {"1", "0", "-1", "-2"};

struct Single
{
    const char *name;
    const char *type;
    const char *help;
    Metrics::Number Metrics::*number;
};

constexpr Single Singles[] = {
    {"qel_connections_accepted_total", "counter", "Connections that clients have opened.",
     &Metrics::connectionsAccepted},
    {"qel_connections_refused_total", "counter", "Connections closed at once for want of room.",
     &Metrics::connectionsRefused},
    {"qel_connections_gave_way_total", "counter", "Waiting connections closed to make room.",
     &Metrics::connectionsGaveWay},
    {"qel_connections_slow_total", "counter", "Connections closed with a request half sent.",
     &Metrics::connectionsSlow},
    {"qel_answers_not_taken_total", "counter", "Answers that a client did not take to the end.",
     &Metrics::answersNotTaken},
    {"qel_tls_handshakes_failed_total", "counter", "TLS handshakes that failed or were too slow.",
     &Metrics::handshakesFailed},
    {"qel_connections_waiting", "gauge", "Connections without a whole request.",
     &Metrics::connectionsWaiting},
    {"qel_connections_answering", "gauge", "Connections whose request is being answered.",
     &Metrics::connectionsAnswering},
    {"qel_requests_handling", "gauge", "Requests that a thread works on.",
     &Metrics::requestsHandling},
    {"qel_posts_repeated_total", "counter",
     "Transactions run again because another one was in the way.", &Metrics::postsRepeated},
    {"qel_logins_failed_total", "counter", "Requests with a credential that names nobody.",
     &Metrics::loginsFailed},
    {"qel_logins_blocked_total", "counter",
     "Requests refused unseen after too many failed log-ins from their address.",
     &Metrics::loginsBlocked},
    {"qel_database_readers_open", "gauge", "Open connections to the database for queries.",
     &Metrics::readersOpen},
    {"qel_database_readers_busy", "gauge", "Those of them in use.", &Metrics::readersBusy},
    {"qel_database_writers_most", "gauge", "Connections to the database that posts may open.",
     &Metrics::writersMost},
};

QByteArray Seconds(qint64 microseconds)
{
    return QByteArray::number(static_cast<double>(microseconds) / 1e6, 'g', 12);
}

/// Grows line by line; a metric's head stands once, before its samples.
class Page
{
public:
    void Head(const char *name, const char *type, const char *help)
    {
        text_ += QByteArray("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
    }
    void Sample(const QByteArray &name, const QByteArray &labels, const QByteArray &value)
    {
        text_ += name + (labels.isEmpty() ? QByteArray() : '{' + labels + '}') + ' ' + value + '\n';
    }
    void Sample(const QByteArray &name, const QByteArray &labels, qint64 value)
    {
        Sample(name, labels, QByteArray::number(value));
    }
    void Alone(const char *name, const char *type, const char *help, const QByteArray &value)
    {
        Head(name, type, help);
        Sample(name, {}, value);
    }
    const QByteArray &Text() const { return text_; }

private:
    QByteArray text_;
};

QByteArray Label(const char *name, const QByteArray &value)
{
    return QByteArray(name) + "=\"" + value + '"';
}

/// A figure of this process in bytes, by its name in /proc/self/status; 0 where it is not told.
qint64 MemoryBytes(const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    constexpr qint64 unit = 1024;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (line.startsWith(name + ':'))
            return line.simplified().split(' ').value(1).toLongLong() * unit;
    return 0;
}

QByteArray ProcessorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto microseconds = [](const timeval &time) {
        return static_cast<qint64>(time.tv_sec) * 1'000'000 + time.tv_usec;
    };
    return Seconds(microseconds(usage.ru_utime) + microseconds(usage.ru_stime));
}

} // namespace

void Metrics::Count(const Served &served)
{
    const std::lock_guard lock(lock_);
    Route &route = routes_[served.route];
    const auto statusClass = static_cast<std::size_t>(std::clamp(served.status / 100, 0, 5));
    ++route.byClass[statusClass];
    const auto *const bound = std::ranges::lower_bound(Bounds, served.took.count());
    ++route.byTime[static_cast<std::size_t>(bound - Bounds.begin())];
    route.microseconds += served.took.count();
    route.rows += served.rows;
    route.bytes += served.bytes;
}

void Metrics::CountPost(const QByteArray &code)
{
    const bool listed = std::ranges::any_of(PostCodes, [&](auto one) { return code == one; });
    const std::lock_guard lock(lock_);
    ++posts_[listed ? code : QByteArray("other")];
}

QByteArray Metrics::Text() const
{
    Page page;
    for (const Single &single : Singles) {
        page.Head(single.name, single.type, single.help);
        page.Sample(single.name, {}, (this->*single.number).load());
    }

    {
        const std::lock_guard lock(lock_);
        page.Head("qel_requests_total", "counter", "Answered requests.");
        for (const auto &[name, route] : routes_)
            for (std::size_t at = 0; at < route.byClass.size(); ++at)
                if (route.byClass[at] > 0)
                    page.Sample("qel_requests_total",
                                Label("route", name) + ',' +
                                    Label("status", QByteArray::number(at) + "xx"),
                                route.byClass[at]);
        page.Head("qel_request_seconds", "histogram", "Time from the whole request to its answer.");
        for (const auto &[name, route] : routes_) {
            const QByteArray label = Label("route", name);
            qint64 count = 0;
            for (std::size_t at = 0; at < route.byTime.size(); ++at) {
                count += route.byTime[at];
                const QByteArray bound = at < Bounds.size() ? Seconds(Bounds[at]) : "+Inf";
                page.Sample("qel_request_seconds_bucket", label + ',' + Label("le", bound), count);
            }
            page.Sample("qel_request_seconds_sum", label, Seconds(route.microseconds));
            page.Sample("qel_request_seconds_count", label, count);
        }
        page.Head("qel_answer_rows_total", "counter", "Rows in answers.");
        for (const auto &[name, route] : routes_)
            page.Sample("qel_answer_rows_total", Label("route", name), route.rows);
        page.Head("qel_answer_bytes_total", "counter", "Bytes of the bodies of answers.");
        for (const auto &[name, route] : routes_)
            page.Sample("qel_answer_bytes_total", Label("route", name), route.bytes);
        page.Head("qel_posts_total", "counter", "Posts by the code of their first row.");
        for (const auto &[code, count] : posts_)
            page.Sample("qel_posts_total", Label("code", code), count);
    }

    const auto start =
        std::chrono::duration_cast<std::chrono::microseconds>(begin_.time_since_epoch());
    page.Alone("process_start_time_seconds", "gauge", "When the process was started, Unix time.",
               QByteArray::number(static_cast<double>(start.count()) / 1e6, 'f', 3));
    page.Alone("process_resident_memory_bytes", "gauge", "Resident memory.",
               QByteArray::number(MemoryBytes("VmRSS")));
    page.Alone("qel_own_memory_bytes", "gauge", "Resident memory without pages of files.",
               QByteArray::number(MemoryBytes("RssAnon")));
    page.Alone("process_cpu_seconds_total", "counter", "Processor time used.", ProcessorSeconds());
    return page.Text();
}

} // namespace Qel::Http
