#include "admin/SiteExport.h"

#include "admin/Csv.h"
#include "admin/Integrity.h"
#include "admin/NextKeys.h"
#include "store/Migrations.h"
#include "store/Schema.h"

#include <QFile>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

/// The folder, made for its owner alone: it will hold everything that a site knows.
QDir MakeFolder(const QString &path)
{
    QDir folder(path);
    if (folder.exists() && !folder.isEmpty())
        throw EQelError(u"目录 %1 不是空的。"_s.arg(path));
    if (!folder.mkpath(u"."_s))
        throw EQelError(u"不能建立目录 %1。"_s.arg(path));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return folder;
}

TableFile ExportTable(Store::Connection &connection, const QString &table, const QDir &folder)
{
    QFile file(folder.filePath(FileName(table)));
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw EQelError(u"写文件 %1 失败：%2"_s.arg(file.fileName(), file.errorString()));
    CsvWriter csv(file);
    QStringList columns;
    for (const Sql::Column &column : Store::SchemaCatalog().Find(table.toStdString())->columns)
        columns += QString::fromStdString(column.name);
    for (const QString &column : columns)
        csv.Add(column.toUtf8());
    csv.EndRecord();
    TableFile written{table, 0, {}};
    const auto statement =
        connection.Prepare(u"SELECT %1 FROM %2 ORDER BY %3"_s
                               .arg(columns.join(u", "_s), table, KeyColumns(table).join(u", "_s))
                               .toUtf8());
    const auto width = static_cast<int>(columns.size());
    for (; statement->Step(); ++written.rows) {
        for (int column = 0; column < width; ++column) {
            if (statement->IsNull(column))
                csv.AddNull();
            else
                csv.Add(statement->ColumnBytes(column));
        }
        csv.EndRecord();
    }
    csv.Finish();
    if (!file.flush() || fsync(file.handle()) != 0)
        throw EQelError(u"写文件 %1 失败：%2"_s.arg(file.fileName(), file.errorString()));
    written.sha256 = QString::fromLatin1(csv.Sha256());
    return written;
}

} // namespace

Manifest ExportSite(Store::Connection &connection, const QString &path, bool withServerTables)
{
    const QDir folder = MakeFolder(path);
    const Store::Snapshot snapshot(connection);
    Manifest manifest;
    manifest.schema = Store::SchemaVersionOf(connection);
    for (const QString &table : SiteTables(withServerTables))
        manifest.tables.append(ExportTable(connection, table, folder));
    manifest.sequences = NextKeys(connection);
    WriteManifest(folder, manifest);
    return manifest;
}

} // namespace Qel::Admin
