#include "support/PostgresCopies.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int Patience = 60'000; // milliseconds

const QString Programs = [] {
    const QDir versions(u"/usr/lib/postgresql"_s);
    const QStringList found = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    return found.isEmpty() ? QString() : versions.filePath(found.last()) + u"/bin/"_s;
}();

/// The program and its arguments, as a user that PostgreSQL serves.
QStringList AsOwner(const QStringList &command)
{
    if (geteuid() != 0)
        return command;
    return QStringList{u"runuser"_s, u"-u"_s, u"postgres"_s, u"--"_s} + command;
}

} // namespace

PostgresCopies::PostgresCopies()
    : directory_(QDir::tempPath() + u"/qel-copies-XXXXXX"_s)
{
    for (int copy = 0; copy < 3; ++copy)
        QDir().mkpath(Socket(copy));
    if (geteuid() == 0)
        QProcess::execute(u"chown"_s, {u"-R"_s, u"postgres"_s, directory_.path()});
    RunProgram(u"initdb"_s, {u"-D"_s, Directory(0), u"-U"_s, u"postgres"_s, u"-A"_s, u"trust"_s,
                             u"-E"_s, u"UTF8"_s, u"--locale=C.UTF-8"_s, u"--no-sync"_s});
    // synchronous_commit waits for the standby's write; the machine's own disk is not the subject.
    Configure(0, "listen_addresses = ''\nfsync = off\nautovacuum = off\nshared_buffers = 32MB\n"
                 "max_connections = 100\nwal_level = replica\nwal_log_hints = on\n"
                 "hot_standby_feedback = on\nsynchronous_commit = on\n"
                 "wal_receiver_status_interval = 1s\nwal_retrieve_retry_interval = 100ms\n");
    Configure(0, "unix_socket_directories = '" + Socket(0).toUtf8() + "'\n");
    Start(0);
    Text(0, u"CREATE ROLE qel LOGIN CREATEDB CREATEROLE"_s);
    Text(0, u"CREATE ROLE qel_reader NOLOGIN"_s);
    Text(0, u"GRANT qel_reader TO qel"_s);
    Text(0, u"CREATE DATABASE qel OWNER qel"_s);
    for (int copy = 1; copy < 3; ++copy) {
        RunProgram(u"pg_basebackup"_s,
                   {u"-h"_s, Socket(0), u"-U"_s, u"postgres"_s, u"-D"_s, Directory(copy),
                    u"--no-sync"_s, u"-X"_s, u"stream"_s, u"-c"_s, u"fast"_s});
        Configure(copy, "unix_socket_directories = '" + Socket(copy).toUtf8() + "'\n");
        QFile(Directory(copy) + u"/standby.signal"_s).open(QIODevice::WriteOnly);
        Configure(copy, "cluster_name = 'copy" + QByteArray::number(copy) + "'\n");
        Configure(copy, "primary_conninfo = 'host=" + Socket(0).toUtf8() +
                            " user=postgres application_name=copy" + QByteArray::number(copy) +
                            "'\n");
        Start(copy);
    }
    Text(0, u"ALTER SYSTEM SET synchronous_standby_names = 'ANY 1 (copy1, copy2)'"_s);
    Text(0, u"SELECT pg_reload_conf()"_s);
}

PostgresCopies::~PostgresCopies()
{
    for (int copy = 0; copy < 3; ++copy) {
        if (running_[copy])
            Stop(copy);
    }
}

QString PostgresCopies::Directory(int copy) const
{
    return directory_.filePath(QString::number(copy));
}

QString PostgresCopies::Socket(int copy) const
{
    return directory_.filePath(u's' + QString::number(copy));
}

QString PostgresCopies::Url() const
{
    return u"postgresql://qel@/qel?host=%1,%2,%3"_s.arg(Socket(0), Socket(1), Socket(2));
}

QString PostgresCopies::UrlOf(int copy) const
{
    return u"postgresql://qel@/qel?host=%1"_s.arg(Socket(copy));
}

void PostgresCopies::Stop(int copy)
{
    running_[copy] = false;
    RunProgram(u"pg_ctl"_s,
               {u"stop"_s, u"-D"_s, Directory(copy), u"-m"_s, u"immediate"_s, u"-t"_s, u"30"_s});
}

void PostgresCopies::Start(int copy)
{
    RunProgram(u"pg_ctl"_s, {u"start"_s, u"-w"_s, u"-t"_s, u"60"_s, u"-D"_s, Directory(copy),
                             u"-l"_s, Directory(copy) + u".log"_s});
    running_[copy] = true;
}

void PostgresCopies::Promote(int copy)
{
    RunProgram(u"pg_ctl"_s, {u"promote"_s, u"-w"_s, u"-t"_s, u"60"_s, u"-D"_s, Directory(copy)});
}

void PostgresCopies::Follow(int copy, int primary)
{
    Text(copy,
         u"ALTER SYSTEM SET primary_conninfo = 'host=%1 user=postgres application_name=copy%2'"_s
             .arg(Socket(primary))
             .arg(copy));
    Text(copy, u"SELECT pg_reload_conf()"_s);
}

void PostgresCopies::SetReplay(int copy, bool on)
{
    Text(copy, on ? u"SELECT pg_wal_replay_resume()"_s : u"SELECT pg_wal_replay_pause()"_s);
    // Pausing is a request: what is being replayed comes to its end first.
    while (!on && Text(copy, u"SELECT pg_get_wal_replay_pause_state()"_s) != "paused"_L1) {
    }
}

QString PostgresCopies::Text(int copy, const QString &sql) const
{
    QProcess psql;
    psql.start(u"psql"_s, {u"-qAtX"_s, u"-v"_s, u"ON_ERROR_STOP=1"_s, u"-h"_s, Socket(copy),
                           u"-U"_s, u"postgres"_s, u"-d"_s, u"postgres"_s, u"-c"_s, sql});
    psql.waitForFinished(Patience);
    if (psql.exitCode() != 0)
        qFatal("%s: %s", qPrintable(sql), psql.readAllStandardError().constData());
    return QString::fromUtf8(psql.readAllStandardOutput()).trimmed();
}

void PostgresCopies::RunProgram(const QString &program, const QStringList &arguments) const
{
    const QStringList command = AsOwner(QStringList{Programs + program} + arguments);
    QProcess process;
    process.setWorkingDirectory(u"/"_s);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice()); // pg_ctl's child would keep a pipe open
    process.setStandardErrorFile(directory_.path() + u".err"_s);
    process.start(command.first(), command.sliced(1));
    process.waitForFinished(Patience);
    QFile trouble(directory_.path() + u".err"_s);
    const QByteArray text = trouble.open(QIODevice::ReadOnly) ? trouble.readAll() : QByteArray();
    trouble.remove();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("%s: %s", qPrintable(program), text.constData());
}

void PostgresCopies::Configure(int copy, const QByteArray &lines) const
{
    QFile file(Directory(copy) + u"/postgresql.conf"_s);
    if (!file.open(QIODevice::Append) || file.write(lines) != lines.size())
        qFatal("%s: cannot be written", qPrintable(file.fileName()));
}

} // namespace Qel
