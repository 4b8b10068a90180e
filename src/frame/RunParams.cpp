#include "frame/RunParams.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <QXmlStreamReader>

#include <array>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

struct Attribute
{
    const char16_t *name;
    QString TRunParam::*field;
};

constexpr std::array Attributes{
    Attribute{u"UserId", &TRunParam::UserId},     Attribute{u"UserCode", &TRunParam::UserCode},
    Attribute{u"UserName", &TRunParam::UserName}, Attribute{u"OrgId", &TRunParam::OrgId},
    Attribute{u"OrgAbbr", &TRunParam::OrgAbbr},   Attribute{u"OrgName", &TRunParam::OrgName},
    Attribute{u"PinCode", &TRunParam::PinCode},   Attribute{u"CaType", &TRunParam::CaType},
};

constexpr qsizetype Sound = -1; ///< no offending offset

[[noreturn]] void RefuseBase64(qsizetype offset, const QString &why)
{
    throw EHostTextError(u"运行参数不是有效的 base64 文本：偏移 %1 处%2。"_s.arg(offset).arg(why));
}

bool IsBlank(char byte)
{
    return byte == '\r' || byte == '\n' || byte == ' ' || byte == '\t';
}

bool IsBase64Digit(char byte)
{
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
           (byte >= '0' && byte <= '9') || byte == '+' || byte == '/';
}

/// The digits and padding alone; every other byte but a blank is refused where it stands.
QByteArray Base64Characters(const QByteArray &text)
{
    QByteArray characters;
    characters.reserve(text.size());
    qsizetype padding = 0;
    for (qsizetype offset = 0; offset < text.size(); ++offset) {
        const char byte = text.at(offset);
        if (IsBlank(byte))
            continue;
        if (byte == '=' && ++padding > 2)
            RefuseBase64(offset, u"的填充符多于两个"_s);
        if (byte != '=' && !IsBase64Digit(byte))
            RefuseBase64(offset, u"有非法字符"_s);
        if (byte != '=' && padding > 0)
            RefuseBase64(offset, u"的填充符之后还有内容"_s);
        characters.append(byte);
    }
    if (characters.size() % 4 != 0)
        RefuseBase64(text.size(), u"文本不完整，长度不是四的倍数"_s);
    return characters;
}

QByteArray DecodeBase64(const QByteArray &text)
{
    const QByteArray characters = Base64Characters(text);
    const auto decoded =
        QByteArray::fromBase64Encoding(characters, QByteArray::AbortOnBase64DecodingErrors);
    // What the decoder drops silently are bits beyond the last byte.
    if (!decoded || decoded.decoded.toBase64() != characters)
        RefuseBase64(text.size(), u"的末尾有多余的位"_s);
    return decoded.decoded;
}

/// Offset of the first byte that begins no GBK character of one or two bytes; Sound if none.
qsizetype FirstOutsideGbk(const QByteArray &bytes)
{
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        const auto lead = static_cast<uchar>(bytes.at(at));
        if (lead < 0x80)
            continue;
        const auto trail = at + 1 < bytes.size() ? static_cast<uchar>(bytes.at(at + 1)) : uchar(0);
        if (lead == 0x80 || lead == 0xff || trail < 0x40 || trail == 0x7f || trail == 0xff)
            return at;
        ++at;
    }
    return Sound;
}

/// Offset of the first byte in which two byte strings differ; Sound if they are equal.
qsizetype FirstDifference(const QByteArray &one, const QByteArray &other)
{
    if (one == other)
        return Sound;
    qsizetype at = 0;
    while (at < one.size() && at < other.size() && one.at(at) == other.at(at))
        ++at;
    return at;
}

QString DecodeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        const qsizetype at = FirstDifference(bytes, text.toUtf8());
        throw EHostTextError(
            u"运行参数不是有效的 UTF-8 文本：偏移 %1 处的字节无法识别。"_s.arg(at));
    }
    return text;
}

