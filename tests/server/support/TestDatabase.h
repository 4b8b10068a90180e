#pragma once

#include "store/Connection.h"
#include "store/Credentials.h"
#include "store/Database.h"

#include <QTemporaryDir>

#include <memory>

namespace Qel {

/// A real database file with the whole schema and a few rows whose meaning the tests know:
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
    TestDatabase();

    QString Path() const { return directory_.filePath(QStringLiteral("test.sqlite")); }
    QString Url() const { return QStringLiteral("sqlite:") + Path(); }
    Store::Database &Database() { return *database_; }
    Store::Connection &Connection() { return *connection_; } ///< may write

    /// One text value, "" for NULL or no row.
    QString Text(const QByteArray &sql);
    int Number(const QByteArray &sql) { return Text(sql).toInt(); }

    static Store::Operator Admin();
    static constexpr char AdminToken[] = "0123456789abcdef-admin";

private:
    void AddUsers();
    void AddOrganisations();
    void AddGroups();

    QTemporaryDir directory_;
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Store::Connection> connection_;
};

} // namespace Qel
