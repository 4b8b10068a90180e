#pragma once

#include <QString>

#include <optional>

namespace Qel {

// Amounts of money in yuan, as cells show them and as the currency editor takes them.

inline constexpr int CurrencyLength = 8; ///< characters that can be typed
inline constexpr double HighestCurrency = 99999999;

/// With two decimals, halves rounded up (away from zero), no group separators. Empty stays empty,
/// and what is no number is shown as it is.
QString CurrencyText(const QString &stored);

/// The same amount, or both empty; "12.5" and "12.50" are the same.
bool IsSameCurrency(const QString &one, const QString &other);

/// What an operator typed or pasted as it may stand in the editor: digits, and a point with at most
/// two decimals. Outer blanks go, full-width digits and points (Chinese full stop, too) become
/// plain ones, commas go if they stand every three digits, a lone point becomes "0.". Nothing for
/// everything else (signs, letters, a third decimal, an amount over the highest, more than
/// `longest` characters): cutting or rounding would make another amount of it.
std::optional<QString> CurrencyInput(const QString &typed, int longest = CurrencyLength);

} // namespace Qel
