#pragma once

#include "support/Tables.h"

#include <QAbstractItemModel>

namespace Qel::Test {

/// The shown texts of a row, joined by bars.
inline QString RowTexts(const QAbstractItemModel &model, int row, const QModelIndex &parent = {})
{
    QStringList texts;
    for (int column = 0; column < model.columnCount(parent); ++column)
        texts.append(model.index(row, column, parent).data().toString());
    return texts.join(u'|');
}

} // namespace Qel::Test
