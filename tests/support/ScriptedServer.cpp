#include "support/ScriptedServer.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

namespace Qel::Test {

namespace {

/// `position`: empty for no such header.
QByteArray HttpAnswer(int status, const QByteArray &type, const QByteArray &position,
                      const QByteArray &body)
{
    const QByteArray positionLine =
        position.isEmpty() ? QByteArray() : "QEL-Position: " + position + "\r\n";
    return "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nContent-Type: " + type +
           "\r\n" + positionLine + "Content-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

bool SameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

QString ScriptedServer::RecordedPost::Value(const QString &name, int row) const
{
    if (row < 0 || row >= rows.size())
        return {};
    for (const auto &[valueName, value] : rows.at(row)) {
        if (SameName(valueName, name))
            return value;
    }
    return {};
}

QStringList ScriptedServer::RecordedPost::Names(int row) const
{
    QStringList names;
    if (row >= 0 && row < rows.size()) {
        for (const auto &value : rows.at(row))
            names << value.first;
    }
    return names;
}

// --- Script ------------------------------------------------------------------------------------

ScriptedServer::Script &ScriptedServer::Script::Answer(const RowSet &rows, qint64 total)
{
    answer_ = [rows, total](Wire::Format format, const Wire::PostRequest &) {
        const qint64 all = total < 0 ? rows.RowCount() : total;
        return Wire::Encode(Wire::QueryAnswer{all, rows}, format);
    };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Results(const QList<Wire::ResultRow> &rows)
{
    answer_ = [rows](Wire::Format format, const Wire::PostRequest &) {
        return Wire::Encode(Wire::PostAnswer{rows}, format);
    };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Code(const QString &code,
                                                     const Wire::NamedValues &values)
{
    answer_ = [code, values](Wire::Format format, const Wire::PostRequest &post) {
        const QList<Wire::ResultRow> rows(post.rows.size(), Wire::ResultRow{code, values});
        return Wire::Encode(Wire::PostAnswer{rows}, format);
    };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Codes(const QStringList &codes)
{
    QList<Wire::ResultRow> rows;
    for (const QString &code : codes)
        rows.append({code, {}});
    return Results(rows);
}

ScriptedServer::Script &ScriptedServer::Script::Error(int status, const QString &code,
                                                      const QString &message,
                                                      const QString &reference)
{
    status_ = status;
    answer_ = [error = Wire::ErrorAnswer{code, message, reference}](Wire::Format format,
                                                                    const Wire::PostRequest &) {
        return Wire::Encode(error, format);
    };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::DatabaseDown()
{
    return Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s);
}

ScriptedServer::Script &ScriptedServer::Script::Status(int status, const QByteArray &body)
{
    status_ = status;
    type_ = "text/html";
    answer_ = [body](Wire::Format, const Wire::PostRequest &) { return body; };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Body(const QByteArray &body)
{
    answer_ = [body](Wire::Format, const Wire::PostRequest &) { return body; };
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Position(const QByteArray &position)
{
    position_ = position;
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::BreakConnection()
{
    manner_ = Manner::Break;
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::HalfAnswer()
{
    manner_ = Manner::Half;
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::HoldUntilReleased()
{
    held_ = true;
    return *this;
}

ScriptedServer::Script &ScriptedServer::Script::Times(int uses)
{
    uses_ = uses;
    return *this;
}

// --- Server ------------------------------------------------------------------------------------

ScriptedServer::ScriptedServer(QObject *parent)
    : QObject(parent)
{
    connect(&listener_, &QTcpServer::newConnection, this, &ScriptedServer::Accept);
    if (!listener_.listen(QHostAddress::LocalHost))
        qFatal("ScriptedServer: no port to listen at");
    port_ = listener_.serverPort();
}

ScriptedServer::~ScriptedServer()
{
    Stop();
}

QString ScriptedServer::Url(const QString &userInfo) const
{
    const QString user = userInfo.isEmpty() ? QString() : userInfo + u'@';
    return u"http://"_s + user + u"127.0.0.1:"_s + QString::number(port_);
}

ScriptedServer::Script &ScriptedServer::OnQuery(const QString &sqlPart)
{
    Script &script = scripts_.emplace_back();
    script.query_ = [sqlPart](const QString &sql) { return sql.contains(sqlPart); };
    return script;
}

ScriptedServer::Script &ScriptedServer::OnQueryExact(const QString &sql)
{
    Script &script = scripts_.emplace_back();
    script.query_ = [sql](const QString &sent) { return sent == sql; };
    return script;
}

ScriptedServer::Script &ScriptedServer::OnAnyQuery()
{
    return OnQuery(QString());
}

ScriptedServer::Script &ScriptedServer::OnPost(const QString &manager, const QString &method)
{
    Script &script = scripts_.emplace_back();
    script.post_ = [manager, method](const Wire::PostRequest &post) {
        return post.manager == manager && post.method == method;
    };
    return script;
}

ScriptedServer::Script &ScriptedServer::OnPost(const QString &method)
{
    Script &script = scripts_.emplace_back();
    script.post_ = [method](const Wire::PostRequest &post) { return post.method == method; };
    return script;
}

void ScriptedServer::ClearScripts()
{
    scripts_.clear();
}

QStringList ScriptedServer::Statements() const
{
    QStringList texts;
    for (const RecordedQuery &query : queries_)
        texts << query.sql;
    return texts;
}

ScriptedServer::RecordedQuery ScriptedServer::LastQuery() const
{
    if (queries_.isEmpty())
        QTest::qFail("no query has come", __FILE__, __LINE__);
    return queries_.isEmpty() ? RecordedQuery{} : queries_.last();
}

ScriptedServer::RecordedPost ScriptedServer::LastPost() const
{
    if (posts_.isEmpty())
        QTest::qFail("no post has come", __FILE__, __LINE__);
    return posts_.isEmpty() ? RecordedPost{} : posts_.last();
}

void ScriptedServer::ClearRecords()
{
    queries_.clear();
    posts_.clear();
    unexpected_.clear();
    headers_.clear();
    targets_.clear();
}

void ScriptedServer::Release()
{
    for (const auto &send : std::exchange(heldBack_, {}))
        send();
}

void ScriptedServer::DropConnections()
{
    heldBack_.clear();
    const auto sockets = incoming_.keys();
    for (QTcpSocket *socket : sockets)
        socket->abort();
}

void ScriptedServer::Stop()
{
    listener_.close();
    DropConnections();
}

bool ScriptedServer::Restart()
{
    return listener_.listen(QHostAddress::LocalHost, port_);
}

void ScriptedServer::Accept()
{
    while (QTcpSocket *socket = listener_.nextPendingConnection()) {
        ++connections_;
        incoming_.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { Read(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            incoming_.remove(socket);
            socket->deleteLater();
        });
    }
}

void ScriptedServer::Read(QTcpSocket *socket)
{
    QByteArray &bytes = incoming_[socket];
    bytes += socket->readAll();
    const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return;
    const QList<QByteArray> lines = bytes.first(headEnd).split('\n');
    QHash<QByteArray, QByteArray> headers;
    for (const QByteArray &line : lines.sliced(1)) {
        const qsizetype colon = line.indexOf(':');
        headers.insert(line.first(colon).trimmed().toLower(), line.sliced(colon + 1).trimmed());
    }
    const qsizetype bodyStart = headEnd + 4;
    const qsizetype length = headers.value("content-length").toLongLong();
    if (bytes.size() < bodyStart + length)
        return;
    const QByteArray body = bytes.sliced(bodyStart, length);
    bytes.remove(0, bodyStart + length);
    Handle(socket, {lines.first().split(' ').value(1), headers, body});
}

void ScriptedServer::Handle(QTcpSocket *socket, const Incoming &request)
{
    targets_.append(request.target);
    headers_.append(request.headers);
    const Wire::Format format = request.headers.value("content-type") == Wire::JsonType
                                    ? Wire::Format::Json
                                    : Wire::Format::Cbor;
    Script *script = nullptr;
    Wire::PostRequest post;
    if (request.target.endsWith("SelectServlet")) {
        const Wire::QueryRequest query = Wire::DecodeQueryRequest(request.body, format);
        queries_.append({query.sql, query.page, query.pageSize, query.queryType});
        script = Match([&](Script &s) { return s.query_ && s.query_(query.sql); }, query.sql);
    } else {
        post = Wire::DecodePostRequest(request.body, format);
        const QString key = QString::fromLatin1(request.headers.value("idempotency-key"));
        posts_.append({post.manager, post.method, post.rows, key});
        script = Match([&](Script &s) { return s.post_ && s.post_(post); },
                       post.manager + u'.' + post.method);
    }
    emit RequestArrived();

    Script unexpected;
    unexpected.Error(500, u"test.unexpected"_s, u"没有为这个请求准备回答"_s, {});
    if (!script)
        script = &unexpected;
    const QByteArray type =
        script->type_.isEmpty() ? request.headers.value("content-type") : script->type_;
    const QByteArray body = script->answer_ ? script->answer_(format, post) : QByteArray();
    const QByteArray answer = HttpAnswer(script->status_, type, script->position_, body);
    const auto send = [socket = QPointer<QTcpSocket>(socket), answer, manner = script->manner_] {
        if (!socket)
            return;
        if (manner == Script::Manner::Whole) {
            socket->write(answer);
            return;
        }
        if (manner == Script::Manner::Half)
            socket->write(answer.first(answer.size() - 1 - answer.size() / 4));
        socket->disconnectFromHost();
    };
    if (script->held_)
        heldBack_.push_back(send);
    else
        send();
}

ScriptedServer::Script *ScriptedServer::Match(const std::function<bool(Script &)> &matches,
                                              const QString &what)
{
    for (Script &script : scripts_) {
        if (script.uses_ == 0 || !matches(script))
            continue;
        if (script.uses_ > 0)
            --script.uses_;
        return &script;
    }
    unexpected_.append(what);
    return nullptr;
}

} // namespace Qel::Test
