#pragma once

#include "store/Database.h"
#include "store/PostgresAddress.h"

#include <QByteArray>

namespace Qel::Store {

/// The role that queries of clients run as: it may SELECT what clients may read, and nothing else.
inline constexpr char PostgresReaderRole[] = "qel_reader";

/// A PostgreSQL database. If its address names several hosts, writing sessions are opened with the
/// primary among them and reading ones with a standby, whichever answers. Whoever the address names
/// owns the tables and writes; reading sessions put on PostgresReaderRole right after they have
/// been opened. Sessions that the server ended (it was restarted) are opened anew, as Connection
/// says.
class PostgresDatabase : public Database
{
public:
    /// Throws EStoreError if libpq cannot read the address.
    explicit PostgresDatabase(const QString &url);

    std::unique_ptr<Connection> OpenWriter() override;
    int Writers() const override;
    std::unique_ptr<Connection> OpenReader() override;
    std::unique_ptr<Connection> OpenPrimaryReader() override;
    void LimitReading(std::chrono::milliseconds time) override { readingTime_ = time; }
    bool HasCopies() const override { return address_.NamesSeveralHosts(); }

private:
    PostgresAddress address_;
    std::chrono::milliseconds readingTime_{0}; ///< 0: no limit
};

/// "?1" as PostgreSQL writes it, "$1", outside of quoted text.
QByteArray NumberedParameters(QByteArrayView sql);

/// A number as the database wrote it in the form of PlainNumber: no trailing zeros, and no more
/// than 15 significant digits where it has a fraction.
QByteArray PlainNumeric(QByteArrayView text);

} // namespace Qel::Store
