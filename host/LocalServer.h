#pragma once

#include <QProcess>
#include <QString>
#include <QUrl>

namespace Qel::Host {

/// A qel-server of the host's own: child process, sample database, a free loopback port, a fresh
/// random credential. Stopped when the object goes, and also when the host dies: the server ends
/// when its standard input closes.
class LocalServer
{
public:
    /// The server's program: the environment variable QEL_SERVER, or beside the host, in the
    /// build tree, or in the path. Empty if there is none.
    static QString Find();

    /// `database` is the file of the sample database; empty: one that is thrown away.
    LocalServer(const QString &user, const QString &database);
    ~LocalServer();
    Q_DISABLE_COPY_MOVE(LocalServer)

    /// Starts it and waits until it listens (the first start fills the database). Gives its
    /// address with the credential. Raises EQelError in words if it ends or takes too long.
    QUrl Start(const QString &program);

    qint64 ProcessId() const { return process_.processId(); }

private:
    QProcess process_;
    QString user_;
    QString token_;
};

} // namespace Qel::Host
