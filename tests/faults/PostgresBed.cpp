#include "faults/PostgresBed.h"

#include "faults/Report.h"
#include "store/Database.h"

#include <QDir>
#include <QUrl>

#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr auto Patience = 60s;

QString DatabaseOf(const QString &url)
{
    return QUrl(url).path().mid(1);
}

/// The database does not run as root, and neither may its files be root's.
void GiveToPostgres(const QString &folder)
{
    if (::getuid() != 0)
        return;
    const passwd *user = ::getpwnam("postgres");
    if (!user)
        user = ::getpwnam("nobody");
    if (!user || ::chown(folder.toUtf8().constData(), user->pw_uid, user->pw_gid) != 0)
        throw EQelError(u"无法把 %1 交给数据库。"_s.arg(folder));
}

/// Sessions of clients with the database, apart from the one that asks.
QByteArray Sessions(const QByteArray &what)
{
    return "SELECT " + what +
           " FROM pg_stat_activity WHERE datname = ?1 AND backend_type = 'client backend'"
           " AND pid <> pg_backend_pid()";
}

} // namespace

QString PostgresBed::NewDatabase(const QString &folder)
{
    const QString name = u"faults_%1"_s.arg(++databases_);
    const QString tables = folder + u"/tables"_s;
    QDir().mkdir(tables);
    GiveToPostgres(tables);
    const auto maintenance = cluster_.Superuser();
    maintenance->Execute(
        u"CREATE TABLESPACE %1 OWNER qel LOCATION '%2'"_s.arg(name, tables).toUtf8());
    maintenance->Execute(
        u"CREATE DATABASE %1 OWNER qel TABLESPACE %1 STRATEGY file_copy"_s.arg(name).toUtf8());
    return cluster_.Url(name);
}

void PostgresBed::WaitUntilQuiet(const QString &url)
{
    const auto maintenance = cluster_.Superuser();
    for (const Stopwatch watch; maintenance->Exists(Sessions("1"), {DatabaseOf(url)});) {
        if (watch.Elapsed() > Patience)
            throw EQelError(u"服务器已死，数据库里还有它的会话。"_s);
        std::this_thread::sleep_for(1ms); // nobody tells when a session of another has ended
    }
}

void PostgresBed::Restart(const QString &url, Stop how)
{
    switch (how) {
    case Stop::Fast:
        return cluster_.Restart(u"fast"_s);
    case Stop::Immediate:
        return cluster_.Restart(u"immediate"_s);
    case Stop::KillSession:
        return KillSession(url);
    }
}

void PostgresBed::KillSession(const QString &url) const
{
    constexpr char ownSession[] = "SELECT pg_backend_pid()";
    const auto watcher = cluster_.Superuser();
    const auto before = watcher->QueryText(ownSession);
    const auto session =
        watcher->QueryText(Sessions("pid") + " ORDER BY random()", {DatabaseOf(url)});
    if (!session || ::kill(session->toInt(), SIGKILL) != 0)
        throw EQelError(u"没有可以终止的数据库会话。"_s);
    for (const Stopwatch watch; watch.Elapsed() < Patience;) {
        try {
            // All sessions end when PostgreSQL has noticed, which may take it a moment.
            if (watcher->QueryText(ownSession) != before)
                return;
        } catch (const Store::EStoreError &) {
            // it is recovering
        }
        std::this_thread::sleep_for(5ms);
    }
    throw EQelError(u"数据库没有恢复。"_s);
}

} // namespace Qel::Faults
