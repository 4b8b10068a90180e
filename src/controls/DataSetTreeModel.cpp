#include "controls/DataSetTreeModel.h"

#include "dataset/ByteHash.h"
#include "dataset/ColumnReader.h"

#include <bit>
#include <utility>

namespace Qel {

namespace {

/// Hashes the keys of one model; made once, the seed is not fetched for every key.
class KeyHash
{
public:
    quint32 operator()(QByteArrayView key) const
    {
        ByteHash hash = seed_;
        hash.Add(key);
        return hash.Value();
    }

private:
    ByteHash seed_;
};

quint64 StampOf(quint32 keyHash, quint32 parentHash)
{
    return (quint64(keyHash) << 32) | parentHash;
}

/// The different parent keys of a table, numbered from 0: open addressing, no allocation per key.
/// Most tables have far fewer parents than rows, so it stays in the cache, and the key of a row
/// without children mostly meets a free slot at once. Holds views of the keys.
class ParentKeys
{
public:
    int Size() const { return int(keys_.size()); }

    int Add(QByteArrayView key, quint32 hash)
    {
        if (2 * keys_.size() >= slots_.size())
            Grow();
        Slot &slot = slots_[Seek(key, hash)];
        if (slot.number < 0) {
            slot = {hash, Size()};
            keys_.push_back(key);
        }
        return slot.number;
    }

    int Find(QByteArrayView key, quint32 hash) const { return slots_[Seek(key, hash)].number; }

private:
    struct Slot
    {
        quint32 hash = 0;
        int number = -1; ///< -1: free
    };

    size_t Seek(QByteArrayView key, quint32 hash) const
    {
        const size_t mask = slots_.size() - 1;
        size_t at = hash & mask;
        while (slots_[at].number >= 0 &&
               (slots_[at].hash != hash || !SameBytes(keys_[size_t(slots_[at].number)], key)))
            at = (at + 1) & mask;
        return at;
    }

    void Grow()
    {
        std::vector<Slot> before(4 * slots_.size());
        before.swap(slots_);
        for (const Slot &slot : before) {
            if (slot.number >= 0)
                slots_[Seek(keys_[size_t(slot.number)], slot.hash)] = slot;
        }
    }

