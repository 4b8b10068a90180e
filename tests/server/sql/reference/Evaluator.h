#pragma once

#include "reference/Statement.h"

namespace Qel::Reference {

/// The rows of a statement, in its order.
struct Answer
{
    Rows rows;
    /// Where each row stands in the order: equal numbers, equal places. All 0 without ORDER BY.
    QList<int> places;
};

/// Outer joins that wait for each other: the statement has no meaning.
class ECircle
{
};

/// Runs the statement over `tables` (T0, T1, ...) by nested loops: every row of the first relation
/// with every row of the next, an outer relation where nothing fits with a row of NULLs, then every
/// condition on every combination. Throws ECircle.
Answer Evaluate(const Select &select, const QList<Rows> &tables);

} // namespace Qel::Reference
