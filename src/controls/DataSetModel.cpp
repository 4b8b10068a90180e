#include "controls/DataSetModel.h"

#include "controls/CurrencyText.h"

namespace Qel {

namespace {

const QString &TickedText()
{
    static const QString text = QStringLiteral("1");
    return text;
}

const QString &UntickedText()
{
    static const QString text = QStringLiteral("0");
    return text;
}

/// A date of midnight is a date alone, as that of an expiry is.
QString DateText(const QString &raw)
{
    constexpr QStringView midnight = u" 00:00:00";
    return raw.endsWith(midnight) ? raw.chopped(midnight.size()) : raw;
}

} // namespace

// --- DataSetCells --------------------------------------------------------------------------------

void DataSetCells::SetDataSet(ClientDataSet *dataSet)
{
    dataSet_ = dataSet;
    fields_.clear();
}

void DataSetCells::SetColumns(const QList<GridColumn> &columns)
{
    columns_ = columns;
    fields_.clear();
}

void DataSetCells::SetValueList(int column, const ValueList &values)
{
    columns_[column].values = values;
}

void DataSetCells::SetCaption(int column, const QString &caption)
{
    columns_[column].caption = caption;
}

void DataSetCells::SetBand(int column, const QString &band)
{
    columns_[column].band = band;
}

void DataSetCells::SetReadOnly(int column, bool readOnly)
{
    columns_[column].readOnly = readOnly;
}

int DataSetCells::ColumnIndex(QStringView field) const
{
    for (int i = 0; i < columns_.size(); ++i) {
        if (columns_[i].field.compare(field, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

/// Field positions change with every query; the definitions' shared data tells whether they did.
void DataSetCells::Resolve() const
{
    const FieldDefs &current = dataSet_->Fields();
    if (fields_.size() == columns_.size() && current.isSharedWith(resolvedFor_))
        return;
    resolvedFor_ = current;
    fields_.clear();
    for (const GridColumn &column : columns_)
        fields_.append(dataSet_->FieldIndex(column.field));
}

int DataSetCells::FieldOf(int column) const
{
    if (!dataSet_)
        return -1;
    Resolve();
    return fields_[column];
}

QString DataSetCells::RawText(int recNo, int column) const
{
    if (!dataSet_ || recNo < 0 || recNo >= dataSet_->RecordCount())
        return {};
    if (columns_[column].rowNumber)
        return QString::number(recNo + 1);
    const int field = FieldOf(column);
    return field < 0 ? QString() : dataSet_->TextAt(recNo, field);
}

bool DataSetCells::IsDate(int column) const
{
    const int field = FieldOf(column);
    return field >= 0 && dataSet_->Fields().at(field).type == FieldType::DateTime;
}

QString DataSetCells::ShownText(int recNo, int column) const
{
    const QString raw = RawText(recNo, column);
    if (columns_[column].editor == GridEditor::Currency)
        return CurrencyText(raw);
    const ValueList &values = columns_[column].values;
    if (values.isEmpty())
        return IsDate(column) ? DateText(raw) : raw;
    for (const ValueItem &item : values) {
        if (item.value == raw)
            return item.text;
    }
    return {};
}

QVariant DataSetCells::Data(int recNo, int column, int role) const
{
    const GridColumn &def = columns_[column];
    const bool isCheck = def.editor == GridEditor::Check;
    switch (role) {
    case Qt::DisplayRole:
        return isCheck ? QVariant() : QVariant(ShownText(recNo, column));
    case Qt::EditRole:
    case RawValueRole:
        return RawText(recNo, column);
    case Qt::CheckStateRole:
        if (!isCheck)
            return {};
        return int(RawText(recNo, column) == TickedText() ? Qt::Checked : Qt::Unchecked);
    case Qt::TextAlignmentRole:
        return int(def.alignment | Qt::AlignVCenter);
    case Qt::AccessibleTextRole:
        return isCheck ? QVariant(def.caption) : QVariant();
    case EditorRole:
        return int(def.editor);
    case FieldSizeRole: {
        const int field = FieldOf(column);
        return field < 0 ? 0 : dataSet_->Fields().at(field).size;
    }
    default:
        return {};
    }
}

QVariant DataSetCells::Header(int column, int role) const
{
    if (column < 0 || column >= columns_.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return columns_[column].caption;
    case Qt::AccessibleTextRole: {
        const QString &band = columns_[column].band;
        return band.isEmpty() ? columns_[column].caption : band + u' ' + columns_[column].caption;
    }
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    default:
        return {};
    }
}

Qt::ItemFlags DataSetCells::Flags(int column) const
{
    const GridColumn &def = columns_[column];
    if (!def.IsEditable())
        return {};
    return def.editor == GridEditor::Check ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
}

bool DataSetCells::Write(int recNo, int column, const QVariant &value, int role, QString *error)
{
    const GridColumn &def = columns_[column];
    const bool isCheck = def.editor == GridEditor::Check;
    const int wantedRole = isCheck ? Qt::CheckStateRole : Qt::EditRole;
    if (!def.IsEditable() || role != wantedRole || FieldOf(column) < 0)
        return false;
    const QString text = !isCheck                       ? value.toString()
                         : value.toInt() == Qt::Checked ? TickedText()
                                                        : UntickedText();
    try {
        if (dataSet_->RecNo() != recNo)
            dataSet_->SetRecNo(recNo);
        const bool foreignEdit = dataSet_->IsEditing();
        if (!foreignEdit)
            dataSet_->Edit();
        try {
            dataSet_->SetFieldText(def.field, text);
        } catch (...) {
            if (!foreignEdit)
                dataSet_->Cancel();
            throw;
        }
        if (isCheck || !foreignEdit)
            dataSet_->Post();
        return true;
    } catch (const EQelError &refusal) {
        *error = refusal.Message();
        return false;
    }
}

// --- DataSetModel --------------------------------------------------------------------------------

DataSetModel::DataSetModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

void DataSetModel::SetDataSet(ClientDataSet *dataSet)
{
    if (ClientDataSet *before = cells_.DataSet())
        disconnect(before, nullptr, this, nullptr);
    beginResetModel();
    cells_.SetDataSet(dataSet);
    rows_ = dataSet ? dataSet->RecordCount() : 0;
    endResetModel();
    if (!dataSet)
        return;
    connect(dataSet, &ClientDataSet::ResetBegin, this, [this] { beginResetModel(); });
    connect(dataSet, &ClientDataSet::ResetEnd, this, [this] {
        rows_ = cells_.DataSet()->RecordCount();
        endResetModel();
    });
    connect(dataSet, &ClientDataSet::RowsAboutToBeInserted, this, [this](int first, int last) {
        beginInsertRows({}, first, last);
        rows_ += last - first + 1;
    });
    connect(dataSet, &ClientDataSet::RowsInserted, this, [this] { endInsertRows(); });
    connect(dataSet, &ClientDataSet::RowsAboutToBeRemoved, this, [this](int first, int last) {
        beginRemoveRows({}, first, last);
        rows_ -= last - first + 1;
    });
    connect(dataSet, &ClientDataSet::RowsRemoved, this, [this] {
        endRemoveRows();
        RefreshRowNumbers();
    });
    connect(dataSet, &ClientDataSet::RowChanged, this, [this](int recNo) {
        if (columnCount() > 0 && recNo >= 0 && recNo < rows_)
            emit dataChanged(index(recNo, 0), index(recNo, columnCount() - 1));
    });
    connect(dataSet, &QObject::destroyed, this, [this] {
        beginResetModel();
        cells_.SetDataSet(nullptr);
        rows_ = 0;
        endResetModel();
    });
}

void DataSetModel::SetColumns(const QList<GridColumn> &columns)
{
    beginResetModel();
    cells_.SetColumns(columns);
    endResetModel();
}

void DataSetModel::SetValueList(int column, const ValueList &values)
{
    cells_.SetValueList(column, values);
    RefreshColumn(column);
}

void DataSetModel::SetReadOnly(int column, bool readOnly)
{
    cells_.SetReadOnly(column, readOnly);
    RefreshColumn(column);
}

void DataSetModel::SetCaption(int column, const QString &caption)
{
    cells_.SetCaption(column, caption);
    emit headerDataChanged(Qt::Horizontal, column, column);
}

void DataSetModel::SetBand(int column, const QString &band)
{
    cells_.SetBand(column, band);
    emit headerDataChanged(Qt::Horizontal, column, column);
}

void DataSetModel::RefreshColumn(int column)
{
    if (rows_ > 0)
        emit dataChanged(index(0, column), index(rows_ - 1, column));
}

/// Rows that moved up have other numbers. (Rows come at the end and move none.)
void DataSetModel::RefreshRowNumbers()
{
    for (int column = 0; column < columnCount(); ++column) {
        if (Columns().at(column).rowNumber)
            RefreshColumn(column);
    }
}

int DataSetModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int DataSetModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(Columns().size());
}

QVariant DataSetModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    return cells_.Data(index.row(), index.column(), role);
}

bool DataSetModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid())
        return false;
    if (role == Qt::EditRole && Columns().at(index.column()).IsEditable())
        emit CellValidating(Columns().at(index.column()).field);
    QString error;
    const bool written = cells_.Write(index.row(), index.column(), value, role, &error);
    if (!error.isEmpty())
        emit EditFailed(error);
    return written;
}

QVariant DataSetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical)
        return QAbstractTableModel::headerData(section, orientation, role);
    return cells_.Header(section, role);
}

Qt::ItemFlags DataSetModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    return QAbstractTableModel::flags(index) | cells_.Flags(index.column()) |
           Qt::ItemNeverHasChildren;
}

} // namespace Qel
