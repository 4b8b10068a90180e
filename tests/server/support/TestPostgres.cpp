#include "support/TestPostgres.h"

#include <QCoreApplication>
#include <QFile>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

QString ClusterFile()
{
    return qEnvironmentVariable("QEL_TEST_POSTGRES");
}

/// The address of a database of the cluster.
QString UrlOf(const QString &database)
{
    QFile file(ClusterFile());
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no PostgreSQL cluster: %s", qPrintable(file.fileName()));
    return QString::fromUtf8(file.readAll())
        .trimmed()
        .replace(u"/postgres?"_s, u'/' + database + u'?');
}

std::unique_ptr<Store::Connection> Maintenance()
{
    return Store::Database::Open(UrlOf(u"postgres"_s))->OpenWriter();
}

/// Makes the database that others are copies of, unless another program has.
void MakeTemplate(Store::Connection &maintenance, const QString &name,
                  const TestPostgres::Fill &fill)
{
    maintenance.Run("SELECT pg_advisory_lock(hashtext(?1))", {name}); // until it is closed
    if (maintenance.Exists("SELECT 1 FROM pg_database WHERE datname = ?1", {name}))
        return;
    const QString unfinished = name + u"_unfinished"_s;
    maintenance.Execute("DROP DATABASE IF EXISTS " + unfinished.toUtf8());
    maintenance.Execute("CREATE DATABASE " + unfinished.toUtf8());
    fill(*Store::Database::Open(UrlOf(unfinished))->OpenWriter());
    maintenance.Execute("ALTER DATABASE " + unfinished.toUtf8() + " RENAME TO " + name.toUtf8());
}

} // namespace

bool TestsRunOnPostgres()
{
    return !ClusterFile().isEmpty();
}

TestPostgres::TestPostgres(const QString &templateName, const Fill &fill)
{
    static int count = 0;
    name_ = u"test_%1_%2"_s.arg(QCoreApplication::applicationPid()).arg(++count);
    url_ = UrlOf(name_);
    const auto maintenance = Maintenance();
    MakeTemplate(*maintenance, templateName, fill);
    maintenance->Execute("CREATE DATABASE " + name_.toUtf8() + " TEMPLATE " +
                         templateName.toUtf8() + " STRATEGY file_copy");
}

TestPostgres::~TestPostgres()
{
    try {
        Maintenance()->Execute("DROP DATABASE " + name_.toUtf8() + " WITH (FORCE)");
    } catch (const EQelError &error) {
        qWarning("%s stays: %s", qPrintable(name_), error.what());
    }
}

} // namespace Qel
