#pragma once

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/Schema.h"

#include <QCryptographicHash>
#include <QTemporaryDir>

#include <memory>

namespace Qel {

/// A filled sample database in a file.
struct SampleDatabase
{
    SampleDatabase()
        : database(Store::Database::Open(QStringLiteral("sqlite:") +
                                         directory.filePath(QStringLiteral("demo.sqlite"))))
        , connection(database->OpenWriter())
    {
        Store::CreateSchema(*connection);
        Demo::Fill(*connection);
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
    std::unique_ptr<Store::Database> database;
    std::unique_ptr<Store::Connection> connection;
};

} // namespace Qel
