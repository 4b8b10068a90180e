#include "controls/CurrentRowLink.h"

#include <QItemSelectionModel>
#include <QScopedValueRollback>

#include <utility>

namespace Qel {

CurrentRowLink::CurrentRowLink(QAbstractItemView *view, QAbstractItemModel *model, ToIndex toIndex,
                               ToRecNo toRecNo)
    : QObject(view)
    , view_(view)
    , toIndex_(std::move(toIndex))
    , toRecNo_(std::move(toRecNo))
{
    const auto begins = [this] { ChangeBegins(); };
    const auto ends = [this] { ChangeEnds(); };
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, begins);
    connect(model, &QAbstractItemModel::rowsAboutToBeInserted, this, begins);
    connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, begins);
    connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this, begins);
    view->setModel(model);
    connect(model, &QAbstractItemModel::modelReset, this, ends);
    connect(model, &QAbstractItemModel::rowsInserted, this, ends);
    connect(model, &QAbstractItemModel::rowsRemoved, this, ends);
    connect(model, &QAbstractItemModel::layoutChanged, this, ends);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) { ViewMoved(current); });
}

void CurrentRowLink::SetDataSet(ClientDataSet *dataSet)
{
    if (dataSet_)
        disconnect(dataSet_, nullptr, this, nullptr);
    dataSet_ = dataSet;
    if (dataSet)
        connect(dataSet, &ClientDataSet::CurrentChanged, this, [this] { FollowDataSet(); });
}

void CurrentRowLink::FollowDataSet()
{
    if (changing_ > 0 || following_)
        return;
    {
        const QScopedValueRollback guard(following_, true);
        const QModelIndex before = view_->currentIndex();
        const int recNo = dataSet_ ? dataSet_->RecNo() : -1;
        const int column = before.isValid() ? before.column() : entryColumn_;
        const QModelIndex wanted = recNo < 0 ? QModelIndex() : toIndex_(recNo, column);
        QItemSelectionModel *selection = view_->selectionModel();
        if (wanted != before) {
            view_->setCurrentIndex(wanted);
        } else if (wanted.isValid() && !selection->isRowSelected(wanted.row(), wanted.parent())) {
            selection->select(wanted,
                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        }
        if (!wanted.isValid())
            selection->clear();
    }
    emit Followed();
}

void CurrentRowLink::ViewMoved(const QModelIndex &current)
{
    if (changing_ > 0 || following_ || !dataSet_ || !current.isValid())
        return;
    if (dataSet_->ControlsDisabled()) {
        FollowDataSet();
        return;
    }
    const int recNo = toRecNo_(current);
    if (recNo == dataSet_->RecNo())
        return;
    try {
        const QScopedValueRollback guard(following_, true);
        dataSet_->SetRecNo(recNo);
    } catch (const EQelError &refusal) {
        FollowDataSet();
        emit PostFailed(refusal.Message());
        return;
    }
    FollowDataSet();
}

void CurrentRowLink::ChangeBegins()
{
    ++changing_;
}

void CurrentRowLink::ChangeEnds()
{
    --changing_;
    FollowDataSet();
}

} // namespace Qel
