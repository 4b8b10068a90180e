#include "Fuzz.h"

#include "dataset/ClientDataSet.h"
#include "dataset/DataFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <optional>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// In memory where TMPDIR says so.
QString FilePath()
{
    static const QTemporaryDir folder;
    return folder.filePath(u"rows.dat"_s);
}

void WriteBytes(const QByteArray &bytes)
{
    QFile file(FilePath());
    Fuzz::Require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
                  "a file can be written");
}

QByteArray FileBytes()
{
    QFile file(FilePath());
    Fuzz::Require(file.open(QIODevice::ReadOnly), "a file can be read");
    return file.readAll();
}

std::optional<QByteArray> ReadBlock()
{
    try {
        return DataFile::Read(FilePath());
    } catch (const EDataSetError &) {
        return std::nullopt;
    }
}

/// What a table makes of the file.
void LoadTable()
{
    ClientDataSet table;
    try {
        table.LoadFromFile(FilePath());
    } catch (const EDataSetError &) {
        Fuzz::Require(!table.IsActive(), "a file that is refused changes nothing");
        return;
    }
    const RowSet rows = table.ToRowSet();
    table.SaveToFile(FilePath());
    ClientDataSet again;
    again.LoadFromFile(FilePath());
    Fuzz::Require(Fuzz::SameRows(again.ToRowSet(), rows), "a table is saved and loaded equal");
}

void ReadAnyBytes(const QByteArray &bytes)
{
    WriteBytes(bytes);
    if (const auto block = ReadBlock()) {
        DataFile::Write(FilePath(), *block);
        Fuzz::Require(FileBytes() == bytes, "there is one file for a block");
    }
}

void ReadBlockInFile(const QByteArray &block)
{
    DataFile::Write(FilePath(), block);
    Fuzz::Require(ReadBlock() == block, "a block is written and read equal");
    LoadTable();
}

void ReadDamaged(const QByteArray &block, int at, int change)
{
    DataFile::Write(FilePath(), block);
    QByteArray bytes = FileBytes();
    const qsizetype damaged = at % bytes.size();
    bytes[damaged] = static_cast<char>(bytes.at(damaged) ^ (change | 1));
    WriteBytes(bytes);
    Fuzz::Require(!ReadBlock(), "a file with one wrong byte is refused");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Fuzz::Input input(data, size);
    switch (input.Byte() % 3) {
    case 0:
        ReadAnyBytes(input.Rest());
        break;
    case 1:
        ReadBlockInFile(input.Rest());
        break;
    default:
        const int low = input.Byte();
        const int high = input.Byte();
        const int change = input.Byte();
        ReadDamaged(input.Rest(), 256 * high + low, change);
    }
    return 0;
}
