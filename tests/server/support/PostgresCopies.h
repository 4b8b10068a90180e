#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace Qel {

/// A throw-away PostgreSQL database in three copies, 0 the primary at first, each on a unix socket
/// of its own and stopped in the end. A commit is acknowledged when it has also been written by one
/// standby. Works for root too, whom PostgreSQL does not serve.
class PostgresCopies
{
public:
    PostgresCopies();
    ~PostgresCopies();
    Q_DISABLE_COPY_MOVE(PostgresCopies)

    /// With all three as its hosts. The user owns the database and is no superuser.
    QString Url() const;
    QString UrlOf(int copy) const; ///< of one

    void Stop(int copy); ///< as a power cut would
    void Start(int copy);
    bool IsRunning(int copy) const { return running_[copy]; }
    void Promote(int copy);
    /// From now on `copy` follows `primary`, which both of the others may be.
    void Follow(int copy, int primary);
    void SetReplay(int copy, bool on); ///< off: what arrives is kept and not shown

    /// As a superuser; the first column of the first row.
    QString Text(int copy, const QString &sql) const;

private:
    QString Directory(int copy) const; ///< of its data
    QString Socket(int copy) const;    ///< directory
    void RunProgram(const QString &program, const QStringList &arguments) const;
    void Configure(int copy, const QByteArray &lines) const;

    QTemporaryDir directory_;
    bool running_[3] = {};
};

} // namespace Qel
