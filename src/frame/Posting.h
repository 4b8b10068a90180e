#pragma once

#include "wire/Wire.h"

#include <QString>

namespace Qel {

/// A row with the operator at its end, as most methods ask for him: LOG_USER_ID, LOG_USER_NAME.
Wire::NamedValues WithLogUser(Wire::NamedValues row);
/// The same with LAST_USER, his name, before these.
Wire::NamedValues WithLastAndLogUser(Wire::NamedValues row);
/// A row with the operator as other methods ask for him: LAST_USER (the name), LAST_USER_ID.
Wire::NamedValues WithLastUser(Wire::NamedValues row);

/// Posts one row of named values, in their order, to a manager's method through the shared
/// request list and returns the result code of its answer. What the server returned besides
/// stands in the shared result list.
QString PostRow(const QString &manager, const QString &method, const Wire::NamedValues &values);

/// The same for several rows in one post, which is stored as a whole or not at all unless the
/// method says otherwise. Returns the result code of the first row.
QString PostRows(const QString &manager, const QString &method,
                 const QList<Wire::NamedValues> &rows);

/// How many result rows the last post was answered with, and the code of one (empty if there is
/// none): for methods that answer row by row.
int PostedCount();
QString PostedCode(int index);

/// A key that the server made for row `index` of the last post; empty if it made none.
QString PostedValue(QStringView name, int index = 0);

} // namespace Qel
