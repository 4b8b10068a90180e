#pragma once

#include "faults/Line.h"
#include "store/Database.h"
#include "support/ServerProcess.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

namespace Qel::Faults {

/// A database for one scenario, with domains of clients, and the server on it.
class Site
{
public:
    /// `url` is an empty database; `folder` takes the server's log.
    Site(const QString &url, const QString &folder, bool withSampleData, int domains);
    ~Site();

    const QString &Url() const { return url_; }
    std::unique_ptr<Store::Connection> Connect(); ///< the harness's own; may write

    /// How long it took from the start of the process until a query was answered.
    std::chrono::nanoseconds StartServer(const QStringList &more = {});
    void LaunchServer(const QStringList &more); ///< until it listens
    void KillServer();                          ///< SIGKILL
    /// Starts the server and kills it before or while it prepares its database.
    void KillStarting(std::chrono::microseconds after);
    ServerProcess &Server() { return *server_; }
    quint16 Port() const { return server_->Port(); }

    /// Whether a query of the operator of domain 0 is answered with its one row.
    bool Answers() const;
    /// How long it takes from now until it is; half a minute at most.
    std::chrono::nanoseconds TimeToAnswer() const;

    /// What the threads of the server have done since it started.
    struct Effort
    {
        std::chrono::nanoseconds ran{};
        std::chrono::nanoseconds waited{}; ///< for a processor, others being at work
    };
    Effort ServerEffort() const;

private:
    QString url_;
    QString log_;
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<ServerProcess> server_;
};

/// The request of such a query.
QByteArray GoodQuery();

} // namespace Qel::Faults
