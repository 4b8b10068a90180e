#pragma once

#include <QString>

/// The codes by which groups and affiliated organisations stand in their trees: 4 digits at the
/// top, 2 more a level, at most 12.
namespace Qel::Managers {

inline constexpr qsizetype MaxTreeCode = 12;

/// Whether this is a code at the top.
bool IsTopCode(const QString &code);

/// Whether this is a code right below `parentCode`, which is one itself.
bool IsCodeBelow(const QString &code, const QString &parentCode);

/// "1" to "5", the level that a code of this length has; "0": codes have no such length.
QString LevelOfCode(const QString &code);

} // namespace Qel::Managers
