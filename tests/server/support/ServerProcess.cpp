#include "support/ServerProcess.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int Patience = 20'000; // milliseconds; a server under sanitizers on a busy machine

QByteArray HeaderOf(const QByteArray &head, const QByteArray &name)
{
    for (const QByteArray &line : head.split('\n'))
        if (line.left(name.size() + 1).toLower() == name.toLower() + ':')
            return line.mid(name.size() + 1).trimmed();
    return {};
}

} // namespace

QByteArray HttpReply::Header(const QByteArray &name) const
{
    return HeaderOf(head, name);
}

RawClient::RawClient(quint16 port)
{
    socket_.connectToHost(u"127.0.0.1"_s, port);
    socket_.waitForConnected(Patience);
}

void RawClient::Send(const QByteArray &bytes)
{
    socket_.write(bytes);
    while (socket_.bytesToWrite() > 0 && socket_.waitForBytesWritten(Patience)) {
    }
}

HttpReply RawClient::Receive()
{
    const auto complete = [this](HttpReply &reply) {
        const qsizetype headEnd = pending_.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return false;
        const QByteArray head = pending_.left(headEnd + 2);
        const qsizetype size = HeaderOf(head, "Content-Length").toLongLong();
        if (pending_.size() < headEnd + 4 + size)
            return false;
        reply.status = head.mid(9, 3).toInt();
        reply.head = head;
        reply.contentType = HeaderOf(head, "Content-Type");
        reply.body = pending_.mid(headEnd + 4, size);
        pending_.remove(0, headEnd + 4 + size);
        return true;
    };
    HttpReply reply;
    while (!complete(reply)) {
        if (!socket_.bytesAvailable() && !socket_.waitForReadyRead(Patience))
            break;
        pending_ += socket_.readAll();
    }
    return reply;
}

bool RawClient::WaitForClose(int milliseconds)
{
    return socket_.state() == QAbstractSocket::UnconnectedState ||
           socket_.waitForDisconnected(milliseconds);
}

QByteArray ToBytes(const HttpCall &call)
{
    const QByteArray type = call.format == Wire::Format::Cbor ? Wire::CborType : Wire::JsonType;
    QByteArray bytes = call.method + ' ' + call.path + " HTTP/1.1\r\nHost: localhost\r\n";
    if (call.method == "POST")
        bytes += "Content-Type: " + type +
                 "\r\nContent-Length: " + QByteArray::number(call.body.size()) + "\r\n";
    bytes += "Accept: " + (call.accept.isEmpty() ? type : call.accept) + "\r\n";
    if (!call.credential.isEmpty())
        bytes += "Authorization: Basic " + call.credential.toBase64() + "\r\n";
    if (!call.key.isEmpty())
        bytes += "Idempotency-Key: " + call.key + "\r\n";
    if (!call.position.isEmpty())
        bytes += "QEL-Position: " + call.position + "\r\n";
    return bytes + "\r\n" + call.body;
}

ServerProcess::ServerProcess(const QStringList &arguments, const QString &logFile)
{
    if (!logFile.isEmpty())
        process_.setStandardErrorFile(logFile, QIODevice::Append);
    process_.start(QStringLiteral(QEL_SERVER_PROGRAM),
                   QStringList{u"--listen"_s, u"127.0.0.1:0"_s} + arguments);
    QByteArray line;
    while (!line.endsWith('\n') && process_.waitForReadyRead(Patience))
        line += process_.readAllStandardOutput();
    port_ = line.trimmed().mid(line.lastIndexOf(':') + 1).toUShort();
    if (port_ == 0)
        qFatal("qel-server does not listen: %s", process_.readAllStandardError().constData());
}

ServerProcess::~ServerProcess()
{
    if (process_.state() == QProcess::NotRunning)
        return;
    process_.terminate();
    process_.waitForFinished(Patience);
}

QByteArray ServerProcess::Log()
{
    log_ += process_.readAllStandardError();
    return log_;
}

bool ServerProcess::WaitForLog(const QByteArray &text, int milliseconds)
{
    process_.setReadChannel(QProcess::StandardError);
    QElapsedTimer timer;
    timer.start();
    while (!Log().contains(text)) {
        const int left = milliseconds - static_cast<int>(timer.elapsed());
        if (left <= 0 || !process_.waitForReadyRead(left))
            return Log().contains(text);
    }
    return true;
}

quint16 ServerProcess::MetricsPort()
{
    if (metricsPort_ == 0 && WaitForLog("/metrics\"")) {
        const QByteArray before = Log().left(Log().indexOf("/metrics\""));
        metricsPort_ = before.mid(before.lastIndexOf(':') + 1).toUShort();
    }
    return metricsPort_;
}

QByteArray ServerProcess::MetricsPage()
{
    RawClient client(MetricsPort());
    client.Send("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n");
    return client.Receive().body;
}

double ServerProcess::Metric(const QByteArray &sample)
{
    for (const QByteArray &line : MetricsPage().split('\n'))
        if (line.startsWith(sample + ' '))
            return line.mid(sample.size() + 1).toDouble();
    return 0;
}

bool ServerProcess::WaitForMetric(const QByteArray &sample, double atLeast)
{
    QElapsedTimer timer;
    timer.start();
    while (Metric(sample) < atLeast)
        if (timer.elapsed() > Patience)
            return false;
    return true;
}

HttpReply ServerProcess::Call(const HttpCall &call) const
{
    RawClient client(port_);
    client.Send(ToBytes(call));
    return client.Receive();
}

Wire::PostAnswer ServerProcess::Post(const Wire::PostRequest &request, const QByteArray &key,
                                     Wire::Format format) const
{
    const HttpReply reply = Call({.path = "/NorvaneServlet",
                                  .body = Wire::Encode(request, format),
                                  .format = format,
                                  .key = key});
    if (reply.status != 200)
        throw EQelError(u"HTTP %1: %2"_s.arg(reply.status).arg(QString::fromUtf8(reply.body)));
    return Wire::DecodePostAnswer(reply.body, format);
}

HttpReply ServerProcess::Query(const QString &sql, int page, int pageSize,
                               Wire::Format format) const
{
    const Wire::QueryRequest request{sql, page, pageSize, page == 0 ? 1 : 2};
    return Call(
        {.path = "/NorvaneSelectServlet", .body = Wire::Encode(request, format), .format = format});
}

} // namespace Qel
