#include "store/PostgresEnvironment.h"

#include "store/Connection.h"

#include <libpq-fe.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace Qel::Store {

QMap<QString, QString> PostgresEnvironment(const QString &url)
{
    const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(
        PQconninfoParse(url.toUtf8().constData(), nullptr), &PQconninfoFree);
    if (!options)
        throw EStoreError(EStoreError::Kind::Failure, u"不能读懂数据库地址。"_s);
    QMap<QString, QString> environment;
    for (const PQconninfoOption *option = options.get(); option->keyword; ++option) {
        if (!option->val)
            continue;
        if (!option->envvar)
            throw EStoreError(
                EStoreError::Kind::Failure,
                u"数据库地址中的 %1 不能交给其他程序。"_s.arg(QString::fromUtf8(option->keyword)));
        environment[QString::fromUtf8(option->envvar)] = QString::fromUtf8(option->val);
    }
    return environment;
}

} // namespace Qel::Store
