#pragma once

#include <QHash>
#include <QString>
#include <QUrl>

namespace Qel::Host {

/// Who the server says that the credential is: UserId, UserCode, UserName, OrgId, OrgAbbr,
/// OrgName, ServerName.
using Session = QHash<QString, QString>;

/// Asks the server; `server` holds the credential as user info. Raises EQelError in words: no
/// answer within 15 s, refused, or not such a server.
Session FetchSession(const QUrl &server);

/// The run-parameter document that the plug-in reads, in base64.
QByteArray RunParamsOf(const Session &session);

/// The server's address without the credential.
QString ShownAddress(const QUrl &server);

} // namespace Qel::Host
