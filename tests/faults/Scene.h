#pragma once

#include "faults/Client.h"
#include "faults/Report.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace Qel::Faults {

using Clients = std::vector<std::unique_ptr<Client>>;

/// Clients at work, each in a thread of its own, while the object lives.
class Load
{
public:
    Load(const Clients &clients, quint16 port);
    ~Load() { Stop(); }
    Q_DISABLE_COPY_MOVE(Load)

    void Stop(); ///< returns when every post has its answer or has lost its connection

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> threads_;
};

/// What a fault meets: a database, clients that post to the server on it, and what comes of it.
struct Scene
{
    /// On a new database of the task's. The server is still to be started.
    Scene(const Task &task, int clientCount, Errors errors = Errors::NoEffect);
    /// On this one, without sample data.
    Scene(const Task &task, const QString &url, int clientCount, Errors errors = Errors::NoEffect);

    /// Lets the load go on for a random time, up to a quarter of a second.
    void LetRun();
    /// How long it takes from now until some post is acknowledged; a minute at most.
    std::chrono::nanoseconds TimeToNextPost() const;
    enum class Answer { Good, Any };
    /// For this long a query now and then, into `queries`. One without its row, or without even an
    /// error, is a finding.
    void AskMeanwhile(std::chrono::nanoseconds time, Answer expected = Answer::Good);
    /// After the load: holds every client's journal against the database.
    void Check();

    qint64 Refused() const; ///< posts answered with an error
    qint64 Lost() const;    ///< not answered

    /// With "20,113 posts acknowledged, 512 repeated, 3 answered with an error" behind `count`.
    Outcome Result(const QString &count, const QString &worst) const;

    Findings findings;
    Random random;
    Site site;
    Clients clients;
    Times queries;
    Times back; ///< how long the service was away

private:
    Scene(const Task &task, const QString &url, const QString &folder, bool withSampleData,
          int clientCount, Errors errors);
    qint64 Sum(qint64 (Client::*number)() const) const;
};

} // namespace Qel::Faults
