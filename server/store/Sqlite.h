#pragma once

#include "store/Database.h"

struct sqlite3;

namespace Qel::Store {

/// A database in one SQLite file, in write-ahead mode: readers and the writer do not wait for
/// each other.
class SqliteDatabase : public Database
{
public:
    explicit SqliteDatabase(const QString &path);

    std::unique_ptr<Connection> OpenWriter() override;
    int Writers() const override { return 1; }
    bool SharesTransactions() const override { return true; }
    std::unique_ptr<Connection> OpenReader() override;

private:
    QByteArray path_;
};

} // namespace Qel::Store
