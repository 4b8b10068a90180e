#pragma once

#include "dataset/ByteHash.h"
#include "dataset/RowTable.h"

#include <QByteArrayList>
#include <QList>

#include <functional>
#include <vector>

namespace Qel {

/// Finds rows by the texts of one or several fields. Built over all rows that are not deleted;
/// NULL counts as the empty text. Rows that changed since are kept aside and looked at one by
/// one, until they are so many that building anew is cheaper.
class KeyIndex
{
public:
    explicit KeyIndex(QList<int> fields)
        : fields_(std::move(fields))
    {
    }

    const QList<int> &Fields() const { return fields_; }

    /// The first row, in table order, with these values for which `visible` is true; -1 if there
    /// is none.
    qint64 Find(const RowTable &table, const QByteArrayList &values,
                const std::function<bool(quint32)> &visible);

    void NoteAdded(quint32 row);
    void NoteChanged(quint32 row, int field); ///< that cell holds another value now
    void NoteFilled(int field);               ///< that field was set on many rows

private:
    void Build(const RowTable &table);
    void Insert(const RowTable &table, quint32 row, quint32 hash);
    quint32 HashOf(const RowTable &table, quint32 row) const;
    bool SameKey(const RowTable &table, quint32 a, quint32 b) const;
    bool HasKey(const RowTable &table, quint32 row, const QByteArrayList &values) const;
    void NoteDirty(quint32 row);

    // A slot is 0 if free, else the number + 1 of the first row with its key and, in the bits that
    // row numbers leave, the upper bits of the key's hash: small enough for the cache, and hardly
    // ever a look at a row with another key.
    quint32 TagOf(quint32 hash) const { return hash & ~RowMask(); }
    quint32 RowMask() const { return (1U << rowBits_) - 1; }

    ByteHash start_; ///< the process's seed, looked up once
    QList<int> fields_;
    bool built_ = false;
    std::vector<quint32> slots_; ///< open addressing, a power of two; see TagOf()
    int rowBits_ = 0;
    std::vector<quint32> nextSame_; ///< per row: next row with its key + 1; empty if all differ
    std::vector<quint32> dirty_;    ///< ascending
};

} // namespace Qel
