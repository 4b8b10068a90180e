#pragma once

#include "faults/Line.h"
#include "faults/Posts.h"
#include "faults/Report.h"

#include <atomic>
#include <optional>

namespace Qel::Faults {

/// What a client takes an answer for that is an error.
enum class Errors {
    NoEffect,      ///< the server runs on: what it answers with an error has no effect
    UnknownEffect, ///< the database came and went: all of the post or nothing of it
};

/// A client that posts one change after the other to its own domain and keeps its own journal of
/// what the server acknowledged. Belongs to one thread at a time.
class Client
{
public:
    Client(int number, quint64 seed, Findings &findings);

    const Domain &Own() const { return domain_; }
    void SetErrors(Errors errors) { errors_ = errors; }

    /// Posts until told to stop or until the connection is lost (or, where an error leaves the
    /// effect unknown, until one comes). Takes up first what was left without an answer: in half
    /// of the cases it repeats the post with its key.
    void Work(quint16 port, const std::atomic<bool> &stop);

    /// While no post is under way: holds the database against the journal. What was acknowledged
    /// is there, once, and the log has it; what was not is there whole or not at all, with its log
    /// and its key. From then on the client knows which.
    void Check(Store::Connection &connection);

    qint64 Acknowledged() const { return acknowledged_; }
    qint64 Repeated() const { return repeated_; }
    qint64 Refused() const { return refused_; } ///< answered with an error
    qint64 Lost() const { return lost_; }       ///< not answered

private:
    /// A post on its way: sent, and not known to be stored.
    struct Pending
    {
        QByteArray bytes;
        QByteArray key; ///< empty: none
        Wire::Format format;
        Records after;
        QStringList entries;
        bool isStored = false; ///< found in the database although no answer had come
    };
    /// The last acknowledged post with a key, and its answer.
    struct Answered
    {
        QByteArray bytes;
        QByteArray answer;
    };

    bool SendPending(Line &line);
    bool RepeatAnswered(Line &line);
    void TakeAnswer(const HttpReply &reply);
    Pending NewPending();
    void Tell(const QString &finding);

    Domain domain_;
    Random random_;
    Findings &findings_;
    Errors errors_ = Errors::NoEffect;
    int number_;
    int stamp_ = 0;

    Records records_;                ///< as acknowledged or found
    QHash<QString, QString> stores_; ///< ids by name
    QStringList entries_;            ///< due since the last check
    qint64 lastEntry_ = 0;
    std::optional<Pending> pending_;
    std::optional<Answered> answered_;

    std::atomic<qint64> acknowledged_ = 0;
    std::atomic<qint64> repeated_ = 0;
    std::atomic<qint64> refused_ = 0;
    std::atomic<qint64> lost_ = 0;
};

} // namespace Qel::Faults
