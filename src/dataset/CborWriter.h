#pragma once

#include <QByteArray>
#include <QByteArrayView>

/// Appends CBOR (RFC 8949) items to a byte array, each in its shortest form.
namespace Qel::CborWriter {

void AddUnsigned(QByteArray &out, quint64 value);
void AddText(QByteArray &out, QByteArrayView utf8);
void AddBytes(QByteArray &out, QByteArrayView bytes);
void AddBytesHead(QByteArray &out, qsizetype length); ///< the caller appends the bytes
void AddArrayHead(QByteArray &out, qsizetype items);
void AddMapHead(QByteArray &out, qsizetype pairs);

} // namespace Qel::CborWriter
