#include "remote/RemoteCall.h"

using namespace Qt::StringLiterals;

namespace Qel {

using Kind = ERemoteError::Kind;

namespace {

/// Statuses with which a server says that it did not decide: the request may yet take effect, or
/// be asked again as it was.
bool IsUndecided(int status)
{
    return status == 408 || status == 409 || status == 425 || status == 429 || status >= 500;
}

QString ServerOf(const QUrl &url)
{
    return url.adjusted(QUrl::RemovePath).toString();
}

} // namespace

ERemoteError RemoteCall::Error(Kind kind, Effect effect, const QString &reason,
                               const ERemoteError::Facts &known) const
{
    QString text = (isPost ? u"保存失败："_s : u"查询失败："_s) + reason;
    if (isPost && effect == Effect::Open)
        text += u"服务器可能已经保存；用相同的内容再保存一次，不会重复存入。"_s;
    return ERemoteError(kind, text, known);
}

ERemoteError RemoteCall::Cancelled() const
{
    return Error(Kind::Cancelled, Effect::Open, u"已取消。"_s, facts);
}

ERemoteError RemoteCall::Malformed(const QString &cause) const
{
    ERemoteError::Facts known = facts;
    known.cause = cause;
    return Error(Kind::MalformedAnswer, Effect::Open, u"服务器的回答无法识别。"_s, known);
}

ERemoteError RemoteCall::Failed(Exchange &exchange) const
{
    ERemoteError::Facts known = facts;
    known.httpStatus = exchange.Status();
    known.cause = exchange.CauseText();
    const QString trouble = u"%1（%2）。"_s.arg(exchange.TroubleText(), ServerOf(request.url));
    switch (exchange.Result()) {
    case Exchange::Outcome::NotSent:
        return Error(Kind::Transport, Effect::None, trouble, known);
    case Exchange::Outcome::Broken:
        return Error(Kind::Transport, Effect::Open, trouble, known);
    case Exchange::Outcome::TimedOut:
        return Error(Kind::TimeOut, Effect::Open, trouble, known);
    case Exchange::Outcome::Garbled:
        return Malformed(known.cause);
    case Exchange::Outcome::Answered:
        break;
    }
    if (known.httpStatus == 200)
        return Malformed(u"回答的内容类型不是本协议的"_s);
    return Refused(exchange, known);
}

ERemoteError RemoteCall::Refused(Exchange &exchange, ERemoteError::Facts known) const
{
    const Effect effect = IsUndecided(known.httpStatus) ? Effect::Open : Effect::None;
    if (const auto format = exchange.BodyFormat()) {
        try {
            const Wire::ErrorAnswer answer = Wire::DecodeErrorAnswer(exchange.TakeBody(), *format);
            known.code = answer.code;
            known.reference = answer.reference;
            QString reason = answer.message;
            if (!answer.reference.isEmpty())
                reason += u"（参考号 %1）"_s.arg(answer.reference);
            return Error(Kind::ServerMessage, effect, reason, known);
        } catch (const EQelError &error) {
            known.cause = error.Message();
        }
    }
    return Error(Kind::HttpStatus, effect, u"服务器返回 HTTP 状态 %1。"_s.arg(known.httpStatus),
                 known);
}

bool IsDefinite(const ERemoteError &error)
{
    return error.ErrorKind() == Kind::ServerMessage && !IsUndecided(error.HttpStatus());
}

} // namespace Qel
