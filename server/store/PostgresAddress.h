#pragma once

#include <QByteArray>
#include <QList>

#include <utility>

namespace Qel::Store {

/// Which of the copies of a database a session is opened with.
enum class PostgresCopy {
    Primary, ///< the one that takes writes
    Any,     ///< a standby if there is one that answers
};

/// A "postgresql://" address, which may name several hosts: the copies of one database, whichever
/// of them is the primary at the time.
class PostgresAddress
{
public:
    /// All that libpq reads in it. Throws EStoreError, which does not name the address: it may hold
    /// a password.
    explicit PostgresAddress(const QByteArray &url);

    bool NamesSeveralHosts() const { return hosts_ > 1; }

    /// Names and values as libpq takes them. The hosts come in another order each time if any will
    /// do, so that sessions spread over them.
    QList<std::pair<QByteArray, QByteArray>> Parameters(PostgresCopy copy) const;

private:
    QList<std::pair<QByteArray, QByteArray>> given_;
    qsizetype hosts_ = 1;
};

} // namespace Qel::Store
