#include "sql/SqlError.h"

using namespace Qt::StringLiterals;

namespace Qel::Sql {

ESqlError::ESqlError(std::string code, qsizetype position, const QString &message)
    : EQelError(u"查询语句第 %1 字节处：%2"_s.arg(position).arg(message))
    , code_(std::move(code))
    , position_(position)
{
}

} // namespace Qel::Sql
