#pragma once

#include <QString>

/// The codes by which groups and affiliated organisations stand in their trees: 4 digits at the
/// top level, 2 more a level below, at most 12.
namespace Qel::TreeCode {

inline constexpr int TopLength = 4;
inline constexpr int StepLength = 2;
inline constexpr int MaxLength = 12;

/// The own part to propose for a new row, from the answer to "largest code + 1". That is a number
/// and has lost its leading zeros, so below a parent only its last two digits mean anything: "00"
/// after 99. Empty when the top level is full.
QString Propose(bool topLevel, const QString &next);

/// A whole code as editors show it.
struct Parts
{
    QString parent; ///< empty at the top level
    QString own;
};
Parts Split(const QString &code);

} // namespace Qel::TreeCode
