#include "dataset/KeyIndex.h"

#include <algorithm>
#include <array>
#include <bit>

namespace Qel {

namespace {

// Looking at this many changed rows costs a few microseconds, less than a build is worth.
constexpr size_t kMostDirty = 512;

constexpr size_t kHashesAhead = 64;

void Prefetch([[maybe_unused]] const void *address)
{
#ifdef __GNUC__
    __builtin_prefetch(address, 1);
#endif
}

} // namespace

inline quint32 KeyIndex::HashOf(const RowTable &table, quint32 row) const
{
    ByteHash hash = start_;
    for (const int field : fields_)
        hash.Add(table.Bytes(row, field));
    return hash.Value();
}

bool KeyIndex::SameKey(const RowTable &table, quint32 a, quint32 b) const
{
    return std::all_of(fields_.begin(), fields_.end(),
                       [&](int field) { return table.Bytes(a, field) == table.Bytes(b, field); });
}

bool KeyIndex::HasKey(const RowTable &table, quint32 row, const QByteArrayList &values) const
{
    for (qsizetype i = 0; i < fields_.size(); ++i) {
        if (table.Bytes(row, fields_[i]) != values[i])
            return false;
    }
    return true;
}

void KeyIndex::Build(const RowTable &table)
{
    const quint32 rows = table.RowCount();
    rowBits_ = int(std::bit_width(rows)); // rows is at most 2^31, so one tag bit is always left
    slots_.assign(std::bit_ceil(size_t(rows) + rows / 2 + 8), 0);
    nextSame_.clear();
    dirty_.clear();
    // From the last row to the first: rows of one key form a list in table order without any
    // search for its end. Hashes are made some rows ahead, so that the memory that the slots lie in
    // is on its way while other rows are worked on.
    std::array<quint32, kHashesAhead> hashes;
    for (quint32 end = rows; end > 0;) {
        const quint32 begin = end - std::min(end, quint32(kHashesAhead));
        for (quint32 row = begin; row < end; ++row) {
            hashes[row - begin] = HashOf(table, row);
            Prefetch(&slots_[hashes[row - begin] & (slots_.size() - 1)]);
        }
        for (quint32 row = end; row-- > begin;) {
            if (!table.IsDeleted(row))
                Insert(table, row, hashes[row - begin]);
        }
        end = begin;
    }
    built_ = true;
}

inline void KeyIndex::Insert(const RowTable &table, quint32 row, quint32 hash)
{
    const size_t mask = slots_.size() - 1;
    const quint32 rowMask = RowMask();
    size_t at = hash & mask;
    while (slots_[at] &&
           (TagOf(slots_[at]) != TagOf(hash) || !SameKey(table, (slots_[at] & rowMask) - 1, row)))
        at = (at + 1) & mask;
    if (slots_[at]) {
        if (nextSame_.empty())
            nextSame_.assign(table.RowCount(), 0);
        nextSame_[row] = slots_[at] & rowMask;
    }
    slots_[at] = TagOf(hash) | (row + 1);
}

qint64 KeyIndex::Find(const RowTable &table, const QByteArrayList &values,
                      const std::function<bool(quint32)> &visible)
{
    if (!built_ || dirty_.size() > kMostDirty)
        Build(table);
    ByteHash hasher = start_;
    for (const QByteArray &value : values)
        hasher.Add(value);
    const quint32 hash = hasher.Value();

    const auto matches = [&](quint32 row) { return HasKey(table, row, values) && visible(row); };
    qint64 found = -1;
    const size_t mask = slots_.size() - 1;
    // A list may hold rows that changed since and have another key now, so every row of it is
    // compared, and lists of equal tag are all walked.
    for (size_t at = hash & mask; slots_[at] && found < 0; at = (at + 1) & mask) {
        if (TagOf(slots_[at]) != TagOf(hash))
            continue;
        for (quint32 next = slots_[at] & RowMask(); next && found < 0;
             next = nextSame_.empty() ? 0 : nextSame_[next - 1]) {
            if (matches(next - 1))
                found = next - 1;
        }
    }
    for (const quint32 row : dirty_) {
        if (found >= 0 && row >= found)
            break;
        if (matches(row))
            return row;
    }
    return found;
}

void KeyIndex::NoteDirty(quint32 row)
{
    if (!built_ || dirty_.size() > kMostDirty)
        return;
    const auto at = std::lower_bound(dirty_.begin(), dirty_.end(), row);
    if (at == dirty_.end() || *at != row)
        dirty_.insert(at, row);
}

void KeyIndex::NoteAdded(quint32 row)
{
    NoteDirty(row);
}

void KeyIndex::NoteChanged(quint32 row, int field)
{
    if (fields_.contains(field))
        NoteDirty(row);
}

void KeyIndex::NoteFilled(int field)
{
    if (fields_.contains(field))
        built_ = false;
}

} // namespace Qel
