#pragma once

#include "http/Message.h"
#include "http/RequestLog.h"
#include "managers/KeptAnswers.h"
#include "store/Credentials.h"
#include "store/Database.h"
#include "store/QueryRunner.h"
#include "store/WriterPool.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace Qel::Http {

struct ServiceOptions
{
    QByteArray basePath; ///< before the servlets' names: "" or "/platform"
    QString serverName;  ///< shown by clients
    std::chrono::milliseconds statementTime{30'000};
    Store::QueryLimits limits;
};

/// The application server's routes: queries, posts, who the credential is, and whether the
/// server is up. Every answer that is not 200 is an error answer with a reference, under which
/// the log has the whole story.
class Service : public Handler
{
public:
    /// `database` must outlive the service.
    Service(Store::Database &database, const ServiceOptions &options);
    ~Service() override;

    Lane LaneOf(const Request &request) const override;
    Response Handle(const Request &request) noexcept override;
    Response Refuse(Broken what) noexcept override;

private:
    struct Route;
    struct Reader;
    class ReaderLease;

    static const std::vector<Route> &Routes();
    const Route *FindRoute(const Request &request) const;

    Response Query(const Request &request, LogEntry &log);
    Response Post(const Request &request, LogEntry &log);
    Response Session(const Request &request, LogEntry &log);
    Response Health(const Request &request, LogEntry &log);
    Response Failed(const std::exception_ptr &failure, const Request &request, LogEntry &log) const;

    Store::Operator Authenticate(Store::Connection &connection, const Request &request,
                                 LogEntry &log) const;

    Store::Database &database_;
    ServiceOptions options_;
    Store::WriterPool writers_;
    Managers::AnswerSweeper sweeper_;
    std::mutex readersLock_;
    std::vector<std::unique_ptr<Reader>> readers_; ///< those at rest; the last used on top
};

} // namespace Qel::Http
