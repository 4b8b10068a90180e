#include "wire/QueryJson.h"

#include "wire/WireTree.h"

#include <limits>

namespace Qel::Wire {

using namespace Qt::StringLiterals;

namespace {

void AddText(QByteArray &out, QByteArrayView utf8)
{
    static constexpr char kHex[] = "0123456789abcdef";
    out.append('"');
    for (const char c : utf8) {
        if (c == '"' || c == '\\') {
            out.append('\\').append(c);
        } else if (uchar(c) < 0x20) {
            out.append("\\u00").append(kHex[uchar(c) >> 4]).append(kHex[c & 15]);
        } else {
            out.append(c);
        }
    }
    out.append('"');
}

void AddField(QByteArray &out, const FieldDef &field)
{
    out.append("{\"name\":");
    AddText(out, field.name.toUtf8());
    out.append(",\"type\":");
    AddText(out, FieldTypeName(field.type));
    out.append(",\"size\":").append(QByteArray::number(field.size)).append('}');
}

void AddRow(QByteArray &out, const RowSet &rows, int row)
{
    out.append('[');
    for (int field = 0; field < rows.FieldCount(); ++field) {
        if (field > 0)
            out.append(',');
        if (rows.IsNull(row, field))
            out.append("null");
        else
            AddText(out, rows.Bytes(row, field));
    }
    out.append(']');
}

FieldDef ReadField(const WireItem &item)
{
    item.ExpectKeys({"name"_L1, "type"_L1, "size"_L1});
    const WireItem name = item["name"_L1];
    if (name.Text().isEmpty())
        name.Fail(u"名称为空"_s);
    const WireItem type = item["type"_L1];
    const std::optional<FieldType> known = FieldTypeFromName(type.Text().toUtf8());
    if (!known)
        type.Fail(u"未知的字段类型“%1”"_s.arg(type.Text()));
    return {name.Text(), *known, int(item["size"_L1].Number(0, std::numeric_limits<int>::max()))};
}

} // namespace

QByteArray WriteAnswerAsJson(const QueryAnswer &answer)
{
    QByteArray out = "{\"total\":" + QByteArray::number(answer.total) + ",\"fields\":[";
    for (qsizetype i = 0; i < answer.rows.Fields().size(); ++i) {
        if (i > 0)
            out.append(',');
        AddField(out, answer.rows.Fields()[i]);
    }
    out.append("],\"rows\":[");
    for (int row = 0; row < answer.rows.RowCount(); ++row) {
        if (row > 0)
            out.append(',');
        AddRow(out, answer.rows, row);
    }
    out.append("]}");
    return out;
}

QueryAnswer ReadAnswerFromJson(const QByteArray &body)
{
    const QCborValue tree = WireItem::Parse(body, Format::Json);
    const WireItem message(tree);
    message.ExpectKeys({"total"_L1, "fields"_L1, "rows"_L1});

    FieldDefs fields;
    const WireItem fieldItems = message["fields"_L1];
    const qsizetype fieldCount = fieldItems.ArraySize(std::numeric_limits<int>::max());
    for (qsizetype i = 0; i < fieldCount; ++i)
        fields.append(ReadField(fieldItems[i]));

    RowSetBuilder builder(fields);
    const WireItem rowItems = message["rows"_L1];
    const qsizetype rowCount = rowItems.ArraySize(std::numeric_limits<int>::max() - 1);
    if (fieldCount == 0 && rowCount > 0)
        rowItems.Fail(u"没有字段却有 %1 行"_s.arg(rowCount));
    for (qsizetype i = 0; i < rowCount; ++i) {
        const WireItem row = rowItems[i];
        if (row.ArraySize(fieldCount) != fieldCount)
            row.Fail(u"应有 %1 项"_s.arg(fieldCount));
        for (qsizetype field = 0; field < fieldCount; ++field) {
            const WireItem cell = row[field];
            if (cell.IsNull())
                builder.AddNull();
            else
                builder.AddCell(cell.Text().toUtf8());
        }
        builder.EndRow();
    }
    const qint64 total = message["total"_L1].Number(rowCount, std::numeric_limits<qint64>::max());
    return {total, RowSet::Load(builder.Finish(total))};
}

} // namespace Qel::Wire
