#include "admin/SiteFiles.h"

#include "dataset/QelError.h"
#include "store/Schema.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

constexpr int FormatVersion = 1;
const QString ManifestName = u"manifest.json"_s;

} // namespace

QStringList SiteTables(bool withServerTables)
{
    QStringList tables;
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        const QString name = QString::fromStdString(table.name);
        const bool own = name.startsWith("SRV_"_L1);
        const bool wanted = name == "SRV_TOKEN"_L1 || name == "SRV_IDEMPOTENCY"_L1;
        if (!own || (wanted && withServerTables))
            tables += name;
    }
    return tables;
}

QString FileName(const QString &table)
{
    return table + u".csv"_s;
}

void WriteManifest(const QDir &folder, const Manifest &manifest)
{
    QJsonArray tables;
    for (const TableFile &table : manifest.tables)
        tables.append(QJsonObject{
            {u"table"_s, table.table}, {u"rows"_s, table.rows}, {u"sha256"_s, table.sha256}});
    QJsonObject sequences;
    for (const auto &[name, next] : manifest.sequences.asKeyValueRange())
        sequences[name] = next;
    const QJsonObject all{{u"format"_s, FormatVersion},
                          {u"schema"_s, manifest.schema},
                          {u"tables"_s, tables},
                          {u"sequences"_s, sequences}};
    QSaveFile file(folder.filePath(ManifestName));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(all).toJson()) < 0 ||
        !file.commit())
        throw EQelError(u"写文件 %1 失败：%2"_s.arg(file.fileName(), file.errorString()));
}

Manifest ReadManifest(const QDir &folder)
{
    QFile file(folder.filePath(ManifestName));
    if (!file.open(QIODevice::ReadOnly))
        throw EQelError(u"目录 %1 中没有完整的导出：缺少 %2。"_s.arg(folder.path(), ManifestName));
    const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
    if (all[u"format"_s].toInt() != FormatVersion || !all[u"tables"_s].isArray())
        throw EQelError(u"%1 不是本程序能读的清单。"_s.arg(file.fileName()));
    Manifest manifest;
    manifest.schema = all[u"schema"_s].toInt();
    const QJsonArray tables = all[u"tables"_s].toArray();
    for (const auto &value : tables) {
        const QJsonObject table = value.toObject();
        manifest.tables.append({table[u"table"_s].toString(), table[u"rows"_s].toInteger(-1),
                                table[u"sha256"_s].toString()});
    }
    const QJsonObject sequences = all[u"sequences"_s].toObject();
    for (auto one = sequences.begin(); one != sequences.end(); ++one)
        manifest.sequences[one.key()] = one.value().toInteger();
    return manifest;
}

} // namespace Qel::Admin
