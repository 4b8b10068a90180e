#include "controls/LevelGridModel.h"

#include "dataset/ColumnReader.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace Qel {

namespace {

// An index holds its level, whether it is a header row, and the node: of a header row the master.
constexpr int HeaderBit = 1;
constexpr int LevelShift = 1;
constexpr int LevelMask = 7;
constexpr int NodeShift = 4;

quintptr IdOf(int level, int node, bool header)
{
    return (quintptr(node) << NodeShift) | quintptr(level << LevelShift) | (header ? HeaderBit : 0);
}

int LevelOfId(quintptr id)
{
    return int(id >> LevelShift) & LevelMask;
}

int NodeOfId(quintptr id)
{
    return int(id >> NodeShift);
}

} // namespace

LevelGridModel::LevelGridModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

void LevelGridModel::SetLevels(const QList<LevelDef> &levels)
{
    beginResetModel();
    for (int level = 0; level < LevelCount(); ++level) {
        if (ClientDataSet *dataSet = DataSet(level))
            disconnect(dataSet, nullptr, this, nullptr);
    }
    levels_.clear();
    for (const LevelDef &def : levels) {
        Level &level = levels_.emplace_back();
        level.keyField = def.keyField;
        level.linkField = def.linkField;
        level.cells.SetColumns(def.columns);
    }
    Rebuild();
    endResetModel();
}

void LevelGridModel::SetDataSet(int level, ClientDataSet *dataSet)
{
    if (ClientDataSet *before = DataSet(level))
        disconnect(before, nullptr, this, nullptr);
    beginResetModel();
    levels_[size_t(level)].cells.SetDataSet(dataSet);
    Rebuild();
    endResetModel();
    if (!dataSet)
        return;
    connect(dataSet, &ClientDataSet::ResetBegin, this, [this] { beginResetModel(); });
    connect(dataSet, &ClientDataSet::ResetEnd, this, [this] {
        Rebuild();
        endResetModel();
    });
    connect(dataSet, &ClientDataSet::RowsAboutToBeInserted, this,
            [this, level](int first, int last) {
                levels_[size_t(level)].changing = {first, last};
            });
    connect(dataSet, &ClientDataSet::RowsInserted, this, [this, level] { RowsInserted(level); });
    connect(dataSet, &ClientDataSet::RowsAboutToBeRemoved, this,
            [this, level](int first, int last) { RowsAboutToBeRemoved(level, first, last); });
    connect(dataSet, &ClientDataSet::RowsRemoved, this, [this, level] { RowsRemoved(level); });
    connect(dataSet, &ClientDataSet::RowChanged, this,
            [this, level](int recNo) { RowChanged(level, recNo); });
    connect(dataSet, &QObject::destroyed, this, [this, level] {
        beginResetModel();
        levels_[size_t(level)].cells.SetDataSet(nullptr);
        Rebuild();
        endResetModel();
    });
}

void LevelGridModel::SetColumns(int level, const QList<GridColumn> &columns)
{
    beginResetModel();
    levels_[size_t(level)].cells.SetColumns(columns);
    endResetModel();
}

void LevelGridModel::SetValueList(int level, QStringView field, const ValueList &values)
{
    DataSetCells &cells = levels_[size_t(level)].cells;
    const int column = cells.ColumnIndex(field);
    if (column < 0)
        return;
    // No range covers a column under all masters; the views look anew.
    emit layoutAboutToBeChanged();
    cells.SetValueList(column, values);
    emit layoutChanged();
}

// --- Shape ---------------------------------------------------------------------------------------

void LevelGridModel::Rebuild()
{
    for (int level = 0; level < LevelCount(); ++level)
        BuildLevel(level);
}

