#include "controls/GridLevel.h"

#include "controls/LevelGrid.h"

namespace Qel {

GridLevel::GridLevel(LevelGrid *grid, int depth)
    : QObject(grid)
    , grid_(grid)
    , depth_(depth)
{
}

void GridLevel::SetDataSet(ClientDataSet *dataSet)
{
    grid_->SetLevelDataSet(depth_, dataSet);
}

ClientDataSet *GridLevel::DataSet() const
{
    return grid_->Model()->DataSet(depth_);
}

QStringList GridLevel::Columns() const
{
    return FormatGridColumns(grid_->Model()->Columns(depth_));
}

void GridLevel::SetValueList(QStringView field, const ValueList &values)
{
    grid_->Model()->SetValueList(depth_, field, values);
}

void GridLevel::SetActions(const QList<QAction *> &actions)
{
    actions_ = actions;
    grid_->ShowLevelMenu();
}

bool GridLevel::HasFocusedRow() const
{
    return grid_->FocusedLevel() == this;
}

bool GridLevel::HasDetails(int recNo) const
{
    return grid_->Model()->DetailCount(depth_, recNo) > 0;
}

bool GridLevel::IsExpanded(int recNo) const
{
    return grid_->isExpanded(grid_->Model()->IndexOf(depth_, recNo));
}

void GridLevel::Expand(int recNo)
{
    if (HasDetails(recNo))
        grid_->expand(grid_->Model()->IndexOf(depth_, recNo));
}

void GridLevel::FocusRow(int recNo)
{
    grid_->FocusRow(depth_, recNo);
}

} // namespace Qel
