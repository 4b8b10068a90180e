#include "remote/RemoteCall.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

using Kind = ERemoteError::Kind;

namespace {

/// Codes of the protocol that say with status 503 that nothing of the request was done.
constexpr QStringView nothingDone[] = {u"post.not_done", u"server.busy", u"server.stopping"};

QString ServerOf(const QUrl &url)
{
    return url.adjusted(QUrl::RemovePath).toString();
}

} // namespace

ERemoteError RemoteCall::Error(Kind kind, Effect effect, const QString &reason,
                               const ERemoteError::Facts &known) const
{
    QString text = (isPost ? u"保存失败："_s : u"查询失败："_s) + reason;
    ERemoteError::Facts all = known;
    all.mayBeStored =
        isPost && (effect == Effect::Possible || (effect == Effect::NotNow && mayBeStored));
    if (all.mayBeStored)
        text += u"服务器可能已经保存；用相同的内容再保存一次，不会重复存入。"_s;
    return ERemoteError(kind, text, all);
}

/// A refusal for what the post is holds for each time that it was sent; one for who sends it, or
/// when, for this time only.
RemoteCall::Effect RemoteCall::EffectOf(int status, const QString &code)
{
    switch (status) {
    case 401:
    case 403:
    case 429:
        return Effect::NotNow;
    case 408:
    case 409:
    case 425:
        return Effect::Possible; // the server did not decide
    case 503:
        return std::ranges::find(nothingDone, code) != std::end(nothingDone) ? Effect::NotNow
                                                                             : Effect::Possible;
    default:
        return status < 500 ? Effect::Never : Effect::Possible;
    }
}

ERemoteError RemoteCall::Cancelled() const
{
    return Error(Kind::Cancelled, Effect::Possible, u"已取消。"_s, facts);
}

ERemoteError RemoteCall::Malformed(const QString &cause) const
{
    ERemoteError::Facts known = facts;
    known.cause = cause;
    return Error(Kind::MalformedAnswer, Effect::Possible, u"服务器的回答无法识别。"_s, known);
}

ERemoteError RemoteCall::Failed(Exchange &exchange) const
{
    ERemoteError::Facts known = facts;
    known.httpStatus = exchange.Status();
    known.cause = exchange.CauseText();
    const QString trouble = u"%1（%2）。"_s.arg(exchange.TroubleText(), ServerOf(request.url));
    switch (exchange.Result()) {
    case Exchange::Outcome::NotSent:
        return Error(Kind::Transport, Effect::NotNow, trouble, known);
    case Exchange::Outcome::Broken:
        return Error(Kind::Transport, Effect::Possible, trouble, known);
    case Exchange::Outcome::TimedOut:
        return Error(Kind::TimeOut, Effect::Possible, trouble, known);
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
    if (const auto format = exchange.BodyFormat()) {
        try {
            const Wire::ErrorAnswer answer = Wire::DecodeErrorAnswer(exchange.TakeBody(), *format);
            known.code = answer.code;
            known.reference = answer.reference;
            QString reason = answer.message;
            if (!answer.reference.isEmpty())
                reason += u"（参考号 %1）"_s.arg(answer.reference);
            return Error(Kind::ServerMessage, EffectOf(known.httpStatus, known.code), reason,
                         known);
        } catch (const EQelError &error) {
            known.cause = error.Message();
        }
    }
    return Error(Kind::HttpStatus, EffectOf(known.httpStatus, {}),
                 u"服务器返回 HTTP 状态 %1。"_s.arg(known.httpStatus), known);
}

bool IsDefinite(const ERemoteError &error)
{
    return error.ErrorKind() == Kind::ServerMessage && !error.MayBeStored();
}

} // namespace Qel
