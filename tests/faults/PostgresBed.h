#pragma once

#include "faults/Bed.h"
#include "support/PostgresCluster.h"

namespace Qel::Faults {

/// A throw-away PostgreSQL cluster that keeps what it committed, for the life of the object.
class PostgresBed : public Bed
{
public:
    /// `logFolder`: where the write-ahead log stands, in small files; empty: with the rest.
    explicit PostgresBed(const QString &logFolder = {})
        : cluster_(logFolder)
    {
    }

    QString Name() const override { return QStringLiteral("postgresql"); }
    QString NewDatabase(const QString &folder) override;
    void WaitUntilQuiet(const QString &url) override;
    void Restart(const QString &url, Stop how) override;
    void Freeze() override { cluster_.Freeze(); }
    void Thaw() override { cluster_.Thaw(); }

private:
    void KillSession(const QString &url) const;

    PostgresCluster cluster_;
    int databases_ = 0;
};

} // namespace Qel::Faults
