#pragma once

#include "sql/Values.h"

#include <QtGlobal>

namespace Qel::Sql {

/// Adds numbers as the decimals that they stand for, so that no order of the rows and no number of
/// them shows: a real number is the decimal of 15 digits that it prints as. Beyond some 38 digits
/// between the first and the last it adds as doubles do. Trivial, all zero at first: SQLite keeps
/// it between rows.
class ExactSum
{
public:
    void Add(qint64 number);
    void Add(double number);

    qint64 Count() const { return count_; }
    NumberValue Sum() const;     ///< whole if it is and has room
    NumberValue Average() const; ///< of one number at least

private:
    /// SQLite's memory is aligned for 64 bits.
    using Wide __attribute__((aligned(8))) = __int128;

    void AddDecimal(qint64 digits, int places);
    bool SetPlaces(int places);
    NumberValue Quotient(qint64 divisor) const;

    Wide total_;  ///< in units of 10 to the power of -places_
    int places_;  ///< behind the point
    bool rounds_; ///< the total has outgrown its room: only the approximation counts
    qint64 count_;
    double approximation_;
};

} // namespace Qel::Sql
