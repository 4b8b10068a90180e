#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QString>

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
};

/// Tokens are made by machines, so their hash needs no salt and no slow function; what is shorter
/// than this is refused.
inline constexpr int MinTokenLength = 16;

/// Gives the user this token, in place of an earlier one. Only its SHA-256 is stored. Throws
/// EQelError if the token is too short or the user is not there or may not log in.
void SetToken(Connection &connection, const QString &userCode, const QByteArray &token);

/// The operator, if the token is the user's and the user may log in.
std::optional<Operator> FindOperator(Connection &connection, const QString &userCode,
                                     const QByteArray &token);

} // namespace Qel::Store
