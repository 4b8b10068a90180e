#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace Qel::Bench {

/// A rule of an organisation as it is stored, with its entry in the change log and the key of the
/// post that brought it.
struct StoredRule
{
    QByteArray orgId;
    QByteArray value;
    QByteArray logId; ///< where no sequence gives it
    QByteArray key;
    QByteArray bodyHash;
    QByteArray answer;
};

/// One session with the database alone, as a program on its C library would hold it: with the
/// server's settings and everything prepared once. It checks nothing. Ends the program with a
/// message if something fails.
class Peer
{
public:
    virtual ~Peer() = default;

    /// The statements of Read.
    virtual void Prepare(const QByteArray &page, const QByteArray &count) = 0;
    /// A page and its total, every column looked at.
    virtual void Read() = 0;

    /// The rule, its log and its key in one transaction of the server's kind, run again after a
    /// conflict.
    virtual void Store(const StoredRule &rule) = 0;
};

/// `url`: "sqlite:PATH" or "postgresql://...".
std::unique_ptr<Peer> OpenPeer(const QString &url);

std::unique_ptr<Peer> OpenSqlitePeer(const QString &path);
std::unique_ptr<Peer> OpenPostgresPeer(const QString &url);

/// The three statements of Store, parameters as "?1" or "$1"; the log's in Peer's own dialect.
inline constexpr char StoreRule[] =
    "INSERT INTO UNI_ORG_RULE (ORG_ID, RULE_CODE, RULE_NAME, RULE_VALUE, VALUE_TYPE, ENABLE_FLAG,"
    " LAST_USER, LAST_USER_ID, LAST_UPDATE, LAST_OPERATE) VALUES ($1, 'ORG_HPTX', '到货提醒', $2,"
    " 'B', '1', '测量员', '600001', '2026-11-21 08:00:00', '1') ON CONFLICT (ORG_ID, RULE_CODE)"
    " DO UPDATE SET RULE_NAME = excluded.RULE_NAME, RULE_VALUE = excluded.RULE_VALUE,"
    " VALUE_TYPE = excluded.VALUE_TYPE, ENABLE_FLAG = excluded.ENABLE_FLAG,"
    " LAST_USER = excluded.LAST_USER, LAST_USER_ID = excluded.LAST_USER_ID,"
    " LAST_UPDATE = excluded.LAST_UPDATE, LAST_OPERATE = excluded.LAST_OPERATE";
inline constexpr char StoreKey[] = "INSERT INTO SRV_IDEMPOTENCY (KEY, BODY_HASH, ANSWER, CREATED)"
                                   " VALUES ($1, $2, $3, '2026-11-21 08:00:00')";

} // namespace Qel::Bench
