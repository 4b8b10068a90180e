#include "dataset/CborReader.h"

#include "dataset/QelError.h"
#include "dataset/Utf8.h"

#include <QtEndian>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// Major types, as the upper three bits of an initial byte.
constexpr uchar kUnsigned = 0x00;
constexpr uchar kBytes = 0x40;
constexpr uchar kText = 0x60;
constexpr uchar kArray = 0x80;
constexpr uchar kMap = 0xA0;

} // namespace

void FailAtByte(const QString &what, qsizetype position)
{
    throw EDataSetError(u"行数据块有误：%1（第 %2 字节）"_s.arg(what).arg(position));
}

void CborReader::Fail(const QString &what) const
{
    FailAtByte(what, position_);
}

quint64 CborReader::ReadHead(uchar wanted, const QString &name)
{
    if (position_ >= bytes_.size())
        Fail(u"数据在应有%1处中断"_s.arg(name));
    const auto first = uchar(bytes_[position_]);
    if ((first & 0xE0) != wanted)
        Fail(u"此处应为%1"_s.arg(name));
    const uchar info = first & 0x1F;
    if (info < 24) {
        ++position_;
        return info;
    }
    if (info > 27)
        Fail(u"%1的长度必须确定"_s.arg(name));
    const int width = 1 << (info - 24);
    if (bytes_.size() - position_ - 1 < width)
        Fail(u"%1的长度不完整"_s.arg(name));
    const char *number = bytes_.data() + position_ + 1;
    quint64 value = 0;
    switch (width) {
    case 1:
        value = uchar(*number);
        break;
    case 2:
        value = qFromBigEndian<quint16>(number);
        break;
    case 4:
        value = qFromBigEndian<quint32>(number);
        break;
    default:
        value = qFromBigEndian<quint64>(number);
        break;
    }
    position_ += 1 + width;
    return value;
}

quint64 CborReader::ReadUnsigned()
{
    return ReadHead(kUnsigned, u"非负整数"_s);
}

qsizetype CborReader::ReadCount(uchar wanted, const QString &name, quint64 bytesEach)
{
    const qsizetype start = position_;
    const quint64 count = ReadHead(wanted, name);
    if (count > quint64(bytes_.size() - position_) / bytesEach)
        FailAtByte(u"%1的个数 %2 超出数据长度"_s.arg(name).arg(count), start);
    return qsizetype(count);
}

qsizetype CborReader::EnterMap()
{
    return ReadCount(kMap, u"映射"_s, 2);
}

qsizetype CborReader::EnterArray()
{
    return ReadCount(kArray, u"数组"_s, 1);
}

QByteArrayView CborReader::ReadString(uchar wanted, const QString &name)
{
    const qsizetype length = ReadCount(wanted, name, 1);
    const QByteArrayView string = bytes_.sliced(position_, length);
    position_ += length;
    return string;
}

QByteArrayView CborReader::ReadText()
{
    const QByteArrayView text = ReadString(kText, u"文本"_s);
    if (!IsUtf8(text))
        FailAtByte(u"文本不是 UTF-8"_s, position_ - text.size() + Utf8PrefixLength(text));
    return text;
}

QByteArrayView CborReader::ReadBytes()
{
    return ReadString(kBytes, u"字节串"_s);
}

void CborReader::ExpectEnd() const
{
    if (position_ != bytes_.size())
        Fail(u"结尾之后还有多余的 %1 字节"_s.arg(bytes_.size() - position_));
}

} // namespace Qel
