#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace Qel::Faults {

/// How a database server is stopped.
enum class Stop {
    Fast,        ///< its sessions are told to end
    Immediate,   ///< at once, as after a crash: it recovers when it starts
    KillSession, ///< one session's process is killed, which ends all others and recovers
};

/// Where the databases of the scenarios stand. What is committed there survives the processes.
class Bed
{
public:
    Bed();
    virtual ~Bed() = default;

    virtual QString Name() const = 0; ///< "sqlite"
    /// The address of a new, empty database whose tables are files below `folder`.
    virtual QString NewDatabase(const QString &folder) = 0;
    /// After the server of the database has died: returns when nothing that it began goes on.
    virtual void WaitUntilQuiet(const QString &url) = 0;
    /// Returns when the database takes connections again. Only where the database is a server.
    virtual void Restart(const QString &url, Stop how) = 0;
    /// The database keeps its connections and answers nothing until it is thawed.
    virtual void Freeze() = 0;
    virtual void Thaw() = 0;

    QString NewFolder() const;

    /// `name`: "sqlite" or "postgresql", which starts a cluster of its own.
    static std::unique_ptr<Bed> Make(const QString &name);

protected:
    const QTemporaryDir &Folder() const { return folder_; }

private:
    QTemporaryDir folder_;
    mutable int folders_ = 0;
};

} // namespace Qel::Faults
