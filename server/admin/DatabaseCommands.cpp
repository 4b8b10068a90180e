#include "admin/DatabaseCommands.h"

#include "admin/Backup.h"
#include "admin/Check.h"
#include "admin/DatabaseOption.h"
#include "store/Migrations.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

int Check(const QCommandLineParser &parser, const QStringList &)
{
    const auto database = OpenDatabase(parser);
    const QList<CheckFinding> findings = CheckDatabase(*database);
    for (const CheckFinding &finding : findings)
        std::printf("%s\t%s\t%s\n", qUtf8Printable(finding.code), qUtf8Printable(finding.place),
                    qUtf8Printable(finding.text));
    return findings.isEmpty() ? 0 : 1;
}

int Migrate(const QCommandLineParser &parser, const QStringList &)
{
    const auto database = OpenDatabase(parser);
    const QList<int> reached = Store::MigrateSchema(*database->OpenWriter());
    for (const int version : reached)
        std::printf("%d\n", version);
    if (reached.isEmpty())
        std::fprintf(stderr, "数据库的表已是版本 %d。\n", Store::SchemaVersion);
    return 0;
}

int Reindex(const QCommandLineParser &parser, const QStringList &)
{
    Store::RebuildIndexes(*OpenDatabase(parser)->OpenWriter());
    return 0;
}

int Backup(const QCommandLineParser &parser, const QStringList &arguments)
{
    BackUp(NamedDatabaseUrl(parser), arguments.first());
    std::fprintf(stderr, "已备份到 %s（%lld 字节）。\n", qUtf8Printable(arguments.first()),
                 static_cast<long long>(QFileInfo(arguments.first()).size()));
    return 0;
}

} // namespace

QList<Command> DatabaseCommands()
{
    return {
        {u"check"_s,
         {},
         u"Look for whatever is wrong with a database: one line each, exit status 1 if any."_s,
         {},
         Check},
        {u"migrate"_s, {}, u"Bring a database made by an older version up to date."_s, {}, Migrate},
        {u"reindex"_s, {}, u"Make the indexes of a database anew."_s, {}, Reindex},
        {u"backup"_s,
         u"FILE"_s,
         u"Copy a database into a file, also while it is served."_s,
         {},
         Backup},
    };
}

} // namespace Qel::Admin
