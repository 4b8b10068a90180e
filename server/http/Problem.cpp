#include "http/Problem.h"

#include "managers/Method.h"
#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "wire/Wire.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

struct CodeStatus
{
    const char *code;
    int status;
};

constexpr CodeStatus Statuses[] = {
    {"auth.refused", 401},    {"auth.required", 401},
    {"auth.too_many", 429},   {"http.header_too_large", 431},
    {"http.method", 405},     {"http.not_found", 404},
    {"http.too_large", 413},  {"http.type", 415},
    {"post.key_reused", 409}, {"post.not_done", 503},
    {"post.operator", 403},   {"post.scope", 403},
    {"post.unknown", 500},    {"post.unknown_method", 404},
    {"query.too_large", 422}, {"server.busy", 503},
    {"server.failure", 500},  {"server.stopping", 503},
    {"sql.scope", 403},       {"sql.timeout", 504},
};

/// Databases repeat values in their messages: in single quotes, or in double ones after a colon.
/// The statement that store/ puts behind them may end inside of a text, and has numbers, too.
QString WithoutValues(QString message)
{
    static const QRegularExpression single(u"'[^']*(?:'|$)"_s);
    static const QRegularExpression afterColon(u": *\"[^\"]*\""_s);
    static const QRegularExpression number(u"(?<![\\w?$.])\\d[\\d.]*"_s);
    message.replace(single, u"'?'"_s).replace(afterColon, u": \"?\""_s);
    const qsizetype statement = message.indexOf(u"；语句："_s);
    if (statement < 0)
        return message;
    return message.first(statement) + message.sliced(statement).replace(number, u"?"_s);
}

} // namespace

int StatusOf(const QByteArray &code)
{
    const auto found = std::find_if(std::begin(Statuses), std::end(Statuses),
                                    [&](const CodeStatus &one) { return code == one.code; });
    return found == std::end(Statuses) ? 400 : found->status;
}

Failure Explain(const std::exception_ptr &failure, const QString &reference)
{
    const auto unexpected = [&](const QString &detail) {
        return Failure{"server.failure", u"服务器处理失败，编号 %1。"_s.arg(reference),
                       WithoutValues(detail)};
    };
    try {
        std::rethrow_exception(failure);
    } catch (const EProblem &error) {
        return {error.Code(), error.Message(), {}, error.RetryAfter()};
    } catch (const Sql::ESqlError &error) {
        return {QByteArray::fromStdString(error.Code()), error.Message(), {}};
    } catch (const Managers::EPostError &error) {
        return {error.Code(), error.Message(), WithoutValues(error.Detail())};
    } catch (const Store::EQueryTooLarge &error) {
        return {"query.too_large", error.Message(), {}};
    } catch (const Store::EStoreError &error) {
        if (error.WhichKind() == Store::EStoreError::Kind::Stopped)
            return {"sql.timeout", u"查询超时，已中止，请缩小查询范围。"_s, {}};
        return unexpected(error.Message());
    } catch (const Wire::EWireError &error) {
        return {"http.bad_request", error.Message(), {}};
    } catch (const EQelError &error) {
        return unexpected(error.Message());
    } catch (const std::exception &error) {
        return unexpected(QString::fromUtf8(error.what()));
    }
}

} // namespace Qel::Http
