#include "dataset/ClientDataSetImpl.h"

#include <QScopeGuard>

namespace Qel {

using namespace Qt::StringLiterals;

// --- Cells ---------------------------------------------------------------------------------------

void ClientDataSet::Impl::SetCell(int field, RowTable::CellCode code)
{
    if (!IsEditing())
        throw EDataSetError(u"不在编辑状态，不能修改字段“%1”"_s.arg(fields[field].name));
    const quint32 row = CurrentRow();
    const bool alreadySet = std::any_of(
        undo.begin(), undo.end(), [field](const Undo &entry) { return entry.field == field; });
    if (!alreadySet)
        undo.push_back({field, table.Code(row, field)});
    table.SetCode(row, field, code);
    for (KeyIndex &index : indexes)
        index.NoteChanged(row, field);
    Tell(&ClientDataSet::RowChanged, current);
    RunHandler(field);
}

void ClientDataSet::Impl::RunHandler(int field)
{
    const auto found = handlers.find(fields[field].name.toUpper());
    if (found == handlers.end() || found->second->running)
        return;
    const std::shared_ptr<Handler> handler = found->second; // it may replace itself
    handler->running = true;
    const auto done = qScopeGuard([&handler] { handler->running = false; });
    handler->function();
}

// --- Rows ----------------------------------------------------------------------------------------

void ClientDataSet::Impl::NumberRow(quint32 row)
{
    for (int field = 0; field < fields.size(); ++field) {
        if (fields[field].type != FieldType::AutoIncrement)
            continue;
        auto next = nextNumbers.find(field);
        if (next == nextNumbers.end()) {
            qint64 largest = 0;
            for (quint32 other = 0; other < row; ++other)
                largest = std::max(largest, table.Bytes(other, field).toByteArray().toLongLong());
            next = nextNumbers.emplace(field, largest + 1).first;
        }
        table.SetCode(row, field, table.CodeOf(QByteArray::number(next->second++)));
    }
}

void ClientDataSet::Append()
{
    d_->RequireActive();
    if (d_->fields.isEmpty())
        throw EDataSetError(u"数据集没有字段，不能追加记录"_s);
    Post();
    const quint32 row = d_->table.AddRow();
    d_->NumberRow(row);
    for (KeyIndex &index : d_->indexes)
        index.NoteAdded(row);
    const int recNo = RecordCount();
    d_->Tell(&ClientDataSet::RowsAboutToBeInserted, recNo, recNo);
    d_->order.Append(row);
    d_->currentBeforeInsert = std::exchange(d_->current, recNo);
    d_->eof = d_->bof = false;
    d_->state = State::Insert;
    d_->Tell(&ClientDataSet::RowsInserted);
    d_->TellCurrent();
    d_->TellChanged();
}

void ClientDataSet::Edit()
{
    d_->RequireRow();
    if (!IsEditing())
        d_->state = State::Edit;
}

void ClientDataSet::Post()
{
    if (!IsEditing())
        return;
    const bool modified = d_->state == State::Insert || !d_->undo.empty();
    d_->state = State::Browse;
    d_->undo.clear();
    if (d_->filtered && !d_->filter.Passes(d_->table, d_->CurrentRow()))
        d_->RemoveCurrent(d_->current, true);
    else
        d_->Tell(&ClientDataSet::RowChanged, d_->current);
    if (modified)
        d_->TellChanged();
}

void ClientDataSet::Cancel()
{
    if (!IsEditing())
        return;
    const bool inserted = d_->state == State::Insert;
    const bool modified = inserted || !d_->undo.empty();
    const quint32 row = d_->CurrentRow();
    d_->state = State::Browse;
    for (const auto &[field, code] : std::exchange(d_->undo, {})) {
        d_->table.SetCode(row, field, code);
        for (KeyIndex &index : d_->indexes)
            index.NoteChanged(row, field);
    }
    if (inserted) {
        d_->table.Delete(row);
        d_->RemoveCurrent(d_->currentBeforeInsert, false);
    } else {
        d_->Tell(&ClientDataSet::RowChanged, d_->current);
    }
    if (modified)
        d_->TellChanged();
}

void ClientDataSet::Delete()
{
    d_->RequireRow();
    if (d_->state == State::Insert) {
        Cancel();
        return;
    }
    d_->state = State::Browse;
    d_->undo.clear();
    d_->table.Delete(d_->CurrentRow());
    d_->RemoveCurrent(d_->current, true);
    d_->TellChanged();
}

/// Takes the current row out of the visible ones. `reachesEnd`: taking the last one is like having
/// stepped past it.
void ClientDataSet::Impl::RemoveCurrent(int nextRecNo, bool reachesEnd)
{
    Tell(&ClientDataSet::RowsAboutToBeRemoved, current, current);
    const bool wasLast = current + 1 == order.Size();
    order.RemoveAt(current);
    current = std::min(nextRecNo, order.Size() - 1);
    bof = order.Size() == 0;
    eof = bof || (reachesEnd && wasLast);
    Tell(&ClientDataSet::RowsRemoved);
    TellCurrent();
}

// --- Bulk ----------------------------------------------------------------------------------------

void ClientDataSet::SetAll(QStringView field, const QString &value)
{
    d_->RequireActive();
    const int position = FieldIndexOrThrow(field);
    const FieldValue canonical = CanonicalValue(d_->fields[position], value);
    Post();
    if (IsEmpty())
        return;
    if (d_->handlers.contains(d_->fields[position].name.toUpper())) {
        d_->SetAllOneByOne(position, value);
        return;
    }
    const RowTable::CellCode code = d_->CodeOf(canonical);
    d_->Tell(&ClientDataSet::ResetBegin);
    if (quint32(RecordCount()) == d_->table.RowCount()) {
        d_->table.Fill(position, code);
    } else {
        for (int recNo = 0; recNo < RecordCount(); ++recNo)
            d_->table.SetCode(d_->order.At(recNo), position, code);
    }
    for (KeyIndex &index : d_->indexes)
        index.NoteFilled(position);
    d_->Tell(&ClientDataSet::ResetEnd);
    if (d_->filtered && d_->filter.Uses(position)) {
        d_->Refilter();
        return;
    }
    d_->TellCurrent();
    d_->TellChanged();
}

void ClientDataSet::Impl::SetAllOneByOne(int field, const QString &value)
{
    const ControlsSuspender suspender(q);
    const quint32 currentRow = CurrentRow();
    std::vector<quint32> rows;
    for (int recNo = 0; recNo < order.Size(); ++recNo)
        rows.push_back(order.At(recNo));
    for (const quint32 row : rows) {
        const int recNo = order.PositionOf(row);
        if (recNo < 0)
            continue;
        q.SetRecNo(recNo);
        q.Edit();
        q.SetFieldTextAt(field, value);
        q.Post();
    }
    MoveToClamped(order.FirstAtOrAfter(currentRow));
}

int ClientDataSet::DeleteRows(const std::function<bool(int recNo)> &doomed)
{
    d_->RequireActive();
    Post();
    const int before = RecordCount();
    std::vector<quint32> kept(static_cast<size_t>(before));
    std::vector<quint32> gone;
    size_t keptCount = 0;
    for (int recNo = 0; recNo < before; ++recNo) {
        const quint32 row = d_->order.At(recNo);
        if (doomed(recNo))
            gone.push_back(row);
        else
            kept[keptCount++] = row;
    }
    if (gone.empty())
        return 0;
    kept.resize(keptCount);
    RowOrder order;
    order.SetRows(std::move(kept));
    const quint32 nearRow = d_->CurrentRow();
    for (const quint32 row : gone)
        d_->table.Delete(row);
    d_->ReplaceOrder(std::move(order), nearRow);
    return int(gone.size());
}

} // namespace Qel
