#include "dataset/RowSet.h"

#include "dataset/CborReader.h"
#include "dataset/QelError.h"
#include "dataset/RowBlock.h"
#include "dataset/Utf8.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <optional>

namespace Qel {

using namespace Qt::StringLiterals;

struct RowSet::Data
{
    QByteArray body;
    FieldDefs fields;
    std::vector<RowColumn> columns;
    int rows = 0;
    qint64 total = 0;
};

namespace {

// Rows whose offsets and bytes are checked together, while both are still in the cache.
constexpr qsizetype kChunkRows = 512;

// Bytes within a character of several are 0x80 to 0xBF: as signed numbers, the ones below this.
constexpr qint8 kFirstLeadByte = -0x40;

/// Reads the structure of one row block; what the columns hold is checked afterwards.
class BlockReader
{
public:
    explicit BlockReader(QByteArrayView body)
        : body_(body)
        , cbor_(body)
    {
    }

    void Read()
    {
        for (qsizetype pairs = cbor_.EnterMap(); pairs > 0; --pairs) {
            const qsizetype at = cbor_.Position();
            const QByteArrayView key = cbor_.ReadText();
            if (key == "rows")
                SetOnce(rows_, ReadNumber(std::numeric_limits<int>::max() - 1), at);
            else if (key == "total")
                SetOnce(total_, ReadNumber(std::numeric_limits<qint64>::max()), at);
            else if (key == "fields")
                SetOnce(fields_, ReadFields(), at);
            else if (key == "columns")
                SetOnce(columns_, ReadColumns(), at);
            else
                FailAtByte(u"未知的键“%1”"_s.arg(QString::fromUtf8(key)), at);
        }
        cbor_.ExpectEnd();
        for (const auto &[present, key] :
             {std::pair(rows_.has_value(), "rows"), std::pair(fields_.has_value(), "fields"),
              std::pair(columns_.has_value(), "columns")}) {
            if (!present)
                cbor_.Fail(u"缺少键“%1”"_s.arg(QLatin1StringView(key)));
        }
        if (fields_->size() != qsizetype(columns_->size())) {
            cbor_.Fail(u"有 %1 个字段，却有 %2 列"_s.arg(fields_->size()).arg(columns_->size()));
        }
        if (fields_->isEmpty() && *rows_ != 0)
            cbor_.Fail(u"没有字段却有 %1 行"_s.arg(*rows_));
        if (total_.value_or(*rows_) < *rows_)
            cbor_.Fail(u"总行数 %1 少于本页的 %2 行"_s.arg(*total_).arg(*rows_));
        for (qsizetype i = 0; i < fields_->size(); ++i)
            CheckColumn((*columns_)[size_t(i)], (*fields_)[i].name);
    }

    int Rows() const { return int(*rows_); }
    qint64 Total() const { return total_.value_or(*rows_); }
    const FieldDefs &Fields() const { return *fields_; }
    const std::vector<RowColumn> &Columns() const { return columnViews_; }

private:
    struct RawColumn
    {
        std::optional<QByteArrayView> offsets;
        std::optional<QByteArrayView> bytes;
        std::optional<QByteArrayView> nulls;
    };

    template <typename T>
    static void SetOnce(std::optional<T> &target, T value, qsizetype at)
    {
        if (target)
            FailAtByte(u"键重复"_s, at);
        target = std::move(value);
    }

    qint64 ReadNumber(qint64 largest)
    {
        const qsizetype at = cbor_.Position();
        const quint64 value = cbor_.ReadUnsigned();
        if (value > quint64(largest))
            FailAtByte(u"数值 %1 过大"_s.arg(value), at);
        return qint64(value);
    }

    FieldDefs ReadFields()
    {
        FieldDefs fields;
        for (qsizetype left = cbor_.EnterArray(); left > 0; --left)
            fields.append(ReadField());
        return fields;
    }

    FieldDef ReadField()
    {
        std::optional<QByteArrayView> name;
        std::optional<QByteArrayView> type;
        std::optional<qint64> size;
        const qsizetype start = cbor_.Position();
        qsizetype typeAt = start;
        for (qsizetype pairs = cbor_.EnterMap(); pairs > 0; --pairs) {
            const qsizetype at = cbor_.Position();
            const QByteArrayView key = cbor_.ReadText();
            if (key == "name") {
                SetOnce(name, cbor_.ReadText(), at);
            } else if (key == "type") {
                typeAt = cbor_.Position();
                SetOnce(type, cbor_.ReadText(), at);
            } else if (key == "size") {
                SetOnce(size, ReadNumber(std::numeric_limits<int>::max()), at);
            } else {
                FailAtByte(u"字段有未知的键“%1”"_s.arg(QString::fromUtf8(key)), at);
            }
        }
        if (!name || name->isEmpty() || !type || !size)
            FailAtByte(u"字段缺少 name、type 或 size"_s, start);
        const std::optional<FieldType> known = FieldTypeFromName(*type);
        if (!known)
            FailAtByte(u"未知的字段类型“%1”"_s.arg(QString::fromUtf8(*type)), typeAt);
        return {QString::fromUtf8(*name), *known, int(*size)};
    }

