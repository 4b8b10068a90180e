#include "store/Database.h"

#include "store/Sqlite.h"

using namespace Qt::StringLiterals;

namespace Qel::Store {

std::unique_ptr<Database> Database::Open(const QString &url)
{
    const auto sqlite = "sqlite:"_L1;
    if (url.startsWith(sqlite) && url.size() > sqlite.size())
        return std::make_unique<SqliteDatabase>(url.mid(sqlite.size()));
    throw EStoreError(EStoreError::Kind::Failure,
                      u"数据库地址应为 sqlite:路径，而不是：%1"_s.arg(url));
}

} // namespace Qel::Store
