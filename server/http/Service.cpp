#include "http/Service.h"

#include "http/Negotiation.h"
#include "http/Problem.h"
#include "managers/PostRunner.h"

#include <QScopeGuard>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Http {

struct Service::Route
{
    QByteArray method;
    QByteArray path;
    Lane lane;
    Response (Service::*handle)(const Request &, LogEntry &);
};

/// One reading connection with what it keeps prepared.
struct Service::Reader
{
    Reader(std::unique_ptr<Store::Connection> opened, const Store::QueryLimits &limits)
        : connection(std::move(opened))
        , queries(*connection, limits)
    {
    }

    std::unique_ptr<Store::Connection> connection;
    Store::QueryRunner queries;
};

/// A reader for the time of one request.
class Service::ReaderLease
{
public:
    explicit ReaderLease(Service &service)
        : service_(service)
    {
        const std::lock_guard lock(service_.readersLock_);
        if (service_.readers_.empty()) {
            reader_ =
                std::make_unique<Reader>(service_.database_.OpenReader(), service_.options_.limits);
        } else {
            reader_ = std::move(service_.readers_.back());
            service_.readers_.pop_back();
        }
    }
    ~ReaderLease()
    {
        if (!reader_->connection->IsAtRest())
            return; // it broke
        const std::lock_guard lock(service_.readersLock_);
        service_.readers_.push_back(std::move(reader_));
    }
    Q_DISABLE_COPY_MOVE(ReaderLease)

    Reader *operator->() const { return reader_.get(); }

private:
    Service &service_;
    std::unique_ptr<Reader> reader_;
};

namespace {

/// Ends the statements of a scope at the request's deadline, at the statement's own, or when
/// nobody waits for the answer any more.
class StatementLimit
{
public:
    StatementLimit(Store::Connection &connection, const Request &request,
                   std::chrono::milliseconds time)
        : connection_(connection)
    {
        const auto deadline = std::min(request.deadline, Clock::now() + time);
        connection_.StopWhen([deadline, abandoned = request.abandoned] {
            return (abandoned && *abandoned) || Clock::now() > deadline;
        });
    }
    ~StatementLimit() { connection_.StopWhen({}); }
    Q_DISABLE_COPY_MOVE(StatementLimit)

private:
    Store::Connection &connection_;
};

Wire::Format RequestFormat(const Request &request)
{
    if (const auto format = FormatOf(request.contentType))
        return *format;
    throw EProblem("http.type",
                   u"请求的 Content-Type 应为 %1 或 %2。"_s.arg(QLatin1StringView(Wire::CborType),
                                                                QLatin1StringView(Wire::JsonType)));
}

template <typename Answer>
Response Encoded(const Answer &answer, Wire::Format format)
{
    return {200, MediaTypeOf(format), Wire::Encode(answer, format)};
}

/// A key is what its client made of it: up to 64 visible ASCII characters.
void CheckKey(const QByteArray &key)
{
    const bool visible =
        std::all_of(key.begin(), key.end(), [](char c) { return c > 32 && c < 127; });
    if (key.size() > 64 || !visible)
        throw EProblem("http.bad_request", u"Idempotency-Key 应为至多 64 个可见 ASCII 字符。"_s);
}

} // namespace

Service::Service(Store::Database &database, const ServiceOptions &options)
    : database_(database)
    , options_(options)
    , writers_(database)
    , sweeper_(writers_)
{
}

Service::~Service() = default;

const std::vector<Service::Route> &Service::Routes()
{
    static const std::vector<Route> routes{
        {"POST", "/NorvaneSelectServlet", Lane::Read, &Service::Query},
        {"POST", "/NorvaneServlet", Lane::Write, &Service::Post},
        {"GET", "/session", Lane::Read, &Service::Session},
        {"GET", "/healthz", Lane::Inline, &Service::Health},
    };
    return routes;
}

/// By path alone; null: there is nothing there.
const Service::Route *Service::FindRoute(const Request &request) const
{
    if (!request.path.startsWith(options_.basePath))
        return nullptr;
    const QByteArrayView path = QByteArrayView(request.path).sliced(options_.basePath.size());
    for (const Route &route : Routes())
        if (path == route.path)
            return &route;
    return nullptr;
}

Lane Service::LaneOf(const Request &request) const
{
    const Route *route = FindRoute(request);
    return route && route->method == request.method ? route->lane : Lane::Inline;
}

