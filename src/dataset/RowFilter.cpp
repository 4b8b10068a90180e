#include "dataset/RowFilter.h"

#include "dataset/FieldValue.h"
#include "dataset/QelError.h"
#include "dataset/RowFilterParser.h"

#include <algorithm>
#include <cstring>

namespace Qel {

using namespace Qt::StringLiterals;

RowFilter RowFilter::Parse(const QString &text)
{
    return RowFilterParser(text).Parse();
}

void RowFilter::Bind(const FieldDefs &fields)
{
    for (Node &node : nodes_) {
        if (node.kind != Kind::Comparison)
            continue;
        node.field = IndexOfField(fields, node.fieldName);
        if (node.field < 0)
            throw EDataSetError(u"筛选条件中的字段“%1”不存在"_s.arg(node.fieldName));
        const FieldType type = fields[node.field].type;
        node.numericField = type == FieldType::Integer || type == FieldType::Real ||
                            type == FieldType::AutoIncrement;
    }
}

bool RowFilter::Uses(int field) const
{
    return std::any_of(nodes_.begin(), nodes_.end(), [field](const Node &node) {
        return node.kind == Kind::Comparison && node.field == field;
    });
}

bool RowFilter::Passes(const RowTable &table, quint32 row) const
{
    return nodes_.empty() || Evaluate(nodes_.back(), table, row);
}

bool RowFilter::Evaluate(const Node &node, const RowTable &table, quint32 row) const
{
    switch (node.kind) {
    case Kind::Comparison:
        return Compare(node, table, row);
    case Kind::And:
        return Evaluate(nodes_[size_t(node.left)], table, row) &&
               Evaluate(nodes_[size_t(node.right)], table, row);
    case Kind::Or:
        return Evaluate(nodes_[size_t(node.left)], table, row) ||
               Evaluate(nodes_[size_t(node.right)], table, row);
    case Kind::Not:
        return !Evaluate(nodes_[size_t(node.left)], table, row);
    }
    Q_UNREACHABLE();
}

bool RowFilter::Compare(const Node &node, const RowTable &table, quint32 row)
{
    const bool isNull = table.IsNull(row, node.field);
    if (node.literal == Literal::Null)
        return isNull == (node.op == Operator::Equal);
    if (isNull)
        return node.op == Operator::NotEqual;

    const QByteArrayView cell = table.Bytes(row, node.field);
    if (node.op == Operator::Contains)
        return cell.contains(node.value);
    std::strong_ordering order = std::strong_ordering::equal;
    const bool asNumbers =
        !node.decimal.isEmpty() && (node.literal == Literal::Number || node.numericField);
    const std::optional<QByteArray> number =
        asNumbers ? CanonicalDecimal(cell) : std::optional<QByteArray>();
    if (number)
        order = CompareDecimals(*number, node.decimal);
    else if (node.literal == Literal::Number)
        return node.op == Operator::NotEqual; // no number is not equal to any
    else
        order = cell.compare(node.value) <=> 0; // UTF-8 bytes order as code points do

    switch (node.op) {
    case Operator::Equal:
        return order == 0;
    case Operator::NotEqual:
        return order != 0;
    case Operator::Less:
        return order < 0;
    case Operator::LessOrEqual:
        return order <= 0;
    case Operator::Greater:
        return order > 0;
    case Operator::GreaterOrEqual:
        return order >= 0;
    case Operator::Contains:
        break;
    }
    Q_UNREACHABLE();
}

std::vector<quint32> RowFilter::PassingRows(const RowTable &table) const
{
    std::vector<quint32> rows;
    if (nodes_.size() == 1 && nodes_.front().op == Operator::Contains &&
        !nodes_.front().value.isEmpty()) {
        const ContainsSearch search(table, nodes_.front().field, nodes_.front().value);
        for (qint64 row = search.Next(0); row >= 0; row = search.Next(quint32(row) + 1))
            rows.push_back(quint32(row));
        return rows;
    }
    for (quint32 row = 0; row < table.RowCount(); ++row) {
        if (!table.IsDeleted(row) && Passes(table, row))
            rows.push_back(row);
    }
    return rows;
}

qint64 ContainsSearch::Next(quint32 from) const
{
    const quint32 loaded = table_.LoadedRowCount();
    if (!part_.isEmpty() && !table_.IsColumnTouched(field_)) {
        while (from < loaded) {
            from = NextAsLoaded(from);
            if (from < loaded && !table_.IsDeleted(from))
                return from;
            if (from < loaded)
                ++from;
        }
    }
    for (; from < table_.RowCount(); ++from) {
        if (!table_.IsDeleted(from) && table_.Bytes(from, field_).contains(part_))
            return from;
    }
    return -1;
}

// One search through the rest of the column, then from the hit to the row around it. A hit that
// runs over a cell's end is none. The number of loaded rows if there is no more.
quint32 ContainsSearch::NextAsLoaded(quint32 from) const
{
    const RowColumn &column = table_.Loaded().Column(field_);
    const quint32 rows = table_.LoadedRowCount();
    const char *const begin = column.bytes.data();
    const char *const end = begin + column.bytes.size();
    const char *at = begin + column.Offset(from);
    quint32 row = from;
    while (at < end) {
        const auto *hit = static_cast<const char *>(
            memmem(at, size_t(end - at), part_.data(), size_t(part_.size())));
        if (!hit)
            break;
        const auto hitAt = quint64(hit - begin);
        const auto beginsBefore = [&](quint32 candidate) {
            return candidate < rows && column.Offset(candidate) <= hitAt;
        };
        // Doubling steps, then halving: the hit may be near or far.
        quint32 step = 1;
        for (; beginsBefore(row + step); step *= 2)
            row += step;
        for (; step > 0; step /= 2) {
            if (beginsBefore(row + step))
                row += step;
        }
        if (hitAt + quint64(part_.size()) <= column.Offset(row + 1))
            return row;
        at = hit + 1;
    }
    return rows;
}

} // namespace Qel
