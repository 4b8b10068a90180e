#include "faults/Report.h"

#include "dataset/QelError.h"

#include <QFile>
#include <QLocale>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr qsizetype ShownFindings = 20;

} // namespace

void Findings::Add(const QString &finding)
{
    const std::lock_guard lock(lock_);
    ++count_;
    if (shown_.size() < ShownFindings)
        shown_.append(finding);
}

qsizetype Findings::Count() const
{
    const std::lock_guard lock(lock_);
    return count_;
}

Outcome Findings::Result(const QString &count, const QString &worst) const
{
    const std::lock_guard lock(lock_);
    return {{}, count, worst, shown_, count_};
}

void Times::Add(std::chrono::nanoseconds time)
{
    const double milliseconds = std::chrono::duration<double, std::milli>(time).count();
    sorted_.insert(std::upper_bound(sorted_.begin(), sorted_.end(), milliseconds), milliseconds);
}

void Times::Add(const Times &others)
{
    sorted_ += others.sorted_;
    std::sort(sorted_.begin(), sorted_.end());
}

double Times::Quantile(double share) const
{
    if (sorted_.isEmpty())
        return 0;
    const auto rank = qsizetype(std::ceil(share * double(sorted_.size())));
    return sorted_[std::clamp<qsizetype>(rank, 1, sorted_.size()) - 1];
}

QString Times::Text() const
{
    return u"p50 %1, p99 %2, longest %3"_s.arg(MillisecondsText(Quantile(0.5)),
                                               MillisecondsText(Quantile(0.99)),
                                               MillisecondsText(Quantile(1)));
}

QString MillisecondsText(double milliseconds)
{
    return u"%1 ms"_s.arg(milliseconds, 0, 'f', milliseconds < 10 ? 1 : 0);
}

QString MillisecondsText(std::chrono::nanoseconds time)
{
    return MillisecondsText(std::chrono::duration<double, std::milli>(time).count());
}

QString Counted(qint64 number)
{
    return QLocale(QLocale::English).toString(number);
}

void WriteTable(const QString &file, const QString &database, const QString &heading,
                const QList<Outcome> &outcomes)
{
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        throw EQelError(u"无法读取 %1。"_s.arg(file));
    QString text = QString::fromUtf8(in.readAll());
    const QString begin = u"<!-- %1 -->\n"_s.arg(database);
    const QString end = u"<!-- end of %1 -->\n"_s.arg(database);
    const qsizetype from = text.indexOf(begin);
    const qsizetype to = text.indexOf(end);
    if (from < 0 || to < from)
        throw EQelError(u"%1 里没有 %2 的表格位置。"_s.arg(file, database));
    QString table = heading + u"\n\n| What | Done | Result | Times |\n|---|---|---|---|\n"_s;
    for (const Outcome &outcome : outcomes) {
        const QString result = outcome.findingCount == 0
                                   ? u"nothing found"_s
                                   : u"**%1 findings**"_s.arg(outcome.findingCount);
        table +=
            u"| %1 | %2 | %3 | %4 |\n"_s.arg(outcome.what, outcome.count, result, outcome.worst);
    }
    text.replace(from + begin.size(), to - from - begin.size(), table);
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(text.toUtf8()) < 0 || !out.commit())
        throw EQelError(u"无法写入 %1。"_s.arg(file));
}

} // namespace Qel::Faults
