#pragma once

#include "dataset/RowSet.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace Qel::Test {

/// A cell of Rows that is NULL rather than an empty text.
inline QString Null()
{
    return QStringLiteral("<null>");
}

/// A small table: text columns and rows of texts, in the order of the columns. "NAME:40" bounds a
/// column's size; Null() is NULL.
inline RowSet Rows(const QStringList &columns, const QList<QStringList> &rows)
{
    FieldDefs fields;
    for (const QString &column : columns) {
        const QStringList parts = column.split(u':');
        fields.append({parts[0], FieldType::Text, parts.value(1).toInt()});
    }
    RowSetBuilder builder(fields);
    for (const QStringList &row : rows) {
        if (row.size() != columns.size())
            qFatal("Rows: a row has %lld cells for %lld columns", qlonglong(row.size()),
                   qlonglong(columns.size()));
        for (const QString &cell : row) {
            if (cell == Null())
                builder.AddNull();
            else
                builder.AddCell(cell.toUtf8());
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

} // namespace Qel::Test
