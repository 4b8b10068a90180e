#pragma once

#include "dataset/FieldDef.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <memory>
#include <vector>

namespace Qel {

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

    const QByteArray &Body() const; ///< the row block this was loaded from

private:
    struct Data;
    std::shared_ptr<const Data> data_;
};

/// Writes a row block row by row: what the server does with a query's result, and what saving a
/// changed dataset does. Values are UTF-8 and are taken as they are.
class RowSetBuilder
{
public:
    explicit RowSetBuilder(FieldDefs fields);

    void AddCell(QByteArrayView utf8); ///< next cell of the current row, left to right
    void AddNull();
    void EndRow(); ///< closes the row; every field must have its cell

    int RowCount() const;
    qint64 ByteCount() const; ///< size of the block so far, for byte limits
    QByteArray Finish();      ///< the row block; the builder is empty afterwards

private:
    struct Column
    {
        std::vector<quint32> offsets;
        QByteArray bytes;
        QByteArray nulls;
    };
    FieldDefs fields_;
    std::vector<Column> columns_;
    int rows_ = 0;
    int cell_ = 0;
};

} // namespace Qel
