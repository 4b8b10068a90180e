#include "Fuzz.h"

#include "dataset/ClientDataSet.h"
#include "dataset/Utf8.h"
#include "wire/Wire.h"

using namespace Qel;

namespace {

/// Cell by cell into another block.
RowSet Copied(const RowSet &rows)
{
    RowSetBuilder builder(rows.Fields());
    for (int row = 0; row < rows.RowCount(); ++row) {
        for (int field = 0; field < rows.FieldCount(); ++field) {
            const QByteArrayView cell = rows.Bytes(row, field);
            Fuzz::Require(IsUtf8(cell), "a cell is UTF-8");
            Fuzz::Require(!rows.IsNull(row, field) || cell.isEmpty(), "a null is empty");
            Fuzz::Require(rows.Text(row, field).toUtf8() == cell, "a cell is its text");
            if (rows.IsNull(row, field))
                builder.AddNull();
            else
                builder.AddCell(cell);
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish(rows.Total()));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    RowSet rows;
    try {
        rows = RowSet::Load(Fuzz::Input(data, size).Rest());
    } catch (const EDataSetError &) {
        return 0;
    }
    Fuzz::Require(Fuzz::SameRows(Copied(rows), rows), "rows are saved and loaded equal");
    for (const auto format : {Wire::Format::Cbor, Wire::Format::Json}) {
        const auto answer = Wire::DecodeQueryAnswer(
            Wire::Encode(Wire::QueryAnswer{rows.Total(), rows}, format), format);
        Fuzz::Require(Fuzz::SameRows(answer.rows, rows), "an answer arrives as it was sent");
    }
    ClientDataSet table;
    table.Open(rows);
    Fuzz::Require(table.ToRowSet().Body() == rows.Body(), "an unchanged table is its rows");
    if (table.IsEmpty() || rows.FieldCount() == 0)
        return 0;
    table.Delete();
    Fuzz::Require(table.ToRowSet().RowCount() == rows.RowCount() - 1, "a row can be deleted");
    return 0;
}
