#include "ManagerSite.h"

#include <QTest>

#include <array>
#include <latch>
#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.rollback.BusDataRollBack"_s;

struct Call
{
    QString method;
    Wire::NamedValues row;
};

Call OrderOf(const QString &line, const QString &all = u"1"_s)
{
    return {u"DataRollBack"_s, {{u"ORD_ITEM_ID"_s, line}, {u"ALL_FLAG"_s, all}}};
}

Call Line(const QString &line)
{
    return OrderOf(line, u"0"_s);
}

Call Return(const QString &id)
{
    return {u"ReturnRollBack"_s, {{u"RETURN_ID"_s, id}}};
}

Call Receipt(const QString &id)
{
    return {u"ReceiveRollBack"_s, {{u"SEND_ID"_s, id}}};
}

/// Besides the site:
///
///   orders      1 with the lines 11 and 12, and 13, which is deleted; 2 with 21, delivered, and
///               22; 3 with 31, whose delivery is entered but not sent; 4 with 41, deleted
///               altogether; 5 with 51 alone
///   deliveries  61 received; 62 received, its invoice accepted; 63 sent; 64 received, deleted;
///               65 received, goods of it returned; 66 of line 31, entered; 67 of line 12, deleted
///   returns     of 65: 71 open, 72 confirmed, 73 refused, 74 invoiced, 75 invoiced and
///               confirmed, 76 open, deleted
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("INSERT INTO TRA_ORDER (ORD_ID, ORD_STATE, ITEM_COUNT, ITEM_MONEY,"
                         " LAST_OPERATE) VALUES ('1', '1', 2, 35.5, '1'), ('2', '1', 2, 20, '1'),"
                         " ('3', '1', 1, 10, '1'), ('4', '1', 1, 10, 'D'), ('5', '1', 1, 10, '1')");
        Connection().Run("INSERT INTO TRA_ORDER_ITEM (ORD_ITEM_ID, ORD_ID, HIT_PRICE, ORD_QTY,"
                         " STATE, LAST_OPERATE) VALUES ('11', '1', 2.55, 10, '0', '1'),"
                         " ('12', '1', 1, 10, '0', '1'), ('13', '1', 7, 7, '1', 'D'),"
                         " ('21', '2', 1, 10, '1', '1'), ('22', '2', 1, 10, '0', '1'),"
                         " ('31', '3', 1, 10, '0', '1'), ('41', '4', 1, 10, '0', 'D'),"
                         " ('51', '5', 1, 10, '0', '1')");
        Connection().Run("INSERT INTO TRA_SEND (SEND_ID, ORD_ITEM_ID, RECEIVE_QTY, INVOICE_FLAG,"
                         " SEND_FLAG, RECEIVE_FLAG, LAST_OPERATE) VALUES"
                         " ('61', '21', 9, '0', '1', '1', '1'),"
                         " ('62', '21', 9, '1', '1', '1', '1'),"
                         " ('63', '21', NULL, '0', '1', '0', '1'),"
                         " ('64', '21', 9, '0', '1', '1', 'D'),"
                         " ('65', '21', 9, '0', '1', '1', '1'),"
                         " ('66', '31', NULL, '0', '0', '0', '1'),"
                         " ('67', '12', NULL, '0', '0', '0', 'D')");
        Connection().Run("INSERT INTO TRA_RETURN (RETURN_ID, SEND_ID, CONFIRM_FLAG, INVOICE_FLAG,"
                         " LAST_OPERATE) VALUES ('71', '65', '0', '0', '1'),"
                         " ('72', '65', '1', '0', '1'), ('73', '65', '2', '0', '1'),"
                         " ('74', '65', '0', '1', '1'), ('75', '65', '1', '1', '1'),"
                         " ('76', '65', '0', '0', 'D')");
    }

    QString Code(const Call &call) { return Codes(Manager, call.method, {Row(call)}); }

    static Wire::NamedValues Row(const Call &call)
    {
        return call.row + Wire::NamedValues{{u"LAST_USER"_s, Admin().userName},
                                            {u"LAST_USER_ID"_s, Admin().userId}};
    }

    /// "ORD_ID/ITEM_COUNT/ITEM_MONEY" of a live order.
    QString Order(int id)
    {
        return ManagerSite::Row("SELECT ORD_ID, ITEM_COUNT, ITEM_MONEY FROM TRA_ORDER"
                                " WHERE LAST_OPERATE <> 'D' AND ORD_ID = '" +
                                QByteArray::number(id) + "'");
    }

    QStringList LiveLines()
    {
        return Texts("SELECT ORD_ITEM_ID FROM TRA_ORDER_ITEM WHERE LAST_OPERATE <> 'D'"
                     " ORDER BY ORD_ITEM_ID");
    }

    /// All that a rollback may touch.
    QStringList State()
    {
        return Texts("SELECT ORD_ID||LAST_OPERATE||ITEM_COUNT FROM TRA_ORDER") +
               Texts("SELECT ORD_ITEM_ID||LAST_OPERATE FROM TRA_ORDER_ITEM") +
               Texts("SELECT SEND_ID||LAST_OPERATE||RECEIVE_FLAG FROM TRA_SEND") +
               Texts("SELECT RETURN_ID||LAST_OPERATE FROM TRA_RETURN");
    }
};

