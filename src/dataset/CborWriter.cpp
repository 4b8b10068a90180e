#include "dataset/CborWriter.h"

#include <QtEndian>

namespace Qel::CborWriter {

namespace {

void AddHead(QByteArray &out, uchar major, quint64 value)
{
    char number[8];
    if (value < 24) {
        out.append(char(major | uchar(value)));
    } else if (value <= 0xFF) {
        out.append(char(major | 24)).append(char(value));
    } else if (value <= 0xFFFF) {
        qToBigEndian(quint16(value), number);
        out.append(char(major | 25)).append(number, 2);
    } else if (value <= 0xFFFFFFFF) {
        qToBigEndian(quint32(value), number);
        out.append(char(major | 26)).append(number, 4);
    } else {
        qToBigEndian(value, number);
        out.append(char(major | 27)).append(number, 8);
    }
}

} // namespace

void AddUnsigned(QByteArray &out, quint64 value)
{
    AddHead(out, 0x00, value);
}

void AddText(QByteArray &out, QByteArrayView utf8)
{
    AddHead(out, 0x60, quint64(utf8.size()));
    out.append(utf8);
}

void AddBytes(QByteArray &out, QByteArrayView bytes)
{
    AddBytesHead(out, bytes.size());
    out.append(bytes);
}

void AddBytesHead(QByteArray &out, qsizetype length)
{
    AddHead(out, 0x40, quint64(length));
}

void AddArrayHead(QByteArray &out, qsizetype items)
{
    AddHead(out, 0x80, quint64(items));
}

void AddMapHead(QByteArray &out, qsizetype pairs)
{
    AddHead(out, 0xA0, quint64(pairs));
}

} // namespace Qel::CborWriter
