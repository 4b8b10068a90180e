#include "dataset/DataFile.h"

#include "dataset/Checksum.h"
#include "dataset/QelError.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QtEndian>

#include <array>
#include <cstring>

namespace Qel::DataFile {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<char, 8> kMagic{'Q', 'E', 'L', 'R', 'O', 'W', 'S', '\x1A'};
constexpr quint32 kVersion = 1;

// Where each item of the head begins.
constexpr int kVersionAt = 8;
constexpr int kHeadSizeAt = 12;
constexpr int kLengthAt = 16;
constexpr int kChecksumAt = 24;
constexpr int kHeadSize = 32;

// What is read at a time and summed up while the cache still has it.
constexpr qsizetype kPieceSize = 128 * 1024;
static_assert(kPieceSize % RunningChecksum::Unit == 0);

using Head = std::array<char, kHeadSize>;

[[noreturn]] void Fail(const QString &doing, const QString &path, const QString &why)
{
    throw EDataSetError(u"%1文件“%2”失败：%3"_s.arg(doing, QDir::toNativeSeparators(path), why));
}

} // namespace

void Write(const QString &path, const QByteArray &block)
{
    Head head;
    std::memcpy(head.data(), kMagic.data(), kMagic.size());
    qToLittleEndian(kVersion, head.data() + kVersionAt);
    qToLittleEndian(quint32(kHeadSize), head.data() + kHeadSizeAt);
    qToLittleEndian(quint64(block.size()), head.data() + kLengthAt);
    qToLittleEndian(Checksum(block), head.data() + kChecksumAt);

    QSaveFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) &&
                         file.write(head.data(), kHeadSize) == kHeadSize &&
                         file.write(block) == block.size() && file.commit();
    if (!written)
        Fail(u"写入"_s, path, file.errorString());
}

QByteArray Read(const QString &path)
{
    const auto fail = [&path](const QString &why) { Fail(u"读取"_s, path, why); };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        fail(file.errorString());
    Head head;
    if (file.read(head.data(), kHeadSize) != kHeadSize)
        fail(u"文件头不完整"_s);
    if (std::memcmp(head.data(), kMagic.data(), kMagic.size()) != 0)
        fail(u"不是数据文件"_s);
    if (qFromLittleEndian<quint32>(head.data() + kVersionAt) != kVersion ||
        qFromLittleEndian<quint32>(head.data() + kHeadSizeAt) != kHeadSize)
        fail(u"文件版本不认识"_s);
    const auto length = qFromLittleEndian<quint64>(head.data() + kLengthAt);
    const qint64 present = file.size() - kHeadSize;
    if (length != quint64(present))
        fail(u"长度应为 %1 字节，实有 %2"_s.arg(length).arg(present));
    QByteArray block(present, Qt::Uninitialized);
    RunningChecksum checksum;
    qsizetype done = 0;
    const auto readOn = [&](qsizetype size) {
        if (file.read(block.data() + done, size) != size)
            fail(u"没有读完：%1"_s.arg(file.errorString()));
        done += size;
        return QByteArrayView(block).sliced(done - size, size);
    };
    while (present - done > kPieceSize)
        checksum.Add(readOn(kPieceSize));
    if (qFromLittleEndian<quint64>(head.data() + kChecksumAt) !=
        checksum.Finish(readOn(present - done)))
        fail(u"校验和不符，文件已损坏"_s);
    return block;
}

} // namespace Qel::DataFile
