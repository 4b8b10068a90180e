#pragma once

#include "controls/DataSetModel.h"

#include <QAbstractItemModel>

#include <deque>
#include <utility>
#include <vector>

namespace Qel {

/// One level of a level grid as data: how its rows hang on those of the level above.
struct LevelDef
{
    QString name;
    QString keyField;  ///< what the details of a row name
    QString linkField; ///< holds the key of the row's master; empty on the top level
    QList<GridColumn> columns;
};

/// Several datasets as one tree: the rows of a level stand under the row of the level above whose
/// key their link field holds, in the order of their own table. A row without a master is not
/// shown. Above the details of a master stands a header row with the captions of their columns; it
/// cannot be focused. Masters are looked up by a hash, once when a table is opened; a row that is
/// added, changed or removed is moved by itself. The datasets are not owned.
class LevelGridModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit LevelGridModel(QObject *parent = nullptr);

    void SetLevels(const QList<LevelDef> &levels); ///< drops the datasets of the levels before
    int LevelCount() const { return int(levels_.size()); }
    const QString &KeyField(int level) const { return levels_[size_t(level)].keyField; }
    const QString &LinkField(int level) const { return levels_[size_t(level)].linkField; }
    void SetDataSet(int level, ClientDataSet *dataSet); ///< nullptr: no rows
    ClientDataSet *DataSet(int level) const { return levels_[size_t(level)].cells.DataSet(); }
    const QList<GridColumn> &Columns(int level) const
    {
        return levels_[size_t(level)].cells.Columns();
    }
    void SetColumns(int level, const QList<GridColumn> &columns);
    void SetValueList(int level, QStringView field, const ValueList &values);

    // --- Rows, by level and recNo ----------------------------------------------------------------
    int LevelOf(const QModelIndex &index) const; ///< -1: no row
    int RecNoOf(const QModelIndex &index) const; ///< -1: a header row, or none
    bool IsHeader(const QModelIndex &index) const;
    /// Invalid for a row that hangs on no master that is shown.
    QModelIndex IndexOf(int level, int recNo, int column = 0) const;
    int DetailCount(int level, int recNo) const;
    int DetailRecNo(int level, int recNo, int at) const; ///< in the level below; -1: outside
    bool IsUnder(int level, int recNo, const QModelIndex &master) const; ///< at any depth

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    /// A row has a number, its node, which is not used again until the next reset.
    struct Level
    {
        QString keyField;
        QString linkField;
        DataSetCells cells;
        std::vector<int> nodes;               ///< recNo -> node
        std::vector<int> recNos;              ///< node -> recNo, -1: removed
        std::vector<int> masters;             ///< node -> node of the level above, -1: none
        std::vector<int> places;              ///< node -> its place among its siblings
        std::vector<std::vector<int>> under;  ///< master -> its details; of the top level: one list
        std::pair<int, int> changing{-1, -1}; ///< first and last recNo that come or go
    };

    bool HasLevel(int level) const { return level >= 0 && level < LevelCount(); }
    const std::vector<int> &Details(int level, int master) const;
    int NodeAt(int level, int recNo) const;
    QModelIndex IndexOfNode(int level, int node, int column = 0) const;
    bool IsShown(int level, int node) const;

    void Rebuild();
    void BuildLevel(int level);
    void Reset();
    void NumberRows(Level &level, int from);
    bool CanRead(int level) const;
    int FindMaster(int level, int recNo) const;
    void Attach(int level, int node, int master);
    void Detach(int level, int node);
    void AdoptDetails(int level, int node);
    void RowsInserted(int level);
    void RowsAboutToBeRemoved(int level, int first, int last);
    void RowsRemoved(int level);
    void RowChanged(int level, int recNo);

    std::deque<Level> levels_;
};

} // namespace Qel
