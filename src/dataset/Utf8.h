#pragma once

#include <QByteArrayView>

namespace Qel {

/// True if the bytes are well-formed UTF-8 (Unicode table 3-7: no surrogates, no overlong forms,
/// nothing above U+10FFFF, nothing cut off at the end).
bool IsUtf8(QByteArrayView bytes);

/// True if no byte is above 0x7F. Text that is not ASCII is mostly known after its first bytes.
bool IsAscii(QByteArrayView bytes);

/// Length of the longest well-formed start: where the first wrong sequence begins.
qsizetype Utf8PrefixLength(QByteArrayView bytes);

} // namespace Qel
