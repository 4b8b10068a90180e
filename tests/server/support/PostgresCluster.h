#pragma once

#include "store/Connection.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

#include <sys/types.h>

namespace Qel {

/// A throw-away PostgreSQL cluster for one program, where what it does would disturb the others on
/// the one of all tests. Keeps what it committed, for the life of the object. Takes seconds to
/// make.
class PostgresCluster
{
public:
    /// `logFolder`: an empty folder for the write-ahead log, in small files; empty: with the rest.
    explicit PostgresCluster(const QString &logFolder = {});
    ~PostgresCluster();
    Q_DISABLE_COPY_MOVE(PostgresCluster)

    /// The user "qel" owns databases and is no superuser, "postgres" is one.
    QString Url(const QString &database, const QString &user = QStringLiteral("qel")) const;
    std::unique_ptr<Store::Connection>
    Superuser(const QString &database = QStringLiteral("postgres")) const;

    void Restart(const QString &mode); ///< "fast" or "immediate"
    void Freeze(); ///< stops every process where it stands: connections stay and nobody answers
    void Thaw();

private:
    pid_t FirstProcess() const;
    void RunScript(const QStringList &arguments) const;

    QTemporaryDir folder_;
    QString file_; ///< holds the cluster's address
    bool isFrozen_ = false;
};

} // namespace Qel
