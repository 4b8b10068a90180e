#include "admin/SiteCommands.h"

#include "admin/DatabaseOption.h"
#include "admin/SiteExport.h"
#include "admin/SiteImport.h"
#include "store/Migrations.h"
#include "store/Statistics.h"

#include <QCommandLineParser>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

const QString ServerTables = u"with-server-tables"_s;

int Export(const QCommandLineParser &parser, const QStringList &arguments)
{
    const auto database = OpenDatabase(parser);
    const auto connection = database->OpenWriter(); // queries' connections do not see every table
    Store::RequireSchema(*connection);
    const Manifest manifest =
        ExportSite(*connection, arguments.first(), parser.isSet(ServerTables));
    for (const TableFile &file : manifest.tables)
        std::printf("%s\t%lld\n", qUtf8Printable(file.table), static_cast<long long>(file.rows));
    return 0;
}

int Import(const QCommandLineParser &parser, const QStringList &arguments)
{
    const ImportOptions options{.dryRun = parser.isSet(u"dry-run"_s),
                                .edited = parser.isSet(u"edited"_s)};
    const auto database = OpenDatabase(parser);
    const auto connection = database->OpenWriter();
    Store::PrepareSchema(*connection, Store::OldTables::Refuse);
    const ImportResult result = ImportSite(*connection, arguments.first(), options);
    for (const ImportFinding &finding : result.findings)
        std::printf("%s\n", qUtf8Printable(finding.Text()));
    if (!result.findings.isEmpty()) {
        std::fprintf(stderr, "%s%lld 处问题，没有导入任何数据。\n", result.more ? "至少 " : "",
                     static_cast<long long>(result.findings.size()));
        return 1;
    }
    if (!options.dryRun)
        Store::UpdateStatistics(*connection);
    std::fprintf(stderr, options.dryRun ? "%lld 行没有问题，没有导入。\n" : "已导入 %lld 行。\n",
                 static_cast<long long>(result.rows));
    return 0;
}

} // namespace

QList<Command> SiteCommands()
{
    return {
        {u"export"_s,
         u"DIR"_s,
         u"Write all data of a site into CSV files in a new folder."_s,
         {{ServerTables, u"Tokens (their hashes) and idempotency keys, too."_s}},
         Export},
        {u"import"_s,
         u"DIR"_s,
         u"Read such files into a database without data: all of it, or nothing and what is wrong."_s,
         {{u"dry-run"_s, u"Only say what is wrong."_s},
          {u"edited"_s, u"The files were changed: do not compare them with the manifest."_s}},
         Import},
    };
}

} // namespace Qel::Admin
