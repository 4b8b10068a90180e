#include "PlainTable.h"

#include <algorithm>

namespace Qel::Test {

using DataSetState = ClientDataSet::State;

void PlainTable::Open(std::vector<Row> rows)
{
    rows_.clear();
    for (Row &row : rows)
        rows_.push_back({std::move(row)});
    state_ = DataSetState::Browse;
    current_ = -1;
    const std::vector<int> visible = Visible();
    current_ = visible.empty() ? -1 : visible.front();
}

std::vector<int> PlainTable::Visible() const
{
    std::vector<int> ids;
    for (int id = 0; id < int(rows_.size()); ++id) {
        if (IsVisible(id))
            ids.push_back(id);
    }
    return ids;
}

bool PlainTable::IsVisible(int id) const
{
    const Entry &entry = rows_[size_t(id)];
    const bool pending = id == current_ && state_ != DataSetState::Browse;
    return entry.live && (pending || Passes(entry));
}

int PlainTable::RecNo() const
{
    const std::vector<int> visible = Visible();
    const auto found = std::find(visible.begin(), visible.end(), current_);
    return found == visible.end() ? -1 : int(found - visible.begin());
}

std::vector<PlainTable::Row> PlainTable::Posted() const
{
    std::vector<Row> rows;
    for (int id = 0; id < int(rows_.size()); ++id) {
        const Entry &entry = rows_[size_t(id)];
        if (!entry.live || (id == current_ && state_ == DataSetState::Insert))
            continue;
        rows.push_back(id == current_ && state_ == DataSetState::Edit ? before_ : entry.cells);
    }
    return rows;
}

// --- Moving --------------------------------------------------------------------------------------

void PlainTable::MoveTo(int recNo)
{
    Post();
    const std::vector<int> visible = Visible();
    if (!visible.empty())
        current_ = visible[size_t(std::clamp(recNo, 0, int(visible.size()) - 1))];
}

void PlainTable::Next()
{
    const int from = current_;
    Post();
    for (const int id : Visible()) {
        if (id > from) {
            current_ = id;
            return;
        }
    }
}

void PlainTable::Prior()
{
    const int from = current_;
    Post();
    for (const int id : Visible()) {
        if (id < from)
            current_ = id;
    }
}

bool PlainTable::GoTo(int id)
{
    if (!IsVisible(id))
        return false;
    Post();
    if (!IsVisible(id))
        return false;
    current_ = id;
    return true;
}

void PlainTable::Leave(int wasRecNo)
{
    const std::vector<int> visible = Visible();
    current_ = visible.empty() || wasRecNo < 0
                   ? -1
                   : visible[size_t(std::min(wasRecNo, int(visible.size()) - 1))];
}

void PlainTable::StayNear(int id)
{
    const std::vector<int> visible = Visible();
    const auto next = std::lower_bound(visible.begin(), visible.end(), id);
    current_ = visible.empty() ? -1 : next == visible.end() ? visible.back() : *next;
}

// --- Editing -------------------------------------------------------------------------------------

void PlainTable::Append(int fieldCount)
{
    Post();
    recNoBeforeInsert_ = RecNo();
    current_ = int(rows_.size());
    rows_.push_back({Row(size_t(fieldCount))});
    state_ = DataSetState::Insert;
}

void PlainTable::Edit()
{
    if (state_ != DataSetState::Browse)
        return;
    before_ = rows_[size_t(current_)].cells;
    state_ = DataSetState::Edit;
}

void PlainTable::Set(int field, const Cell &value)
{
    rows_[size_t(current_)].cells[size_t(field)] = value;
}

void PlainTable::Post()
{
    if (state_ == DataSetState::Browse)
        return;
    const int recNo = RecNo();
    state_ = DataSetState::Browse;
    if (!IsVisible(current_))
        Leave(recNo);
}

void PlainTable::Cancel()
{
    if (state_ == DataSetState::Browse)
        return;
    Entry &entry = rows_[size_t(current_)];
    if (std::exchange(state_, DataSetState::Browse) == DataSetState::Edit) {
        entry.cells = before_;
        return;
    }
    entry.live = false;
    Leave(recNoBeforeInsert_);
}

void PlainTable::Delete()
{
    if (state_ == DataSetState::Insert) {
        Cancel();
        return;
    }
    const int recNo = RecNo();
    rows_[size_t(current_)].live = false;
    state_ = DataSetState::Browse;
    Leave(recNo);
}

// --- Filter and bulk -----------------------------------------------------------------------------

void PlainTable::SetFilter(const Filter &filter)
{
    Post();
    filter_ = filter;
    if (filtered_)
        StayNear(std::max(current_, 0));
}

void PlainTable::SetFiltered(bool on)
{
    if (on == filtered_)
        return;
    Post();
    filtered_ = on;
    StayNear(std::max(current_, 0));
}

void PlainTable::SetAll(int field, const Cell &value)
{
    Post();
    for (const int id : Visible())
        rows_[size_t(id)].cells[size_t(field)] = value;
    StayNear(std::max(current_, 0));
}

int PlainTable::DeleteRows(const std::function<bool(const Row &)> &doomed)
{
    Post();
    int count = 0;
    for (const int id : Visible()) {
        Entry &entry = rows_[size_t(id)];
        entry.live = !doomed(entry.cells);
        count += entry.live ? 0 : 1;
    }
    StayNear(std::max(current_, 0));
    return count;
}

// --- Finding -------------------------------------------------------------------------------------

int PlainTable::Find(const std::vector<int> &fields, const QStringList &values) const
{
    const std::vector<int> visible = Visible();
    for (size_t recNo = 0; recNo < visible.size(); ++recNo) {
        const Row &row = Cells(visible[recNo]);
        bool same = true;
        for (size_t i = 0; i < fields.size(); ++i)
            same = same && row[size_t(fields[i])].value_or(QString()) == values[qsizetype(i)];
        if (same)
            return int(recNo);
    }
    return -1;
}

int PlainTable::FindContaining(int field, const QString &part, int from) const
{
    const std::vector<int> visible = Visible();
    for (int recNo = from; !part.isEmpty() && recNo < int(visible.size()); ++recNo) {
        if (Cells(visible[size_t(recNo)])[size_t(field)].value_or(QString()).contains(part))
            return recNo;
    }
    return -1;
}

} // namespace Qel::Test
