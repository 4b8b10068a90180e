#pragma once

#include "Dice.h"
#include "reference/Statement.h"

namespace Qel::Reference {

using Test::Dice;

/// T0 to T4: ID (a text of digits, the key), X and Y (any text), N (a number), with many ties and
/// NULLs. A table may be empty.
inline constexpr int TableCount = 5;
const QStringList &ColumnNames();
const QList<Type> &ColumnTypes();
QList<Rows> MakeTables(Dice &dice);

/// Join graphs of two to six relations, tables and sub-selects, in chains, stars, trees and
/// circles, with and without (+); and what may stand around them: filters, sub-selects of every
/// kind, DISTINCT, groups and orders. A few have outer joins in a circle, all others mean
/// something.
SelectPtr MakeStatement(Dice &dice, const QList<Rows> &tables);

} // namespace Qel::Reference