/// The level above is built already. The keys there are hashed once; a run of details with one
/// link looks it up once.
void LevelGridModel::BuildLevel(int level)
{
    Level &own = levels_[size_t(level)];
    const ClientDataSet *dataSet = own.cells.DataSet();
    const int count = dataSet ? dataSet->RecordCount() : 0;
    own.nodes.resize(size_t(count));
    own.recNos.resize(size_t(count));
    for (int i = 0; i < count; ++i)
        own.nodes[size_t(i)] = own.recNos[size_t(i)] = i;
    own.masters.assign(size_t(count), level == 0 ? 0 : -1);
    own.places.assign(size_t(count), 0);
    own.under.assign(level == 0 ? 1 : levels_[size_t(level - 1)].nodes.size(), {});
    if (level == 0) {
        own.under[0] = own.nodes;
        own.places = own.nodes;
        return;
    }
    const Level &above = levels_[size_t(level - 1)];
    const ClientDataSet *masters = above.cells.DataSet();
    const int key = masters ? masters->FieldIndex(above.keyField) : -1;
    const int link = dataSet ? dataSet->FieldIndex(own.linkField) : -1;
    if (key < 0 || link < 0 || count == 0 || masters->IsEmpty())
        return;
    QHash<QByteArrayView, int> masterOf;
    masterOf.reserve(masters->RecordCount());
    const ColumnReader keys = masters->Column(key);
    for (int recNo = masters->RecordCount() - 1; recNo >= 0; --recNo)
        masterOf.insert(keys.Bytes(recNo), recNo); // of equal keys the first row's remains
    const ColumnReader links = dataSet->Column(link);
    QByteArrayView last;
    int master = -1;
    for (int recNo = 0; recNo < count; ++recNo) {
        const QByteArrayView wanted = links.Bytes(recNo);
        if (recNo == 0 || wanted != last) {
            last = wanted;
            master = wanted.isEmpty() ? -1 : masterOf.value(wanted, -1);
        }
        own.masters[size_t(recNo)] = master;
        if (master < 0)
            continue;
        std::vector<int> &siblings = own.under[size_t(master)];
        own.places[size_t(recNo)] = int(siblings.size());
        siblings.push_back(recNo);
    }
}

void LevelGridModel::NumberRows(Level &level, int from)
{
    for (size_t recNo = size_t(from); recNo < level.nodes.size(); ++recNo)
        level.recNos[size_t(level.nodes[recNo])] = int(recNo);
}

/// A suspended table tells nothing of its rows; they are looked at anew when it goes on.
bool LevelGridModel::CanRead(int level) const
{
    const ClientDataSet *dataSet = HasLevel(level) ? DataSet(level) : nullptr;
    return dataSet && dataSet->IsActive() && !dataSet->ControlsDisabled();
}

/// The master's node of one row, by the index of the master's table; -1 if there is none.
int LevelGridModel::FindMaster(int level, int recNo) const
{
    if (level == 0)
        return 0;
    const QString link = DataSet(level)->TextAt(recNo, LinkField(level));
    if (link.isEmpty() || !CanRead(level - 1))
        return -1;
    return NodeAt(level - 1, DataSet(level - 1)->Find(KeyField(level - 1), {link}));
}

void LevelGridModel::Attach(int level, int node, int master)
{
    Level &own = levels_[size_t(level)];
    std::vector<int> &siblings = own.under[size_t(master)];
    const auto before = [&own](int sibling, int recNo) {
        return own.recNos[size_t(sibling)] < recNo;
    };
    const auto at =
        std::lower_bound(siblings.begin(), siblings.end(), own.recNos[size_t(node)], before);
    const int place = int(at - siblings.begin());
    const bool shown = level == 0 || IsShown(level - 1, master);
    if (shown) { // the first detail brings the header row with it
        const int row = level == 0 ? place : place + 1;
        const int first = level > 0 && siblings.empty() ? 0 : row;
        beginInsertRows(level == 0 ? QModelIndex() : IndexOfNode(level - 1, master), first, row);
    }
    siblings.insert(at, node);
    own.masters[size_t(node)] = master;
    for (size_t i = size_t(place); i < siblings.size(); ++i)
        own.places[size_t(siblings[i])] = int(i);
    if (shown)
        endInsertRows();
}

void LevelGridModel::Detach(int level, int node)
{
    Level &own = levels_[size_t(level)];
    const int master = own.masters[size_t(node)];
    if (master < 0)
        return;
    std::vector<int> &siblings = own.under[size_t(master)];
    const int place = own.places[size_t(node)];
    const bool shown = IsShown(level, node);
    if (shown) { // the last detail takes the header row with it
        const int row = level == 0 ? place : place + 1;
        const int first = level > 0 && siblings.size() == 1 ? 0 : row;
        beginRemoveRows(level == 0 ? QModelIndex() : IndexOfNode(level - 1, master), first, row);
    }
    siblings.erase(siblings.begin() + place);
    own.masters[size_t(node)] = -1;
    for (size_t i = size_t(place); i < siblings.size(); ++i)
        own.places[size_t(siblings[i])] = int(i);
    if (shown)
        endRemoveRows();
}

