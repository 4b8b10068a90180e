#include "remote/RemoteError.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace Qel {

ERemoteError::ERemoteError(Kind kind, const QString &message)
    : ERemoteError(kind, message, Facts{})
{
}

ERemoteError::ERemoteError(Kind kind, const QString &message, const Facts &facts)
    : EQelError(message)
    , kind_(kind)
    , facts_(facts)
{
}

QString ERemoteError::Details() const
{
    const struct
    {
        QString caption;
        QString value;
    } lines[] = {
        {u"地址"_s, facts_.url},
        {u"方法"_s, facts_.method},
        {u"语句"_s, facts_.statement},
        {u"HTTP 状态"_s, facts_.httpStatus > 0 ? QString::number(facts_.httpStatus) : QString()},
        {u"错误代码"_s, facts_.code},
        {u"参考号"_s, facts_.reference},
        {u"原因"_s, facts_.cause},
    };
    QStringList text;
    for (const auto &line : lines) {
        if (!line.value.isEmpty())
            text << line.caption + u"："_s + line.value;
    }
    return text.join(u'\n');
}

} // namespace Qel
