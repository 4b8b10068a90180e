#include "dataset/ClientDataSetImpl.h"

#include "dataset/ColumnReader.h"
#include "dataset/DataFile.h"

namespace Qel {

using namespace Qt::StringLiterals;

// --- Guards
// ----------------------------------------------------------------------------------------

void ClientDataSet::Impl::RequireActive() const
{
    if (state == State::Inactive)
        throw EDataSetError(u"数据集没有打开"_s);
}

void ClientDataSet::Impl::RequireInactive() const
{
    if (state != State::Inactive)
        throw EDataSetError(u"数据集已经打开"_s);
}

void ClientDataSet::Impl::RequireRow() const
{
    RequireActive();
    if (current < 0)
        throw EDataSetError(u"数据集没有当前记录"_s);
}

void ClientDataSet::Impl::RequireField(int field) const
{
    if (field < 0 || field >= fields.size())
        throw EDataSetError(u"第 %1 个字段不存在"_s.arg(field + 1));
}

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
    d_->RequireField(field);
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

ColumnReader ClientDataSet::Column(int field) const
{
    d_->RequireActive();
    d_->RequireField(field);
    return {d_->table, d_->order, field};
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

// --- Bookmarks -----------------------------------------------------------------------------------

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