/// Rows without a master that name this one: its key is new.
void LevelGridModel::AdoptDetails(int level, int node)
{
    if (!CanRead(level + 1) || !IsShown(level, node))
        return;
    const Level &below = levels_[size_t(level + 1)];
    const ClientDataSet *dataSet = below.cells.DataSet();
    const int link = dataSet->FieldIndex(below.linkField);
    const QString key =
        DataSet(level)->TextAt(levels_[size_t(level)].recNos[size_t(node)], KeyField(level));
    if (link < 0 || key.isEmpty())
        return;
    const QByteArray wanted = key.toUtf8();
    for (size_t recNo = 0; recNo < below.nodes.size(); ++recNo) {
        const int detail = below.nodes[recNo];
        if (below.masters[size_t(detail)] < 0 && dataSet->BytesAt(int(recNo), link) == wanted)
            Attach(level + 1, detail, node);
    }
}

// --- Changes of a dataset ------------------------------------------------------------------------

void LevelGridModel::Reset()
{
    beginResetModel();
    Rebuild();
    endResetModel();
}

void LevelGridModel::RowsInserted(int level)
{
    Level &own = levels_[size_t(level)];
    const auto [recNo, last] = own.changing;
    if (recNo != last) {
        Reset();
        return;
    }
    const int node = int(own.recNos.size());
    own.recNos.push_back(recNo);
    own.nodes.insert(own.nodes.begin() + recNo, node);
    NumberRows(own, recNo);
    own.masters.push_back(-1);
    own.places.push_back(0);
    if (HasLevel(level + 1))
        levels_[size_t(level + 1)].under.emplace_back();
    const int master = FindMaster(level, recNo);
    if (master < 0)
        return;
    Attach(level, node, master);
    AdoptDetails(level, node);
}

/// The row leaves the tree while it can still be read; its number goes when it is gone. Its
/// details stay in their table, without a master.
void LevelGridModel::RowsAboutToBeRemoved(int level, int first, int last)
{
    levels_[size_t(level)].changing = {first, last};
    if (first == last) {
        const int node = NodeAt(level, first);
        Detach(level, node);
        if (HasLevel(level + 1)) {
            Level &below = levels_[size_t(level + 1)];
            for (const int detail : std::exchange(below.under[size_t(node)], {}))
                below.masters[size_t(detail)] = -1;
        }
    }
}

void LevelGridModel::RowsRemoved(int level)
{
    Level &own = levels_[size_t(level)];
    const auto [first, last] = own.changing;
    if (first != last) {
        Reset();
        return;
    }
    const int node = own.nodes[size_t(first)];
    own.nodes.erase(own.nodes.begin() + first);
    own.recNos[size_t(node)] = -1;
    NumberRows(own, first);
}

void LevelGridModel::RowChanged(int level, int recNo)
{
    const int node = NodeAt(level, recNo);
    if (node < 0)
        return;
    if (level > 0 && CanRead(level - 1)) { // its link may be another
        const int master = FindMaster(level, recNo);
        if (master != levels_[size_t(level)].masters[size_t(node)]) {
            Detach(level, node);
            if (master >= 0)
                Attach(level, node, master);
        }
    }
    if (CanRead(level + 1)) { // its key may be another
        const std::vector<int> details = Details(level + 1, node);
        for (const int detail : details) {
            const int detailRecNo = levels_[size_t(level + 1)].recNos[size_t(detail)];
            if (FindMaster(level + 1, detailRecNo) != node)
                Detach(level + 1, detail);
        }
        AdoptDetails(level, node);
    }
    const int columns = int(Columns(level).size());
    if (columns > 0 && IsShown(level, node))
        emit dataChanged(IndexOfNode(level, node), IndexOfNode(level, node, columns - 1));
}

// --- Rows ----------------------------------------------------------------------------------------

const std::vector<int> &LevelGridModel::Details(int level, int master) const
{
    return levels_[size_t(level)].under[size_t(master)];
}

int LevelGridModel::NodeAt(int level, int recNo) const
{
    const std::vector<int> &nodes = levels_[size_t(level)].nodes;
    return recNo >= 0 && recNo < int(nodes.size()) ? nodes[size_t(recNo)] : -1;
}

