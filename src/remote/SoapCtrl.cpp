#include "remote/SoapCtrl.h"

#include "dataset/ClientDataSet.h"
#include "remote/BusyBox.h"
#include "remote/InputShield.h"
#include "remote/RemoteCall.h"
#include "wire/Wire.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QHostAddress>
#include <QNetworkProxy>
#include <QScopedValueRollback>
#include <QUuid>

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel {

using Kind = ERemoteError::Kind;

namespace {

/// Asks for the state of the last commit, where nobody knows the post's own.
constexpr char LatestPosition[] = "latest";

bool IsLoopback(const QString &host)
{
    return host.compare("localhost"_L1, Qt::CaseInsensitive) == 0 ||
           QHostAddress(host).isLoopback();
}

/// Waits for the end of the exchange while the event loop runs. False if the user cancelled or
/// the program quits; the exchange is aborted then.
bool Wait(Exchange &exchange, BusyBox &box)
{
    bool cancelled = false;
    QEventLoop loop;
    QObject::connect(&exchange.Reply(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&box, &BusyBox::Cancelled, &loop, [&] {
        cancelled = true;
        exchange.Abort();
    });
    if (!exchange.IsFinished())
        loop.exec();
    if (!exchange.IsFinished()) { // every loop of the thread was told to end
        cancelled = true;
        exchange.Abort();
    }
    // What was pressed up to this moment may still be queued; it is to be thrown away as well.
    QCoreApplication::processEvents();
    return !cancelled;
}

template <class Read>
auto Decoded(const RemoteCall &call, const WireBody &body, Read read)
{
    try {
        return read(body);
    } catch (const EQelError &error) {
        throw call.Malformed(error.Message());
    }
}

Wire::QueryAnswer ReadQueryAnswer(const WireBody &body)
{
    Wire::QueryAnswer answer = Wire::DecodeQueryAnswer(body.bytes, body.format);
    if (answer.total < 0 || answer.total > std::numeric_limits<int>::max())
        throw Wire::EWireError(u"总行数 %1 超出范围"_s.arg(answer.total));
    return answer;
}

Wire::PostAnswer ReadPostAnswer(const WireBody &body, const Wire::PostRequest &post)
{
    Wire::PostAnswer answer = Wire::DecodePostAnswer(body.bytes, body.format);
    if (answer.rows.isEmpty() && !post.rows.isEmpty())
        throw Wire::EWireError(u"提交了 %1 行，没有一行结果"_s.arg(post.rows.size()));
    return answer;
}

} // namespace

TSoapCtrl::TSoapCtrl() = default;
TSoapCtrl::~TSoapCtrl() = default;

void TSoapCtrl::SetServletURL(const QString &base, const QString &query, const QString &post,
                              const QString &)
{
    const QUrl url(base.trimmed());
    authorization_.clear();
    if (!url.userInfo().isEmpty()) {
        const QString credentials =
            url.userName(QUrl::FullyDecoded) + u':' + url.password(QUrl::FullyDecoded);
        authorization_ = "Basic " + credentials.toUtf8().toBase64();
    }
    base_ = url.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment);
    while (base_.path().endsWith(u'/'))
        base_.setPath(base_.path().chopped(1));
    queryServlet_ = query;
    postServlet_ = post;
    position_.clear();
    unanswered_.reset();
}

int TSoapCtrl::SQLQuery(const QString &sql, int page, int pageSize, ClientDataSet &target,
                        TQueryType type)
{
    RemoteCall call = NewCall(queryServlet_);
    call.facts.statement = sql;
    call.request.body =
        Wire::Encode(Wire::QueryRequest{sql, page, pageSize, int(type)}, Wire::Format::Cbor);
    call.request.position = position_;
    const Wire::QueryAnswer answer = Decoded(call, Run(call), ReadQueryAnswer);
    target.Open(answer.rows);
    return int(answer.total);
}

void TSoapCtrl::PostDataList(const QString &manager, const QString &method,
                             const TSoapParamsList &request, TSoapParamsList &result)
{
    RemoteCall call = NewCall(postServlet_);
    const Wire::PostRequest post{manager, method, request.Rows()};
    call.isPost = true;
    call.facts.method = manager + u'.' + method;
    call.request.body = Wire::Encode(post, Wire::Format::Cbor);
    call.request.idempotencyKey = KeyFor(post);
    call.mayBeStored = unanswered_->mayBeStored;
    const QByteArray earlierPosition = std::exchange(position_, LatestPosition);
    try {
        const WireBody body = Run(call);
        result.SetResult(Decoded(
            call, body, [&post](const WireBody &answer) { return ReadPostAnswer(answer, post); }));
        position_ = body.position.isEmpty() ? earlierPosition : body.position;
        unanswered_.reset();
    } catch (const ERemoteError &error) {
        if (!error.MayBeStored())
            position_ = earlierPosition;
        if (IsDefinite(error))
            unanswered_.reset();
        else
            unanswered_->mayBeStored = error.MayBeStored();
        throw;
    }
}

RemoteCall TSoapCtrl::NewCall(const QString &servlet) const
{
    if (running_)
        throw ERemoteError(Kind::Busy, u"上一个请求还没有结束，不能同时发出另一个请求。"_s);
    const bool isHttp = base_.scheme() == "http"_L1 || base_.scheme() == "https"_L1;
    if (!isHttp || base_.host().isEmpty()) {
        // What was given is not quoted: a text that is no address may hold a password anywhere.
        throw ERemoteError(
            Kind::NoAddress,
            u"没有设置服务器地址，或地址无效：应以 http:// 或 https:// 开头，带有主机名。"_s);
    }
    RemoteCall call;
    call.request.url = base_;
    call.request.url.setPath(base_.path() + u'/' + servlet);
    call.request.authorization = authorization_;
    call.request.timeOut = timeOut_;
    call.facts.url = call.request.url.toString();
    return call;
}

WireBody TSoapCtrl::Run(RemoteCall &call)
{
    const QScopedValueRollback<bool> running(running_, true);
    if (!shield_)
        shield_ = std::make_unique<InputShield>();
    const InputShieldGuard shielded(*shield_, call.isPost);
    BusyBox box(call.isPost ? u"正在保存…"_s : u"正在查询…"_s, !call.isPost, busyDelay_, *shield_);

    for (bool mayRepeat = true;; mayRepeat = false) {
        Exchange exchange(Network(), call.request);
        if (!Wait(exchange, box))
            throw call.Cancelled();
        if (exchange.Result() == Exchange::Outcome::Broken && mayRepeat) {
            // Over a connection of its own: one that is about to notice its end must not have it.
            Network().clearConnectionCache();
            call.mayBeStored = call.isPost;
            continue; // a query may be repeated, and a post has its key
        }
        const std::optional<Wire::Format> format = exchange.BodyFormat();
        if (exchange.Result() != Exchange::Outcome::Answered || exchange.Status() != 200 || !format)
            throw call.Failed(exchange);
        return {exchange.TakeBody(), *format, exchange.Position()};
    }
}

QByteArray TSoapCtrl::KeyFor(const Wire::PostRequest &post)
{
    const auto same = [&post](const Wire::PostRequest &other) {
        return other.manager == post.manager && other.method == post.method &&
               other.rows == post.rows;
    };
    if (!unanswered_ || !same(unanswered_->post)) {
        unanswered_ = std::make_unique<UnansweredPost>(
            UnansweredPost{post, QUuid::createUuid().toByteArray(QUuid::WithoutBraces)});
    }
    return unanswered_->key;
}

QNetworkAccessManager &TSoapCtrl::Network()
{
    if (!network_)
        network_ = std::make_unique<QNetworkAccessManager>();
    network_->setProxy(IsLoopback(base_.host()) ? QNetworkProxy::NoProxy
                                                : QNetworkProxy::DefaultProxy);
    return *network_;
}

} // namespace Qel
