#include "dataset/ClientDataSetImpl.h"

namespace Qel {

using namespace Qt::StringLiterals;

// --- Locate --------------------------------------------------------------------------------------

KeyIndex &ClientDataSet::Impl::IndexOver(QStringView names)
{
    QList<int> positions;
    for (const QStringView name : names.split(u';'))
        positions.append(q.FieldIndexOrThrow(name.trimmed()));
    for (KeyIndex &index : indexes) {
        if (index.Fields() == positions)
            return index;
    }
    return indexes.emplace_back(std::move(positions));
}

bool ClientDataSet::Locate(QStringView fields, const QStringList &values)
{
    d_->RequireActive();
    Post();
    const int recNo = Find(fields, values);
    if (recNo >= 0)
        d_->MoveTo(recNo);
    return recNo >= 0;
}

int ClientDataSet::Find(QStringView fields, const QStringList &values) const
{
    d_->RequireActive();
    KeyIndex &index = d_->IndexOver(fields);
    if (index.Fields().size() != values.size()) {
        throw EDataSetError(u"定位“%1”需要 %2 个值，给了 %3 个"_s.arg(fields)
                                .arg(index.Fields().size())
                                .arg(values.size()));
    }
    QByteArrayList keys;
    for (const QString &value : values)
        keys.append(value.toUtf8());
    const RowOrder &order = d_->order;
    const qint64 row = index.Find(
        d_->table, keys, [&order](quint32 candidate) { return order.PositionOf(candidate) >= 0; });
    return row < 0 ? -1 : order.PositionOf(quint32(row));
}

int ClientDataSet::FindContaining(QStringView field, QStringView part, int from) const
{
    d_->RequireActive();
    const int position = FieldIndexOrThrow(field);
    const QByteArray bytes = part.toUtf8();
    from = std::max(from, 0);
    if (bytes.isEmpty() || from >= RecordCount())
        return -1;
    const ContainsSearch search(d_->table, position, bytes);
    for (qint64 row = search.Next(d_->order.At(from)); row >= 0;
         row = search.Next(quint32(row) + 1)) {
        const int recNo = d_->order.PositionOf(quint32(row));
        if (recNo >= 0)
            return recNo;
    }
    return -1;
}

// --- Filter --------------------------------------------------------------------------------------

RowOrder ClientDataSet::Impl::OrderOf(const RowTable &rows, const RowFilter *passing) const
{
    RowOrder result;
    if (passing && !passing->IsEmpty())
        result.SetRows(passing->PassingRows(rows));
    else if (rows.HasDeleted())
        result.SetRows(RowFilter().PassingRows(rows));
    else
        result.SetAll(rows.RowCount());
    return result;
}

/// Puts another choice of rows in force; the row nearest after `nearRow` becomes current.
void ClientDataSet::Impl::ReplaceOrder(RowOrder newOrder, quint32 nearRow)
{
    Tell(&ClientDataSet::ResetBegin);
    order = std::move(newOrder);
    current = std::min(order.FirstAtOrAfter(nearRow), order.Size() - 1);
    eof = bof = order.Size() == 0;
    Tell(&ClientDataSet::ResetEnd);
    TellCurrent();
    TellChanged();
}

void ClientDataSet::Impl::Refilter()
{
    ReplaceOrder(OrderOf(table, filtered ? &filter : nullptr), current < 0 ? 0 : CurrentRow());
}

void ClientDataSet::SetFilter(const QString &text)
{
    RowFilter filter = RowFilter::Parse(text);
    if (IsActive())
        filter.Bind(d_->fields);
    Post();
    d_->filterText = text;
    d_->filter = std::move(filter);
    if (IsActive() && d_->filtered)
        d_->Refilter();
}

const QString &ClientDataSet::Filter() const
{
    return d_->filterText;
}

void ClientDataSet::SetFiltered(bool on)
{
    if (on == d_->filtered)
        return;
    if (on && IsActive())
        d_->filter.Bind(d_->fields);
    Post();
    d_->filtered = on;
    if (IsActive())
        d_->Refilter();
}

bool ClientDataSet::IsFiltered() const
{
    return d_->filtered;
}

} // namespace Qel
