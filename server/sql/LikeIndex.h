#pragma once

#include "sql/Tree.h"

namespace Qel::Sql {

/// Adds to every condition "one of these columns is LIKE a pattern" that only rows with the
/// pattern's grams have to be looked at (Op::HasGrams); the condition itself stays. Only for
/// columns that Table::searched names. Returns what was added.
std::vector<NodePtr> NarrowByGrams(Query &query, Dialect dialect);

/// The same for a condition over several tables that all hang on one: only those rows of that one
/// have to be looked at that an index finds for a row with the grams (Op::LeadsToGrams). Adds at
/// most one, and returns it; null: there is none, or rows are found another way. Better only for
/// few candidates.
NodePtr LeadByGrams(Query &query, Dialect dialect);

/// Whether an index may give the rows in the order that the query states, so that a first page of
/// many rows costs less without looking for candidates.
bool IsOrderedByIndex(Query &query);

} // namespace Qel::Sql
