#pragma once

#include "sql/Tree.h"

#include <set>

namespace Qel::Sql {

/// One of the conditions that WHERE joins by AND.
struct Conjunct
{
    NodePtr condition;
    /// Whose columns it names as it was written: of a column that is always NULL the condition
    /// keeps nothing.
    std::set<const Relation *> named;
    const Relation *marked = nullptr; ///< the one whose columns carry (+); null: none does
    qsizetype position = 0;
};

/// Puts the conditions where they belong. A relation is outer if a condition marks it and names
/// another relation too; its marked conditions become its ON. A relation that is marked only
/// against constants is an ordinary one. Relations are joined inner ones first, then each outer
/// one behind all that its ON names. Throws ESqlError if outer joins go round in a circle.
void PlaceConditions(Query &query, std::vector<Conjunct> conjuncts);

} // namespace Qel::Sql
