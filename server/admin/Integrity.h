#pragma once

#include "store/Connection.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

/// What has to hold between the rows of a site beyond what its tables enforce. One list for the
/// check of a database and for the check of an import.
namespace Qel::Admin {

/// A row that breaks a rule.
struct BadRow
{
    QString code; ///< "data.reference", "data.key", "data.live"
    QString table;
    QString column;  ///< the one that is wrong
    QStringList key; ///< values of the primary key, in its order
    QString text;    ///< what is wrong
    QString target;  ///< the table that a reference points into
};

/// Calls `report` for each bad row, table by table, until it says false.
///   data.key        a key that is not made of digits: some statements write it without quotes
///   data.reference  a row that refers to one that is not there
///   data.live       the second live row where the rules allow one
void FindBadRows(Store::Connection &connection, const std::function<bool(const BadRow &)> &report);

/// The columns of the table's primary key.
QStringList KeyColumns(const QString &table);

} // namespace Qel::Admin
