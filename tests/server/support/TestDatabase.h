#pragma once

#include "store/Connection.h"
#include "store/Credentials.h"
#include "store/Database.h"
#include "support/TestPostgres.h"

#include <QTemporaryDir>

#include <memory>

namespace Qel {

/// A real database, on PostgreSQL if this run of the program is, with the whole schema and a few
/// rows whose meaning the tests know:
///
///   users   600001 admin 系统管理员 of 200001; 600002 zhang 张伟 of 200002; 600003 gone (disabled)
///   groups  300001 0001, top
///           300002 000101, below 300001, with the member 200007
///           300003 00010101, below 300002
///           300004 0002, top, alone
///           300005 0003, top, deleted; was led by 200006
///   leaders 200001 to 200004 lead the live groups 300001 to 300004; 200005 to 200008 lead none
class TestDatabase
{
public:
    enum class Content {
        Rows,
        Tables,  ///< empty ones
        Nothing, ///< not even tables
    };

    explicit TestDatabase(Content content = Content::Rows);

    QString Url() const;
    Store::Database &Database() { return *database_; }
    Store::Connection &Connection() { return *connection_; } ///< may write

    /// One text value, "" for NULL or no row.
    QString Text(const QByteArray &sql);
    int Number(const QByteArray &sql) { return Text(sql).toInt(); }

    static Store::Operator Admin();
    /// Makes the schema in an empty database, and in it what `content` says.
    static void Fill(Store::Connection &connection, Content content);
    static constexpr char AdminToken[] = "0123456789abcdef-admin";

private:
    QTemporaryDir directory_;
    std::unique_ptr<TestPostgres> postgres_; ///< null on SQLite
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Store::Connection> connection_;
};

} // namespace Qel
