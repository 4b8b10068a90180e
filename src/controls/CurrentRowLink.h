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
    using ToIndex = std::function<QModelIndex(int recNo)>; ///< in the first visible column
    using ToRecNo = std::function<int(const QModelIndex &)>;

    /// `view` has its model already and owns the link.
    CurrentRowLink(QAbstractItemView *view, ToIndex toIndex, ToRecNo toRecNo);

    void SetDataSet(ClientDataSet *dataSet); ///< after the model was given it
    void FollowDataSet();                    ///< view := dataset

signals:
    void Followed();                         ///< after either side moved
    void PostFailed(const QString &message); ///< leaving a row was refused; the row stays

private:
    void ViewMoved(const QModelIndex &current);
    void ChangeBegins() { ++changing_; }
    void ChangeEnds();

    QAbstractItemView *view_;
    ToIndex toIndex_;
    ToRecNo toRecNo_;
    QPointer<ClientDataSet> dataSet_;
    int changing_ = 0;
    bool following_ = false;
};

} // namespace Qel
