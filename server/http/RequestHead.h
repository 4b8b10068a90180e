#pragma once

#include <QByteArray>

#include <array>
#include <cstddef>
#include <string_view>

namespace Qel::Http {

/// Looks through the head of a request (request line and headers) while it comes in, line by
/// line, and knows where it ends. Stricter than HTTP asks for: whatever a proxy in front could
/// read in another way than this server (two lengths, a length and an encoding, folded lines, a
/// blank before the colon, bare line feeds, a target that is no path) is malformed, because that
/// is how one request is smuggled in the body of another.
class RequestHead
{
public:
    enum class State { Incomplete, Complete, Malformed };

    /// `bytes`: from the request's first byte on; between calls it only grows. After anything
    /// but Incomplete it is not called again.
    State Look(std::string_view bytes);
    /// Once Complete: bytes of the head with the empty line.
    std::size_t Size() const { return lineBegin_; }

private:
    bool TakeRequestLine(std::string_view line);
    bool TakeHeader(std::string_view line);
    bool IsWhole() const;

    static constexpr std::size_t OnceCount = 8;

    std::size_t lineBegin_ = 0;
    std::size_t scanned_ = 0;
    int lines_ = 0;
    bool isHttp11_ = false;
    std::array<bool, OnceCount> seen_{}; ///< of the headers that may come once
};

} // namespace Qel::Http
