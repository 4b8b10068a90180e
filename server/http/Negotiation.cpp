#include "http/Negotiation.h"

namespace Qel::Http {

std::optional<Wire::Format> FormatOf(const QByteArray &mediaType)
{
    const QByteArray type = mediaType.split(';').first().trimmed().toLower();
    if (type == Wire::CborType)
        return Wire::Format::Cbor;
    if (type == Wire::JsonType)
        return Wire::Format::Json;
    return std::nullopt;
}

Wire::Format AnswerFormat(const Request &request)
{
    const QList<QByteArray> accepted = request.accept.split(',');
    for (const QByteArray &type : accepted)
        if (const auto format = FormatOf(type))
            return *format;
    return FormatOf(request.contentType).value_or(Wire::Format::Json);
}

QByteArray MediaTypeOf(Wire::Format format)
{
    return format == Wire::Format::Cbor ? Wire::CborType : Wire::JsonType;
}

std::optional<BasicCredential> ParseBasic(const QByteArray &authorization)
{
    constexpr char scheme[] = "basic ";
    constexpr qsizetype schemeSize = sizeof scheme - 1;
    if (authorization.left(schemeSize).toLower() != scheme)
        return std::nullopt;
    const auto decoded = QByteArray::fromBase64Encoding(authorization.mid(schemeSize).trimmed(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    const qsizetype colon = decoded ? (*decoded).indexOf(':') : -1;
    if (colon <= 0)
        return std::nullopt;
    return BasicCredential{QString::fromUtf8((*decoded).left(colon)), (*decoded).mid(colon + 1)};
}

} // namespace Qel::Http
