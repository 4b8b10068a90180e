#include "dataset/QelError.h"
#include "dataset/RowBlock.h"
#include "dataset/RowSet.h"

#include <limits>
#include <utility>

namespace Qel {

using namespace Qt::StringLiterals;

RowSetBuilder::RowSetBuilder(FieldDefs fields)
    : fields_(std::move(fields))
    , columns_(size_t(fields_.size()))
    , byteCount_(RowBlockOverhead(fields_) + 4 * fields_.size())
{
    for (Column &column : columns_)
        column.offsets.push_back(0);
}

RowSetBuilder::Column &RowSetBuilder::NextColumn()
{
    if (cell_ >= int(columns_.size()))
        throw EDataSetError(
            u"第 %1 行的单元格多于 %2 个字段"_s.arg(rows_ + 1).arg(columns_.size()));
    return columns_[size_t(cell_++)];
}

void RowSetBuilder::AddCell(QByteArrayView utf8)
{
    Column &column = NextColumn();
    if (quint64(column.bytes.size()) + quint64(utf8.size()) > std::numeric_limits<quint32>::max())
        throw EDataSetError(u"列“%1”超过 4 GiB"_s.arg(fields_[cell_ - 1].name));
    column.bytes.append(utf8);
    column.offsets.push_back(quint32(column.bytes.size()));
    byteCount_ += 4 + utf8.size();
}

void RowSetBuilder::AddNull()
{
    Column &column = NextColumn();
    const qsizetype byte = rows_ / 8;
    if (column.nulls.size() <= byte) {
        byteCount_ += byte + 1 - column.nulls.size();
        column.nulls.resize(byte + 1, '\0');
    }
    column.nulls[byte] = char(column.nulls[byte] | (1 << (rows_ % 8)));
    column.offsets.push_back(quint32(column.bytes.size()));
    byteCount_ += 4;
}

void RowSetBuilder::EndRow()
{
    if (cell_ != int(columns_.size())) {
        throw EDataSetError(u"第 %1 行只有 %2 个单元格，应有 %3 个"_s.arg(rows_ + 1).arg(cell_).arg(
            columns_.size()));
    }
    if (columns_.empty() || rows_ == std::numeric_limits<int>::max() - 1)
        throw EDataSetError(u"行数过多或没有字段"_s);
    ++rows_;
    cell_ = 0;
}

int RowSetBuilder::RowCount() const
{
    return rows_;
}

qint64 RowSetBuilder::ByteCount() const
{
    return byteCount_;
}

QByteArray RowSetBuilder::Finish()
{
    return Finish(rows_);
}

QByteArray RowSetBuilder::Finish(qint64 total)
{
    if (cell_ != 0)
        throw EDataSetError(u"最后一行没有结束"_s);
    if (total < rows_)
        throw EDataSetError(u"总行数 %1 少于 %2 行"_s.arg(total).arg(rows_));
    std::vector<BlockColumn> views;
    for (Column &column : columns_) {
        if constexpr (Q_BYTE_ORDER == Q_BIG_ENDIAN) {
            for (quint32 &offset : column.offsets)
                offset = qToLittleEndian(offset);
        }
        if (!column.nulls.isEmpty())
            column.nulls.resize((rows_ + 7) / 8, '\0');
        views.push_back({QByteArrayView(reinterpret_cast<const char *>(column.offsets.data()),
                                        qsizetype(4 * column.offsets.size())),
                         column.bytes, column.nulls});
    }
    const QByteArray block = WriteRowBlock(fields_, views, rows_, total);
    *this = RowSetBuilder(FieldDefs(fields_));
    return block;
}

} // namespace Qel