/// What the document's XML declaration names; UTF-8 without one.
QString DeclaredEncoding(const QByteArray &document)
{
    QByteArray start = document.left(256);
    if (start.startsWith("\xef\xbb\xbf"))
        start.remove(0, 3);
    const qsizetype end = start.indexOf("?>");
    if (!start.startsWith("<?xml") || end < 0)
        return u"UTF-8"_s;
    QXmlStreamReader declaration(QString::fromLatin1(start.left(end + 2)) + u"<x/>"_s);
    declaration.readNext();
    const QString encoding = declaration.documentEncoding().toString();
    return encoding.isEmpty() ? u"UTF-8"_s : encoding.toUpper();
}

QString DecodeDocument(const QByteArray &document)
{
    const QString encoding = DeclaredEncoding(document);
    if (encoding == u"UTF-8"_s)
        return DecodeUtf8(document);
    // GB2312 is what older programs write for the GBK code page, of which it is a part.
    if (encoding == u"GBK"_s || encoding == u"GB2312"_s)
        return DecodeGbk(document, u"运行参数"_s);
    throw EHostTextError(u"运行参数声明了不支持的编码“%1”，只能是 UTF-8 或 GBK。"_s.arg(encoding));
}

[[noreturn]] void RefuseXml(const QXmlStreamReader &xml, const QString &why)
{
    throw EHostTextError(
        u"运行参数不是有效的 XML：第 %1 行第 %2 列（偏移 %3）：%4"_s.arg(xml.lineNumber())
            .arg(xml.columnNumber())
            .arg(xml.characterOffset())
            .arg(why));
}

TRunParam FromAttributes(const QXmlStreamAttributes &attributes)
{
    TRunParam values;
    for (const Attribute &attribute : Attributes)
        values.*attribute.field = attributes.value(QString::fromUtf16(attribute.name)).toString();
    return values;
}

/// Reads to the end in every case: a document that is broken after its RunParam is broken.
TRunParam ReadDocument(const QString &text)
{
    TRunParam values;
    QXmlStreamReader xml(text);
    xml.setNamespaceProcessing(false);
    int depth = 0;
    bool ours = false;
    bool found = false;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::DTD)
            RefuseXml(xml, u"不允许 DOCTYPE 声明。"_s);
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (depth++ == 0) {
            ours = xml.qualifiedName().compare(u"RunParams", Qt::CaseInsensitive) == 0;
        } else if (ours && !found && xml.qualifiedName() == u"RunParam") {
            found = true;
            values = FromAttributes(xml.attributes());
        }
    }
    if (xml.hasError())
        RefuseXml(xml, xml.errorString());
    return values;
}

} // namespace

QString DecodeGbk(const QByteArray &bytes, const QString &what)
{
    QStringDecoder decoder("GBK");
    if (!decoder.isValid())
        throw EHostTextError(u"本机的 Qt 不支持 GBK 编码（缺少 ICU）。"_s);
    const QString text = decoder.decode(bytes);
    // The decoder replaces some bytes that are not GBK without a word; they do not come back.
    QStringEncoder encoder("GBK");
    qsizetype bad = FirstOutsideGbk(bytes);
    if (bad == Sound)
        bad = FirstDifference(bytes, encoder.encode(text));
    if (bad != Sound)
        throw EHostTextError(
            u"%1不是有效的 GBK 文本：偏移 %2 处的字节无法识别。"_s.arg(what).arg(bad));
    return text;
}

TRunParam ParseRunParams(const QByteArray &base64)
{
    if (base64.isEmpty())
        return {};
    if (base64.size() > MaxRunParamSize)
        throw EHostTextError(
            u"运行参数过长：%1 字节，最多 %2 字节。"_s.arg(base64.size()).arg(MaxRunParamSize));
    return ReadDocument(DecodeDocument(DecodeBase64(base64)));
}

} // namespace Qel
