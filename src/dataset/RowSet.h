#pragma once

#include "dataset/FieldDef.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QtEndian>

#include <memory>
#include <vector>

namespace Qel {

/// One column of a row block as it lies in the body: views only, for code that walks a column.
struct RowColumn
{
    const char *offsets = nullptr; ///< rows + 1 little-endian 32-bit numbers, not aligned
    QByteArrayView bytes;          ///< the cells' UTF-8 one after the other
    const uchar *nulls = nullptr;  ///< bit row%8 of byte row/8 set: null; nullptr: no nulls

    quint32 Offset(qsizetype index) const
    {
        return qFromLittleEndian<quint32>(offsets + 4 * index);
    }
    QByteArrayView Cell(qsizetype row) const
    {
        const quint32 begin = Offset(row);
        return {bytes.data() + begin, qsizetype(Offset(row + 1) - begin)};
    }
    bool IsNull(qsizetype row) const { return nulls && (nulls[row >> 3] >> (row & 7)) & 1; }
};

/// A finished table of rows: field definitions and, per column, row offsets, UTF-8 bytes and a
/// null bitmap. Immutable and cheap to copy; every cell is a view into one shared body.
///
/// The body is the "row block" of docs/wire-protocol.md: what a query answer carries, what the
/// cache file holds and what the server writes are the same bytes.
class RowSet
{
public:
    RowSet() = default;

    /// Checks every count, offset, length, null bit and UTF-8 sequence of `body` once and keeps
    /// the bytes as they are. Allocates nothing that the bytes present do not justify.
    /// Throws EDataSetError that says what is wrong and at which byte.
    static RowSet Load(const QByteArray &body);

    int RowCount() const;
    int FieldCount() const;
    const FieldDefs &Fields() const;
    int FieldIndex(QStringView name) const; ///< first field of that name, -1 if there is none

    bool IsNull(int row, int field) const;
    QByteArrayView Bytes(int row, int field) const; ///< UTF-8; empty for null
    QString Text(int row, int field) const;         ///< empty for null

    /// Rows that the statement selects over all pages, of which these are one; never fewer than
    /// RowCount(), and equal to it for a table that is nobody's page.
    qint64 Total() const;

    const RowColumn &Column(int field) const;
    const RowColumn *Columns() const; ///< FieldCount() of them, as long as a copy of this lives
    const QByteArray &Body() const;   ///< the row block this was loaded from
    QByteArray BodyWithTotal(qint64 total) const; ///< the same rows with another total

private:
    struct Data;
    std::shared_ptr<const Data> data_;
};

/// Writes a row block row by row: what the server does with a query's result, and what saving a
/// changed dataset does. Values are UTF-8 and are taken as they are. Throws EDataSetError when a
/// cell is missing or too many, or when one column outgrows 4 GiB.
class RowSetBuilder
{
public:
    explicit RowSetBuilder(FieldDefs fields);

    void AddCell(QByteArrayView utf8); ///< next cell of the current row, left to right
    void AddNull();
    void EndRow(); ///< closes the row; every field must have its cell

    int RowCount() const;
    qint64 ByteCount() const;        ///< size of the block so far, for byte limits
    QByteArray Finish();             ///< the row block; the builder is empty afterwards
    QByteArray Finish(qint64 total); ///< with the number of rows over all pages, at least RowCount

private:
    struct Column
    {
        std::vector<quint32> offsets;
        QByteArray bytes;
        QByteArray nulls; ///< empty until the first null
    };
    Column &NextColumn();

    FieldDefs fields_;
    std::vector<Column> columns_;
    int rows_ = 0;
    int cell_ = 0;
    qint64 byteCount_ = 0;
};

} // namespace Qel
