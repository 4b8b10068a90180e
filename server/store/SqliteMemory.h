#pragma once

#include <QtGlobal>

namespace Qel::Store {

/// What one statement of a client may take of the process's memory. SQLite sorts and groups in
/// memory, and a join of two long lists would go on filling it until its time is up. SQLite's own
/// limit is one for the whole process and costs a lock around every allocation; this one counts
/// what the thread allocates while the statement works.
class SqliteMemory
{
public:
    /// Puts the counting allocator into SQLite. Has an effect only before the library is used for
    /// the first time; without it nothing is limited.
    static void Install();

    /// While it lives, this thread's statement is refused more than `limit` bytes (0: any number).
    /// `used` is what the statement holds since its last Reset; it is kept up to date.
    class Meter
    {
    public:
        Meter(qint64 &used, qint64 limit);
        ~Meter();
        Q_DISABLE_COPY_MOVE(Meter)

    private:
        qint64 &used_;
    };
};

} // namespace Qel::Store
