#pragma once

#include <QByteArray>
#include <QString>

/// Files that hold one row block: a head of 32 bytes (magic "QELROWS" 0x1A, version, head size,
/// length, checksum; little-endian), then the block.
namespace Qel::DataFile {

/// Whole or not at all: written beside the target, flushed, renamed. Throws EDataSetError that
/// names the file.
void Write(const QString &path, const QByteArray &block);

/// The block, its length and checksum verified. Throws EDataSetError that names the file.
QByteArray Read(const QString &path);

} // namespace Qel::DataFile
