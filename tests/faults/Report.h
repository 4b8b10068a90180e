#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <mutex>

namespace Qel::Faults {

/// What one scenario did and found: a line of the table in docs/faults.md.
struct Outcome
{
    QString what = {};
    QString count; ///< what was really done: "1,000 kills, 20,113 posts"
    QString worst; ///< times
    QStringList findings;
    qsizetype findingCount = 0;
    double seconds = 0;
};

/// What went against the rules during a scenario. Threads may share it.
class Findings
{
public:
    void Add(const QString &finding);
    qsizetype Count() const;
    /// With the first of them.
    Outcome Result(const QString &count, const QString &worst) const;

private:
    mutable std::mutex lock_;
    qsizetype count_ = 0;
    QStringList shown_;
};

class Stopwatch
{
public:
    std::chrono::nanoseconds Elapsed() const { return std::chrono::steady_clock::now() - begin_; }

private:
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

/// 12.5 as "13 ms", 1.25 as "1.3 ms".
QString MillisecondsText(double milliseconds);
QString MillisecondsText(std::chrono::nanoseconds time);

/// Times of one kind, in milliseconds.
class Times
{
public:
    void Add(std::chrono::nanoseconds time);
    void Add(const Times &others);
    qsizetype Count() const { return sorted_.size(); }
    /// `share` of 0.99: what 99 of 100 stay under; 1: the longest.
    double Quantile(double share) const;
    QString Text() const; ///< "p50 1.0 ms, p99 2.0 ms, longest 3.0 ms"

private:
    QList<double> sorted_;
};

/// 12345 as "12,345".
QString Counted(qint64 number);

/// Puts the outcomes into the file between the two lines that mark the database's table.
void WriteTable(const QString &file, const QString &database, const QString &heading,
                const QList<Outcome> &outcomes);

} // namespace Qel::Faults
