#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <array>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Records = 20; // of each kind; enough for posts to meet in every order

const QString RollBack = u"com.business.rollback.BusDataRollBack"_s;

/// The built server as a process, two operators, and records 101 to 120 of each kind that a
/// rollback takes back: orders of one line with the same number, deliveries, received, and one
/// open return of each of the deliveries 201 to 220.
class Server : public TestDatabase
{
public:
    Server()
    {
        Store::SetToken(Connection(), u"zhang"_s, "0123456789abcdef-zhang");
        Store::Transaction transaction(Connection());
        for (int number = 101; number < 101 + Records; ++number) {
            const QString id = QString::number(number);
            const QString other = QString::number(number + 100);
            Connection().Run("INSERT INTO TRA_ORDER (ORD_ID, ITEM_COUNT) VALUES (?1, 1)", {id});
            Connection().Run("INSERT INTO TRA_ORDER_ITEM (ORD_ITEM_ID, ORD_ID, STATE)"
                             " VALUES (?1, ?1, '0')",
                             {id});
            Connection().Run("INSERT INTO TRA_SEND (SEND_ID, SEND_FLAG, RECEIVE_FLAG)"
                             " VALUES (?1, '1', '1'), (?2, '1', '1')",
                             {id, other});
            Connection().Run("INSERT INTO TRA_RETURN (RETURN_ID, SEND_ID) VALUES (?1, ?2)",
                             {id, other});
        }
        transaction.Commit();
        process = std::make_unique<ServerProcess>(QStringList{u"--database"_s, Url()});
    }

    /// Both operators post the row at the same time; their codes.
    QStringList Race(const QString &manager, const QString &method, const Wire::NamedValues &row)
    {
        const std::array<std::array<QString, 3>, 2> operators{
            {{u"admin"_s, u"600001"_s, u"系统管理员"_s}, {u"zhang"_s, u"600002"_s, u"张伟"_s}}};
        std::array<RawClient, 2> clients{RawClient(process->Port()), RawClient(process->Port())};
        for (size_t at = 0; at < clients.size(); ++at) {
            const auto &[code, id, name] = operators[at];
            const Wire::PostRequest request{
                manager,
                method,
                {row + Wire::NamedValues{{u"LAST_USER"_s, name}, {u"LAST_USER_ID"_s, id}}}};
            clients[at].Send(
                ToBytes({.path = "/NorvaneServlet",
                         .body = Wire::Encode(request, Wire::Format::Json),
                         .credential = code.toUtf8() + ":0123456789abcdef-" + code.toUtf8()}));
        }
        QStringList codes;
        for (RawClient &client : clients)
            codes += Wire::DecodePostAnswer(client.Receive().body, Wire::Format::Json)
                         .rows.value(0)
                         .code;
        return codes;
    }

    std::unique_ptr<ServerProcess> process;
};

} // namespace

