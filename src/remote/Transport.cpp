#include "remote/Transport.h"

#include <QIODevice>
#include <QNetworkRequest>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// Where in the history of its database a post was stored; comes with its answer, goes with
/// queries.
constexpr char PositionHeader[] = "QEL-Position";

/// A body that can be read once and not again, so that a request cannot be repeated behind our
/// back: the attempt ends in an error instead.
class OneWayBody : public QIODevice
{
public:
    explicit OneWayBody(const QByteArray &bytes)
        : bytes_(bytes)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }
    bool seek(qint64) override { return false; }
    bool atEnd() const override { return read_ == bytes_.size(); }
    qint64 bytesAvailable() const override { return bytes_.size() - read_; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (read_ == bytes_.size())
            return -1;
        const qint64 count = std::min(maxSize, bytes_.size() - read_);
        std::memcpy(data, bytes_.constData() + read_, size_t(count));
        read_ += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray bytes_;
    qint64 read_ = 0;
};

QNetworkRequest NetworkRequest(const Exchange::Request &request)
{
    QNetworkRequest result(request.url);
    result.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray(Wire::CborType));
    result.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    result.setRawHeader("Accept", Wire::CborType);
    result.setRawHeader("Accept-Encoding", "identity");
    if (!request.authorization.isEmpty())
        result.setRawHeader("Authorization", request.authorization);
    if (!request.idempotencyKey.isEmpty())
        result.setRawHeader("Idempotency-Key", request.idempotencyKey);
    if (!request.position.isEmpty())
        result.setRawHeader(PositionHeader, request.position);

    result.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setTransferTimeout(int(request.timeOut.count()));
    return result;
}

/// Errors of the connection are numbered below the ones that an HTTP status stands for. A body
/// that would have to be sent again is one of either: of a connection that broke before any
/// answer, or of a status (a redirect, a demand for credentials) that asks for it.
bool IsConnectionError(QNetworkReply::NetworkError error, int status)
{
    if (error == QNetworkReply::ContentReSendError)
        return status == 0;
    return error != QNetworkReply::NoError && error < QNetworkReply::ContentAccessDenied;
}

struct Trouble
{
    QNetworkReply::NetworkError error;
    Exchange::Outcome outcome;
    QStringView text;
};

constexpr Trouble troubles[] = {
    {QNetworkReply::ConnectionRefusedError, Exchange::Outcome::NotSent, u"服务器拒绝连接"},
    {QNetworkReply::HostNotFoundError, Exchange::Outcome::NotSent, u"找不到服务器"},
    {QNetworkReply::SslHandshakeFailedError, Exchange::Outcome::NotSent,
     u"无法建立安全连接，服务器证书不可信"},
    {QNetworkReply::ProxyConnectionRefusedError, Exchange::Outcome::NotSent, u"代理拒绝连接"},
    {QNetworkReply::ProxyNotFoundError, Exchange::Outcome::NotSent, u"找不到代理"},
    {QNetworkReply::ProxyAuthenticationRequiredError, Exchange::Outcome::NotSent, u"代理要求登录"},
    {QNetworkReply::RemoteHostClosedError, Exchange::Outcome::Broken, u"与服务器的连接中断"},
    {QNetworkReply::ContentReSendError, Exchange::Outcome::Broken, u"与服务器的连接中断"},
    {QNetworkReply::TemporaryNetworkFailureError, Exchange::Outcome::Broken, u"网络中断"},
    {QNetworkReply::NetworkSessionFailedError, Exchange::Outcome::Broken, u"网络中断"},
    {QNetworkReply::UnknownNetworkError, Exchange::Outcome::Broken, u"网络出错"},
    {QNetworkReply::ProxyConnectionClosedError, Exchange::Outcome::Broken, u"与代理的连接中断"},
    {QNetworkReply::UnknownProxyError, Exchange::Outcome::Broken, u"代理出错"},
    {QNetworkReply::OperationCanceledError, Exchange::Outcome::TimedOut, u"服务器没有回应"},
    {QNetworkReply::TimeoutError, Exchange::Outcome::TimedOut, u"服务器没有回应"},
    {QNetworkReply::ProxyTimeoutError, Exchange::Outcome::TimedOut, u"代理没有回应"},
};

const Trouble &TroubleOf(QNetworkReply::NetworkError error)
{
    static constexpr Trouble other{QNetworkReply::UnknownNetworkError, Exchange::Outcome::Broken,
                                   u"网络出错"};
    const auto found = std::find_if(std::begin(troubles), std::end(troubles),
                                    [error](const Trouble &t) { return t.error == error; });
    return found == std::end(troubles) ? other : *found;
}

} // namespace

Exchange::Exchange(QNetworkAccessManager &network, const Request &request)
    : body_(std::make_unique<OneWayBody>(request.body))
    , reply_(network.post(NetworkRequest(request), body_.get()))
{
}

Exchange::~Exchange() = default;

Exchange::Outcome Exchange::Result() const
{
    if (IsConnectionError(reply_->error(), Status()))
        return TroubleOf(reply_->error()).outcome;
    const bool garbled = reply_->error() == QNetworkReply::ProtocolFailure || Status() == 0;
    return garbled ? Outcome::Garbled : Outcome::Answered;
}

int Exchange::Status() const
{
    return reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

std::optional<Wire::Format> Exchange::BodyFormat() const
{
    const QString header = reply_->header(QNetworkRequest::ContentTypeHeader).toString();
    const QString type = header.section(u';', 0, 0).trimmed();
    if (type.compare(QLatin1StringView(Wire::CborType), Qt::CaseInsensitive) == 0)
        return Wire::Format::Cbor;
    if (type.compare(QLatin1StringView(Wire::JsonType), Qt::CaseInsensitive) == 0)
        return Wire::Format::Json;
    return std::nullopt;
}

QByteArray Exchange::TakeBody()
{
    return reply_->readAll();
}

QByteArray Exchange::Position() const
{
    const QByteArray position = reply_->rawHeader(PositionHeader);
    constexpr qsizetype longest = 64;
    const bool visible =
        std::all_of(position.begin(), position.end(), [](char c) { return c > 32 && c < 127; });
    return visible && position.size() <= longest ? position : QByteArray();
}

QString Exchange::TroubleText() const
{
    return TroubleOf(reply_->error()).text.toString();
}

QString Exchange::CauseText() const
{
    return reply_->errorString();
}

} // namespace Qel
