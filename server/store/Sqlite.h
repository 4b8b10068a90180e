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
    std::unique_ptr<Connection> OpenReader() override;

private:
    QByteArray path_;
};

/// A number as this system writes it: plain decimal notation, at most 15 significant digits, no
/// exponent, no trailing zeros ("0.5", "1310", "-12.25").
QByteArray PlainNumber(double value);

} // namespace Qel::Store
