#include "support/PostgresCluster.h"

#include "store/Database.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <csignal>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

QByteArray Bytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// 0: there is no such process.
pid_t ParentOf(const QString &process)
{
    const QByteArray line = Bytes(u"/proc/%1/stat"_s.arg(process));
    return line.mid(line.lastIndexOf(')') + 4).split(' ').value(0).toInt();
}

void SignalChildren(pid_t parent, int signal)
{
    for (const QString &name : QDir(u"/proc"_s).entryList(QDir::Dirs))
        if (name.at(0).isDigit() && ParentOf(name) == parent)
            ::kill(name.toInt(), signal);
}

} // namespace

PostgresCluster::PostgresCluster(const QString &logFolder)
    : file_(folder_.filePath(u"postgres.url"_s))
{
    RunScript(QStringList{u"start"_s, file_, u"durable"_s} +
              (logFolder.isEmpty() ? QStringList() : QStringList{logFolder}));
}

PostgresCluster::~PostgresCluster()
{
    if (isFrozen_)
        Thaw();
    QProcess::execute(QStringLiteral(QEL_POSTGRES_CLUSTER), {u"stop"_s, file_});
}

QString PostgresCluster::Url(const QString &database, const QString &user) const
{
    return QString::fromUtf8(Bytes(file_))
        .trimmed()
        .replace(u"//qel@"_s, u"//%1@"_s.arg(user))
        .replace(u"/postgres?"_s, u"/%1?"_s.arg(database));
}

std::unique_ptr<Store::Connection> PostgresCluster::Superuser(const QString &database) const
{
    return Store::Database::Open(Url(database, u"postgres"_s))->OpenWriter();
}

void PostgresCluster::Restart(const QString &mode)
{
    RunScript({u"restart"_s, file_, mode});
}

/// The first process first, which would make new ones.
void PostgresCluster::Freeze()
{
    const pid_t first = FirstProcess();
    if (first <= 0 || ::kill(first, SIGSTOP) != 0)
        throw EQelError(u"PostgreSQL 没有运行。"_s);
    SignalChildren(first, SIGSTOP);
    isFrozen_ = true;
}

void PostgresCluster::Thaw()
{
    const pid_t first = FirstProcess();
    SignalChildren(first, SIGCONT);
    ::kill(first, SIGCONT);
    isFrozen_ = false;
}

pid_t PostgresCluster::FirstProcess() const
{
    const QString directory = QString::fromUtf8(Bytes(file_)).trimmed().section(u"host="_s, 1);
    return Bytes(directory + u"/data/postmaster.pid"_s).split('\n').value(0).toInt();
}

void PostgresCluster::RunScript(const QStringList &arguments) const
{
    if (QProcess::execute(QStringLiteral(QEL_POSTGRES_CLUSTER), arguments) != 0)
        throw EQelError(u"PostgreSQL：%1 没有成功。"_s.arg(arguments.first()));
}

} // namespace Qel
