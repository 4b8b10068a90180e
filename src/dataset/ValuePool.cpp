#include "dataset/ValuePool.h"

#include "dataset/ByteHash.h"
#include "dataset/QelError.h"

#include <limits>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

size_t SlotOf(QByteArrayView value, size_t slotCount)
{
    ByteHash hash;
    hash.Add(value);
    return hash.Value() & (slotCount - 1);
}

} // namespace

quint32 ValuePool::Intern(QByteArrayView value)
{
    const size_t count = ends_.size() - 1;
    if (2 * (count + 1) > slots_.size())
        Grow();
    size_t slot = SlotOf(value, slots_.size());
    for (; slots_[slot]; slot = (slot + 1) & (slots_.size() - 1)) {
        if (At(slots_[slot] - 1) == value)
            return slots_[slot] - 1;
    }
    if (quint64(bytes_.size()) + quint64(value.size()) > std::numeric_limits<quint32>::max())
        throw EDataSetError(u"修改过的内容超过 4 GiB"_s);
    bytes_.append(value);
    ends_.push_back(quint32(bytes_.size()));
    slots_[slot] = quint32(count + 1);
    return quint32(count);
}

void ValuePool::Grow()
{
    std::vector<quint32> wider(slots_.empty() ? 16 : 2 * slots_.size(), 0);
    for (quint32 index = 0; index + 1 < ends_.size(); ++index) {
        size_t slot = SlotOf(At(index), wider.size());
        while (wider[slot])
            slot = (slot + 1) & (wider.size() - 1);
        wider[slot] = index + 1;
    }
    slots_ = std::move(wider);
}

void ValuePool::Clear()
{
    *this = ValuePool();
}

} // namespace Qel
