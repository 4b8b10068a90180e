#pragma once

#include "Peer.h"

#include <QByteArray>
#include <QString>

namespace Qel::Bench {

/// A page of a list, with its total.
struct LoadCase
{
    const char *name;
    QString sql;     ///< as a screen sends it
    double goal = 0; ///< the least ratio of the rates
};

inline constexpr int PageSize = 50;
inline constexpr double WriteGoal = 0.70;

LoadCase ScanningPage();
LoadCase IndexedPage(int region = 123); ///< there are 1,000

/// The request of such a page, its first.
QByteArray PageRequest(const QString &sql);

/// What a client's `number`th change stores: each client has a thousand organisations of its own,
/// whose rule it turns on and off.
StoredRule Change(int client, int number);
/// The request that has the server store it.
QByteArray PostRequest(const StoredRule &rule);
/// Ends the program unless the server stored it.
void ExpectStored(const QByteArray &body);

} // namespace Qel::Bench
