#include "sql/SqlError.h"

using namespace Qt::StringLiterals;

namespace Qel::Sql {

ESqlError::ESqlError(std::string code, qsizetype position, const QString &message)
    : EQelError(u"查询语句第 %1 字节处：%2"_s.arg(position).arg(message))
    , code_(std::move(code))
    , position_(position)
{
}

ESqlError::ESqlError(std::string code, const QString &message)
    : EQelError(u"查询语句：%1"_s.arg(message))
    , code_(std::move(code))
    , position_(-1)
{
}

} // namespace Qel::Sql
