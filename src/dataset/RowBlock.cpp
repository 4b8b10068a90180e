#include "dataset/RowBlock.h"

#include "dataset/CborWriter.h"

namespace Qel {

using namespace CborWriter;

namespace {

// Largest size of what surrounds one column's bytes: map head, three keys, three string heads.
constexpr qint64 kColumnHead = 64;

void AddField(QByteArray &out, const FieldDef &field)
{
    AddMapHead(out, 3);
    AddText(out, "name");
    AddText(out, field.name.toUtf8());
    AddText(out, "size");
    AddUnsigned(out, quint64(field.size));
    AddText(out, "type");
    AddText(out, FieldTypeName(field.type));
}

void AddColumn(QByteArray &out, const BlockColumn &column)
{
    AddMapHead(out, column.nulls.isEmpty() ? 2 : 3);
    AddText(out, "bytes");
    AddBytes(out, column.bytes);
    if (!column.nulls.isEmpty()) {
        AddText(out, "nulls");
        AddBytes(out, column.nulls);
    }
    AddText(out, "offsets");
    AddBytes(out, column.offsets);
}

} // namespace

qint64 RowBlockOverhead(const FieldDefs &fields)
{
    qint64 size = 64;
    for (const FieldDef &field : fields)
        size += kColumnHead + 48 + 3 * field.name.size();
    return size;
}

QByteArray WriteRowBlock(const FieldDefs &fields, const std::vector<BlockColumn> &columns,
                         qint64 rows, qint64 total)
{
    qint64 size = RowBlockOverhead(fields);
    for (const BlockColumn &column : columns)
        size += column.offsets.size() + column.bytes.size() + column.nulls.size();
    QByteArray out;
    out.reserve(size);

    AddMapHead(out, 4);
    AddText(out, "rows");
    AddUnsigned(out, quint64(rows));
    AddText(out, "total");
    AddUnsigned(out, quint64(total));
    AddText(out, "fields");
    AddArrayHead(out, fields.size());
    for (const FieldDef &field : fields)
        AddField(out, field);
    AddText(out, "columns");
    AddArrayHead(out, qsizetype(columns.size()));
    for (const BlockColumn &column : columns)
        AddColumn(out, column);
    return out;
}

} // namespace Qel
