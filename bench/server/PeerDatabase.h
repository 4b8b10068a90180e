#pragma once

#include <QByteArray>

#include <initializer_list>

struct sqlite3;
struct sqlite3_stmt;

namespace Qel::Bench {

/// A statement of a PeerDatabase, prepared once. Ends the program if it fails.
class PeerStatement
{
public:
    PeerStatement(sqlite3 *database, const char *sql);
    ~PeerStatement();
    Q_DISABLE_COPY_MOVE(PeerStatement)

    /// Runs it to its end; the texts are bound in their order.
    void Run(std::initializer_list<QByteArrayView> values);

private:
    sqlite3 *database_;
    sqlite3_stmt *handle_ = nullptr;
};

/// A database file as a program on the database library alone would write it, in the mode of the
/// server: it checks nothing.
class PeerDatabase
{
public:
    explicit PeerDatabase(const QString &file);
    ~PeerDatabase();
    Q_DISABLE_COPY_MOVE(PeerDatabase)

    sqlite3 *Handle() const { return database_; }
    void Execute(const char *sql);

private:
    sqlite3 *database_ = nullptr;
};

} // namespace Qel::Bench