QString Entry(const QString &record, int change)
{
    return record + u"/-/600001/系统管理员/%1"_s.arg(change);
}

constexpr int Modified = 2;
constexpr int Deleted = 5;

} // namespace

Q_DECLARE_METATYPE(Call)

class BusDataRollBackTest : public QObject
{
    Q_OBJECT

private slots:
    void WholeOrderIsFoundByOneOfItsLines()
    {
        Site site;
        QCOMPARE(site.Code(OrderOf(u"12"_s)), u"1"_s);
        QCOMPARE(site.Order(1), QString());
        QCOMPARE(site.LiveLines(), QStringList({u"21"_s, u"22"_s, u"31"_s, u"51"_s}));
        QCOMPARE(site.Log(), QStringList({Entry(u"TRA_ORDER_ITEM/11"_s, Deleted),
                                          Entry(u"TRA_ORDER_ITEM/12"_s, Deleted),
                                          Entry(u"TRA_ORDER/1"_s, Deleted)}));
        QCOMPARE(site.Text("SELECT LAST_USER||LAST_USER_ID||ITEM_COUNT FROM TRA_ORDER"
                           " WHERE ORD_ID = '1'"),
                 u"系统管理员6000012"_s);
    }

    void LineLeavesTheOrderWithTheSumsOfTheOthers()
    {
        Site site;
        QCOMPARE(site.Code(Line(u"12"_s)), u"1"_s);
        QCOMPARE(site.Order(1), u"1/1/25.5"_s);
        QCOMPARE(site.LiveLines(), QStringList({u"11"_s, u"21"_s, u"22"_s, u"31"_s, u"51"_s}));
        QCOMPARE(site.Log(), QStringList({Entry(u"TRA_ORDER_ITEM/12"_s, Deleted),
                                          Entry(u"TRA_ORDER/1"_s, Modified)}));
    }

    void LastLineTakesTheOrderWithIt()
    {
        Site site;
        QCOMPARE(site.Code(Line(u"51"_s)), u"1"_s);
        QCOMPARE(site.Order(5), QString());
        QCOMPARE(site.Log(), QStringList({Entry(u"TRA_ORDER_ITEM/51"_s, Deleted),
                                          Entry(u"TRA_ORDER/5"_s, Deleted)}));
    }

    void UndeliveredLineOfAPartDeliveryIsTakenBack()
    {
        Site site;
        QCOMPARE(site.Code(Line(u"22"_s)), u"1"_s);
        QCOMPARE(site.Order(2), u"2/1/10"_s);
    }

