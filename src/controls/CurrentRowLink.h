#pragma once

#include "dataset/ClientDataSet.h"

#include <QAbstractItemView>
#include <QPointer>

#include <functional>

namespace Qel {

/// Keeps a view's current index and its dataset's current row the same, both ways, and a valid
/// current index whenever there are rows. While the dataset's rows change, or its controls are
/// suspended, the view's own moves are not written back; afterwards the view follows the dataset.
class CurrentRowLink : public QObject
{
    Q_OBJECT

public:
    using ToIndex = std::function<QModelIndex(int recNo, int column)>;
    using ToRecNo = std::function<int(const QModelIndex &)>;

    /// Gives `model` to `view`, which owns the link: the link has to hear of the model's changes
    /// before the view does, and of their ends after it.
    CurrentRowLink(QAbstractItemView *view, QAbstractItemModel *model, ToIndex toIndex,
                   ToRecNo toRecNo);

    void SetDataSet(ClientDataSet *dataSet); ///< before the model is given it; nullptr: none
    void FollowDataSet();                    ///< view := dataset
    /// The column that takes the focus when the view has no current one.
    void SetEntryColumn(int column) { entryColumn_ = column; }

signals:
    void Followed();                         ///< after either side moved
    void PostFailed(const QString &message); ///< leaving a row was refused; the row stays

private:
    void ViewMoved(const QModelIndex &current);
    void ChangeBegins();
    void ChangeEnds();

    QAbstractItemView *view_;
    ToIndex toIndex_;
    ToRecNo toRecNo_;
    QPointer<ClientDataSet> dataSet_;
    int entryColumn_ = 0;
    int changing_ = 0;
    bool following_ = false;
};

} // namespace Qel
