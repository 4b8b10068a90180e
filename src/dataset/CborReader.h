#pragma once

#include <QByteArrayView>
#include <QString>

namespace Qel {

/// Reads the subset of CBOR (RFC 8949) that a row block uses: unsigned integers, byte and text
/// strings, arrays and maps, all of definite length. Strings come back as views into the bytes;
/// nothing is copied or allocated. Every member throws EDataSetError that names the byte.
class CborReader
{
public:
    explicit CborReader(QByteArrayView bytes)
        : bytes_(bytes)
    {
    }

    quint64 ReadUnsigned();
    qsizetype EnterMap();      ///< number of pairs; never more than the bytes left could hold
    qsizetype EnterArray();    ///< number of items; never more than the bytes left could hold
    QByteArrayView ReadText(); ///< checked UTF-8
    QByteArrayView ReadBytes();
    void ExpectEnd() const;

    qsizetype Position() const { return position_; }
    [[noreturn]] void Fail(const QString &what) const; ///< at the current position

private:
    quint64 ReadHead(uchar wanted, const QString &name);
    qsizetype ReadCount(uchar wanted, const QString &name, quint64 bytesEach);
    QByteArrayView ReadString(uchar wanted, const QString &name);

    QByteArrayView bytes_;
    qsizetype position_ = 0;
};

/// "...（第 <position> 字节）" as an error.
[[noreturn]] void FailAtByte(const QString &what, qsizetype position);

} // namespace Qel
