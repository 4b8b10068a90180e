#include "Cluster.h"

#include "store/Database.h"

#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

Cluster::Cluster()
    : file_(folder_.filePath(u"postgres.url"_s))
{
    if (QProcess::execute(QStringLiteral(QEL_POSTGRES_CLUSTER),
                          {u"start"_s, file_, u"durable"_s}) != 0)
        qFatal("PostgreSQL does not start");
}

Cluster::~Cluster()
{
    QProcess::execute(QStringLiteral(QEL_POSTGRES_CLUSTER), {u"stop"_s, file_});
}

QString Cluster::NewDatabase(const QString &name, const QString &copyOf)
{
    const QString copied = copyOf.isEmpty() ? QString() : u" TEMPLATE "_s + copyOf;
    Store::Database::Open(UrlOf(u"postgres"_s))
        ->OpenWriter()
        ->Execute((u"CREATE DATABASE "_s + name + copied).toUtf8());
    return UrlOf(name);
}

QString Cluster::UrlOf(const QString &database) const
{
    QFile file(file_);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no %s", qUtf8Printable(file_));
    return QString::fromUtf8(file.readAll())
        .trimmed()
        .replace(u"/postgres?"_s, u'/' + database + u'?');
}

} // namespace Qel::Bench
