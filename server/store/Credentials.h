#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace Qel::Store {

/// Who acts: the user that a credential names, with the organisation. All texts may be empty
/// apart from the id and the code.
struct Operator
{
    QString userId;
    QString userCode;
    QString userName;
    QString orgId;
    QString orgAbbr;
    QString orgName;
    /// The groups that the token is limited to; nothing: no limit.
    std::optional<QStringList> unions = {};
};

/// What is kept of a token beside its hash. Times as in the database.
struct TokenInfo
{
    QString userCode;
    QString tokenId; ///< number among the user's tokens
    QString label;
    QString unions;  ///< ids parted by commas; empty: no limit
    QString expires; ///< empty: never
    QString created;
};

/// What the administrator wishes of a new token.
struct TokenTerms
{
    QString label;
    QStringList unions; ///< empty: no limit
    int days = 0;       ///< 0: no end
};

struct NewToken
{
    QString tokenId;
    QByteArray token; ///< the number, a hyphen and 256 random bits as base64url
    QString expires;
};

/// Tokens are made by machines, so their hash needs no salt and no slow function; what is shorter
/// than this is refused.
inline constexpr int MinTokenLength = 16;

/// Gives the user this token, in place of an earlier one that came this way; those of AddToken
/// stay. Only its SHA-256 is stored. Throws EQelError if the token is too short or the user is not
/// there or may not log in.
void SetToken(Connection &connection, const QString &userCode, const QByteArray &token);

/// Makes a token, beside those that the user has. What it returns is kept nowhere. Throws
/// EQelError if the user is not there or may not log in, or a group is not there.
NewToken AddToken(Connection &connection, const QString &userCode, const TokenTerms &terms);

/// Forgets a token of the user, or all of them if `tokenId` is empty; returns how many.
int RevokeTokens(Connection &connection, const QString &userCode, const QString &tokenId);

/// Of one user, or of all if the code is empty; by user and number.
QList<TokenInfo> ListTokens(Connection &connection, const QString &userCode);

/// The operator, if the token is the user's, has not expired, and the user may log in.
std::optional<Operator> FindOperator(Connection &connection, const QString &userCode,
                                     const QByteArray &token);

} // namespace Qel::Store
