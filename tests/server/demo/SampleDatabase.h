#pragma once

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "store/Statistics.h"
#include "support/TestPostgres.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace Qel {

/// A Saturday: the sample database's last working day is the one before.
inline constexpr QDate Today = QDate::fromJulianDay(2'461'366);

/// A filled sample database of its own: a copy of the one that FillSampleDatabaseTest has left in
/// QEL_SAMPLE_FILE, for filling takes seconds; on PostgreSQL of the first that was filled there.
struct SampleDatabase
{
    enum class Source {
        Copy,
        Filled,
        SqliteCopy, ///< in a run on PostgreSQL too
    };

    explicit SampleDatabase(Source source = Source::Copy)
        : path(directory.filePath(QStringLiteral("demo.sqlite")))
    {
        if (TestsRunOnPostgres() && source == Source::Copy)
            postgres = std::make_unique<TestPostgres>(QStringLiteral("template_sample"), Make);
        else if (source != Source::Filled && !QFile::copy(QStringLiteral(QEL_SAMPLE_FILE), path))
            qFatal("no %s: run FillSampleDatabaseTest first", QEL_SAMPLE_FILE);
        database =
            Store::Database::Open(postgres ? postgres->Url() : QStringLiteral("sqlite:") + path);
        connection = database->OpenWriter();
        if (source == Source::Filled)
            Make(*connection);
    }

    static void Make(Store::Connection &connection)
    {
        Store::CreateSchema(connection);
        Demo::Fill(connection, Today);
        Store::UpdateStatistics(connection); // as the server does when it starts
    }

    /// One value, "" for NULL or no row.
    QString Text(const QByteArray &sql) { return connection->QueryText(sql).value_or(QString()); }
    int Number(const QByteArray &sql) { return Text(sql).toInt(); }

    /// Of every value of a table.
    QByteArray ContentHash(const Sql::Table &table)
    {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        QByteArrayList columns;
        for (const Sql::Column &column : table.columns)
            columns += QByteArray::fromStdString(column.name);
        QByteArrayList keys;
        for (const int key : table.primaryKey)
            keys += columns[key];
        const auto rows = connection->Prepare("SELECT " + columns.join(',') + " FROM " +
                                              QByteArray::fromStdString(table.name) + " ORDER BY " +
                                              keys.join(','));
        while (rows->Step()) {
            for (int column = 0; column < rows->ColumnCount(); ++column) {
                hash.addData(rows->ColumnBytes(column).toByteArray());
                hash.addData(rows->IsNull(column) ? "\x01" : "\x02");
            }
        }
        return hash.result().toHex();
    }

    /// Of every table, apart from the time that they were made at.
    QByteArray ContentHash()
    {
        QByteArray hashes;
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            if (table.name != "SRV_SCHEMA")
                hashes += ContentHash(table);
        }
        return hashes;
    }

    QTemporaryDir directory;
    QString path;
    std::unique_ptr<TestPostgres> postgres; ///< null on SQLite
    std::unique_ptr<Store::Database> database;
    std::unique_ptr<Store::Connection> connection;
};

} // namespace Qel
