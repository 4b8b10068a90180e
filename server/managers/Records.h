#pragma once

#include "managers/Method.h"

#include <functional>

namespace Qel::Managers {

enum class RowState { Absent, Live, Deleted };

/// What the database holds under a key.
struct Record
{
    RowState state = RowState::Absent;
    QStringList values; ///< in the order of the table's values; empty for Absent
};

/// A table whose rows are found by keys, deleted by marking them, and logged under their first
/// two keys whenever they change. All values are texts, the empty one for NULL.
class RecordTable
{
public:
    /// `values` are the columns that are stored beside the keys; who stored a row, when, and that
    /// it is live come by themselves.
    RecordTable(const QString &name, const QStringList &keys, const QStringList &values);

    Record Find(Store::Connection &connection, const QStringList &keys) const;
    /// The same, asked for before it is needed.
    using RecordLater = std::function<Record()>;
    RecordLater Ask(Store::Connection &connection, const QStringList &keys) const;

    /// Adds the row, takes a deleted one into use again (both logged as an insertion), or changes
    /// the live one. A live row that holds the values already is left alone: neither log nor
    /// LAST_... change. `old` is what Find gave in this transaction.
    void Put(PostContext &post, const Record &old, const QStringList &keys,
             const QStringList &values) const;

    /// Marks the row as deleted; false: there is no such live row.
    bool Delete(PostContext &post, const QStringList &keys) const;

    /// The same where a row that is deleted already is what is asked for, too, and leaves no
    /// trace. False: there never was such a row.
    bool EnsureDeleted(PostContext &post, const QStringList &keys) const;

private:
    QString name_;
    QByteArray find_;
    QByteArray store_;
    QByteArray delete_;
};

} // namespace Qel::Managers
