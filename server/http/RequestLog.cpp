#include "http/RequestLog.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

constexpr qsizetype LongestText = 4'000;

std::atomic<LogFormat> TheFormat = LogFormat::Text;

/// In quotes, on one line, without anything that a terminal would obey or a reader would not see.
/// The same in both formats: a JSON string.
QByteArray Quoted(const QString &text)
{
    QString quoted;
    for (const QChar c : text.left(LongestText)) {
        if (c == u'"' || c == u'\\')
            quoted += u'\\';
        const bool endsLine = c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
        if ((c.isPrint() && !endsLine) || c.isSurrogate())
            quoted += c;
        else
            quoted += u"\\u%1"_s.arg(c.unicode(), 4, 16, QChar(u'0'));
    }
    return '"' + quoted.toUtf8() + '"';
}

/// Local time with its offset, "2026-11-21T08:00:00.123+08:00". Made anew once a second: to find
/// out what local time is takes longer than the rest of the line.
QByteArray Time()
{
    thread_local qint64 madeAt = -1;
    thread_local QByteArray text;
    constexpr int milliseconds = 20; // where they stand
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now / 1000 != madeAt) {
        madeAt = now / 1000;
        const QDateTime local = QDateTime::fromSecsSinceEpoch(madeAt);
        text = local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs).toLatin1();
    }
    return text.replace(milliseconds, 3, QByteArray::number(1000 + now % 1000).sliced(1));
}

/// One line, pair by pair.
class Line
{
public:
    Line()
        : json_(TheFormat == LogFormat::Json)
    {
        const QByteArray time = Time();
        text_ = json_ ? "{\"time\":\"" + time + '"' : time;
    }

    void Add(const char *name, const QByteArray &value)
    {
        text_ += json_ ? ",\"" + QByteArray(name) + "\":" : ' ' + QByteArray(name) + '=';
        text_ += value;
    }
    void Number(const char *name, qint64 value) { Add(name, QByteArray::number(value)); }
    /// Only if there is something to say.
    void Text(const char *name, const QString &text)
    {
        if (!text.isEmpty())
            Add(name, Quoted(text));
    }
    void Text(const char *name, const QByteArray &text) { Text(name, QString::fromUtf8(text)); }
    /// Letters and digits, which need no quotes for a person.
    void Word(const char *name, const QByteArray &word)
    {
        if (!word.isEmpty())
            Add(name, json_ ? '"' + word + '"' : word);
    }

    void Write()
    {
        text_ += json_ ? "}\n" : "\n";
        static std::mutex oneLine;
        const std::lock_guard lock(oneLine);
        std::fwrite(text_.constData(), 1, static_cast<std::size_t>(text_.size()), stderr);
    }

private:
    bool json_;
    QByteArray text_;
};

} // namespace

void SetLogFormat(LogFormat format)
{
    TheFormat = format;
}

void WriteLog(const LogEntry &entry)
{
    Line line;
    line.Word("ref", entry.reference.toLatin1());
    line.Text("address", entry.address);
    line.Text("request", QByteArray(entry.method + ' ' + entry.path).trimmed());
    line.Number("status", entry.status);
    line.Number("us", static_cast<qint64>(entry.took.count()));
    line.Text("user", entry.user);
    line.Text("what", entry.what);
    line.Word("hash", entry.hash);
    line.Word("tables", entry.tables);
    if (entry.rows >= 0)
        line.Number("rows", entry.rows);
    if (entry.received >= 0)
        line.Number("received", entry.received);
    line.Number("bytes", entry.bytes);
    line.Text("code", entry.code);
    line.Text("detail", entry.detail);
    line.Text("statement", entry.statement);
    line.Write();
}

void WriteEvent(const char *event, const QString &detail)
{
    Line line;
    line.Text("event", QByteArray(event));
    line.Text("detail", detail);
    line.Write();
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
