#include "http/RequestLog.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <cstdio>
#include <mutex>

namespace Qel::Http {

namespace {

constexpr qsizetype LongestText = 4'000;

/// In quotes, on one line.
QByteArray Quoted(const QString &text)
{
    QByteArray quoted = text.left(LongestText).toUtf8();
    quoted.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n").replace('\r', "\\r");
    return '"' + quoted + '"';
}

} // namespace

void WriteLog(const LogEntry &entry)
{
    QByteArray line = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toLatin1();
    const auto add = [&line](const char *name, const QByteArray &value) {
        if (!value.isEmpty())
            line += ' ' + QByteArray(name) + '=' + value;
    };
    const auto addText = [&](const char *name, const QString &text) {
        add(name, text.isEmpty() ? QByteArray() : Quoted(text));
    };
    add("ref", entry.reference.toLatin1());
    addText("request", QString::fromUtf8(entry.method + ' ' + entry.path));
    add("status", QByteArray::number(entry.status));
    add("us", QByteArray::number(static_cast<qint64>(entry.took.count())));
    addText("user", entry.user);
    addText("what", entry.what);
    add("rows", entry.rows < 0 ? QByteArray() : QByteArray::number(entry.rows));
    add("bytes", QByteArray::number(entry.bytes));
    add("code", entry.code);
    addText("detail", entry.detail);
    addText("statement", entry.statement);
    line += '\n';

    static std::mutex oneLine;
    const std::lock_guard lock(oneLine);
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

QString NewReference()
{
    static constexpr char letters[] = "ABCDEFGHJKMNPQRSTUVWXYZ23456789";
    constexpr int count = sizeof letters - 1;
    QString reference(10, QChar());
    for (QChar &place : reference)
        place = QLatin1Char(letters[QRandomGenerator::global()->bounded(count)]);
    return reference;
}

} // namespace Qel::Http
