#pragma once

#include "dataset/ClientDataSet.h"

#include <QAbstractItemModel>
#include <QStringList>

namespace Qel {

/// A finished table of text fields; "FIELD:20" bounds a field, "<null>" is NULL.
inline RowSet TableOf(const QStringList &fields, const QList<QStringList> &rows)
{
    FieldDefs defs;
    for (const QString &field : fields) {
        const QStringList parts = field.split(u':');
        defs.append({parts[0], FieldType::Text, parts.value(1).toInt()});
    }
    RowSetBuilder builder(defs);
    for (const QStringList &row : rows) {
        for (const QString &cell : row) {
            if (cell == QStringLiteral("<null>"))
                builder.AddNull();
            else
                builder.AddCell(cell.toUtf8());
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

/// The shown texts of a row, joined by bars.
inline QString RowTexts(const QAbstractItemModel &model, int row, const QModelIndex &parent = {})
{
    QStringList texts;
    for (int column = 0; column < model.columnCount(parent); ++column)
        texts.append(model.index(row, column, parent).data().toString());
    return texts.join(u'|');
}

} // namespace Qel