    std::vector<RawColumn> ReadColumns()
    {
        std::vector<RawColumn> columns;
        for (qsizetype left = cbor_.EnterArray(); left > 0; --left) {
            RawColumn column;
            const qsizetype start = cbor_.Position();
            for (qsizetype pairs = cbor_.EnterMap(); pairs > 0; --pairs) {
                const qsizetype at = cbor_.Position();
                const QByteArrayView key = cbor_.ReadText();
                if (key == "offsets")
                    SetOnce(column.offsets, cbor_.ReadBytes(), at);
                else if (key == "bytes")
                    SetOnce(column.bytes, cbor_.ReadBytes(), at);
                else if (key == "nulls")
                    SetOnce(column.nulls, cbor_.ReadBytes(), at);
                else
                    FailAtByte(u"列有未知的键“%1”"_s.arg(QString::fromUtf8(key)), at);
            }
            if (!column.offsets || !column.bytes)
                FailAtByte(u"列缺少 offsets 或 bytes"_s, start);
            columns.push_back(column);
        }
        return columns;
    }

    qsizetype PositionOf(const void *byte) const
    {
        return static_cast<const char *>(byte) - body_.data();
    }

    void CheckColumn(const RawColumn &raw, const QString &name)
    {
        const qsizetype rows = *rows_;
        RowColumn column{raw.offsets->data(), *raw.bytes, nullptr};
        if (raw.offsets->size() != 4 * (rows + 1)) {
            FailAtByte(u"列“%1”的偏移表应有 %2 字节，实有 %3"_s.arg(name)
                           .arg(4 * (rows + 1))
                           .arg(raw.offsets->size()),
                       PositionOf(raw.offsets->data()));
        }
        if (column.Offset(0) != 0)
            FailAtByte(u"列“%1”的第一个偏移不是 0"_s.arg(name), PositionOf(column.offsets));
        for (qsizetype row = 0; row < rows; row += kChunkRows)
            CheckChunk(column, row, std::min(row + kChunkRows, rows), name);
        if (column.Offset(rows) != quint64(column.bytes.size())) {
            FailAtByte(u"列“%1”的最后一个偏移 %2 不等于字节数 %3"_s.arg(name)
                           .arg(column.Offset(rows))
                           .arg(column.bytes.size()),
                       PositionOf(column.offsets + 4 * rows));
        }
        if (raw.nulls)
            CheckNulls(column, *raw.nulls, name);
        columnViews_.push_back(column);
    }

    // Order of the checks: offsets first, so that the bytes they delimit may be touched. A load
    // takes little more than the reading of the memory, so what is done per cell counts: both loops
    // over the offsets are branchless, and most chunks, being ASCII, need only the first.
    void CheckChunk(const RowColumn &column, qsizetype first, qsizetype end, const QString &name)
    {
        quint32 backwards = 0;
        for (qsizetype row = first; row < end; ++row)
            backwards |= quint32(column.Offset(row + 1) < column.Offset(row));
        if (backwards || column.Offset(end) > quint64(column.bytes.size())) [[unlikely]]
            FailOffsets(column, first, end, name);

        const quint32 textEnd = column.Offset(end);
        const QByteArrayView text = column.bytes.first(textEnd).sliced(column.Offset(first));
        if (IsAscii(text))
            return;
        bool broken = !IsUtf8(text);
        // The chunk is valid as a whole; each cell is valid on its own if none starts inside a
        // character. Empty cells at the chunk's end have no byte to look at.
        const char *const bytes = column.bytes.data();
        qsizetype filled = end;
        while (column.Offset(filled - 1) == textEnd)
            --filled;
        quint32 inside = 0;
        for (qsizetype row = first; row < filled; ++row)
            inside |= quint32(qint8(bytes[column.Offset(row)]) < kFirstLeadByte);
        broken |= inside != 0;
        if (broken) [[unlikely]]
            FailText(column, first, end, name);
    }

    [[noreturn]] void FailOffsets(const RowColumn &column, qsizetype first, qsizetype end,
                                  const QString &name) const
    {
        const auto size = quint64(column.bytes.size());
        for (qsizetype row = first; row < end; ++row) {
            const quint32 next = column.Offset(row + 1);
            const qsizetype at = PositionOf(column.offsets + 4 * (row + 1));
            if (next < column.Offset(row))
                FailAtByte(u"列“%1”第 %2 行的偏移倒退"_s.arg(name).arg(row + 1), at);
            if (next > size)
                FailAtByte(u"列“%1”第 %2 行的偏移超出字节数"_s.arg(name).arg(row + 1), at);
        }
        Q_UNREACHABLE();
    }

