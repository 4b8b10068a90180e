#pragma once

#include "reference/Statement.h"

#include <algorithm>
#include <random>

namespace Qel::Reference {

class Dice
{
public:
    explicit Dice(quint64 seed)
        : engine_(seed)
    {
    }
    int Below(int bound) { return int(engine_() % quint64(bound)); }
    bool OneIn(int chances) { return Below(chances) == 0; }
    template <typename List>
    const auto &Any(const List &list)
    {
        return list[Below(int(std::size(list)))];
    }
    template <typename List>
    void Shuffle(List &list)
    {
        std::shuffle(list.begin(), list.end(), engine_);
    }

private:
    std::mt19937_64 engine_;
};

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
