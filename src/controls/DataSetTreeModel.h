#pragma once

#include "controls/DataSetModel.h"

#include <QAbstractItemModel>

#include <vector>

namespace Qel {

/// The shape of a table with key and parent fields, kept as arrays: nodes are numbered, the
/// children of a node are a range. Plain data; made in one pass with a hash over the key bytes.
struct TreeShape
{
    std::vector<int> parent;     ///< node -> parent node, -1: top level
    std::vector<int> row;        ///< node -> its place among its siblings
    std::vector<int> firstChild; ///< node + 1 -> start of its range in `children`; 0: top level
    std::vector<int> children;   ///< nodes, parent by parent, siblings in table order

    int ChildCount(int node) const; ///< node -1: the top level
    int Child(int node, int at) const;
};

/// A dataset with a key and a parent field as a tree. A row whose parent is the root value, NULL,
/// empty, its own key or not present is top-level; of a cycle every row is top-level. Of two rows
/// with one key the first is the parent. Siblings keep the table's order. Follows insertions,
/// removals and changes, with nodes keeping their identity (and views what they have expanded).
class DataSetTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit DataSetTreeModel(QObject *parent = nullptr);

    ClientDataSet *DataSet() const { return cells_.DataSet(); }
    void SetDataSet(ClientDataSet *dataSet);
    /// Names the fields and the parent value that means "no parent".
    void SetKeys(const QString &keyField, const QString &parentField, const QString &rootValue);
    const QList<GridColumn> &Columns() const { return cells_.Columns(); }
    void SetColumns(const QList<GridColumn> &columns);
    void SetValueList(int column, const ValueList &values);
    void SetCaption(int column, const QString &caption);
    int ColumnIndex(QStringView field) const { return cells_.ColumnIndex(field); }

    int RecNoOf(const QModelIndex &index) const; ///< -1 for an invalid index
    QModelIndex IndexOf(int recNo, int column = 0) const;
    int ParentRecNo(int recNo) const; ///< -1: top level
    int ChildCount(int recNo) const;  ///< recNo -1: of the top level
    int ChildRecNo(int recNo, int at) const;
    int NextInTreeOrder(int recNo) const; ///< child, sibling or an ancestor's sibling; -1: none
    int TreePosition(int recNo) const;    ///< place in tree order, expanded or not

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    using QObject::parent;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    void EditFailed(const QString &message);

private:
    enum class Removal { None, OneRow, Reset };

    int NodeOf(const QModelIndex &index) const;
    int NodeAt(int recNo) const; ///< -1 outside the table
    QModelIndex IndexOfNode(int node, int column = 0) const;

    std::vector<int> FindParents(int childless);
    TreeShape ShapeOf(std::vector<int> parents) const;
    void Rebuild();
    void Relayout(std::vector<int> parents);
    void NumberRows(int from);
    void EnsurePositions() const;

    void RowsInserted();
    void RowsAboutToBeRemoved(int first, int last);
    void RowsRemoved();
    void RowChanged(int recNo);

    DataSetCells cells_;
    QString keyField_;
    QString parentField_;
    QByteArray rootValue_ = QByteArrayLiteral("-1");

    // A node is numbered once and for all, so that an index can hold it; a removed node's number
    // stays unused until the next reset.
    TreeShape shape_;
    std::vector<int> recNos_;            ///< node -> recNo, -1: removed
    std::vector<int> nodes_;             ///< recNo -> node
    std::vector<quint64> stamps_;        ///< node -> hash over its key and parent as they were read
    mutable std::vector<int> positions_; ///< node -> place in tree order; empty: not counted yet

    int insertFirst_ = -1;
    int insertLast_ = -1;
    int removedRow_ = -1;
    Removal removal_ = Removal::None;
};

} // namespace Qel
