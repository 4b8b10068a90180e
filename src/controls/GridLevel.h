#pragma once

#include "controls/GridColumn.h"
#include "dataset/ClientDataSet.h"

#include <QAction>
#include <QObject>

namespace Qel {

class LevelGrid;

/// One level of a LevelGrid, which makes and owns it: its dataset, columns and context menu, and
/// what happens to its rows. Its object name is the level's name. Rows are named by recNo.
class GridLevel : public QObject
{
    Q_OBJECT

public:
    void SetDataSet(ClientDataSet *dataSet); ///< not owned; nullptr: none
    ClientDataSet *DataSet() const;
    int Depth() const { return depth_; } ///< 0: the top level

    QStringList Columns() const;
    void SetValueList(QStringView field, const ValueList &values); ///< no such column: nothing

    /// The context menu while a row of this level has the focus: names of actions, as BindActions
    /// reads them, and the actions themselves.
    const QStringList &MenuActions() const { return menuActions_; }
    void SetActions(const QList<QAction *> &actions);
    const QList<QAction *> &Actions() const { return actions_; }

    bool HasFocusedRow() const;       ///< the focused row is one of this level
    bool HasDetails(int recNo) const; ///< rows of the level below
    bool IsExpanded(int recNo) const;
    void Expand(int recNo);   ///< not recursive
    void FocusRow(int recNo); ///< expands its masters and scrolls to it

signals:
    void RowFocused();       ///< another row has the focus, one of this level
    void RowActivated();     ///< Enter
    void RowDoubleClicked(); ///< on any cell

private:
    friend class LevelGrid;
    GridLevel(LevelGrid *grid, int depth);

    LevelGrid *grid_;
    int depth_;
    QStringList menuActions_;
    QList<QAction *> actions_;
};

} // namespace Qel
