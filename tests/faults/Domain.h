#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Qel::Faults {

/// The rows that belong to one client alone: what stands in them follows from what that client
/// posted and from nothing else. An operator, an organisation with staff, a group with products.
struct Domain
{
    explicit Domain(int number);

    QString orgId;
    QString groupId;
    QString userId;
    QString userName;
    QByteArray credential; ///< "code:token"
    QStringList staff;     ///< users who may work with the organisation's drug stores
    QStringList movable;   ///< products that move in and out of the group's catalogue
    QStringList priced;    ///< products that stay in it
};

/// Adds what the domain begins with. Part of the caller's transaction.
void AddDomain(Store::Connection &connection, const Domain &domain);

/// What the database holds of a domain: a record's name and its values. Deleted records are not
/// there.
using Records = QMap<QString, QString>;

Records ReadRecords(Store::Connection &connection, const Domain &domain);

/// The ids of the domain's live drug stores by their names.
QHash<QString, QString> ReadStores(Store::Connection &connection, const Domain &domain);

/// What the operator had logged after the entry `after`, in the order of the log; `after` becomes
/// the last of them. An entry is "TABLE key1 key2 type", with a name in place of a key that the
/// server made.
QStringList ReadEntries(Store::Connection &connection, const Domain &domain, qint64 &after);

/// Whether the server keeps an answer under this idempotency key.
bool KeepsKey(Store::Connection &connection, const QByteArray &key);

} // namespace Qel::Faults
