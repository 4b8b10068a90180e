#include "store/SqliteBackup.h"

#include "store/Connection.h"

#include <QFileInfo>

#include <sqlite3.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

struct CloseSqlite
{
    void operator()(sqlite3 *handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseSqlite>;

[[noreturn]] void Fail(const QString &path, const char *reason)
{
    throw EStoreError(EStoreError::Kind::Failure,
                      u"复制数据库 %1 失败：%2"_s.arg(path, QString::fromUtf8(reason)));
}

Handle Open(const QString &path, int mode)
{
    sqlite3 *opened = nullptr;
    const int result =
        sqlite3_open_v2(path.toUtf8().constData(), &opened, mode | SQLITE_OPEN_NOMUTEX, nullptr);
    Handle handle(opened);
    if (result != SQLITE_OK)
        Fail(path, sqlite3_errstr(result));
    constexpr int busyMilliseconds = 10'000;
    sqlite3_busy_timeout(opened, busyMilliseconds);
    return handle;
}

} // namespace

void CopySqlite(const QString &from, const QString &to)
{
    if (!QFileInfo::exists(from))
        Fail(from, "no such file");
    const Handle source = Open(from, SQLITE_OPEN_READWRITE); // WAL wants to write even to read
    const Handle target = Open(to, SQLITE_OPEN_READWRITE);
    sqlite3_backup *backup = sqlite3_backup_init(target.get(), "main", source.get(), "main");
    if (!backup)
        Fail(to, sqlite3_errmsg(target.get()));
    // All pages in one read transaction: it sees one state, and in write-ahead mode nobody waits.
    const int copied = sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup);
    if (copied != SQLITE_DONE)
        Fail(to, sqlite3_errstr(copied));
}

} // namespace Qel::Store