    std::vector<QByteArrayView> keys_;
    std::vector<Slot> slots_ = std::vector<Slot>(256); ///< a power of two, at most half full
};

/// Makes every node that lies on a cycle top-level. Each node is walked over once; a table in which
/// parents stand before their children has none, and need not be walked.
void BreakCycles(std::vector<int> &parents)
{
    bool parentsFirst = true;
    for (int node = 0; node < int(parents.size()); ++node)
        parentsFirst = parentsFirst && parents[size_t(node)] < node;
    if (parentsFirst)
        return;
    std::vector<int> walkOf(parents.size(), -1);
    for (int start = 0; start < int(parents.size()); ++start) {
        int node = start;
        while (node >= 0 && walkOf[size_t(node)] < 0) {
            walkOf[size_t(node)] = start;
            node = parents[size_t(node)];
        }
        while (node >= 0 && walkOf[size_t(node)] == start && parents[size_t(node)] >= 0)
            node = std::exchange(parents[size_t(node)], -1);
    }
}

} // namespace

int TreeShape::ChildCount(int node) const
{
    const size_t at = size_t(node + 1);
    return at + 1 < firstChild.size() ? firstChild[at + 1] - firstChild[at] : 0;
}

int TreeShape::Child(int node, int at) const
{
    return children[size_t(firstChild[size_t(node + 1)] + at)];
}

DataSetTreeModel::DataSetTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

void DataSetTreeModel::SetDataSet(ClientDataSet *dataSet)
{
    if (ClientDataSet *before = cells_.DataSet())
        disconnect(before, nullptr, this, nullptr);
    beginResetModel();
    cells_.SetDataSet(dataSet);
    Rebuild();
    endResetModel();
    if (!dataSet)
        return;
    connect(dataSet, &ClientDataSet::ResetBegin, this, [this] { beginResetModel(); });
    connect(dataSet, &ClientDataSet::ResetEnd, this, [this] {
        Rebuild();
        endResetModel();
    });
    connect(dataSet, &ClientDataSet::RowsAboutToBeInserted, this, [this](int first, int last) {
        insertFirst_ = first;
        insertLast_ = last;
    });
    connect(dataSet, &ClientDataSet::RowsInserted, this, &DataSetTreeModel::RowsInserted);
    connect(dataSet, &ClientDataSet::RowsAboutToBeRemoved, this,
            &DataSetTreeModel::RowsAboutToBeRemoved);
    connect(dataSet, &ClientDataSet::RowsRemoved, this, &DataSetTreeModel::RowsRemoved);
    connect(dataSet, &ClientDataSet::RowChanged, this, &DataSetTreeModel::RowChanged);
    connect(dataSet, &QObject::destroyed, this, [this] {
        beginResetModel();
        cells_.SetDataSet(nullptr);
        Rebuild();
        endResetModel();
    });
}

void DataSetTreeModel::SetKeys(const QString &keyField, const QString &parentField,
                               const QString &rootValue)
{
    beginResetModel();
    keyField_ = keyField;
    parentField_ = parentField;
    rootValue_ = rootValue.toUtf8();
    Rebuild();
    endResetModel();
}

void DataSetTreeModel::SetColumns(const QList<GridColumn> &columns)
{
    beginResetModel();
    cells_.SetColumns(columns);
    endResetModel();
}

void DataSetTreeModel::SetValueList(int column, const ValueList &values)
{
    // A tree has no range that covers a column over all levels; the views look anew.
    emit layoutAboutToBeChanged();
    cells_.SetValueList(column, values);
    emit layoutChanged();
}

void DataSetTreeModel::SetCaption(int column, const QString &caption)
{
    cells_.SetCaption(column, caption);
    emit headerDataChanged(Qt::Horizontal, column, column);
}

// --- Shape ---------------------------------------------------------------------------------------

/// The parent node of every node, from the dataset as it is. `childless` takes no children: its
/// key counts as not present.
std::vector<int> DataSetTreeModel::FindParents(int childless)
{
    std::vector<int> parents(recNos_.size(), -1);
    const ClientDataSet *dataSet = cells_.DataSet();
    const int keyField = dataSet ? dataSet->FieldIndex(keyField_) : -1;
    const int parentField = dataSet ? dataSet->FieldIndex(parentField_) : -1;
    stamps_.resize(recNos_.size());
    if (keyField < 0 || parentField < 0 || !dataSet->IsActive())
        return parents;

    const int count = int(nodes_.size());
    const KeyHash hashOf;
    const ColumnReader keys = dataSet->Column(keyField);
    const ColumnReader parentKeys = dataSet->Column(parentField);
    // First every node's parent is a number of its key. Siblings mostly stand together; each run of
    // them looks its key up once.
    ParentKeys wanted;
    QByteArrayView last;
    quint32 lastHash = hashOf(last);
    int lastNumber = -1;
    for (int recNo = 0; recNo < count; ++recNo) {
        const int node = nodes_[size_t(recNo)];
        const QByteArrayView key = parentKeys.Bytes(recNo);
        if (!SameBytes(key, last)) {
            last = key;
            lastHash = hashOf(key);
            const bool namesParent = !key.isEmpty() && key != rootValue_;
            lastNumber = namesParent ? wanted.Add(key, lastHash) : -1;
        }
        stamps_[size_t(node)] = StampOf(0, lastHash);
        parents[size_t(node)] = lastNumber;
    }
    // Then the first row with that key is the parent.
    std::vector<int> parentOf(size_t(wanted.Size()), -1);
    for (int recNo = 0; recNo < count; ++recNo) {
        const int node = nodes_[size_t(recNo)];
        const QByteArrayView key = keys.Bytes(recNo);
        const quint32 hash = hashOf(key);
        stamps_[size_t(node)] |= StampOf(hash, 0);
        const int number = node != childless ? wanted.Find(key, hash) : -1;
        if (number >= 0 && parentOf[size_t(number)] < 0)
            parentOf[size_t(number)] = node;
    }
    for (int &parent : parents) {
        if (parent >= 0)
            parent = parentOf[size_t(parent)];
    }
    BreakCycles(parents);
    return parents;
}

/// Child ranges from the parents: counted, summed up, filled in table order.
TreeShape DataSetTreeModel::ShapeOf(std::vector<int> parents) const
{
    TreeShape shape;
    const size_t size = parents.size();
    shape.firstChild.assign(size + 2, 0);
    shape.row.resize(size);
    shape.children.resize(nodes_.size());
    for (const int node : nodes_)
        ++shape.firstChild[size_t(parents[size_t(node)] + 2)];
    for (size_t i = 1; i < shape.firstChild.size(); ++i)
        shape.firstChild[i] += shape.firstChild[i - 1];
    std::vector<int> next = shape.firstChild; // where the next child of a parent goes
    for (const int node : nodes_) {
        const size_t parent = size_t(parents[size_t(node)] + 1);
        const int place = next[parent]++;
        shape.row[size_t(node)] = place - shape.firstChild[parent];
        shape.children[size_t(place)] = node;
    }
    shape.parent = std::move(parents);
    return shape;
}

void DataSetTreeModel::Rebuild()
{
    const ClientDataSet *dataSet = cells_.DataSet();
    const int count = dataSet ? dataSet->RecordCount() : 0;
    nodes_.resize(size_t(count));
    recNos_.resize(size_t(count));
    for (int i = 0; i < count; ++i)
        nodes_[size_t(i)] = recNos_[size_t(i)] = i;
    shape_ = ShapeOf(FindParents(-1));
    positions_.clear();
}

/// Gives the nodes other parents; views keep what they have expanded and selected.
void DataSetTreeModel::Relayout(std::vector<int> parents)
{
    if (parents == shape_.parent)
        return;
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    shape_ = ShapeOf(std::move(parents));
    positions_.clear();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &index : before)
        after.append(IndexOfNode(NodeOf(index), index.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

void DataSetTreeModel::NumberRows(int from)
{
    for (size_t recNo = size_t(from); recNo < nodes_.size(); ++recNo)
        recNos_[size_t(nodes_[recNo])] = int(recNo);
}

// --- Changes of the dataset ----------------------------------------------------------------------

void DataSetTreeModel::RowsInserted()
{
    if (insertFirst_ != insertLast_) {
        beginResetModel();
        Rebuild();
        endResetModel();
        return;
    }
    // First the row as a leaf, in its place; then whatever hangs on its key.
    const int node = int(recNos_.size());
    recNos_.push_back(insertFirst_);
    nodes_.insert(nodes_.begin() + insertFirst_, node);
    NumberRows(insertFirst_);
    TreeShape shape = ShapeOf(FindParents(node));
    const int row = shape.row[size_t(node)];
    beginInsertRows(IndexOfNode(shape.parent[size_t(node)]), row, row);
    shape_ = std::move(shape);
    positions_.clear();
    endInsertRows();
    Relayout(FindParents(-1));
}

void DataSetTreeModel::RowsAboutToBeRemoved(int first, int last)
{
    if (first != last) {
        removal_ = Removal::Reset;
        beginResetModel();
        return;
    }
    // First its children go to the top, then the leaf goes.
    const int node = NodeAt(first);
    Relayout(FindParents(node));
    removal_ = Removal::OneRow;
    removedRow_ = first;
    const QModelIndex index = IndexOfNode(node);
    beginRemoveRows(index.parent(), index.row(), index.row());
}

void DataSetTreeModel::RowsRemoved()
{
    const Removal removal = std::exchange(removal_, Removal::None);
    if (removal == Removal::Reset) {
        Rebuild();
        endResetModel();
    } else if (removal == Removal::OneRow) {
        const int node = nodes_[size_t(removedRow_)];
        nodes_.erase(nodes_.begin() + removedRow_);
        recNos_[size_t(node)] = -1;
        NumberRows(removedRow_);
        std::vector<int> parents = std::move(shape_.parent);
        parents[size_t(node)] = -1;
        shape_ = ShapeOf(std::move(parents));
        positions_.clear();
        endRemoveRows();
        Relayout(FindParents(-1)); // another row may have the same key
    }
}

void DataSetTreeModel::RowChanged(int recNo)
{
    const int node = NodeAt(recNo);
    if (node < 0)
        return;
    const ClientDataSet &dataSet = *cells_.DataSet();
    const int keyField = dataSet.FieldIndex(keyField_);
    const int parentField = dataSet.FieldIndex(parentField_);
    const KeyHash hashOf;
    if (keyField >= 0 && parentField >= 0 &&
        StampOf(hashOf(dataSet.BytesAt(recNo, keyField)),
                hashOf(dataSet.BytesAt(recNo, parentField))) != stamps_[size_t(node)])
        Relayout(FindParents(-1));
    if (columnCount() > 0)
        emit dataChanged(IndexOfNode(node), IndexOfNode(node, columnCount() - 1));
}

// --- Nodes ---------------------------------------------------------------------------------------

int DataSetTreeModel::NodeOf(const QModelIndex &index) const
{
    return index.isValid() ? int(index.internalId()) : -1;
}

int DataSetTreeModel::NodeAt(int recNo) const
{
    return recNo >= 0 && recNo < int(nodes_.size()) ? nodes_[size_t(recNo)] : -1;
}

QModelIndex DataSetTreeModel::IndexOfNode(int node, int column) const
{
    return node < 0 ? QModelIndex() : createIndex(shape_.row[size_t(node)], column, quintptr(node));
}

int DataSetTreeModel::RecNoOf(const QModelIndex &index) const
{
    return index.isValid() ? recNos_[size_t(NodeOf(index))] : -1;
}

QModelIndex DataSetTreeModel::IndexOf(int recNo, int column) const
{
    return column < columnCount() ? IndexOfNode(NodeAt(recNo), column) : QModelIndex();
}

int DataSetTreeModel::ParentRecNo(int recNo) const
{
    const int node = NodeAt(recNo);
    const int parentNode = node < 0 ? -1 : shape_.parent[size_t(node)];
    return parentNode < 0 ? -1 : recNos_[size_t(parentNode)];
}

int DataSetTreeModel::ChildCount(int recNo) const
{
    const int node = NodeAt(recNo);
    return recNo >= 0 && node < 0 ? 0 : shape_.ChildCount(node);
}

int DataSetTreeModel::ChildRecNo(int recNo, int at) const
{
    if (at < 0 || at >= ChildCount(recNo))
        return -1;
    return recNos_[size_t(shape_.Child(NodeAt(recNo), at))];
}

int DataSetTreeModel::NextInTreeOrder(int recNo) const
{
    int node = NodeAt(recNo);
    if (shape_.ChildCount(node) > 0)
        return recNos_[size_t(shape_.Child(node, 0))];
    while (node >= 0) {
        const int parentNode = shape_.parent[size_t(node)];
        const int next = shape_.row[size_t(node)] + 1;
        if (next < shape_.ChildCount(parentNode))
            return recNos_[size_t(shape_.Child(parentNode, next))];
        node = parentNode;
    }
    return -1;
}

void DataSetTreeModel::EnsurePositions() const
{
    if (positions_.size() == recNos_.size())
        return;
    positions_.assign(recNos_.size(), -1);
    int position = 0;
    for (int recNo = NextInTreeOrder(-1); recNo >= 0; recNo = NextInTreeOrder(recNo))
        positions_[size_t(nodes_[size_t(recNo)])] = position++;
}

int DataSetTreeModel::TreePosition(int recNo) const
{
    const int node = NodeAt(recNo);
    if (node < 0)
        return -1;
    EnsurePositions();
    return positions_[size_t(node)];
}

// --- QAbstractItemModel --------------------------------------------------------------------------

QModelIndex DataSetTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column < 0 || column >= columnCount() || row < 0 || row >= rowCount(parent))
        return {};
    return createIndex(row, column, quintptr(shape_.Child(NodeOf(parent), row)));
}

QModelIndex DataSetTreeModel::parent(const QModelIndex &index) const
{
    const int node = NodeOf(index);
    return node < 0 ? QModelIndex() : IndexOfNode(shape_.parent[size_t(node)]);
}

int DataSetTreeModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > 0 ? 0 : shape_.ChildCount(NodeOf(parent));
}

int DataSetTreeModel::columnCount(const QModelIndex &parent) const
{
    Q_UNUSED(parent);
    return int(Columns().size());
}

bool DataSetTreeModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0 && columnCount() > 0;
}

QVariant DataSetTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    return cells_.Data(RecNoOf(index), index.column(), role);
}

bool DataSetTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid())
        return false;
    QString error;
    const bool written = cells_.Write(RecNoOf(index), index.column(), value, role, &error);
    if (!error.isEmpty())
        emit EditFailed(error);
    return written;
}

QVariant DataSetTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical)
        return QAbstractItemModel::headerData(section, orientation, role);
    return cells_.Header(section, role);
}

Qt::ItemFlags DataSetTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    return QAbstractItemModel::flags(index) | cells_.Flags(index.column());
}

} // namespace Qel
