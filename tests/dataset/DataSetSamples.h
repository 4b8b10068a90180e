#pragma once

#include "dataset/ClientDataSet.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace Qel::Test {

/// A cell of a sample: a text, or null.
using Cell = std::optional<QString>;

inline RowSet RowsOf(const FieldDefs &fields, const std::vector<std::vector<Cell>> &rows)
{
    RowSetBuilder builder(fields);
    for (const std::vector<Cell> &row : rows) {
        for (const Cell &cell : row) {
            if (cell)
                builder.AddCell(cell->toUtf8());
            else
                builder.AddNull();
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

/// The texts of one field over all visible rows, "<null>" for null.
inline QStringList Column(const ClientDataSet &dataSet, QStringView field)
{
    QStringList texts;
    const int position = dataSet.FieldIndexOrThrow(field);
    for (int recNo = 0; recNo < dataSet.RecordCount(); ++recNo) {
        texts.append(dataSet.IsNullAt(recNo, position) ? QStringLiteral("<null>")
                                                       : dataSet.TextAt(recNo, position));
    }
    return texts;
}

} // namespace Qel::Test
