#include "store/Credentials.h"

#include "store/Clock.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

/// The number of the token that a program sets for itself.
const QString SetTokenId = u"0"_s;

QString HashOf(const QByteArray &token)
{
    return QString::fromLatin1(QCryptographicHash::hash(token, QCryptographicHash::Sha256).toHex());
}

void CheckUser(Connection &connection, const QString &userCode)
{
    if (!connection.Exists("SELECT 1 FROM USR_USER WHERE USER_CODE = ?1 AND ENABLE_FLAG = '1'"
                           " AND LAST_OPERATE <> 'D'",
                           {userCode}))
        throw EQelError(u"用户 %1 不存在或已停用。"_s.arg(userCode));
}

void CheckUnions(Connection &connection, const QStringList &unions)
{
    for (const QString &id : unions) {
        const bool digits = !id.isEmpty() && std::all_of(id.begin(), id.end(), [](QChar c) {
            return c >= u'0' && c <= u'9';
        });
        if (!digits || !connection.Exists("SELECT 1 FROM UNI_UNION WHERE UNION_ID = ?1"
                                          " AND LAST_OPERATE <> 'D'",
                                          {id}))
            throw EQelError(u"集团 %1 不存在。"_s.arg(id));
    }
}

/// From the system's own source.
QByteArray RandomText()
{
    std::array<quint32, 8> bits{};
    QRandomGenerator::system()->fillRange(bits.data(), std::ssize(bits));
    return QByteArray(reinterpret_cast<const char *>(bits.data()), sizeof bits)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

} // namespace

void SetToken(Connection &connection, const QString &userCode, const QByteArray &token)
{
    if (token.size() < MinTokenLength)
        throw EQelError(
            u"用户 %1 的令牌太短：至少 %2 个字符。"_s.arg(userCode).arg(MinTokenLength));
    CheckUser(connection, userCode);
    connection.Run("INSERT INTO SRV_TOKEN (USER_CODE, TOKEN_ID, TOKEN_HASH, CREATED)"
                   " VALUES (?1, ?2, ?3, ?4) ON CONFLICT (USER_CODE, TOKEN_ID) DO UPDATE"
                   " SET TOKEN_HASH = excluded.TOKEN_HASH, CREATED = excluded.CREATED",
                   {userCode, SetTokenId, HashOf(token), Now()});
}

NewToken AddToken(Connection &connection, const QString &userCode, const TokenTerms &terms)
{
    Transaction transaction(connection);
    CheckUser(connection, userCode);
    CheckUnions(connection, terms.unions);
    NewToken made;
    made.tokenId = connection
                       .QueryText("SELECT COALESCE(MAX(CAST(TOKEN_ID AS BIGINT)), 0) + 1"
                                  " FROM SRV_TOKEN WHERE USER_CODE = ?1",
                                  {userCode})
                       .value();
    made.token = made.tokenId.toLatin1() + '-' + RandomText();
    if (terms.days > 0)
        made.expires = DateText(QDateTime::currentDateTime().addDays(terms.days));
    connection.Run("INSERT INTO SRV_TOKEN"
                   " (USER_CODE, TOKEN_ID, TOKEN_HASH, LABEL, UNIONS, EXPIRES, CREATED)"
                   " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                   {userCode, made.tokenId, HashOf(made.token), terms.label,
                    terms.unions.join(u','), made.expires, Now()});
    transaction.Commit();
    return made;
}

int RevokeTokens(Connection &connection, const QString &userCode, const QString &tokenId)
{
    const qint64 revoked =
        tokenId.isEmpty()
            ? connection.Run("DELETE FROM SRV_TOKEN WHERE USER_CODE = ?1", {userCode})
            : connection.Run("DELETE FROM SRV_TOKEN WHERE USER_CODE = ?1 AND TOKEN_ID = ?2",
                             {userCode, tokenId});
    return static_cast<int>(revoked);
}

QList<TokenInfo> ListTokens(Connection &connection, const QString &userCode)
{
    const QByteArray columns = "SELECT USER_CODE, TOKEN_ID, LABEL, UNIONS, EXPIRES, CREATED"
                               " FROM SRV_TOKEN";
    const QByteArray order = " ORDER BY USER_CODE, CAST(TOKEN_ID AS BIGINT)";
    const auto statement =
        connection.Prepare(columns + (userCode.isEmpty() ? "" : " WHERE USER_CODE = ?1") + order);
    if (!userCode.isEmpty())
        statement->Bind(1, userCode);
    QList<TokenInfo> tokens;
    while (statement->Step())
        tokens.append({statement->ColumnText(0), statement->ColumnText(1), statement->ColumnText(2),
                       statement->ColumnText(3), statement->ColumnText(4),
                       statement->ColumnText(5)});
    return tokens;
}

std::optional<Operator> FindOperator(Connection &connection, const QString &userCode,
                                     const QByteArray &token)
{
    // The reading role of PostgreSQL sees no tokens; a function of the schema does the same for it
    // (schema/postgresql.sql) at a higher price.
    const auto row = connection.QueryRow(
        !connection.SeesServerTables()
            ? "SELECT * FROM QEL_OPERATOR(?1, ?2, ?3)"
            : "SELECT U.USER_ID, U.USER_CODE, U.USER_NAME, U.ORG_ID, O.ORG_ABBR, O.ORG_NAME,"
              " T.UNIONS FROM SRV_TOKEN T JOIN USR_USER U ON U.USER_CODE = T.USER_CODE"
              " LEFT JOIN BAS_ORG O ON O.ORG_ID = U.ORG_ID"
              " WHERE T.USER_CODE = ?1 AND T.TOKEN_HASH = ?2"
              " AND (T.EXPIRES IS NULL OR T.EXPIRES > ?3)"
              " AND U.ENABLE_FLAG = '1' AND U.LAST_OPERATE <> 'D'",
        {userCode, HashOf(token), Now()});
    if (!row)
        return std::nullopt;
    Operator found{(*row)[0], (*row)[1], (*row)[2], (*row)[3], (*row)[4], (*row)[5]};
    if (!row->at(6).isEmpty())
        found.unions = row->at(6).split(u',');
    return found;
}

} // namespace Qel::Store