    void DeliveredLineBehindOthersKeepsThemAll()
    {
        Site site;
        site.Connection().Run("UPDATE TRA_ORDER_ITEM SET STATE = '1' WHERE ORD_ITEM_ID = '12'");
        QCOMPARE(site.Code(OrderOf(u"11"_s)), u"-1"_s);
        QVERIFY(site.LiveLines().contains(u"11"_s));
        QCOMPARE(site.Order(1), u"1/2/35.5"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void OrderKeepsWhatPricesBelowACentAddUpTo()
    {
        Site site;
        site.Connection().Run("UPDATE TRA_ORDER_ITEM SET HIT_PRICE = 0.0345, ORD_QTY = 3"
                              " WHERE ORD_ITEM_ID = '11'");
        QCOMPARE(site.Code(Line(u"12"_s)), u"1"_s);
        QCOMPARE(site.Order(1), u"1/1/0.1035"_s);
    }

    void ReturnIsMarkedDeletedAndTheDeliveryStays()
    {
        Site site;
        QCOMPARE(site.Code(Return(u"71"_s)), u"1"_s);
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM TRA_RETURN WHERE RETURN_ID = '71'"), u"D"_s);
        QCOMPARE(site.ManagerSite::Row(
                     "SELECT RECEIVE_QTY, RECEIVE_FLAG FROM TRA_SEND WHERE SEND_ID = '65'"),
                 u"9/1"_s);
        QCOMPARE(site.Log(), QStringList{Entry(u"TRA_RETURN/71"_s, Deleted)});
    }

    void RefusedReturnIsTakenBackToo()
    {
        Site site;
        QCOMPARE(site.Code(Return(u"73"_s)), u"1"_s);
    }

    void ReceiptWaitsAgainAndKeepsItsQuantity()
    {
        Site site;
        QCOMPARE(site.Code(Receipt(u"61"_s)), u"1"_s);
        QCOMPARE(site.ManagerSite::Row("SELECT SEND_FLAG, RECEIVE_FLAG, LAST_OPERATE, RECEIVE_QTY"
                                       " FROM TRA_SEND WHERE SEND_ID = '61'"),
                 u"1/0/1/9"_s);
        QCOMPARE(site.Log(), QStringList{Entry(u"TRA_SEND/61"_s, Modified)});
    }

    void ReceiptFollowsTheReturnsThatStandInItsWay()
    {
        Site site;
        site.Connection().Run("UPDATE TRA_RETURN SET LAST_OPERATE = 'D' WHERE RETURN_ID <> '71'");
        QCOMPARE(site.Code(Receipt(u"65"_s)), u"0"_s);
        QCOMPARE(site.Code(Return(u"71"_s)), u"1"_s);
        QCOMPARE(site.Code(Receipt(u"65"_s)), u"1"_s);
    }

    void RefusalLeavesNoTrace_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("code");
        QTest::newRow("order with a delivered line") << OrderOf(u"22"_s) << u"-1"_s;
        QTest::newRow("delivered line") << Line(u"21"_s) << u"-1"_s;
        QTest::newRow("order whose delivery is entered") << OrderOf(u"31"_s) << u"-1"_s;
        QTest::newRow("line whose delivery is entered") << Line(u"31"_s) << u"-1"_s;
        QTest::newRow("deleted line") << Line(u"13"_s) << u"0"_s;
        QTest::newRow("order by a deleted line") << OrderOf(u"13"_s) << u"0"_s;
        QTest::newRow("deleted order") << OrderOf(u"41"_s) << u"0"_s;
        QTest::newRow("unknown line") << OrderOf(u"99"_s) << u"0"_s;
        QTest::newRow("no line") << OrderOf(QString()) << u"0"_s;
        QTest::newRow("invoiced return") << Return(u"74"_s) << u"-1"_s;
        QTest::newRow("confirmed return") << Return(u"72"_s) << u"-2"_s;
        QTest::newRow("invoiced before confirmed") << Return(u"75"_s) << u"-1"_s;
        QTest::newRow("deleted return") << Return(u"76"_s) << u"0"_s;
        QTest::newRow("unknown return") << Return(u"99"_s) << u"0"_s;
        QTest::newRow("receipt with an accepted invoice") << Receipt(u"62"_s) << u"-1"_s;
        QTest::newRow("delivery not received") << Receipt(u"63"_s) << u"0"_s;
        QTest::newRow("delivery not sent") << Receipt(u"66"_s) << u"0"_s;
        QTest::newRow("deleted delivery") << Receipt(u"64"_s) << u"0"_s;
        QTest::newRow("receipt with returns") << Receipt(u"65"_s) << u"0"_s;
        QTest::newRow("unknown delivery") << Receipt(u"99"_s) << u"0"_s;
    }
    void RefusalLeavesNoTrace()
    {
        QFETCH(Call, call);
        QFETCH(QString, code);
        Site site;
        const QStringList before = site.State();
        QCOMPARE(site.Code(call), code);
        QCOMPARE(site.State(), before);
        QCOMPARE(site.Logged(), 0);
    }

    void OfTwoOperatorsAtOnceOneIsRefused_data()
    {
        QTest::addColumn<Call>("call");
        QTest::newRow("order") << OrderOf(u"11"_s);
        QTest::newRow("line") << Line(u"11"_s);
        QTest::newRow("return") << Return(u"71"_s);
        QTest::newRow("receipt") << Receipt(u"61"_s);
    }
    void OfTwoOperatorsAtOnceOneIsRefused()
    {
        QFETCH(Call, call);
        Site site;
        const Wire::PostRequest post{Manager, call.method, {Site::Row(call)}};
        std::array<QString, 2> codes;
        std::latch start(2);
        const auto run = [&](QString &code) {
            start.arrive_and_wait();
            code = site.PostBeside(post);
        };
        std::thread other([&] { run(codes[0]); });
        run(codes[1]);
        other.join();
        QCOMPARE(QStringList({codes[0], codes[1]}).contains(u"1"_s), true);
        QCOMPARE(QStringList({codes[0], codes[1]}).contains(u"0"_s), true);
    }

    void FlagIsOneOrZero()
    {
        Site site;
        for (const QString &flag : {QString(), u"2"_s, u"11"_s})
            QCOMPARE(site.Refusal(Manager, u"DataRollBack"_s, {OrderOf(u"11"_s, flag).row}),
                     "post.bad_row");
        QCOMPARE(site.Refusal(Manager, u"DataRollBack"_s, {{{u"ORD_ITEM_ID"_s, u"11"_s}}}),
                 "post.bad_row");
        QCOMPARE(site.Order(1), u"1/2/35.5"_s);
    }
};

QTEST_GUILESS_MAIN(BusDataRollBackTest)
#include "BusDataRollBackTest.moc"