/// Two operators who want the same at the same time.
class TwoOperatorsTest : public QObject
{
    Q_OBJECT

private slots:
    void OneTakesARecordBackAndTheOtherIsRefused_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("flag");
        QTest::addColumn<QByteArray>("left");
        QTest::addColumn<int>("entries"); // of the log, for each record
        const QByteArray lines = "SELECT count(*) FROM TRA_ORDER O, TRA_ORDER_ITEM L"
                                 " WHERE O.LAST_OPERATE <> 'D' OR L.LAST_OPERATE <> 'D'";
        QTest::newRow("order") << u"DataRollBack"_s << u"ORD_ITEM_ID"_s << u"1"_s << lines << 2;
        QTest::newRow("line") << u"DataRollBack"_s << u"ORD_ITEM_ID"_s << u"0"_s << lines << 2;
        QTest::newRow("return") << u"ReturnRollBack"_s << u"RETURN_ID"_s << QString()
                                << QByteArray(
                                       "SELECT count(*) FROM TRA_RETURN WHERE LAST_OPERATE <> 'D'")
                                << 1;
        QTest::newRow("receipt") << u"ReceiveRollBack"_s << u"SEND_ID"_s << QString()
                                 << QByteArray(
                                        "SELECT count(*) FROM TRA_SEND WHERE RECEIVE_FLAG = '1'"
                                        " AND SEND_ID < '200'")
                                 << 1;
    }
    void OneTakesARecordBackAndTheOtherIsRefused()
    {
        QFETCH(QString, method);
        QFETCH(QString, key);
        QFETCH(QString, flag);
        QFETCH(QByteArray, left);
        QFETCH(int, entries);
        Server server;
        for (int number = 101; number < 101 + Records; ++number) {
            Wire::NamedValues row{{key, QString::number(number)}};
            if (!flag.isEmpty())
                row.append({u"ALL_FLAG"_s, flag});
            QStringList codes = server.Race(RollBack, method, row);
            codes.sort();
            QCOMPARE(codes, QStringList({u"0"_s, u"1"_s}));
        }
        QCOMPARE(server.Number(left), 0);
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), Records * entries);
    }

    void BothHaveTheUserAssignedOnce()
    {
        Server server;
        for (const auto &group : {u"300001"_s, u"300002"_s, u"300003"_s, u"300004"_s})
            QCOMPARE(server.Race(u"com.business.admin.UniUser"_s, u"insertUniUser"_s,
                                 {{u"USER_ID"_s, u"600002"_s}, {u"UNION_ID"_s, group}}),
                     QStringList({u"1"_s, u"1"_s}));
        QCOMPARE(server.Number("SELECT count(*) FROM UNI_USER_UNION WHERE LAST_OPERATE <> 'D'"), 4);
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 4);
        // Who was faster is who the log and the row name.
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG L, UNI_USER_UNION A"
                               " WHERE L.TABLE_NAME = 'UNI_USER_UNION' AND L.KEY_ID1 = A.USER_ID"
                               " AND L.KEY_ID2 = A.UNION_ID AND L.USER_ID = A.LAST_USER_ID"
                               " AND L.USER_NAME = A.LAST_USER AND L.OPTION_TYPE = '1'"),
                 4);
    }

    void BothHaveTheStockOpenedAndClosedOnce()
    {
        Server server;
        server.Connection().Run("INSERT INTO UNI_ORG (UNION_ID, ORG_ID)"
                                " VALUES ('300002', '200001'), ('300002', '200002')");
        Wire::NamedValues row{{u"OWNER_ORGID"_s, u"200001"_s},
                              {u"LAST_OPERATE"_s, u"1"_s},
                              {u"SHOW_QTY"_s, u"0"_s},
                              {u"ORG_ID"_s, {}}};
        int entries = 0;
        for (const auto &operation : {u"1"_s, u"D"_s, u"1"_s}) {
            for (const auto &viewer : {u"200002"_s, u"200007"_s}) {
                row[1].second = operation;
                row[3].second = viewer;
                QCOMPARE(
                    server.Race(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s, row),
                    QStringList({u"1"_s, u"1"_s}));
                QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), ++entries);
            }
        }
        QCOMPARE(server.Number("SELECT count(*) FROM STK_ORG_SET WHERE LAST_OPERATE <> 'D'"), 2);
    }

    void BothHaveTheRuleStoredOnce()
    {
        Server server;
        QCOMPARE(server.Race(u"com.business.admin.RuleManager"_s, u"insertUpdateOrgRule"_s,
                             {{u"ORG_ID"_s, u"200002"_s},
                              {u"RULE_CODE"_s, u"ORG_SJJGSH_ID"_s},
                              {u"RULE_NAME"_s, u"上级审核机构ID"_s},
                              {u"RULE_VALUE"_s, u"200001"_s},
                              {u"VALUE_TYPE"_s, u"S"_s},
                              {u"REMARK"_s, {}},
                              {u"ENABLE_FLAG"_s, u"1"_s},
                              {u"LAST_OPERATE"_s, u"1"_s}}),
                 QStringList({u"1"_s, u"1"_s}));
        QCOMPARE(server.Number("SELECT count(*) FROM UNI_ORG_RULE"), 1);
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 1);
    }

    void OnePublishesAndOneDeletesAnAnnouncement()
    {
        Server server;
        server.Connection().Run("INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID)"
                                " VALUES ('600001', '300001'), ('600002', '300001')");
        server.Connection().Run("INSERT INTO SYS_AFFICHE (ID, UNION_ID) VALUES ('1', '300001'),"
                                " ('2', '300001'), ('3', '300001')");
        const QString manager = u"com.notic.NoticManager"_s;
        for (const auto &id : {u"1"_s, u"2"_s, u"3"_s}) {
            for (const Wire::NamedValues &row :
                 {Wire::NamedValues{{u"ID"_s, id}, {u"ENABLE_FLAG"_s, u"1"_s}},
                  Wire::NamedValues{{u"ID"_s, id}}}) {
                const QString method = row.size() == 2 ? u"confirmNotic"_s : u"deleteNotic"_s;
                QStringList codes = server.Race(manager, method, row);
                codes.sort();
                QCOMPARE(codes, QStringList({u"0"_s, u"1"_s}));
            }
        }
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_AFFICHE"), 0);
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 6);
    }

    void BothHaveTheUserMovedOutOnce()
    {
        Server server;
        server.Connection().Run("INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID)"
                                " VALUES ('600002', '300001')");
        QCOMPARE(server.Race(u"com.business.admin.UniUser"_s, u"deleteUniUser"_s,
                             {{u"USER_ID"_s, u"600002"_s}, {u"UNION_ID"_s, u"300001"_s}}),
                 QStringList({u"1"_s, u"1"_s}));
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 1);
    }
};

QTEST_GUILESS_MAIN(TwoOperatorsTest)
#include "TwoOperatorsTest.moc"
