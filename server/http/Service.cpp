#include "http/Service.h"

#include "http/Metrics.h"
#include "http/Negotiation.h"
#include "http/Problem.h"
#include "managers/PostRunner.h"
#include "sql/WithoutLiterals.h"
#include "store/Migrations.h"

#include <QScopeGuard>

#include <algorithm>
#include <exception>
#include <functional>
#include <list>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Http {

struct Service::Route
{
    QByteArray name; ///< in the figures
    QByteArray method;
    QByteArray path;
    QList<Door> doors; ///< where it is answered
    Lane lane;
    Response (Service::*handle)(const Request &, LogEntry &);
    bool written = true; ///< in the log, if all is well: what is asked each second is not
};

/// Ends the statements of a scope at the request's deadline, at the statement's own, when the
/// server's time is up, or when nobody waits for the answer any more.
class Service::StatementLimit
{
public:
    StatementLimit(const Service &service, Store::Connection &connection, const Request &request)
        : connection_(connection)
    {
        const auto deadline =
            std::min(request.deadline, Clock::now() + service.options_.statementTime);
        connection_.StopWhen([deadline, abandoned = request.abandoned, &stopBy = service.stopBy_] {
            return (abandoned && *abandoned) || Clock::now() > std::min(deadline, stopBy.load());
        });
    }
    ~StatementLimit() { connection_.StopWhen({}); }
    Q_DISABLE_COPY_MOVE(StatementLimit)

private:
    Store::Connection &connection_;
};

namespace {

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

/// A credential that a copy of the database does not know may be too new for it.
struct UnknownToCopy
{
};

LogEntry NewEntry(const Request &request, const QByteArray &address)
{
    LogEntry log;
    log.reference = NewReference();
    log.address = address;
    log.method = request.method.left(16);
    log.path = request.path.left(200);
    return log;
}

QByteArray Joined(const std::vector<std::string> &tables)
{
    QByteArray joined;
    for (const std::string &table : tables)
        joined += (joined.isEmpty() ? "" : ",") + QByteArray::fromStdString(table);
    return joined;
}

/// The answer is made: what log and figures know of it.
void Count(Metrics &metrics, LogEntry &log, const QByteArray &route, const Response &response,
           Clock::time_point begin)
{
    log.status = response.status;
    log.bytes = response.body.size();
    log.took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    metrics.Count({route, log.status, log.took, std::max<qint64>(log.rows, 0), log.bytes});
}

} // namespace

/// A request's credential, for a scope.
class Service::LogIn
{
public:
    /// Throws EProblem if it may not even be looked at.
    LogIn(Service &service, const Request &request, LogEntry &log)
        : service_(service)
        , log_(log)
        , credential_(CredentialOf(request))
        , attempt_(service.logins_, LoginAddress(log.address), request.authorization,
                   std::min(request.deadline, service.stopBy_.load()))
    {
        if (const auto &wait = attempt_.Refused()) {
            ++service_.metrics_.loginsBlocked;
            throw EProblem("auth.too_many",
                           u"登录失败次数过多，请 %1 秒后再试。"_s.arg(wait->count()),
                           static_cast<int>(wait->count()));
        }
    }

    /// Whose it is. Throws EProblem if it is nobody's.
    Store::Operator Look(Store::Connection &connection)
    {
        auto user = Store::FindOperator(connection, credential_.userCode, credential_.token);
        if (!user && connection.IsCopy())
            throw UnknownToCopy();
        if (!user) {
            ++service_.metrics_.loginsFailed;
            attempt_.Failed();
            throw EProblem("auth.refused", u"用户凭据无效。"_s);
        }
        attempt_.Succeeded();
        log_.user = user->userCode;
        return *std::move(user);
    }

private:
    static BasicCredential CredentialOf(const Request &request)
    {
        if (auto credential = ParseBasic(request.authorization))
            return *std::move(credential);
        throw EProblem("auth.required", u"请求没有带上用户凭据。"_s);
    }

    Service &service_;
    LogEntry &log_;
    BasicCredential credential_;
    LoginGuard::Attempt attempt_;
};

