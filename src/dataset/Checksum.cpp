#include "dataset/Checksum.h"

#include <QtEndian>

#include <bit>

namespace Qel {

namespace {

constexpr quint64 kPrime1 = 0x9E3779B185EBCA87ULL;
constexpr quint64 kPrime2 = 0xC2B2AE3D27D4EB4FULL;
constexpr quint64 kPrime3 = 0x165667B19E3779F9ULL;
constexpr quint64 kPrime4 = 0x85EBCA77C2B2AE63ULL;
constexpr quint64 kPrime5 = 0x27D4EB2F165667C5ULL;

quint64 Round(quint64 lane, quint64 input)
{
    return std::rotl(lane + input * kPrime2, 31) * kPrime1;
}

quint64 Merge(quint64 hash, quint64 lane)
{
    return (hash ^ Round(0, lane)) * kPrime1 + kPrime4;
}

} // namespace

RunningChecksum::RunningChecksum()
    : lanes_{kPrime1 + kPrime2, kPrime2, 0, 0 - kPrime1}
{
}

void RunningChecksum::Add(QByteArrayView piece)
{
    Q_ASSERT(piece.size() % Unit == 0);
    auto [a, b, c, d] = lanes_;
    const char *const end = piece.data() + piece.size();
    for (const char *at = piece.data(); at != end; at += Unit) {
        a = Round(a, qFromLittleEndian<quint64>(at));
        b = Round(b, qFromLittleEndian<quint64>(at + 8));
        c = Round(c, qFromLittleEndian<quint64>(at + 16));
        d = Round(d, qFromLittleEndian<quint64>(at + 24));
    }
    lanes_ = {a, b, c, d};
    length_ += quint64(piece.size());
}

quint64 RunningChecksum::Finish(QByteArrayView last) const
{
    RunningChecksum all = *this;
    qsizetype left = last.size() % Unit;
    all.Add(last.chopped(left));
    quint64 hash = kPrime5;
    if (all.length_ > 0) {
        const auto [a, b, c, d] = all.lanes_;
        hash = std::rotl(a, 1) + std::rotl(b, 7) + std::rotl(c, 12) + std::rotl(d, 18);
        for (const quint64 lane : all.lanes_)
            hash = Merge(hash, lane);
    }
    hash += all.length_ + quint64(left);
    const char *at = last.data() + last.size() - left;
    for (; left >= 8; at += 8, left -= 8) {
        hash ^= Round(0, qFromLittleEndian<quint64>(at));
        hash = std::rotl(hash, 27) * kPrime1 + kPrime4;
    }
    if (left >= 4) {
        hash ^= qFromLittleEndian<quint32>(at) * kPrime1;
        hash = std::rotl(hash, 23) * kPrime2 + kPrime3;
        at += 4;
        left -= 4;
    }
    for (; left > 0; ++at, --left) {
        hash ^= uchar(*at) * kPrime5;
        hash = std::rotl(hash, 11) * kPrime1;
    }
    hash = (hash ^ (hash >> 33)) * kPrime2;
    hash = (hash ^ (hash >> 29)) * kPrime3;
    return hash ^ (hash >> 32);
}

quint64 Checksum(QByteArrayView bytes)
{
    return RunningChecksum().Finish(bytes);
}

} // namespace Qel
