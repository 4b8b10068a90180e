#pragma once

#include "store/Connection.h"

#include <QString>

#include <chrono>
#include <memory>

namespace Qel::Store {

/// Where the rows live. Makes connections; threads may share it.
class Database
{
public:
    virtual ~Database() = default;

    /// May change rows.
    virtual std::unique_ptr<Connection> OpenWriter() = 0;
    /// How many of those have work to do at the same time; more would only wait for each other.
    virtual int Writers() const = 0;
    /// Whether a Transaction within another one is a part of it, so that several share the wait
    /// for the disk.
    virtual bool SharesTransactions() const { return false; }
    /// Can read and nothing else, whatever text it is given. It may be one of a copy of the
    /// database that follows at a short distance: see Connection::Shows.
    virtual std::unique_ptr<Connection> OpenReader() = 0;
    /// The same, and sees the state of the last commit.
    virtual std::unique_ptr<Connection> OpenPrimaryReader() { return OpenReader(); }
    /// The database itself ends statements of readers that are opened from now on after this time,
    /// if it can: for when whoever asked has no way left to say so.
    virtual void LimitReading(std::chrono::milliseconds) {}
    /// Whether OpenReader may give a copy at all.
    virtual bool HasCopies() const { return false; }

    /// `url`: "sqlite:PATH", whose file is made if it is not there, or "postgresql://..." with
    /// all that libpq reads in it. Nothing is connected yet. Throws EStoreError, which does not
    /// name the address: it may hold a password.
    static std::unique_ptr<Database> Open(const QString &url);
};

} // namespace Qel::Store
