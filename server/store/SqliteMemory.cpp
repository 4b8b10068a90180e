#include "store/SqliteMemory.h"

#include <sqlite3.h>

#include <cstdlib>
#include <malloc.h>

namespace Qel::Store {

namespace {

/// Of the statement that this thread runs.
struct Count
{
    qint64 used = 0;
    qint64 limit = 0; ///< 0: nothing is counted
};
thread_local Count count;

qint64 SizeOf(void *block)
{
    return block ? static_cast<qint64>(malloc_usable_size(block)) : 0;
}

bool IsTooMuch(qint64 more)
{
    return count.limit > 0 && count.used + more > count.limit;
}

void Add(qint64 bytes)
{
    if (count.limit > 0)
        count.used += bytes;
}

void *Allocate(int size)
{
    if (IsTooMuch(size))
        return nullptr;
    void *block = std::malloc(static_cast<size_t>(size));
    Add(SizeOf(block));
    return block;
}

void Free(void *block)
{
    Add(-SizeOf(block));
    std::free(block);
}

void *Reallocate(void *block, int size)
{
    const qint64 before = SizeOf(block);
    if (IsTooMuch(size - before))
        return nullptr;
    void *moved = std::realloc(block, static_cast<size_t>(size));
    if (moved)
        Add(SizeOf(moved) - before);
    return moved;
}

int UsableSize(void *block)
{
    return static_cast<int>(SizeOf(block));
}

int RoundUp(int size)
{
    constexpr int grain = 8;
    return (size + grain - 1) / grain * grain;
}

int Start(void *)
{
    return SQLITE_OK;
}

void Stop(void *) {}

} // namespace

void SqliteMemory::Install()
{
    static const sqlite3_mem_methods methods{Allocate, Free,  Reallocate, UsableSize,
                                             RoundUp,  Start, Stop,       nullptr};
    [[maybe_unused]] static const int configured = sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
}

SqliteMemory::Meter::Meter(qint64 &used, qint64 limit)
    : used_(used)
{
    count = {used, limit};
}

SqliteMemory::Meter::~Meter()
{
    used_ = count.used;
    count = {};
}

} // namespace Qel::Store
