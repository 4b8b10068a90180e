#pragma once

#include "sql/Catalog.h"
#include "sql/Dice.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace Qel::Answers {

using Test::Dice;

/// A table and some of its rows, which statements take their values from.
struct Sample
{
    const Sql::Table *table = nullptr;
    QList<QStringList> rows; ///< one text a column, null for NULL
    bool large = false;      ///< statements name the keys that they want
    QList<int> foundBy;      ///< columns whose values name few rows
};

struct MadeStatement
{
    QString text;
    bool ordered = false; ///< every row has its place
    bool mayFail = false; ///< on a value of some row, which a database may get to or not
};

/// Statements of the whole language over the tables of a site, right in their types nearly always:
/// joins along the keys, with and without (+), every function and condition, sub-selects, groups,
/// DISTINCT, ROWNUM around what is ordered, NULLs first and last.
MadeStatement MakeStatement(Dice &dice, const QList<Sample> &samples);

} // namespace Qel::Answers
