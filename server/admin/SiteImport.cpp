#include "admin/SiteImport.h"

#include "admin/Csv.h"
#include "admin/Integrity.h"
#include "admin/TableImport.h"
#include "store/LargestKey.h"
#include "store/Migrations.h"
#include "store/SearchIndex.h"

#include <QCryptographicHash>
#include <QFile>
#include <QHash>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

void RefuseRows(Store::Connection &connection)
{
    for (const QString &table : SiteTables(true))
        if (connection.Exists(u"SELECT 1 FROM %1"_s.arg(table).toUtf8()))
            throw EQelError(u"数据库不是空的：表 %1 中有数据。"_s.arg(table));
}

QString HashOf(QFile &file)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.seek(0) || !hash.addData(&file))
        throw EQelError(u"读文件 %1 失败：%2"_s.arg(file.fileName(), file.errorString()));
    file.seek(0);
    return QString::fromLatin1(hash.result().toHex());
}

/// The place of a row in the joined form that rows are looked up by.
QString Joined(const QStringList &key)
{
    return key.join(QChar(0x1f));
}

class Import
{
public:
    Import(Store::Connection &connection, const QString &path, const ImportOptions &options)
        : connection_(connection)
        , folder_(path)
        , options_(options)
        , manifest_(ReadManifest(folder_))
        , findings_(options.findings)
    {
        if (manifest_.schema != Store::SchemaVersion)
            throw EQelError(u"这些文件是版本 %1 的表，本程序的是版本 %2。请用同一版本的程序导出。"_s
                                .arg(manifest_.schema)
                                .arg(Store::SchemaVersion));
    }

    ImportResult Run()
    {
        Store::Transaction transaction(connection_);
        RefuseRows(connection_);
        CheckTables();
        Store::DropSearchIndexes(connection_); // made in one go they cost less
        ImportResult result;
        for (const TableFile &file : manifest_.tables)
            if (!findings_.Full())
                result.rows += Load(file);
        FindBad();
        result.findings = findings_.Take();
        result.more = findings_.Cut();
        if (!result.findings.isEmpty() || options_.dryRun)
            return result;
        Store::CreateSearchIndexes(connection_);
        StoreSequences();
        transaction.Commit();
        return result;
    }

private:
    void CheckTables()
    {
        const QStringList known = SiteTables(true);
        QStringList named;
        for (const TableFile &file : manifest_.tables)
            named += file.table;
        for (const QString &table : SiteTables(false))
            if (!named.contains(table))
                findings_.Add({FileName(table), 0, {}, u"清单中没有这个表"_s});
        for (const QString &table : named)
            if (!known.contains(table) || named.count(table) > 1)
                findings_.Add({FileName(table), 0, {}, u"没有这个表，或重复"_s});
        manifest_.tables.removeIf(
            [&](const TableFile &file) { return !known.contains(file.table); });
    }

    qint64 Load(const TableFile &entry)
    {
        const QString name = FileName(entry.table);
        QFile file(folder_.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            findings_.Add({name, 0, {}, u"不能读：%1"_s.arg(file.errorString())});
            rejected_.insert(entry.table);
            return 0;
        }
        if (!options_.edited && HashOf(file) != entry.sha256)
            findings_.Add({name, 0, {}, u"内容与清单中的 SHA-256 不符"_s});
        TableImport table(connection_, entry.table, findings_);
        table.Load(file);
        if (table.Rejected())
            rejected_.insert(entry.table);
        else if (!options_.edited && table.Rows() != entry.rows)
            findings_.Add(
                {name, 0, {}, u"应有 %1 行，实有 %2 行"_s.arg(entry.rows).arg(table.Rows())});
        return table.Rows();
    }

    /// What is wrong between the rows. References into a table that did not come in whole would
    /// only repeat what is wrong there.
    void FindBad()
    {
        QList<BadRow> bad;
        const int room = findings_.Room();
        if (room == 0)
            return;
        FindBadRows(connection_, [&](const BadRow &row) {
            if (!rejected_.contains(row.target))
                bad.append(row);
            return bad.size() <= room;
        });
        while (!bad.isEmpty()) {
            const QString table = bad.first().table;
            const auto isOther = [&](const BadRow &row) { return row.table != table; };
            const auto others = std::stable_partition(bad.begin(), bad.end(), isOther);
            const QList<BadRow> rows(others, bad.end());
            bad.erase(others, bad.end());
            Locate(table, rows);
        }
    }

    /// Looks the rows up in their file, which tells the lines.
    void Locate(const QString &table, const QList<BadRow> &rows)
    {
        QHash<QString, qint64> lines;
        for (const BadRow &row : rows)
            lines[Joined(row.key)] = 0;
        QFile file(folder_.filePath(FileName(table)));
        if (file.open(QIODevice::ReadOnly)) {
            TableImport::ForEachKey(file, table, [&](const QStringList &key, qint64 line) {
                if (const auto found = lines.find(Joined(key)); found != lines.end())
                    *found = line;
            });
        }
        for (const BadRow &row : rows)
            findings_.Add({FileName(table), lines[Joined(row.key)], row.column, row.text});
    }

    /// New keys go on where the site's own stopped: numbers of rows that are gone are in logs.
    void StoreSequences()
    {
        for (const auto &[table, next] : manifest_.sequences.asKeyValueRange()) {
            const QStringList key =
                SiteTables(false).contains(table) ? KeyColumns(table) : QStringList();
            if (key.size() != 1)
                throw EQelError(u"清单中的序列 %1 不属于任何表。"_s.arg(table));
            const qint64 behind = Store::LargestKey(connection_, table, key.first()) + 1;
            connection_.Run("INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES (?1, ?2)"
                            " ON CONFLICT (NAME) DO UPDATE SET NEXT = excluded.NEXT",
                            {table, qMax(next, behind)});
        }
    }

    Store::Connection &connection_;
    QDir folder_;
    ImportOptions options_;
    Manifest manifest_;
    Findings findings_;
    QSet<QString> rejected_; ///< tables of which rows are missing
};

} // namespace

QString ImportFinding::Text() const
{
    QString place = file;
    if (line > 0)
        place += u':' + QString::number(line);
    if (!column.isEmpty())
        place += u": "_s + column;
    return place + u": "_s + text;
}

ImportResult ImportSite(Store::Connection &connection, const QString &path,
                        const ImportOptions &options)
{
    return Import(connection, path, options).Run();
}

} // namespace Qel::Admin
