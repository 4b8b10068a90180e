#include "store/Database.h"

#include "store/Postgres.h"
#include "store/Sqlite.h"

using namespace Qt::StringLiterals;

namespace Qel::Store {

std::unique_ptr<Database> Database::Open(const QString &url)
{
    const auto sqlite = "sqlite:"_L1;
    if (url.startsWith(sqlite) && url.size() > sqlite.size())
        return std::make_unique<SqliteDatabase>(url.mid(sqlite.size()));
    if (url.startsWith("postgresql://"_L1) || url.startsWith("postgres://"_L1))
        return std::make_unique<PostgresDatabase>(url);
    throw EStoreError(EStoreError::Kind::Failure,
                      u"数据库地址应为 sqlite:路径 或 postgresql://主机/数据库。"_s);
}

} // namespace Qel::Store
