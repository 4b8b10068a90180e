#pragma once

#include <QtGlobal>

#include <algorithm>
#include <iterator>
#include <random>

namespace Qel::Test {

/// The same throws for the same seed.
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

} // namespace Qel::Test
