#pragma once

#include "faults/Bed.h"
#include "store/Connection.h"

namespace Qel::Faults {

/// A throw-away PostgreSQL cluster that keeps what it committed, for the life of the object.
class PostgresBed : public Bed
{
public:
    PostgresBed();
    ~PostgresBed() override;

    QString Name() const override { return QStringLiteral("postgresql"); }
    QString NewDatabase(const QString &folder) override;
    void WaitUntilQuiet(const QString &url) override;
    void Restart(const QString &url, Stop how) override;

private:
    QString UrlOf(const QString &user, const QString &database) const;
    /// As the superuser.
    std::unique_ptr<Store::Connection> Maintenance() const;
    void RunScript(const QStringList &arguments) const;
    void KillSession(const QString &url) const;

    QString file_; ///< holds the cluster's address
    int databases_ = 0;
};

} // namespace Qel::Faults
