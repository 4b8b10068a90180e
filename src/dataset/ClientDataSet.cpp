#include "dataset/ClientDataSet.h"

#include "dataset/DataFile.h"
#include "dataset/FieldValue.h"
#include "dataset/KeyIndex.h"
#include "dataset/RowFilter.h"
#include "dataset/RowOrder.h"
#include "dataset/RowTable.h"

#include <QScopeGuard>

#include <algorithm>
#include <map>
#include <utility>

namespace Qel {

using namespace Qt::StringLiterals;

class ClientDataSet::Impl
{
public:
    explicit Impl(ClientDataSet &owner)
        : q(owner)
    {
    }

    // --- Guards ---
    void RequireActive() const
    {
        if (state == State::Inactive)
            throw EDataSetError(u"数据集没有打开"_s);
    }
    void RequireInactive() const
    {
        if (state != State::Inactive)
            throw EDataSetError(u"数据集已经打开"_s);
    }
    void RequireRow() const
    {
        RequireActive();
        if (current < 0)
            throw EDataSetError(u"数据集没有当前记录"_s);
    }
    bool IsEditing() const { return state == State::Edit || state == State::Insert; }
    bool HasCell(int recNo, int field) const
    {
        return state != State::Inactive && recNo >= 0 && recNo < order.Size() && field >= 0 &&
               field < fields.size();
    }
    quint32 CurrentRow() const { return order.At(current); }

    // --- Telling bound controls; while they are suspended only what is owed to them is noted ---
    template <typename Signal, typename... Args>
    void Tell(Signal signal, Args... args)
    {
        if (suspended > 0)
            owed.reset = true;
        else
            emit(q.*signal)(args...);
    }
    void TellCurrent()
    {
        if (suspended > 0)
            owed.current = true;
        else
            emit q.CurrentChanged(current);
    }
    void TellChanged()
    {
        if (suspended > 0)
            owed.changed = true;
        else
            emit q.Changed();
    }

    // --- Moving ---
    void MoveTo(int recNo)
    {
        eof = bof = order.Size() == 0;
        if (std::exchange(current, recNo) != recNo)
            TellCurrent();
    }
    void MoveToClamped(int recNo)
    {
        MoveTo(std::clamp(recNo, std::min(0, order.Size() - 1), order.Size() - 1));
    }

    // --- Whole contents ---
    void ReplaceRows(RowTable newTable, FieldDefs newFields, State newState, RowFilter boundFilter);
    void ReplaceOrder(RowOrder newOrder, quint32 nearRow);
    RowOrder OrderOf(const RowTable &rows, const RowFilter *passing) const;
    void Refilter();

    // --- Cells ---
    void SetCell(int field, RowTable::CellCode code);
    void RunHandler(int field);
    RowTable::CellCode CodeOf(const FieldValue &value)
    {
        return value.isNull ? RowTable::Null : table.CodeOf(value.utf8);
    }
    void NumberRow(quint32 row);
    void RemoveCurrent(int nextRecNo, bool reachesEnd);
    void SetAllOneByOne(int field, const QString &value);

    KeyIndex &IndexOver(QStringView names);

    struct Undo
    {
        int field;
        RowTable::CellCode code;
    };
    struct Handler
    {
        std::function<void()> function;
        bool running = false;
    };
    struct Owed
    {
        bool reset = false;
        bool current = false;
        bool changed = false;
    };

    ClientDataSet &q;
    FieldDefs fields;
    State state = State::Inactive;
    RowTable table;
    RowOrder order;
    quint32 generation = 0; ///< tells bookmarks of one opening from those of the next

    int current = -1;
    bool eof = true;
    bool bof = true;

    std::vector<Undo> undo; ///< what the pending edit replaced, each field once
    int currentBeforeInsert = -1;

    QString filterText;
    RowFilter filter; ///< bound to the fields whenever it is in force
    bool filtered = false;

    std::map<QString, std::shared_ptr<Handler>> handlers; ///< by upper-case name
    std::map<int, qint64> nextNumbers;                    ///< of auto-increment fields
    std::vector<KeyIndex> indexes;