Service::Service(Store::Database &database, const ServiceOptions &options, Metrics &metrics)
    : database_(database)
    , options_(options)
    , metrics_(metrics)
    , writers_(database)
    , sweeper_(writers_)
    , readers_(database, options.limits)
    , readiness_([this] { CheckDatabase(); })
{
    metrics_.writersMost = writers_.Size();
}

Service::~Service() = default;

const std::vector<Service::Route> &Service::Routes()
{
    const QList<Door> clients{Door::Clients};
    const QList<Door> metrics{Door::Metrics};
    const QList<Door> both{Door::Clients, Door::Metrics};
    static const std::vector<Route> routes{
        {"query", "POST", "/NorvaneSelectServlet", clients, Lane::Read, &Service::Query},
        {"post", "POST", "/NorvaneServlet", clients, Lane::Write, &Service::Post},
        {"session", "GET", "/session", clients, Lane::Read, &Service::Session},
        {"healthz", "GET", "/healthz", both, Lane::Inline, &Service::Health, false},
        {"readyz", "GET", "/readyz", both, Lane::Probe, &Service::Ready, false},
        {"metrics", "GET", "/metrics", metrics, Lane::Inline, &Service::Figures, false},
    };
    return routes;
}

/// By path alone; null: there is nothing there.
const Service::Route *Service::FindRoute(const Request &request) const
{
    const QByteArray base = request.door == Door::Clients ? options_.basePath : QByteArray();
    if (!request.path.startsWith(base))
        return nullptr;
    const QByteArrayView path = QByteArrayView(request.path).sliced(base.size());
    for (const Route &route : Routes())
        if (path == route.path && route.doors.contains(request.door))
            return &route;
    return nullptr;
}

Lane Service::LaneOf(const Request &request) const
{
    const Route *route = FindRoute(request);
    return route && route->method == request.method ? route->lane : Lane::Inline;
}

/// A request from its arrival to its answer: what log and figures know of it.
class Service::Handling
{
public:
    Handling(Service &service, const Request &request)
        : log(NewEntry(request, ClientAddress(request, service.options_.trustedProxies)))
        , route(service.FindRoute(request))
        , service_(service)
        , request_(request)
    {
        ++service_.metrics_.requestsHandling;
        log.received = request.body.size();
    }

    Response Answered(const std::function<Response()> &make)
    {
        Response response;
        try {
            response = make();
        } catch (...) {
            response = service_.Failed(std::current_exception(), request_, log);
        }
        if (route && route->method != request_.method)
            response.headers.append({"Allow", route->method});
        response.known = !log.user.isEmpty();
        --service_.metrics_.requestsHandling;
        Count(service_.metrics_, log, route ? route->name : "other", response, begin_);
        if (!route || route->written || response.status != 200)
            WriteLog(log);
        return response;
    }

    LogEntry log;
    const Route *const route;

private:
    Service &service_;
    const Request &request_;
    const Clock::time_point begin_ = Clock::now();
};

Response Service::Handle(const Request &request) noexcept
{
    Handling handling(*this, request);
    return handling.Answered([&] {
        const Route *route = handling.route;
        if (!route)
            throw EProblem("http.not_found", u"服务器没有这个地址。"_s);
        if (route->method != request.method)
            throw EProblem("http.method",
                           u"这个地址只接受 %1。"_s.arg(QLatin1StringView(route->method)));
        return (this->*route->handle)(request, handling.log);
    });
}

Response Service::Refuse(Broken what, const Request &request) noexcept
{
    const auto problem = [what] {
        switch (what) {
        case Broken::TooLarge:
            return EProblem("http.too_large", u"请求过大。"_s);
        case Broken::HeaderTooLarge:
            return EProblem("http.header_too_large", u"请求头过大。"_s);
        case Broken::NoRoom:
            return EProblem("server.busy", u"服务器繁忙，请稍后再试。"_s, Retry);
        case Broken::Stopping:
            return EProblem("server.stopping", u"服务器正在停止，请稍后再试。"_s, Retry);
        case Broken::Malformed:
            break;
        }
        return EProblem("http.bad_request", u"不是有效的 HTTP 请求。"_s);
    }();
    LogEntry log = NewEntry(request, ClientAddress(request, options_.trustedProxies));
    Response response = Failed(std::make_exception_ptr(problem), request, log);
    Count(metrics_, log, "refused", response, Clock::now());
    WriteLog(log);
    return response;
}

