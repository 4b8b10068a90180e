#pragma once

#include <QByteArrayView>

#include <array>

namespace Qel {

/// XXH64 with seed 0, as its published specification defines it. Finds damage, not malice.
quint64 Checksum(QByteArrayView bytes);

/// The same for bytes that come in pieces, so that each is looked at while it is in the cache.
class RunningChecksum
{
public:
    static constexpr qsizetype Unit = 32;

    RunningChecksum();
    void Add(QByteArrayView piece);            ///< as long as a multiple of Unit
    quint64 Finish(QByteArrayView last) const; ///< of everything added and `last`, of any length

private:
    std::array<quint64, 4> lanes_;
    quint64 length_ = 0;
};

} // namespace Qel
