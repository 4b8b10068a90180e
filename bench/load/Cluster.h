#pragma once

#include <QString>
#include <QTemporaryDir>

namespace Qel::Bench {

/// A throw-away PostgreSQL cluster on the disk, whose commits wait for it (fsync and
/// synchronous_commit are on). Stopped and removed with the object.
class Cluster
{
public:
    Cluster();
    ~Cluster();
    Q_DISABLE_COPY_MOVE(Cluster)

    /// Of a new database, empty or a copy of another, to which nobody may be connected.
    QString NewDatabase(const QString &name, const QString &copyOf = {});

private:
    QString UrlOf(const QString &database) const;

    QTemporaryDir folder_;
    QString file_; ///< where the address stands
};

} // namespace Qel::Bench
