#pragma once

#include "http/Message.h"
#include "wire/Wire.h"

#include <QString>

#include <optional>

namespace Qel::Http {

/// The format that a media type names, parameters aside; nothing for any other type.
std::optional<Wire::Format> FormatOf(const QByteArray &mediaType);

/// What the answer is written in: the first known type of Accept, else the request's own, else
/// JSON, which a person can read.
Wire::Format AnswerFormat(const Request &request);

QByteArray MediaTypeOf(Wire::Format format);

struct BasicCredential
{
    QString userCode;
    QByteArray token;
};

/// From an Authorization header of the Basic scheme; nothing if it is not one.
std::optional<BasicCredential> ParseBasic(const QByteArray &authorization);

} // namespace Qel::Http
