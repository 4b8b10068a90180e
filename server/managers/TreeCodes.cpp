#include "managers/TreeCodes.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

constexpr qsizetype TopLength = 4;
constexpr qsizetype LevelLength = 2;

bool HasOnlyDigits(const QString &code)
{
    return std::all_of(code.begin(), code.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

} // namespace

bool IsTopCode(const QString &code)
{
    return code.size() == TopLength && HasOnlyDigits(code);
}

bool IsCodeBelow(const QString &code, const QString &parentCode)
{
    return code.startsWith(parentCode) && code.size() == parentCode.size() + LevelLength &&
           code.size() <= MaxTreeCode && HasOnlyDigits(code);
}

QString LevelOfCode(const QString &code)
{
    const qsizetype below = code.size() - TopLength;
    if (below < 0 || below % LevelLength != 0 || code.size() > MaxTreeCode)
        return u"0"_s;
    return QString::number(below / LevelLength + 1);
}

} // namespace Qel::Managers
