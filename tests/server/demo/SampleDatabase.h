#pragma once

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/Schema.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace Qel {

/// A Saturday: the sample database's last working day is the one before.
inline constexpr QDate Today = QDate::fromJulianDay(2'461'366);

/// A filled sample database in a file of its own: a copy of the one that FillSampleDatabaseTest has
/// left in QEL_SAMPLE_FILE, for filling takes seconds.
struct SampleDatabase
{
    enum class Source { Copy, Filled };

    explicit SampleDatabase(Source source = Source::Copy)
        : path(directory.filePath(QStringLiteral("demo.sqlite")))
    {
        if (source == Source::Copy && !QFile::copy(QStringLiteral(QEL_SAMPLE_FILE), path))
            qFatal("no %s: run FillSampleDatabaseTest first", QEL_SAMPLE_FILE);
        database = Store::Database::Open(QStringLiteral("sqlite:") + path);
        connection = database->OpenWriter();
        if (source == Source::Filled) {
            Store::CreateSchema(*connection);
            Demo::Fill(*connection, Today);
        }
    }

    /// One value, "" for NULL or no row.
    QString Text(const QByteArray &sql) { return connection->QueryText(sql).value_or(QString()); }
    int Number(const QByteArray &sql) { return Text(sql).toInt(); }

    /// Of every value of every table.
    QByteArray ContentHash()
    {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            const auto rows = connection->Prepare(
                "SELECT * FROM " + QByteArray::fromStdString(table.name) + " ORDER BY 1, 2");
            while (rows->Step()) {
                for (int column = 0; column < rows->ColumnCount(); ++column) {
                    hash.addData(rows->ColumnBytes(column).toByteArray());
                    hash.addData(rows->IsNull(column) ? "\x01" : "\x02");
                }
            }
        }
        return hash.result().toHex();
    }

    QTemporaryDir directory;
    QString path;
    std::unique_ptr<Store::Database> database;
    std::unique_ptr<Store::Connection> connection;
};

} // namespace Qel