void Service::BeginStop(Clock::time_point latest) noexcept
{
    stopBy_ = latest;
    writers_.EndBy(latest);
}

Response Service::Failed(const std::exception_ptr &failure, const Request &request,
                         LogEntry &log) const
{
    Failure explained = Explain(failure, log.reference);
    if (explained.code == "sql.timeout" && Clock::now() > stopBy_.load())
        explained = {"server.stopping", u"服务器正在停止，请稍后再试。"_s, {}, Retry};
    log.code = explained.code;
    log.detail = explained.detail;
    const Wire::Format format = AnswerFormat(request);
    Response response{StatusOf(explained.code), MediaTypeOf(format),
                      Wire::Encode(Wire::ErrorAnswer{QString::fromLatin1(explained.code),
                                                     explained.message, log.reference},
                                   format)};
    if (explained.retryAfter > 0)
        response.headers.append({"Retry-After", QByteArray::number(explained.retryAfter)});
    return response;
}

/// On a copy of the database if there is one that has what the client has posted. What a copy
/// cannot do (it breaks, or the primary's changes run over the rows being read) the primary can.
Response Service::Read(ReadFunction work, const Request &request, LogEntry &log)
{
    Store::ReaderPool::Lease reader(readers_);
    try {
        const StatementLimit limit(*this, *reader->connection, request);
        if (reader.Shows(request.position))
            return (this->*work)(*reader, request, log);
    } catch (const UnknownToCopy &) {
        log.user.clear();
    } catch (const Store::EStoreError &error) {
        using Kind = Store::EStoreError::Kind;
        const bool isTrouble =
            error.WhichKind() == Kind::Conflict || error.WhichKind() == Kind::Lost;
        if (!database_.HasCopies() || !isTrouble)
            throw;
    }
    reader.MoveToPrimary();
    const StatementLimit limit(*this, *reader->connection, request);
    return (this->*work)(*reader, request, log);
}

Response Service::Query(const Request &request, LogEntry &log)
{
    return Read(&Service::QueryOn, request, log);
}

Response Service::QueryOn(Store::Reader &reader, const Request &request, LogEntry &log)
{
    const Store::Operator user = LogIn(*this, request, log).Look(*reader.connection);
    const auto query = Wire::DecodeQueryRequest(request.body, RequestFormat(request));
    log.hash = Store::StatementHash(query.sql);
    const auto logTables = qScopeGuard([&] { log.tables = Joined(reader.queries.LastTables()); });
    auto logStatement =
        qScopeGuard([&] { log.statement = Sql::WithoutLiterals(query.sql.toUtf8()); });
    const auto result = reader.queries.Run(query.sql, query.page, query.pageSize, user.unions);
    Response response =
        Encoded(Wire::QueryAnswer{result.total, RowSet::Load(result.block)}, AnswerFormat(request));
    log.rows = result.count;
    logStatement.dismiss();
    return response;
}

/// A post on its way.
class Service::Posting
{
public:
    Posting(Service &service, const Request &request, LogEntry &log)
        : service_(service)
        , request_(request)
        , log_(log)
    {
    }

    // No client hang-up ends a post: it is stored whole, and its answer waits under its key.
    Clock::time_point Deadline() const { return deadline_; }

    /// Throws EProblem if the credential may not even be looked at. May wait for the verdict on
    /// others: of several posts on one thread each one's is found before the next one is admitted.
    void Admit()
    {
        if (!logIn_)
            logIn_.emplace(service_, request_, log_);
    }

    /// The body is read only for who has a good credential.
    Managers::Submission Prepare(Store::Connection &connection)
    {
        Admit();
        auto user = logIn_->Look(connection);
        if (!post_) {
            CheckKey(request_.idempotencyKey);
            post_ = Managers::Post{Wire::DecodePostRequest(request_.body, RequestFormat(request_)),
                                   request_.idempotencyKey, request_.body};
            const Wire::PostRequest &asked = post_->request;
            log_.what = asked.manager.left(100) + u'/' + asked.method.left(100);
        }
        return {std::move(user), *post_};
    }

