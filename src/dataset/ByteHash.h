#pragma once

#include <QByteArrayView>
#include <QHashFunctions>

#include <cstring>

namespace Qel {

/// Equality of two short keys without a call where their lengths differ.
inline bool SameBytes(QByteArrayView a, QByteArrayView b)
{
    return a.size() == b.size() &&
           (a.isEmpty() || std::memcmp(a.data(), b.data(), size_t(a.size())) == 0);
}

/// Hashes short keys in a few nanoseconds. Seeded once per process, so answers cannot be made to
/// collide; never stored.
class ByteHash
{
public:
    ByteHash()
        : state_(QHashSeed::globalSeed() ^ kMultiplier)
    {
    }

    void Add(QByteArrayView bytes)
    {
        const char *at = bytes.data();
        qsizetype left = bytes.size();
        state_ ^= quint64(left) * kLengthMultiplier; // keeps "ab","c" apart from "a","bc"
        for (; left > 8; at += 8, left -= 8)
            Mix(Read(at, 8));
        Mix(left == 8 ? Read(at, 8) : Tail(at, left));
    }

    quint32 Value() const
    {
        const quint64 mixed = (state_ ^ (state_ >> 32)) * kMultiplier;
        return quint32(mixed >> 32);
    }

private:
    static constexpr quint64 kMultiplier = 0x9E3779B97F4A7C15ULL;
    static constexpr quint64 kLengthMultiplier = 0xD6E8FEB86659FD93ULL;

    static quint64 Read(const char *at, size_t width)
    {
        quint64 value = 0;
        std::memcpy(&value, at, width);
        return value;
    }

    // 0 to 7 bytes without a loop: overlapping halves.
    static quint64 Tail(const char *at, qsizetype left)
    {
        if (left >= 4) {
            quint32 low = 0;
            quint32 high = 0;
            std::memcpy(&low, at, 4);
            std::memcpy(&high, at + left - 4, 4);
            return low | (quint64(high) << 32);
        }
        if (left == 0)
            return 0;
        return uchar(at[0]) | (quint64(uchar(at[left / 2])) << 8) |
               (quint64(uchar(at[left - 1])) << 16);
    }

    void Mix(quint64 word)
    {
        state_ = (state_ ^ word) * kMultiplier;
        state_ ^= state_ >> 29;
    }

    quint64 state_;
};

} // namespace Qel