    int suspended = 0;
    Owed owed;
};

// --- Structure -----------------------------------------------------------------------------------

ClientDataSet::ClientDataSet(QObject *parent)
    : QObject(parent)
    , d_(std::make_unique<Impl>(*this))
{
}

ClientDataSet::~ClientDataSet() = default;

void ClientDataSet::SetFieldDefs(const FieldDefs &fields)
{
    d_->RequireInactive();
    for (const FieldDef &field : fields) {
        if (field.name.isEmpty() || field.size < 0)
            throw EDataSetError(u"字段定义有误：名称为空或长度为负"_s);
    }
    d_->fields = fields;
}

const FieldDefs &ClientDataSet::Fields() const
{
    return d_->fields;
}

int ClientDataSet::FieldCount() const
{
    return int(d_->fields.size());
}

int ClientDataSet::FieldIndex(QStringView name) const
{
    return IndexOfField(d_->fields, name);
}

int ClientDataSet::FieldIndexOrThrow(QStringView name) const
{
    const int field = FieldIndex(name);
    if (field < 0)
        throw EDataSetError(u"字段“%1”不存在"_s.arg(name));
    return field;
}

void ClientDataSet::Impl::ReplaceRows(RowTable newTable, FieldDefs newFields, State newState,
                                      RowFilter boundFilter)
{
    RowOrder newOrder = OrderOf(newTable, filtered ? &boundFilter : nullptr);
    Tell(&ClientDataSet::ResetBegin);
    table = std::move(newTable);
    fields = std::move(newFields);
    order = std::move(newOrder);
    filter = std::move(boundFilter);
    state = newState;
    ++generation;
    undo.clear();
    indexes.clear();
    nextNumbers.clear();
    eof = order.Size() == 0;
    bof = true;
    current = eof ? -1 : 0;
    Tell(&ClientDataSet::ResetEnd);
    TellCurrent();
    TellChanged();
}

void ClientDataSet::CreateDataSet()
{
    d_->RequireInactive();
    if (d_->fields.isEmpty())
        throw EDataSetError(u"没有定义字段，不能建立数据集"_s);
    Open(RowSet::Load(RowSetBuilder(d_->fields).Finish()));
}

void ClientDataSet::Open(const RowSet &rows)
{
    RowFilter filter = d_->filter;
    if (d_->filtered)
        filter.Bind(rows.Fields());
    d_->ReplaceRows(RowTable(rows), rows.Fields(), State::Browse, std::move(filter));
}

void ClientDataSet::AssignData(const ClientDataSet &other)
{
    if (&other == this)
        return;
    other.d_->RequireActive();
    Open(other.ToRowSet());
}

void ClientDataSet::Close()
{
    if (IsActive())
        d_->ReplaceRows(RowTable(), d_->fields, State::Inactive, d_->filter);
}

ClientDataSet::State ClientDataSet::CurrentState() const
{
    return d_->state;
}

bool ClientDataSet::IsEditing() const
{
    return d_->IsEditing();
}

// --- Rows and the current row --------------------------------------------------------------------

int ClientDataSet::RecordCount() const
{
    return d_->order.Size();
}

int ClientDataSet::RecNo() const
{
    return d_->current;
}

void ClientDataSet::SetRecNo(int recNo)
{
    d_->RequireActive();
    Post();
    d_->MoveToClamped(recNo);
}

void ClientDataSet::First()
{
    SetRecNo(0);
    d_->bof = true;
}

void ClientDataSet::Last()
{
    SetRecNo(RecordCount() - 1);
    d_->eof = true;
}

// Posting may take the row out of the filter, so steps count from the row, not from its position.
void ClientDataSet::Next()
{
    d_->RequireActive();
    if (IsEmpty())
        return;
    const quint32 row = d_->CurrentRow();
    Post();
    const int next = d_->order.FirstAtOrAfter(row + 1);
    if (next < RecordCount())
        d_->MoveTo(next);
    else
        d_->eof = true;
}

void ClientDataSet::Prior()
{
    d_->RequireActive();
    if (IsEmpty())
        return;
    const quint32 row = d_->CurrentRow();
    Post();
    const int prior = d_->order.FirstAtOrAfter(row) - 1;
    if (prior >= 0)
        d_->MoveTo(prior);
    else
        d_->bof = true;
}

bool ClientDataSet::Eof() const
{
    return d_->eof;
}

bool ClientDataSet::Bof() const
{
    return d_->bof;
}

// --- Cells ---------------------------------------------------------------------------------------

QString ClientDataSet::FieldText(QStringView name) const
{
    return TextAt(d_->current, FieldIndexOrThrow(name));
}

bool ClientDataSet::FieldIsNull(QStringView name) const
{
    return IsNullAt(d_->current, FieldIndexOrThrow(name));
}

void ClientDataSet::SetFieldText(QStringView name, const QString &value)
{
    SetFieldTextAt(FieldIndexOrThrow(name), value);
}

void ClientDataSet::SetFieldNull(QStringView name)
{
    const int field = FieldIndexOrThrow(name);
    if (d_->fields[field].type == FieldType::AutoIncrement)
        throw EDataSetError(u"字段“%1”自动编号，不能修改"_s.arg(name));
    d_->SetCell(field, RowTable::Null);
}

QString ClientDataSet::FieldTextAt(int field) const
{
    return TextAt(d_->current, field);
}

void ClientDataSet::SetFieldTextAt(int field, const QString &value)
{
    if (field < 0 || field >= FieldCount())
        throw EDataSetError(u"第 %1 个字段不存在"_s.arg(field + 1));
    if (!IsEditing())
        throw EDataSetError(u"不在编辑状态，不能修改字段“%1”"_s.arg(d_->fields[field].name));
    d_->SetCell(field, d_->CodeOf(CanonicalValue(d_->fields[field], value)));
}

QString ClientDataSet::TextAt(int recNo, int field) const
{
    return QString::fromUtf8(BytesAt(recNo, field));
}

QByteArrayView ClientDataSet::BytesAt(int recNo, int field) const
{
    return d_->HasCell(recNo, field) ? d_->table.Bytes(d_->order.At(recNo), field)
                                     : QByteArrayView();
}

bool ClientDataSet::IsNullAt(int recNo, int field) const
{
    return !d_->HasCell(recNo, field) || d_->table.IsNull(d_->order.At(recNo), field);
}

void ClientDataSet::SetFieldChangeHandler(const QString &name, std::function<void()> function)
{
    if (function)
        d_->handlers[name.toUpper()] =
            std::make_shared<Impl::Handler>(Impl::Handler{std::move(function)});
    else
        d_->handlers.erase(name.toUpper());
}

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

// --- Editing -------------------------------------------------------------------------------------

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

// --- Finding -------------------------------------------------------------------------------------

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

ClientDataSet::Bookmark ClientDataSet::GetBookmark() const
{
    return BookmarkAt(d_->current);
}

ClientDataSet::Bookmark ClientDataSet::BookmarkAt(int recNo) const
{
    if (recNo < 0 || recNo >= RecordCount())
        return NoBookmark;
    return (Bookmark(d_->generation) << 32) | d_->order.At(recNo);
}

bool ClientDataSet::BookmarkValid(Bookmark mark) const
{
    return mark >= 0 && quint32(mark >> 32) == d_->generation &&
           d_->order.PositionOf(quint32(mark)) >= 0;
}

bool ClientDataSet::GotoBookmark(Bookmark mark)
{
    if (!BookmarkValid(mark))
        return false;
    Post(); // the row may leave the filter by that
    if (!BookmarkValid(mark))
        return false;
    d_->MoveTo(d_->order.PositionOf(quint32(mark)));
    return true;
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

// --- Bound controls ------------------------------------------------------------------------------

void ClientDataSet::DisableControls()
{
    ++d_->suspended;
}

void ClientDataSet::EnableControls()
{
    Q_ASSERT_X(d_->suspended > 0, "EnableControls", "without DisableControls");
    if (d_->suspended == 0 || --d_->suspended > 0)
        return;
    const Impl::Owed owed = std::exchange(d_->owed, {});
    if (owed.reset) {
        emit ResetBegin();
        emit ResetEnd();
    }
    if (owed.reset || owed.current)
        emit CurrentChanged(d_->current);
    if (owed.changed)
        emit Changed();
}

bool ClientDataSet::ControlsDisabled() const
{
    return d_->suspended > 0;
}

// --- File ----------------------------------------------------------------------------------------

RowSet ClientDataSet::ToRowSet() const
{
    d_->RequireActive();
    const RowTable &table = d_->table;
    if (table.IsUntouched())
        return table.Loaded();
    const qint64 pendingRow = IsEditing() ? qint64(d_->CurrentRow()) : -1;
    const auto isPending = [this](int field) {
        return std::find_if(d_->undo.begin(), d_->undo.end(),
                            [field](const Impl::Undo &entry) { return entry.field == field; });
    };
    RowSetBuilder builder(d_->fields);
    for (quint32 row = 0; row < table.RowCount(); ++row) {
        if (table.IsDeleted(row) || (row == pendingRow && d_->state == State::Insert))
            continue;
        for (int field = 0; field < FieldCount(); ++field) {
            RowTable::CellCode code = table.Code(row, field);
            if (row == pendingRow) {
                if (const auto entry = isPending(field); entry != d_->undo.end())
                    code = entry->code;
            }
            if (table.IsNullCode(row, field, code))
                builder.AddNull();
            else
                builder.AddCell(table.BytesOfCode(row, field, code));
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

void ClientDataSet::SaveToFile(const QString &path) const
{
    DataFile::Write(path, ToRowSet().Body());
}

void ClientDataSet::LoadFromFile(const QString &path)
{
    const QByteArray block = DataFile::Read(path);
    RowSet rows;
    try {
        rows = RowSet::Load(block);
    } catch (const EDataSetError &error) {
        throw EDataSetError(u"读取文件“%1”失败：%2"_s.arg(path, error.Message()));
    }
    Open(rows);
}

} // namespace Qel
