#pragma once

#include "faults/Domain.h"
#include "wire/Wire.h"

#include <random>

namespace Qel::Faults {

using Random = std::mt19937_64;

inline int Between(Random &random, int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(random);
}

/// A post and all that it changes, if it takes effect.
struct Change
{
    Wire::PostRequest request;
    Records after;            ///< of the whole domain
    QStringList entries = {}; ///< in the change log, in any order
};

/// Some post of the domain that the rules allow and that changes something: rules and prices of
/// several rows, products answered row by row, drug stores made, deleted, or given another list of
/// users. `stamp` differs from post to post and is in every row that has room for it.
Change NextChange(const Domain &domain, const Records &now, const QHash<QString, QString> &stores,
                  int stamp, Random &random);

/// A post that gives a drug store this list of users (id and flag) in place of the one it has.
Wire::PostRequest ListOfUsers(const Domain &domain, const QString &storeId,
                              const QList<std::pair<QString, QString>> &users);

/// A post that makes a drug store.
Wire::PostRequest NewStore(const Domain &domain, const QString &name);

/// A post that sets every price of these products of the domain to `price`.
Wire::PostRequest Prices(const Domain &domain, const QStringList &products, const QString &price);

} // namespace Qel::Faults
