#include "Fuzz.h"

#include "frame/RunParams.h"

#include <QXmlStreamWriter>

#include <array>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr std::array Fields{
    std::pair("UserId", &TRunParam::UserId),     std::pair("UserCode", &TRunParam::UserCode),
    std::pair("UserName", &TRunParam::UserName), std::pair("OrgId", &TRunParam::OrgId),
    std::pair("OrgAbbr", &TRunParam::OrgAbbr),   std::pair("OrgName", &TRunParam::OrgName),
    std::pair("PinCode", &TRunParam::PinCode),   std::pair("CaType", &TRunParam::CaType),
};

/// The text that a host would hand over for these values.
QByteArray Written(const TRunParam &values)
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.writeStartDocument();
    xml.writeStartElement(u"RunParams"_s);
    xml.writeStartElement(u"RunParam"_s);
    for (const auto &[name, field] : Fields)
        xml.writeAttribute(QString::fromLatin1(name), values.*field);
    xml.writeEndDocument();
    return document.toBase64();
}

void Read(const QByteArray &base64)
{
    TRunParam values;
    try {
        values = ParseRunParams(base64);
    } catch (const EHostTextError &) {
        return;
    }
    Fuzz::Require(ParseRunParams(Written(values)) == values,
                  "what was read is written and read again", base64);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = Fuzz::Input(data, size).Rest();
    Read(bytes);
    Read(bytes.toBase64());
    return 0;
}
