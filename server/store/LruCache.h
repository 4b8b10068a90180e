#pragma once

#include <cstddef>
#include <list>
#include <unordered_map>
#include <utility>

namespace Qel::Store {

/// Keeps the values used last, and no more than `capacity` of them.
template <typename Key, typename Mapped>
class LruCache
{
public:
    explicit LruCache(std::size_t capacity)
        : capacity_(capacity)
    {
    }

    /// The value of this key, made by `make()` if it is not kept. Valid until the next call.
    template <typename Make>
    Mapped &Get(const Key &key, Make make)
    {
        if (const auto found = positions_.find(key); found != positions_.end()) {
            entries_.splice(entries_.begin(), entries_, found->second);
            return found->second->second;
        }
        entries_.emplace_front(key, make()); // make() may throw: nothing has changed then
        positions_[key] = entries_.begin();
        if (entries_.size() > capacity_) {
            positions_.erase(entries_.back().first);
            entries_.pop_back();
        }
        return entries_.front().second;
    }

    void Clear()
    {
        positions_.clear();
        entries_.clear();
    }

private:
    using Entries = std::list<std::pair<Key, Mapped>>;

    std::size_t capacity_;
    Entries entries_; ///< the last used first
    std::unordered_map<Key, typename Entries::iterator> positions_;
};

} // namespace Qel::Store
