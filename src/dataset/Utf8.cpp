#include "dataset/Utf8.h"

#include <simdjson.h>

namespace Qel {

bool IsUtf8(QByteArrayView bytes)
{
    return bytes.isEmpty() || simdjson::validate_utf8(bytes.data(), size_t(bytes.size()));
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