    Response Answered(const Wire::PostAnswer &answer)
    {
        log_.rows = answer.rows.size();
        log_.code = answer.rows.isEmpty() ? QByteArray() : answer.rows.first().code.toLatin1();
        service_.metrics_.CountPost(log_.code);
        Response response = Encoded(answer, AnswerFormat(request_));
        if (service_.database_.HasCopies())
            response.headers.append({"QEL-Position", service_.PositionAfterPost(deadline_)});
        return response;
    }

private:
    Service &service_;
    const Request &request_;
    LogEntry &log_;
    const Clock::time_point deadline_ =
        std::min(request_.deadline, Clock::now() + service_.options_.statementTime);
    std::optional<LogIn> logIn_;
    std::optional<Managers::Post> post_;
};

Response Service::Post(const Request &request, LogEntry &log)
{
    Posting posting(*this, request, log);
    posting.Admit(); // before it takes a connection
    return posting.Answered(
        Managers::SubmitPost(writers_, posting.Deadline(), [&](Store::Connection &connection) {
            return posting.Prepare(connection);
        }));
}

std::vector<Response> Service::HandleTogether(std::span<const Request *const> requests) noexcept
{
    if (requests.size() == 1)
        return {Handle(*requests.front())};

    struct Member
    {
        Member(Service &service, const Request &request)
            : handling(service, request)
            , posting(service, request, handling.log)
        {
        }
        Handling handling;
        Posting posting;
    };
    std::list<Member> members;
    std::vector<Managers::PostInGroup> posts;
    for (const Request *request : requests) {
        Posting &posting = members.emplace_back(*this, *request).posting;
        posts.push_back(
            {.deadline = posting.Deadline(), .prepare = [&posting](Store::Connection &connection) {
                 return posting.Prepare(connection);
             }});
    }
    Managers::SubmitPosts(writers_, posts);

    std::vector<Response> responses;
    auto post = posts.begin();
    for (Member &member : members) {
        responses.push_back(member.handling.Answered([&] {
            if (post->failure)
                std::rethrow_exception(post->failure);
            return member.posting.Answered(post->answer);
        }));
        ++post;
    }
    return responses;
}

/// The post is stored already: if its position cannot be had, the client asks for the latest state.
QByteArray Service::PositionAfterPost(Clock::time_point deadline)
{
    try {
        QByteArray position;
        writers_.Run(deadline,
                     [&](Store::Connection &connection) { position = connection.Position(); });
        return position;
    } catch (const Store::EStoreError &) {
        return Store::ReaderPool::Lease::Latest;
    }
}

Response Service::Session(const Request &request, LogEntry &log)
{
    return Read(&Service::SessionOn, request, log);
}

Response Service::SessionOn(Store::Reader &reader, const Request &request, LogEntry &log)
{
    const Store::Operator user = LogIn(*this, request, log).Look(*reader.connection);
    return Encoded(Wire::SessionAnswer{user.userId, user.userCode, user.userName, user.orgId,
                                       user.orgAbbr, user.orgName, options_.serverName},
                   AnswerFormat(request));
}

Response Service::Health(const Request &, LogEntry &)
{
    return {200, "text/plain", "ok\n"};
}

/// For a load balancer: whether requests sent here will be answered. Not an error answer: it is
/// no client that asks.
Response Service::Ready(const Request &, LogEntry &log)
{
    if (IsStopping()) {
        log.code = "server.stopping";
        return {503, "text/plain", "stopping\n"};
    }
    if (const auto trouble = readiness_.Trouble()) {
        log.code = "server.not_ready";
        log.detail = *trouble;
        return {503, "text/plain", "not ready\n"};
    }
    return {200, "text/plain", "ready\n"};
}

Response Service::Figures(const Request &, LogEntry &)
{
    metrics_.postsRepeated = writers_.Repeats();
    metrics_.readersOpen = readers_.Open();
    metrics_.readersBusy = readers_.Busy();
    return {200, Metrics::ContentType, metrics_.Text()};
}

/// On the thread of readiness_. A connection that fails is not used again.
void Service::CheckDatabase()
{
    try {
        if (!probe_)
            probe_ = database_.OpenReader();
        const auto deadline = Clock::now() + Readiness::Patience;
        probe_->StopWhen([deadline] { return Clock::now() > deadline; });
        Store::RequireSchema(*probe_);
    } catch (...) {
        probe_.reset();
        throw;
    }
}

} // namespace Qel::Http
