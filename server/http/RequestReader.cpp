#include "http/RequestReader.h"

#include "http/RequestHead.h"

#include <boost/beast/core/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

namespace Qel::Http {

namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::system::error_code;
using End = ReadResult::End;

constexpr std::size_t HeadLimit = 16u << 10;
constexpr std::size_t HeadRead = 8u << 10;
constexpr std::size_t BodyRead = 64u << 10;

QByteArray ToBytes(beast::string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

std::string_view ViewOf(const beast::flat_buffer &buffer)
{
    return {static_cast<const char *>(buffer.data().data()), buffer.size()};
}

/// Every line of a header, as if it were one.
template <typename Fields>
QByteArray AllOf(const Fields &fields, beast::string_view name)
{
    QByteArray all;
    const auto [begin, end] = fields.equal_range(name);
    for (auto line = begin; line != end; ++line)
        all += (all.isEmpty() ? "" : ",") + ToBytes(line->value());
    return all;
}

template <typename Message>
void TakeHead(const Message &message, Incoming &into)
{
    Request &request = into.request;
    request.method = ToBytes(message.method_string());
    request.path = ToBytes(message.target());
    if (const qsizetype query = request.path.indexOf('?'); query >= 0)
        request.path.truncate(query);
    request.authorization = ToBytes(message[http::field::authorization]);
    request.contentType = ToBytes(message[http::field::content_type]);
    request.accept = AllOf(message, "Accept");
    request.idempotencyKey = ToBytes(message["Idempotency-Key"]);
    request.position = ToBytes(message["QEL-Position"]);
    request.forwardedFor = AllOf(message, "X-Forwarded-For");
    request.forwarded = AllOf(message, "Forwarded");
    into.keepAlive = message.keep_alive();
    into.isHead = message.method() == http::verb::head;
}

ReadResult Ended(const error_code &error)
{
    return {error == beast::error::timeout ? End::Slow : End::Gone};
}

asio::awaitable<error_code> ReadMore(Link &link, beast::flat_buffer &buffer, std::size_t most)
{
    auto [error, size] = co_await link.ReadSome(buffer.prepare(most));
    buffer.commit(error ? 0 : size);
    co_return error;
}

} // namespace

asio::awaitable<ReadResult> ReadRequest(Link &link, beast::flat_buffer &buffer,
                                        const Patience &patience, std::size_t bodyLimit,
                                        Clock::time_point deadline, Incoming &into)
{
    link.Until(std::min(Clock::now() + patience.silence, deadline));
    RequestHead head;
    for (;;) {
        const RequestHead::State state = head.Look(ViewOf(buffer));
        if (state == RequestHead::State::Malformed)
            co_return ReadResult{End::Refused, Broken::Malformed};
        const bool complete = state == RequestHead::State::Complete;
        if ((complete ? head.Size() : buffer.size()) > HeadLimit)
            co_return ReadResult{End::Refused, Broken::HeaderTooLarge};
        if (complete)
            break;
        if (const error_code error = co_await ReadMore(link, buffer, HeadRead))
            co_return Ended(error);
    }

    http::request_parser<http::string_body> parser;
    parser.header_limit(HeadLimit);
    parser.body_limit(bodyLimit);
    error_code error;
    buffer.consume(parser.put(asio::const_buffer(buffer.data().data(), head.Size()), error));
    if (error == http::error::body_limit)
        co_return ReadResult{End::Refused, Broken::TooLarge};
    if (error || !parser.is_header_done())
        co_return ReadResult{End::Refused, Broken::Malformed};
    TakeHead(parser.get(), into); // now: what trails a chunked body must not pass for a header

    const Pace pace(patience, deadline);
    if (!parser.is_done() && buffer.size() == 0 &&
        beast::iequals(parser.get()[http::field::expect], "100-continue")) {
        static constexpr std::string_view goAhead = "HTTP/1.1 100 Continue\r\n\r\n";
        if (!co_await WriteAll(link, asio::buffer(goAhead), pace))
            co_return ReadResult{End::Gone};
    }
    parser.eager(true);
    std::size_t moved = 0;
    while (!parser.is_done()) {
        const std::size_t taken = parser.put(buffer.data(), error);
        buffer.consume(taken);
        if (error == http::error::body_limit)
            co_return ReadResult{End::Refused, Broken::TooLarge};
        // The size line of a chunk, or what trails the last one, is no place for a book either.
        if ((error && error != http::error::need_more) || buffer.size() > HeadLimit + BodyRead)
            co_return ReadResult{End::Refused, Broken::Malformed};
        if (parser.is_done() || (taken > 0 && buffer.size() > 0 && !error))
            continue;
        link.Until(pace.Due(moved));
        const std::size_t before = buffer.size();
        if (const error_code failure = co_await ReadMore(link, buffer, BodyRead))
            co_return Ended(failure);
        moved += buffer.size() - before;
        if (!into.share.Fits(moved))
            co_return ReadResult{End::Refused, Broken::NoRoom};
    }
    into.body = std::move(parser.get().body());
    into.request.body =
        QByteArray::fromRawData(into.body.data(), static_cast<qsizetype>(into.body.size()));
    co_return ReadResult{End::Whole};
}

asio::awaitable<bool> WriteAll(Link &link, asio::const_buffer bytes, const Pace &pace)
{
    std::size_t moved = 0;
    while (bytes.size() > 0) {
        link.Until(pace.Due(moved));
        auto [error, size] = co_await link.WriteSome(bytes);
        if (error)
            co_return false;
        moved += size;
        bytes += size;
    }
    co_return true;
}

} // namespace Qel::Http
