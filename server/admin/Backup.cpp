#include "admin/Backup.h"

#include "dataset/QelError.h"
#include "store/PostgresEnvironment.h"
#include "store/SqliteBackup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QScopeGuard>
#include <QStandardPaths>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

[[noreturn]] void Fail(const QString &path)
{
    throw EQelError(
        u"写备份 %1 失败：%2"_s.arg(path, QString::fromLocal8Bit(std::strerror(errno))));
}

/// What was written to the file or folder is on the disk.
void Sync(const QString &path)
{
    const int handle = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const auto close = qScopeGuard([&] { ::close(handle); });
    if (handle < 0 || fsync(handle) != 0)
        Fail(path);
}

/// An empty file for its owner alone, so that nobody else reads along.
void MakePrivate(const QString &path)
{
    const int handle =
        open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (handle < 0)
        Fail(path);
    ::close(handle);
}

void Dump(const QString &url, const QString &path)
{
    const QString program = QStandardPaths::findExecutable(u"pg_dump"_s);
    if (program.isEmpty())
        throw EQelError(u"没有找到 pg_dump。请安装 postgresql-client，或用 pg_basebackup 备份。"_s);
    QProcess dump;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"QEL_DATABASE"_s);
    const QMap<QString, QString> address = Store::PostgresEnvironment(url);
    for (const auto &[name, value] : address.asKeyValueRange())
        environment.insert(name, value);
    dump.setProcessEnvironment(environment);
    dump.setStandardInputFile(QProcess::nullDevice());
    dump.start(program, {u"--format=custom"_s, u"--no-password"_s, u"--file"_s, path});
    if (!dump.waitForFinished(-1) || dump.exitStatus() != QProcess::NormalExit ||
        dump.exitCode() != 0)
        throw EQelError(u"pg_dump 失败：%1"_s.arg(
            QString::fromLocal8Bit(dump.readAllStandardError()).trimmed()));
}

} // namespace

void BackUp(const QString &url, const QString &path)
{
    if (QFileInfo::exists(path))
        throw EQelError(u"文件 %1 已存在，不覆盖。"_s.arg(path));
    const QString folder = QFileInfo(path).absolutePath();
    const QString part = path + u".part"_s;
    QFile::remove(part); // of a backup that was cut short
    MakePrivate(part);
    auto removePart = qScopeGuard([&] { QFile::remove(part); });
    if (url.startsWith("sqlite:"_L1))
        Store::CopySqlite(url.mid(7), part);
    else
        Dump(url, part);
    Sync(part);
    // Fails rather than overwrites what appeared meanwhile.
    if (link(QFile::encodeName(part).constData(), QFile::encodeName(path).constData()) != 0)
        Fail(path);
    Sync(folder);
}

} // namespace Qel::Admin
