#pragma once

#include "dataset/QelError.h"
#include "frame/LibraryTypes.h"

#include <QByteArray>

namespace Qel {

/// A text of the host's cannot be read: it says which, what is wrong, and where.
class EHostTextError : public EQelError
{
public:
    using EQelError::EQelError;
};

/// The largest run-parameter text that is read, in bytes as handed over.
constexpr qsizetype MaxRunParamSize = 1024 * 1024;

/// GBK bytes as text, exactly: raises EHostTextError with `what` and the offset of the first
/// bytes that are not GBK.
QString DecodeGbk(const QByteArray &bytes, const QString &what);

/// The host's run-parameter text: standard base64 (line ends and blanks between the characters
/// are allowed, nothing else) of an XML document in UTF-8 or GBK with root "RunParams" (any case),
/// whose first element "RunParam" carries the values as attributes. An empty text, another root
/// or no such element leave every field empty. Raises EHostTextError for what is not base64, not
/// well-formed, in another encoding, holds a DOCTYPE, or is larger than MaxRunParamSize.
TRunParam ParseRunParams(const QByteArray &base64);

} // namespace Qel
