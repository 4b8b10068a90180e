#pragma once

#include "sql/Tree.h"

/// Which rows a row is determined by. From the keys of the tables and the equalities of the
/// statement follows what has to be added to its ORDER BY so that no two different rows are equal
/// in it: usually the row number of one table, which costs the database no sort.
namespace Qel::Sql {

/// Sets of output columns that no two rows of the query share; empty: none is known.
std::vector<ColumnList> UniqueKeysOf(const Query &query);

/// Fills `tieBreak` of the outermost query and of those with a row limit, `rowOrder` where rows are
/// numbered, and `hidden` of the sub-selects whose rows are needed for it. A query without ORDER BY
/// over one ordered sub-select takes over that order.
void CompleteOrder(Query &query, Dialect dialect);

/// The relations that decide how many rows the query has: all but outer ones that add at most one
/// row and that no condition names. In join order. The query must be flat.
std::vector<const Relation *> RelationsThatCount(const Query &query);

} // namespace Qel::Sql
