#pragma once

#include "Cluster.h"

#include <QTemporaryDir>

#include <memory>

namespace Qel::Bench {

inline constexpr int OrganisationCount = 100'000;

/// Two databases alike, on the disk: the server's and one for the peer's changes.
class Site
{
public:
    enum class Kind { Sqlite, Postgres };

    explicit Site(Kind kind);
    Q_DISABLE_COPY_MOVE(Site)

    const QString &Served() const { return served_; } ///< its address
    const QString &Copy() const { return copy_; }

private:
    QTemporaryDir folder_;
    std::unique_ptr<Cluster> cluster_;
    QString served_;
    QString copy_;
};

} // namespace Qel::Bench
