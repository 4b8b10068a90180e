#include "Samples.h"

#include <QStandardItem>

#include <malloc.h>

namespace Qel::Bench {

const QByteArray &SampleBlock()
{
    static const QByteArray block = [] {
        static const char *const kNames[] = {"人民医院",   "第二附属医院", "医药有限责任公司",
                                             "大药房连锁", "制药股份",     "阿莫西林胶囊"};
        FieldDefs fields;
        for (int column = 0; column < kColumns; ++column)
            fields.append({QStringLiteral("F%1").arg(column), FieldType::Text, 100});
        RowSetBuilder builder(fields);
        for (int row = 0; row < kRows; ++row) {
            builder.AddCell(QByteArray::number(100'000'000 + row));
            for (int column = 1; column < kColumns; ++column) {
                const int mixed = (row * 7919 + column * 104'729) & 0x7FFFFFFF;
                if (column % 2)
                    builder.AddCell(kNames[mixed % 6] + QByteArray::number(mixed % 99'991));
                else
                    builder.AddCell("C" + QByteArray::number(mixed).rightJustified(11, '0'));
            }
            builder.EndRow();
        }
        return builder.Finish();
    }();
    return block;
}

const RowSet &SampleRows()
{
    static const RowSet rows = RowSet::Load(SampleBlock());
    return rows;
}

const QByteArray &SampleJson()
{
    static const QByteArray json = [] {
        QByteArray out = "{\"rows\":[";
        const RowSet &rows = SampleRows();
        for (int row = 0; row < kRows; ++row) {
            out.append(row ? ",[" : "[");
            for (int column = 0; column < kColumns; ++column) {
                out.append(column ? ",\"" : "\"").append(rows.Bytes(row, column)).append('"');
            }
            out.append(']');
        }
        return out + "]}";
    }();
    return json;
}

StringColumns StringColumnsOf(const RowSet &rows)
{
    StringColumns columns(static_cast<size_t>(rows.FieldCount()));
    for (int field = 0; field < rows.FieldCount(); ++field) {
        std::vector<QString> &column = columns[size_t(field)];
        column.reserve(size_t(rows.RowCount()));
        for (int row = 0; row < rows.RowCount(); ++row)
            column.push_back(rows.Text(row, field));
    }
    return columns;
}

void FillItemModel(QStandardItemModel &model, const StringColumns &columns)
{
    const int rows = int(columns.front().size());
    model.setRowCount(rows);
    model.setColumnCount(int(columns.size()));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < int(columns.size()); ++column)
            model.setItem(row, column, new QStandardItem(columns[size_t(column)][size_t(row)]));
    }
}

qint64 BytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks) + qint64(info.hblkhd);
}

} // namespace Qel::Bench
