#pragma once

#include <QByteArray>
#include <QDir>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// A whole site as files of one folder: TABLE.csv for each table and manifest.json, which is
/// written last, so that a folder without one is known to be incomplete.
namespace Qel::Admin {

struct TableFile
{
    QString table;
    qint64 rows = 0;
    QString sha256; ///< of the file; lower-case hexadecimal
};

struct Manifest
{
    int schema = 0; ///< version of the tables
    QList<TableFile> tables;
    QMap<QString, qint64> sequences; ///< by table: the number that its next new row gets
};

/// The tables of a site in the catalogue's order. Of the server's own ("SRV_...") tokens and
/// idempotency keys if they are asked for; sequences stand in the manifest.
QStringList SiteTables(bool withServerTables);

QString FileName(const QString &table);

/// Throws EQelError.
void WriteManifest(const QDir &folder, const Manifest &manifest);
Manifest ReadManifest(const QDir &folder);

} // namespace Qel::Admin