bool LevelGridModel::IsShown(int level, int node) const
{
    for (; level > 0 && node >= 0; --level)
        node = levels_[size_t(level)].masters[size_t(node)];
    return node >= 0 && levels_.front().masters[size_t(node)] >= 0;
}

QModelIndex LevelGridModel::IndexOfNode(int level, int node, int column) const
{
    const int place = levels_[size_t(level)].places[size_t(node)];
    return createIndex(level == 0 ? place : place + 1, column, IdOf(level, node, false));
}

int LevelGridModel::LevelOf(const QModelIndex &index) const
{
    return index.isValid() ? LevelOfId(index.internalId()) : -1;
}

bool LevelGridModel::IsHeader(const QModelIndex &index) const
{
    return index.isValid() && (index.internalId() & HeaderBit) != 0;
}

int LevelGridModel::RecNoOf(const QModelIndex &index) const
{
    if (!index.isValid() || IsHeader(index))
        return -1;
    return levels_[size_t(LevelOf(index))].recNos[size_t(NodeOfId(index.internalId()))];
}

QModelIndex LevelGridModel::IndexOf(int level, int recNo, int column) const
{
    const int node = HasLevel(level) ? NodeAt(level, recNo) : -1;
    if (node < 0 || column < 0 || column >= Columns(level).size() || !IsShown(level, node))
        return {};
    return IndexOfNode(level, node, column);
}

int LevelGridModel::DetailCount(int level, int recNo) const
{
    const int node = NodeAt(level, recNo);
    return node < 0 || !HasLevel(level + 1) ? 0 : int(Details(level + 1, node).size());
}

int LevelGridModel::DetailRecNo(int level, int recNo, int at) const
{
    if (at < 0 || at >= DetailCount(level, recNo))
        return -1;
    const int detail = Details(level + 1, NodeAt(level, recNo))[size_t(at)];
    return levels_[size_t(level + 1)].recNos[size_t(detail)];
}

bool LevelGridModel::IsUnder(int level, int recNo, const QModelIndex &master) const
{
    for (QModelIndex up = IndexOf(level, recNo).parent(); up.isValid(); up = up.parent()) {
        if (up == master.siblingAtColumn(0))
            return true;
    }
    return false;
}

// --- QAbstractItemModel --------------------------------------------------------------------------

QModelIndex LevelGridModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || row >= rowCount(parent) || column >= columnCount(parent))
        return {};
    if (!parent.isValid())
        return createIndex(row, column, IdOf(0, Details(0, 0)[size_t(row)], false));
    const int level = LevelOf(parent) + 1;
    const int master = NodeOfId(parent.internalId());
    if (row == 0)
        return createIndex(row, column, IdOf(level, master, true));
    return createIndex(row, column, IdOf(level, Details(level, master)[size_t(row - 1)], false));
}

QModelIndex LevelGridModel::parent(const QModelIndex &index) const
{
    const int level = LevelOf(index);
    if (level <= 0)
        return {};
    const int node = NodeOfId(index.internalId());
    return IndexOfNode(level - 1,
                       IsHeader(index) ? node : levels_[size_t(level)].masters[size_t(node)]);
}

int LevelGridModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return levels_.empty() ? 0 : int(Details(0, 0).size());
    const int level = LevelOf(parent) + 1;
    if (parent.column() > 0 || IsHeader(parent) || !HasLevel(level))
        return 0;
    const int details = int(Details(level, NodeOfId(parent.internalId())).size());
    return details == 0 ? 0 : details + 1;
}

int LevelGridModel::columnCount(const QModelIndex &parent) const
{
    const int level = LevelOf(parent) + 1;
    return IsHeader(parent) || !HasLevel(level) ? 0 : int(Columns(level).size());
}

bool LevelGridModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0 && columnCount(parent) > 0;
}

QVariant LevelGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const DataSetCells &cells = levels_[size_t(LevelOf(index))].cells;
    return IsHeader(index) ? cells.Header(index.column(), role)
                           : cells.Data(RecNoOf(index), index.column(), role);
}

QVariant LevelGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical || levels_.empty())
        return QAbstractItemModel::headerData(section, orientation, role);
    return levels_.front().cells.Header(section, role);
}

/// Display only, ticks too; a header row is passed over by the keys.
Qt::ItemFlags LevelGridModel::flags(const QModelIndex &index) const
{
    return IsHeader(index) ? Qt::NoItemFlags : QAbstractItemModel::flags(index);
}

} // namespace Qel