Response Service::Handle(const Request &request) noexcept
{
    const auto begin = Clock::now();
    LogEntry log;
    log.reference = NewReference();
    log.method = request.method.left(16);
    log.path = request.path.left(200);
    Response response;
    try {
        const Route *route = FindRoute(request);
        if (!route)
            throw EProblem("http.not_found", u"服务器没有这个地址。"_s);
        if (route->method != request.method)
            throw EProblem("http.method",
                           u"这个地址只接受 %1。"_s.arg(QLatin1StringView(route->method)));
        response = (this->*route->handle)(request, log);
    } catch (...) {
        response = Failed(std::current_exception(), request, log);
    }
    log.status = response.status;
    log.bytes = response.body.size();
    log.took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    WriteLog(log);
    return response;
}

Response Service::Refuse(Broken what) noexcept
{
    LogEntry log;
    log.reference = NewReference();
    const bool tooLarge = what == Broken::TooLarge;
    const auto problem = tooLarge ? EProblem("http.too_large", u"请求过大。"_s)
                                  : EProblem("http.bad_request", u"不是有效的 HTTP 请求。"_s);
    Response response = Failed(std::make_exception_ptr(problem), Request(), log);
    log.status = response.status;
    WriteLog(log);
    return response;
}

Response Service::Failed(const std::exception_ptr &failure, const Request &request,
                         LogEntry &log) const
{
    const Failure explained = Explain(failure, log.reference);
    log.code = explained.code;
    log.detail = explained.detail.isEmpty() ? explained.message : explained.detail;
    const Wire::Format format = AnswerFormat(request);
    return {StatusOf(explained.code), MediaTypeOf(format),
            Wire::Encode(Wire::ErrorAnswer{QString::fromLatin1(explained.code), explained.message,
                                           log.reference},
                         format)};
}

Store::Operator Service::Authenticate(Store::Connection &connection, const Request &request,
                                      LogEntry &log) const
{
    const auto credential = ParseBasic(request.authorization);
    if (!credential)
        throw EProblem("auth.required", u"请求没有带上用户凭据。"_s);
    auto user = Store::FindOperator(connection, credential->userCode, credential->token);
    if (!user)
        throw EProblem("auth.refused", u"用户凭据无效。"_s);
    log.user = user->userCode;
    return *std::move(user);
}

Response Service::Query(const Request &request, LogEntry &log)
{
    const ReaderLease reader(*this);
    const StatementLimit limit(*reader->connection, request, options_.statementTime);
    const Store::Operator user = Authenticate(*reader->connection, request, log);
    const auto query = Wire::DecodeQueryRequest(request.body, RequestFormat(request));
    auto logStatement = qScopeGuard([&] { log.statement = query.sql; });
    const auto result = reader->queries.Run(query.sql, query.page, query.pageSize, user.unions);
    Response response =
        Encoded(Wire::QueryAnswer{result.total, RowSet::Load(result.block)}, AnswerFormat(request));
    log.rows = result.count;
    logStatement.dismiss();
    return response;
}

Response Service::Post(const Request &request, LogEntry &log)
{
    // No client hang-up ends a post: it is stored whole, and its answer waits under its key.
    const auto deadline = std::min(request.deadline, Clock::now() + options_.statementTime);
    Store::Operator user;
    writers_.Run(deadline, [&](Store::Connection &connection) {
        user = Authenticate(connection, request, log);
    });
    CheckKey(request.idempotencyKey);
    const Managers::Post post{Wire::DecodePostRequest(request.body, RequestFormat(request)),
                              request.idempotencyKey, request.body};
    log.what = post.request.manager.left(100) + u'/' + post.request.method.left(100);
    const Wire::PostAnswer answer = Managers::SubmitPost(writers_, deadline, user, post);
    log.rows = answer.rows.size();
    return Encoded(answer, AnswerFormat(request));
}

Response Service::Session(const Request &request, LogEntry &log)
{
    const ReaderLease reader(*this);
    const StatementLimit limit(*reader->connection, request, options_.statementTime);
    const Store::Operator user = Authenticate(*reader->connection, request, log);
    return Encoded(Wire::SessionAnswer{user.userId, user.userCode, user.userName, user.orgId,
                                       user.orgAbbr, user.orgName, options_.serverName},
                   AnswerFormat(request));
}

Response Service::Health(const Request &, LogEntry &)
{
    return {200, "text/plain", "ok\n"};
}

} // namespace Qel::Http
