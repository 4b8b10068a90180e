#include "ServerRun.h"

#include "store/Credentials.h"

using namespace Qt::StringLiterals;

namespace Qel::Bench {

namespace {

constexpr char Token[] = "0123456789abcdef0123456789abcdef";

} // namespace

void AddOperator(Store::Connection &connection, const QString &userId, const QString &orgId)
{
    connection.Run("INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID)"
                   " VALUES (?1, 'bench', '测量员', ?2)",
                   {userId, orgId});
    Store::SetToken(connection, u"bench"_s, Token);
}

QString UserInfo()
{
    return u"bench:"_s + QString::fromLatin1(Token);
}

QByteArray Request(const QByteArray &line, const QByteArray &body, const QByteArray &key)
{
    return line + " HTTP/1.1\r\nHost: localhost\r\nAuthorization: Basic " +
           UserInfo().toLatin1().toBase64() +
           "\r\nAccept: application/cbor\r\nContent-Type: application/cbor\r\nContent-Length: " +
           QByteArray::number(body.size()) +
           (key.isEmpty() ? QByteArray() : "\r\nIdempotency-Key: " + key) + "\r\n\r\n" + body;
}

ServerRun::ServerRun(const QString &database)
{
    process_.setStandardErrorFile(qEnvironmentVariable("QEL_SERVER_LOG", QProcess::nullDevice()));
    process_.start(QStringLiteral(QEL_SERVER_PROGRAM), {u"--database"_s, database, u"--listen"_s,
                                                        u"127.0.0.1:0"_s, u"--exit-with-parent"_s});
    process_.waitForReadyRead();
    const QByteArray announced = process_.readLine().trimmed();
    port_ = announced.mid(announced.lastIndexOf(':') + 1).toUShort();
}

ServerRun::~ServerRun()
{
    process_.terminate();
    process_.waitForFinished();
}

} // namespace Qel::Bench
