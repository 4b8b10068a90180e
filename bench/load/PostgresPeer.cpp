#include "Peer.h"

#include <libpq-fe.h>

#include <initializer_list>
#include <vector>

namespace Qel::Bench {

namespace {

class PostgresPeer : public Peer
{
public:
    explicit PostgresPeer(const QString &url)
        : connection_(PQconnectdb(url.toUtf8().constData()))
    {
        Expect(Command("SET jit = off; SET max_parallel_workers_per_gather = 0"));
    }
    ~PostgresPeer() override { PQfinish(connection_); }
    Q_DISABLE_COPY_MOVE(PostgresPeer)

    void Prepare(const QByteArray &page, const QByteArray &count) override
    {
        if (isReading_)
            Expect(Command("DEALLOCATE page; DEALLOCATE total"));
        isReading_ = true;
        Prepare("page", page);
        Prepare("total", count);
    }

    void Read() override
    {
        for (const char *name : {"page", "total"}) {
            PGresult *result = Run(name, {});
            for (int row = 0; row < PQntuples(result); ++row)
                for (int column = 0; column < PQnfields(result); ++column)
                    bytes_ += PQgetlength(result, row, column);
            Expect(result);
        }
    }

    void Store(const StoredRule &rule) override
    {
        if (!isWriting_) {
            isWriting_ = true;
            Prepare("rule", StoreRule);
            Prepare("log", "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2,"
                           " OPTION_TYPE, USER_ID, USER_NAME, OPTION_DATE, LAST_OPERATE) VALUES"
                           " (CAST(SRV_NEW_KEY('SYS_UPDATE_LOG') AS TEXT), 'UNI_ORG_RULE', $1,"
                           " 'ORG_HPTX', '2', '600001', '测量员', '2026-11-21 08:00:00', '1')");
            Prepare("key", StoreKey);
        }
        while (!TryStore(rule))
            Expect(Command("ROLLBACK"));
    }

private:
    /// False: others came in between.
    bool TryStore(const StoredRule &rule)
    {
        return Done(Command("BEGIN ISOLATION LEVEL SERIALIZABLE")) &&
               Done(Run("rule", {rule.orgId, rule.value})) && Done(Run("log", {rule.orgId})) &&
               Done(Run("key", {rule.key, rule.bodyHash, rule.answer})) && Done(Command("COMMIT"));
    }

    PGresult *Command(const char *sql) { return PQexec(connection_, sql); }

    void Prepare(const char *name, const QByteArray &sql)
    {
        Expect(PQprepare(connection_, name, sql.constData(), 0, nullptr));
    }

    PGresult *Run(const char *name, std::initializer_list<QByteArray> values)
    {
        std::vector<const char *> texts;
        for (const QByteArray &value : values)
            texts.push_back(value.constData());
        return PQexecPrepared(connection_, name, int(texts.size()), texts.data(), nullptr, nullptr,
                              0);
    }

    bool Done(PGresult *result)
    {
        const char *state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        if (state && QByteArrayView(state) == "40001") {
            PQclear(result);
            return false;
        }
        Expect(result);
        return true;
    }

    void Expect(PGresult *result)
    {
        const ExecStatusType status = PQresultStatus(result);
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK)
            qFatal("%s", PQerrorMessage(connection_));
        PQclear(result);
    }

    PGconn *connection_;
    bool isReading_ = false;
    bool isWriting_ = false;
    qint64 bytes_ = 0;
};

} // namespace

std::unique_ptr<Peer> OpenPostgresPeer(const QString &url)
{
    return std::make_unique<PostgresPeer>(url);
}

} // namespace Qel::Bench
