#include "host/Session.h"

#include "dataset/QelError.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QXmlStreamWriter>

#include <memory>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr int TimeOut = 15'000; // milliseconds

QNetworkRequest SessionRequest(const QUrl &server)
{
    QUrl url = server.adjusted(QUrl::RemoveUserInfo | QUrl::StripTrailingSlash);
    url.setPath(url.path() + u"/session"_s);
    QNetworkRequest request(url);
    request.setRawHeader("Accept", "application/json");
    const QString credential = server.userName() + u':' + server.password();
    request.setRawHeader("Authorization", "Basic " + credential.toUtf8().toBase64());
    request.setTransferTimeout(TimeOut);
    return request;
}

bool IsLoopback(const QUrl &server)
{
    return server.host() == u"localhost" || QHostAddress(server.host()).isLoopback();
}

} // namespace

Session FetchSession(const QUrl &server)
{
    QNetworkAccessManager network;
    if (IsLoopback(server))
        network.setProxy(QNetworkProxy::NoProxy);
    const std::unique_ptr<QNetworkReply> reply(network.get(SessionRequest(server)));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);

    if (reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 401)
        throw EQelError(u"服务器 %1 不接受该用户或令牌。"_s.arg(ShownAddress(server)));
    if (reply->error() != QNetworkReply::NoError)
        throw EQelError(u"无法连接服务器 %1：%2"_s.arg(ShownAddress(server), reply->errorString()));
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    Session session;
    for (auto value = answer.begin(); value != answer.end(); ++value)
        session.insert(value.key(), value.value().toString());
    if (session.value(u"UserId"_s).isEmpty())
        throw EQelError(u"%1 不是本系统的应用服务器。"_s.arg(ShownAddress(server)));
    return session;
}

QByteArray RunParamsOf(const Session &session)
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.writeStartDocument();
    xml.writeStartElement(u"RunParams"_s);
    xml.writeEmptyElement(u"RunParam"_s);
    for (const auto &name : {u"UserId"_s, u"UserCode"_s, u"UserName"_s, u"OrgId"_s, u"OrgAbbr"_s,
                             u"OrgName"_s, u"PinCode"_s, u"CaType"_s})
        xml.writeAttribute(name, session.value(name));
    xml.writeEndDocument();
    return document.toBase64();
}

QString ShownAddress(const QUrl &server)
{
    return server.toDisplayString(QUrl::RemoveUserInfo);
}

} // namespace Qel::Host
