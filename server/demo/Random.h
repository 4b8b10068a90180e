#pragma once

#include <QStringView>
#include <QtGlobal>

#include <utility>

namespace Qel::Demo {

/// Pseudo-random numbers that are the same on every platform (SplitMix64; the standard library's
/// distributions are not). Each subject draws from a stream of its own, named after it, so that
/// more rows of one do not change the others. Two draws do not stand in one expression: compilers
/// differ in which they take first.
class Random
{
public:
    explicit Random(QStringView stream)
    {
        for (const QChar character : stream) // FNV-1a
            state_ = (state_ ^ character.unicode()) * 0x100000001B3ULL;
    }

    quint64 Next()
    {
        quint64 mixed = (state_ += 0x9E3779B97F4A7C15ULL);
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
        return mixed ^ (mixed >> 31);
    }

    /// 0 <= result < bound; bound > 0.
    int Below(qsizetype bound) { return static_cast<int>(Next() % static_cast<quint64>(bound)); }
    int Between(int low, int high) { return low + Below(high - low + 1); } ///< both included
    bool Chance(int percent) { return Below(100) < percent; }

    /// `list` must hold something.
    template <typename List>
    const auto &Pick(const List &list)
    {
        return list[static_cast<decltype(list.size())>(Below(static_cast<qsizetype>(list.size())))];
    }

    template <typename List>
    void Shuffle(List &list)
    {
        for (auto left = list.size(); left > 1; --left)
            std::swap(list[left - 1],
                      list[static_cast<decltype(left)>(Below(static_cast<qsizetype>(left)))]);
    }

private:
    quint64 state_ = 20240301; ///< the seed of the whole sample database
};

} // namespace Qel::Demo