    [[noreturn]] void FailText(const RowColumn &column, qsizetype first, qsizetype end,
                               const QString &name) const
    {
        for (qsizetype row = first; row < end; ++row) {
            const QByteArrayView cell = column.Cell(row);
            if (!IsUtf8(cell)) {
                FailAtByte(u"列“%1”第 %2 行不是 UTF-8"_s.arg(name).arg(row + 1),
                           PositionOf(cell.data() + Utf8PrefixLength(cell)));
            }
        }
        Q_UNREACHABLE();
    }

    void CheckNulls(RowColumn &column, QByteArrayView nulls, const QString &name)
    {
        const qsizetype rows = *rows_;
        if (nulls.size() != (rows + 7) / 8) {
            FailAtByte(u"列“%1”的空值位图应有 %2 字节，实有 %3"_s.arg(name)
                           .arg((rows + 7) / 8)
                           .arg(nulls.size()),
                       PositionOf(nulls.data()));
        }
        column.nulls = reinterpret_cast<const uchar *>(nulls.data());
        for (qsizetype i = 0; i < nulls.size(); ++i) {
            for (uint bits = column.nulls[i]; bits; bits &= bits - 1) {
                const qsizetype row = 8 * i + std::countr_zero(bits);
                if (row >= rows)
                    FailAtByte(u"列“%1”的空值位图有多余的位"_s.arg(name),
                               PositionOf(nulls.data() + i));
                if (column.Offset(row) != column.Offset(row + 1)) {
                    FailAtByte(u"列“%1”第 %2 行为空值却有内容"_s.arg(name).arg(row + 1),
                               PositionOf(nulls.data() + i));
                }
            }
        }
        if (nulls.isEmpty())
            column.nulls = nullptr;
    }

    QByteArrayView body_;
    CborReader cbor_;
    std::optional<qint64> rows_;
    std::optional<qint64> total_;
    std::optional<FieldDefs> fields_;
    std::optional<std::vector<RawColumn>> columns_;
    std::vector<RowColumn> columnViews_;
};

} // namespace

RowSet RowSet::Load(const QByteArray &body)
{
    BlockReader reader{QByteArrayView(body)};
    reader.Read();
    RowSet result;
    result.data_ = std::make_shared<const Data>(
        Data{body, reader.Fields(), reader.Columns(), reader.Rows(), reader.Total()});
    return result;
}

int RowSet::RowCount() const
{
    return data_ ? data_->rows : 0;
}

int RowSet::FieldCount() const
{
    return data_ ? int(data_->fields.size()) : 0;
}

const FieldDefs &RowSet::Fields() const
{
    static const FieldDefs none;
    return data_ ? data_->fields : none;
}

int RowSet::FieldIndex(QStringView name) const
{
    return IndexOfField(Fields(), name);
}

const RowColumn &RowSet::Column(int field) const
{
    Q_ASSERT(field >= 0 && field < FieldCount());
    return data_->columns[size_t(field)];
}

const RowColumn *RowSet::Columns() const
{
    return data_ ? data_->columns.data() : nullptr;
}

bool RowSet::IsNull(int row, int field) const
{
    Q_ASSERT(row >= 0 && row < RowCount());
    return Column(field).IsNull(row);
}

QByteArrayView RowSet::Bytes(int row, int field) const
{
    Q_ASSERT(row >= 0 && row < RowCount());
    return Column(field).Cell(row);
}

QString RowSet::Text(int row, int field) const
{
    return QString::fromUtf8(Bytes(row, field));
}

qint64 RowSet::Total() const
{
    return data_ ? data_->total : 0;
}

const QByteArray &RowSet::Body() const
{
    static const QByteArray none = WriteRowBlock(FieldDefs(), {}, 0, 0);
    return data_ ? data_->body : none;
}

QByteArray RowSet::BodyWithTotal(qint64 total) const
{
    if (total < RowCount())
        throw EDataSetError(u"总行数 %1 少于 %2 行"_s.arg(total).arg(RowCount()));
    if (total == Total())
        return Body();
    std::vector<BlockColumn> columns;
    for (int field = 0; field < FieldCount(); ++field) {
        const RowColumn &column = Column(field);
        columns.push_back(
            {QByteArrayView(column.offsets, 4 * (RowCount() + qsizetype(1))), column.bytes,
             column.nulls ? QByteArrayView(column.nulls, (RowCount() + 7) / 8) : QByteArrayView()});
    }
    return WriteRowBlock(Fields(), columns, RowCount(), total);
}

} // namespace Qel
