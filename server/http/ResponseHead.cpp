#include "http/ResponseHead.h"

#include <boost/beast/http/status.hpp>

namespace Qel::Http {

namespace {

/// What every answer says to programs that are not meant to see it: a browser neither guesses its
/// type, nor runs or frames it, and nobody keeps it. What serves it is nobody's business.
constexpr char Always[] = "Cache-Control: no-store\r\n"
                          "X-Content-Type-Options: nosniff\r\n"
                          "Content-Security-Policy: default-src 'none'; frame-ancestors 'none'\r\n"
                          "Referrer-Policy: no-referrer\r\n";
constexpr char Secure[] = "Strict-Transport-Security: max-age=31536000\r\n"; // a year
constexpr char Challenge[] = "WWW-Authenticate: Basic realm=\"qel\", charset=\"UTF-8\"\r\n";

} // namespace

QByteArray HeadOf(const Response &response, bool keepAlive, bool secure)
{
    const auto reason = boost::beast::http::obsolete_reason(
        static_cast<boost::beast::http::status>(response.status));
    QByteArray head = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' +
                      QByteArray(reason.data(), static_cast<qsizetype>(reason.size())) + "\r\n";
    if (!response.contentType.isEmpty())
        head += "Content-Type: " + response.contentType + "\r\n";
    head += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
    if (!keepAlive)
        head += "Connection: close\r\n";
    if (response.status == 401)
        head += Challenge;
    head += Always;
    if (secure)
        head += Secure;
    for (const auto &[name, value] : response.headers)
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

} // namespace Qel::Http
