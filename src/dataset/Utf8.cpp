#include "dataset/Utf8.h"

#include <simdjson.h>

namespace Qel {

bool IsUtf8(QByteArrayView bytes)
{
    return bytes.isEmpty() || simdjson::validate_utf8(bytes.data(), size_t(bytes.size()));
}

bool IsAscii(QByteArrayView bytes)
{
    // Blocks without a branch inside, which the compiler turns into vector instructions.
    constexpr qsizetype kBlock = 128;
    const char *at = bytes.data();
    qsizetype left = bytes.size();
    for (; left >= kBlock; at += kBlock, left -= kBlock) {
        uchar seen = 0;
        for (qsizetype i = 0; i < kBlock; ++i)
            seen |= uchar(at[i]);
        if (seen & 0x80)
            return false;
    }
    uchar seen = 0;
    for (qsizetype i = 0; i < left; ++i)
        seen |= uchar(at[i]);
    return !(seen & 0x80);
}

qsizetype Utf8PrefixLength(QByteArrayView bytes)
{
    // Only asked after a failure, so one sequence at a time is fast enough.
    qsizetype done = 0;
    while (done < bytes.size()) {
        const auto lead = uchar(bytes[done]);
        const qsizetype length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (done + length > bytes.size() || !IsUtf8(bytes.sliced(done, length)))
            break;
        done += length;
    }
    return done;
}

} // namespace Qel
