#include "store/Credentials.h"

#include "store/Clock.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

QString HashOf(const QByteArray &token)
{
    return QString::fromLatin1(QCryptographicHash::hash(token, QCryptographicHash::Sha256).toHex());
}

} // namespace

void SetToken(Connection &connection, const QString &userCode, const QByteArray &token)
{
    if (token.size() < MinTokenLength)
        throw EQelError(
            u"用户 %1 的令牌太短：至少 %2 个字符。"_s.arg(userCode).arg(MinTokenLength));
    if (!connection.Exists("SELECT 1 FROM USR_USER WHERE USER_CODE = ?1 AND ENABLE_FLAG = '1'"
                           " AND LAST_OPERATE <> 'D'",
                           {userCode}))
        throw EQelError(u"用户 %1 不存在或已停用。"_s.arg(userCode));
    connection.Run("INSERT INTO SRV_TOKEN (USER_CODE, TOKEN_HASH, CREATED) VALUES (?1, ?2, ?3)"
                   " ON CONFLICT (USER_CODE) DO UPDATE"
                   " SET TOKEN_HASH = excluded.TOKEN_HASH, CREATED = excluded.CREATED",
                   {userCode, HashOf(token), Now()});
}

std::optional<Operator> FindOperator(Connection &connection, const QString &userCode,
                                     const QByteArray &token)
{
    const auto statement = connection.Prepare(
        "SELECT U.USER_ID, U.USER_CODE, U.USER_NAME, U.ORG_ID, O.ORG_ABBR, O.ORG_NAME"
        " FROM SRV_TOKEN T JOIN USR_USER U ON U.USER_CODE = T.USER_CODE"
        " LEFT JOIN BAS_ORG O ON O.ORG_ID = U.ORG_ID"
        " WHERE T.USER_CODE = ?1 AND T.TOKEN_HASH = ?2"
        " AND U.ENABLE_FLAG = '1' AND U.LAST_OPERATE <> 'D'");
    statement->Bind(1, userCode);
    statement->Bind(2, HashOf(token));
    if (!statement->Step())
        return std::nullopt;
    return Operator{statement->ColumnText(0), statement->ColumnText(1), statement->ColumnText(2),
                    statement->ColumnText(3), statement->ColumnText(4), statement->ColumnText(5)};
}

} // namespace Qel::Store
