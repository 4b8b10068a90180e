#pragma once

#include "sql/Tree.h"

namespace Qel::Sql {

/// Every row, in whatever order the database finds them.
std::string PrintUnordered(const Query &query, Dialect dialect);

/// Every row, in a total order; CompleteOrder has been called.
std::string PrintOrdered(const Query &query, Dialect dialect);

/// One number: how many rows there are.
std::string PrintCount(const Query &query, Dialect dialect);

/// One number: the candidates that an Op::HasGrams (on SQLite) or Op::LeadsToGrams gives, but no
/// more than `most`.
std::string PrintCandidates(const Node &condition, Dialect dialect, int most);

} // namespace Qel::Sql
