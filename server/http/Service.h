#pragma once

#include "http/ClientAddress.h"
#include "http/LoginGuard.h"
#include "http/Message.h"
#include "http/Readiness.h"
#include "http/RequestLog.h"
#include "managers/KeptAnswers.h"
#include "store/Credentials.h"
#include "store/Database.h"
#include "store/ReaderPool.h"
#include "store/WriterPool.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

namespace Qel::Http {

class Metrics;

struct ServiceOptions
{
    QByteArray basePath; ///< before the servlets' names: "" or "/platform"
    QString serverName;  ///< shown by clients
    std::chrono::milliseconds statementTime{30'000};
    Store::QueryLimits limits;
    QList<AddressBlock> trustedProxies = {}; ///< whose word about a client's address counts
};

/// The application server's routes: queries, posts, who the credential is, whether the server is
/// up and ready, and what it has done so far. Every answer that is not 200 is an error answer with
/// a reference, under which the log has the whole story.
class Service : public Handler
{
public:
    /// `database` and `metrics` must outlive the service.
    Service(Store::Database &database, const ServiceOptions &options, Metrics &metrics);
    ~Service() override;

    Lane LaneOf(const Request &request) const override;
    Response Handle(const Request &request) noexcept override;
    std::vector<Response>
    HandleTogether(std::span<const Request *const> requests) noexcept override;
    Response Refuse(Broken what, const Request &request) noexcept override;
    void BeginStop(Clock::time_point latest) noexcept override;

private:
    struct Route;
    class StatementLimit;
    class Handling;
    class LogIn;
    class Posting;

    static const std::vector<Route> &Routes();
    const Route *FindRoute(const Request &request) const;

    using ReadFunction = Response (Service::*)(Store::Reader &, const Request &, LogEntry &);

    Response Read(ReadFunction work, const Request &request, LogEntry &log);
    Response QueryOn(Store::Reader &reader, const Request &request, LogEntry &log);
    Response SessionOn(Store::Reader &reader, const Request &request, LogEntry &log);
    QByteArray PositionAfterPost(Clock::time_point deadline);

    Response Query(const Request &request, LogEntry &log);
    Response Post(const Request &request, LogEntry &log);
    Response Session(const Request &request, LogEntry &log);
    Response Health(const Request &request, LogEntry &log);
    Response Ready(const Request &request, LogEntry &log);
    Response Figures(const Request &request, LogEntry &log);
    Response Failed(const std::exception_ptr &failure, const Request &request, LogEntry &log) const;

    void CheckDatabase();
    bool IsStopping() const { return stopBy_.load() != Clock::time_point::max(); }

    Store::Database &database_;
    ServiceOptions options_;
    Metrics &metrics_;
    LoginGuard logins_;
    std::atomic<Clock::time_point> stopBy_ = Clock::time_point::max(); ///< for what still runs
    Store::WriterPool writers_;
    Managers::AnswerSweeper sweeper_;
    Store::ReaderPool readers_;
    std::unique_ptr<Store::Connection> probe_; ///< on the thread of readiness_ only
    Readiness readiness_;
};

} // namespace Qel::Http
