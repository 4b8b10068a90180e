#include "PeerDatabase.h"

#include "sql/SqliteFunctions.h"

#include <QString>

#include <sqlite3.h>

namespace Qel::Bench {

PeerStatement::PeerStatement(sqlite3 *database, const char *sql)
    : database_(database)
{
    if (sqlite3_prepare_v2(database, sql, -1, &handle_, nullptr) != SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database));
}

PeerStatement::~PeerStatement()
{
    sqlite3_finalize(handle_);
}

void PeerStatement::Run(std::initializer_list<QByteArrayView> values)
{
    int parameter = 0;
    for (const QByteArrayView value : values)
        sqlite3_bind_text(handle_, ++parameter, value.data(), int(value.size()), SQLITE_STATIC);
    if (sqlite3_step(handle_) != SQLITE_DONE)
        qFatal("%s", sqlite3_errmsg(database_));
    sqlite3_reset(handle_);
}

PeerDatabase::PeerDatabase(const QString &file)
{
    sqlite3_open_v2(file.toUtf8().constData(), &database_, SQLITE_OPEN_READWRITE, nullptr);
    Sql::PrepareSqliteConnection(database_);
    Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL");
}

PeerDatabase::~PeerDatabase()
{
    sqlite3_close(database_);
}

void PeerDatabase::Execute(const char *sql)
{
    if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database_));
}

} // namespace Qel::Bench
