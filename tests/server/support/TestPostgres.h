#pragma once

#include "store/Database.h"

#include <QString>

#include <functional>

namespace Qel {

/// Whether this run of a test program is on PostgreSQL: CTest names such runs "NAME.pg" and has
/// started a cluster for them (qel_test in cmake/QelTargets.cmake).
bool TestsRunOnPostgres();

/// A database of the test cluster, dropped in the end: everything that was connected to it is
/// thrown out.
class TestPostgres
{
public:
    using Fill = std::function<void(Store::Connection &)>;

    /// A copy of the database `templateName`, which `fill` makes once for all test programs.
    TestPostgres(const QString &templateName, const Fill &fill);
    ~TestPostgres();
    Q_DISABLE_COPY_MOVE(TestPostgres)

    const QString &Url() const { return url_; }

private:
    QString name_;
    QString url_;
};

} // namespace Qel
