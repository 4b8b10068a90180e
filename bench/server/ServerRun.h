#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

/// What the measurements of the server share: a server process, an operator, and how a peer is
/// held against it.
namespace Qel::Bench {

/// The operator in whose name Request speaks. BAS_ORG should hold the organisation.
void AddOperator(Store::Connection &connection, const QString &userId = QStringLiteral("600001"),
                 const QString &orgId = QStringLiteral("200000"));

/// "user:token" of that operator, as a server's address takes them.
QString UserInfo();

/// The bytes of a request; `line` is "POST /path", `key` an idempotency key or empty.
QByteArray Request(const QByteArray &line, const QByteArray &body, const QByteArray &key = {});

/// The built qel-server on a database ("sqlite:PATH", "postgresql://..."), on a free port; ends
/// with the object.
class ServerRun
{
public:
    explicit ServerRun(const QString &database);
    ~ServerRun();
    Q_DISABLE_COPY_MOVE(ServerRun)

    quint16 Port() const { return port_; }
    qint64 ProcessId() const { return process_.processId(); }

private:
    QProcess process_;
    quint16 port_ = 0;
};

} // namespace Qel::Bench
