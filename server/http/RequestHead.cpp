#include "http/RequestHead.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Qel::Http {

namespace {

constexpr int MostLines = 100;

/// Headers that decide how far a request reaches, who it is from or what it does.
constexpr std::string_view OnceOnly[] = {
    "host",         "content-length", "transfer-encoding", "authorization",
    "content-type", "expect",         "idempotency-key",   "qel-position",
};
enum Once { Host, ContentLength, TransferEncoding };

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualsIgnoringCase(std::string_view text, std::string_view lower)
{
    return std::ranges::equal(text, lower, {}, Lower);
}

bool IsTokenChar(char c)
{
    constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return (c >= '0' && c <= '9') || (Lower(c) >= 'a' && Lower(c) <= 'z') ||
           others.find(c) != std::string_view::npos;
}

bool IsToken(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, IsTokenChar);
}

/// A path with or without a query: visible ASCII, no fragment.
bool IsPath(std::string_view text)
{
    return text.starts_with('/') &&
           std::ranges::all_of(text, [](char c) { return c > ' ' && c < '\x7f' && c != '#'; });
}

bool IsLength(std::string_view text)
{
    constexpr std::size_t mostDigits = 18; // fits 64 bits
    return !text.empty() && text.size() <= mostDigits &&
           std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Control characters that no head has anywhere.
bool IsForbidden(char c)
{
    return (c >= '\0' && c < ' ' && c != '\t' && c != '\r' && c != '\n') || c == '\x7f';
}

} // namespace

RequestHead::State RequestHead::Look(std::string_view bytes)
{
    static_assert(std::size(OnceOnly) == OnceCount);
    while (scanned_ < bytes.size()) {
        const char c = bytes[scanned_++];
        if (IsForbidden(c))
            return State::Malformed;
        // A carriage return stands before a line feed, and the other way round.
        const bool afterReturn = scanned_ - lineBegin_ >= 2 && bytes[scanned_ - 2] == '\r';
        if ((c == '\n') != afterReturn)
            return State::Malformed;
        if (c != '\n')
            continue;
        const std::string_view line = bytes.substr(lineBegin_, scanned_ - 2 - lineBegin_);
        lineBegin_ = scanned_;
        if (line.empty())
            return IsWhole() ? State::Complete : State::Malformed;
        if (++lines_ > MostLines || !(lines_ == 1 ? TakeRequestLine(line) : TakeHeader(line)))
            return State::Malformed;
    }
    return State::Incomplete;
}

bool RequestHead::TakeRequestLine(std::string_view line)
{
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string_view::npos || first == last)
        return false;
    const std::string_view version = line.substr(last + 1);
    isHttp11_ = version == "HTTP/1.1";
    return IsToken(line.substr(0, first)) && IsPath(line.substr(first + 1, last - first - 1)) &&
           (isHttp11_ || version == "HTTP/1.0");
}

bool RequestHead::TakeHeader(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !IsToken(line.substr(0, colon)))
        return false;
    const std::string_view name = line.substr(0, colon);
    const auto *const once = std::ranges::find_if(
        OnceOnly, [&](std::string_view one) { return EqualsIgnoringCase(name, one); });
    if (once == std::end(OnceOnly))
        return true;
    const auto which = static_cast<std::size_t>(once - std::begin(OnceOnly));
    if (std::exchange(seen_[which], true))
        return false;
    const std::string_view value = Trimmed(line.substr(colon + 1));
    if (which == ContentLength)
        return IsLength(value);
    if (which == TransferEncoding)
        return isHttp11_ && EqualsIgnoringCase(value, "chunked");
    return true;
}

bool RequestHead::IsWhole() const
{
    const bool twoLengths = seen_[ContentLength] && seen_[TransferEncoding];
    return lines_ > 0 && !twoLengths && (seen_[Host] || !isHttp11_);
}

} // namespace Qel::Http
