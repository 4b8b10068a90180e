#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QLabel>
#include <QTabWidget>
#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// A tab of the screen: its filters, list, bar and what the database has for it.
struct Tab
{
    int index;
    QString orderCode;
    QString from;
    QString to;
    QString grid;
    QString pages;
    QString table; ///< whose records are rolled back
    QString key;
    QString listed; ///< FROM and WHERE of all that may be listed
};

const Tab Orders{
    0,
    u"edCode"_s,
    u"edBuyerOrderStart"_s,
    u"edBuyerOrderEnd"_s,
    u"GridBuyerOrder"_s,
    u"PageGuide1"_s,
    u"TRA_ORDER_ITEM"_s,
    u"ORD_ITEM_ID"_s,
    u"FROM TRA_ORDER O, TRA_ORDER_ITEM R, TRA_ORDER_ITEM P WHERE O.ORD_ID=R.ORD_ID AND "
    "P.ORD_ITEM_ID=R.ORD_ITEM_ID AND O.LAST_OPERATE<>'D' AND R.LAST_OPERATE<>'D'"_s};
const Tab Returns{1,
                  u"edPurCode1"_s,
                  u"dtReceiveDateFrom1"_s,
                  u"dtReceiveDateTo1"_s,
                  u"GridReturn"_s,
                  u"PageGuide2"_s,
                  u"TRA_RETURN"_s,
                  u"RETURN_ID"_s,
                  u"FROM TRA_RETURN R, TRA_SEND O, TRA_SEND P WHERE O.SEND_ID=R.SEND_ID AND "
                  "P.SEND_ID=R.SEND_ID AND O.LAST_OPERATE<>'D' AND R.LAST_OPERATE<>'D'"_s};
const Tab Receipts{2,
                   u"edCode2"_s,
                   u"dtReceiveDateFrom"_s,
                   u"dtReceiveDateTo"_s,
                   u"GridReceive"_s,
                   u"PageGuide3"_s,
                   u"TRA_SEND"_s,
                   u"SEND_ID"_s,
                   u"FROM TRA_SEND R, TRA_SEND O, TRA_SEND P WHERE O.SEND_ID=R.SEND_ID AND "
                   "P.SEND_ID=R.SEND_ID AND R.SEND_FLAG='1' AND R.RECEIVE_FLAG='1' AND "
                   "R.LAST_OPERATE<>'D'"_s};

const QString Delivered = u"订单已做配送，不能回退！"_s;

/// The screen over the sample data, whose order numbers and products are those of
/// docs/manual/sample-answers.md.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN04"_s))
    {
    }
    /// What follows is told apart from what was done before.
    void Begin()
    {
        lastEntry =
            site.Select(u"SELECT MAX(CAST(LOG_ID AS INTEGER)) FROM SYS_UPDATE_LOG"_s).value(0);
    }

    QTableView &List(const Tab &tab) { return Grid(screen, tab.grid); }
    int Total(const Tab &tab)
    {
        const auto *bar = Child<QWidget>(screen, tab.pages);
        return Child<QLabel>(bar, u"labTotal"_s)->text().section(u' ', 1, 1).toInt();
    }
    int Stored(const Tab &tab, const QString &condition = {})
    {
        return site.Select(u"SELECT count(*) "_s + tab.listed + condition).value(0).toInt();
    }
    /// Shows the tab and queries its first page with these filters.
    void Query(const Tab &tab, const QString &from = {}, const QString &to = {},
               const QString &order = {})
    {
        Child<QTabWidget>(screen, u"cxPageControl1"_s)->setCurrentIndex(tab.index);
        Type(screen, tab.from, from);
        Type(screen, tab.to, to);
        Type(screen, tab.orderCode, order);
        Press(screen, tab.orderCode, Qt::Key_Return);
    }
    /// Finds a record by its order and product and makes it current. Its key.
    QString Find(const Tab &tab, const QString &order, const QString &product)
    {
        Query(tab, {}, {}, order);
        GoTo(tab, product);
        return site
            .Select(u"SELECT R.%1 "_s.arg(tab.key) + tab.listed +
                    u" AND O.ORD_CODE='%1' AND P.PRODUCT_ID IN (SELECT PRODUCT_ID FROM "
                    "BAS_PRODUCT WHERE PRODUCT_NAME='%2')"_s.arg(order, product))
            .value(0);
    }
    void GoTo(const Tab &tab, const QString &product)
    {
        const auto row = int(Texts(List(tab), u"通用名"_s).indexOf(product));
        if (row < 0)
            FailTest(u"no "_s + product);
        List(tab).setCurrentIndex(Cell(List(tab), row, u"通用名"_s));
    }
    /// Rolls the current record back and says yes. The message that follows; empty for none.
    QString RollBack(const QString &action, bool told)
    {
        QStringList buttons{u"Yes"_s};
        if (told)
            buttons << u"Ok"_s;
        return Answers(buttons, [&] { Trigger(screen, action); }).value(1);
    }
    QString State(const Tab &tab, const QString &id, const QString &field = u"LAST_OPERATE"_s)
    {
        return site.Select(u"SELECT %1 FROM %2 WHERE %3='%4'"_s.arg(field, tab.table, tab.key, id))
            .value(0);
    }
    QString Order(const QString &code)
    {
        return site
            .Select(
                u"SELECT LAST_OPERATE, ITEM_COUNT, abs(ITEM_MONEY - (SELECT "
                "SUM(HIT_PRICE*ORD_QTY) FROM TRA_ORDER_ITEM I WHERE I.ORD_ID=O.ORD_ID AND "
                "I.LAST_OPERATE=O.LAST_OPERATE)) < 0.01 FROM TRA_ORDER O WHERE ORD_CODE='%1'"_s.arg(
                    code))
            .value(0);
    }
    /// "TABLE/KEY/name/kind" of what was changed since the screen was opened.
    QStringList Log()
    {
        return site.Select(u"SELECT TABLE_NAME||'/'||KEY_ID1||'/'||USER_NAME||'/'||OPTION_TYPE "
                           "FROM SYS_UPDATE_LOG WHERE CAST(LOG_ID AS INTEGER) > "_s +
                           lastEntry + u" ORDER BY CAST(LOG_ID AS INTEGER)"_s);
    }
    QString Colleague(const QString &method, const Wire::NamedValues &row)
    {
        return site.PostAsColleague(u"com.business.rollback.BusDataRollBack"_s, method, row);
    }

    Site site;
    QWidget *screen;
    QString lastEntry;
};

QString ByAdmin(const Tab &tab, const QString &id, int kind)
{
    return u"%1/%2/系统管理员/%3"_s.arg(tab.table, id).arg(kind);
}

constexpr int Modified = 2;
constexpr int Deleted = 5;

} // namespace

/// What buyers did is found and taken back, or refused; the database and its log tell the same,
/// and of two operators one is too late.
class RollbackStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { story_ = std::make_unique<Story>(); }
    void cleanupTestCase() { story_.reset(); }
    void init() { story_->Begin(); }

    void ThreeTabsFindTheirRecordsAndPageThroughThem()
    {
        for (const Tab &tab : {Orders, Returns, Receipts}) {
            story_->Query(tab);
            const int total = story_->Total(tab);
            QCOMPARE(total, story_->Stored(tab));
            QCOMPARE(story_->List(tab).model()->rowCount(), 50);
            const QStringList first = Texts(story_->List(tab), u"订 单 号"_s);
            Click(Child<QWidget>(story_->screen, tab.pages), u"btnLast"_s);
            QCOMPARE(story_->List(tab).model()->rowCount(), (total - 1) % 50 + 1);
            QVERIFY(Texts(story_->List(tab), u"订 单 号"_s) != first);

            // Dates: in the wrong order they are swapped; one alone counts but for returns.
            const QString early = u"2026-01-01"_s;
            const QString late = u"2026-06-30"_s;
            story_->Query(tab, early, late);
            const int between = story_->Total(tab);
            QVERIFY(between > 0 && between < total);
            story_->Query(tab, late, early);
            QCOMPARE(story_->Total(tab), between);
            story_->Query(tab, early);
            QCOMPARE(story_->Total(tab) == total, tab.index == Returns.index);
            QVERIFY(story_->Total(tab) > between);
        }
        // The tabs keep what they show.
        QCOMPARE(Child<QTabWidget>(story_->screen, u"cxPageControl1"_s)->count(), 3);
        QVERIFY(story_->List(Orders).model()->rowCount() > 0);
    }

    void FiltersNarrowTheLists()
    {
        Type(story_->screen, u"edOrg"_s, u"番禺区康复"_s);
        Type(story_->screen, u"edMed"_s, u"平消片"_s);
        story_->Find(Orders, u"dd00019964"_s, u"平消片"_s);
        QCOMPARE(story_->Total(Orders), 1);
        for (const auto &filter : {u"edOrg"_s, u"edMed"_s})
            Type(story_->screen, filter, {});

        auto *state = Child<QWidget>(story_->screen, u"cbState"_s);
        int sum = 0;
        for (const QString &value : {u"0"_s, u"1"_s, u"2"_s}) {
            state->setProperty("editValue", value);
            story_->Query(Returns);
            QCOMPARE(story_->Total(Returns),
                     story_->Stored(Returns, u" AND R.CONFIRM_FLAG='"_s + value + u'\''));
            QCOMPARE(ActionEnabled(story_->screen, u"ActionBuyerReturn"_s), value != u"1");
            sum += story_->Total(Returns);
        }
        state->setProperty("editValue", u"-1"_s);
        story_->Query(Returns);
        QCOMPARE(story_->Total(Returns), sum);
    }

    void OrdersAreTakenBackByLineAndWhole()
    {
        const QString line = story_->Find(Orders, u"DD00020002"_s, u"阿奇霉素胶囊"_s);
        const int lines = story_->Total(Orders);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBackItem"_s, false), QString());
        QCOMPARE(story_->Total(Orders), lines - 1);
        QVERIFY(!Texts(story_->List(Orders), u"通用名"_s).contains(u"阿奇霉素胶囊"_s));
        QCOMPARE(story_->State(Orders, line), u"D"_s);
        QCOMPARE(story_->Order(u"DD00020002"_s), u"1/%1/1"_s.arg(lines - 1));
        QCOMPARE(story_->Log().size(), 2); // the line, and the order's sums
        QCOMPARE(story_->Log().first(), ByAdmin(Orders, line, Deleted));

        story_->Find(Orders, u"DD00020019"_s, u"黄芪"_s);
        QCOMPARE(story_->Total(Orders), 4);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBack"_s, false), QString());
        QCOMPARE(story_->Total(Orders), 0);
        QCOMPARE(story_->Order(u"DD00020019"_s), u"D/4/1"_s);
        QCOMPARE(story_->Log().size(), 7);
    }

    void DeliveredOrdersStay()
    {
        const QString line = story_->Find(Orders, u"DD00019964"_s, u"牛膝"_s);
        const QString order = story_->Order(u"DD00019964"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBack"_s, true), Delivered);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBackItem"_s, true), Delivered);
        QCOMPARE(story_->State(Orders, line), u"1"_s);
        QCOMPARE(story_->Order(u"DD00019964"_s), order);
        QCOMPARE(story_->Log(), QStringList());
    }

    void SecondOperatorIsTooLateForAnOrder()
    {
        const QString line = story_->Find(Orders, u"DD00020029"_s, u"三棱"_s);
        const int lines = story_->Total(Orders);
        const auto post = [&](const QString &all) {
            return story_->Colleague(u"DataRollBack"_s,
                                     {{u"ORD_ITEM_ID"_s, line}, {u"ALL_FLAG"_s, all}});
        };
        QCOMPARE(post(u"0"_s), u"1"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBackItem"_s, true),
                 u"回退当前订单明细记录失败！"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerOrderRollBack"_s, true),
                 u"回退订单“DD00020029”失败！"_s);
        QCOMPARE(story_->Total(Orders), lines); // the list as it was
        const QStringList log = story_->Log();
        QCOMPARE(log.size(), 2);
        QVERIFY(log.first().contains(story_->site.Colleague()));
        QCOMPARE(story_->Order(u"DD00020029"_s), u"1/%1/1"_s.arg(lines - 1));
    }

    void ReturnsAreTakenBackOrRefused()
    {
        const QString invoiced = story_->Find(Returns, u"DD00019730"_s, u"西洛他唑片"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerReturn"_s, true), u"卖方已开票不能回退！"_s);
        QCOMPARE(story_->State(Returns, invoiced), u"1"_s);

        // The seller confirms while the list is shown.
        const QString confirmed = story_->Find(Returns, u"DD00019650"_s, u"头孢克洛缓释片"_s);
        story_->site.Change(
            u"UPDATE TRA_RETURN SET CONFIRM_FLAG='1' WHERE RETURN_ID='%1'"_s.arg(confirmed));
        QCOMPARE(story_->RollBack(u"ActionBuyerReturn"_s, true), u"卖方已确认退货不能回退！"_s);
        story_->Find(Returns, u"DD00019650"_s, u"头孢克洛缓释片"_s);
        QVERIFY(!ActionEnabled(story_->screen, u"ActionBuyerReturn"_s));

        const QString refused = story_->Find(Returns, u"DD00019690"_s, u"克林霉素磷酸酯注射液"_s);
        const int total = story_->Total(Returns);
        QCOMPARE(story_->RollBack(u"ActionBuyerReturn"_s, false), QString());
        QCOMPARE(story_->Total(Returns), total - 1);
        QCOMPARE(story_->List(Returns).model()->rowCount(), total - 1);
        QCOMPARE(story_->State(Returns, refused), u"D"_s);
        QCOMPARE(story_->Log(), QStringList{ByAdmin(Returns, refused, Deleted)});

        const QString late = story_->Find(Returns, u"DD00019797"_s, u"丹参"_s);
        QCOMPARE(story_->Colleague(u"ReturnRollBack"_s, {{u"RETURN_ID"_s, late}}), u"1"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerReturn"_s, true), u"回退当前退货记录失败！"_s);
        QVERIFY(Texts(story_->List(Returns), u"通用名"_s).contains(u"丹参"_s));
        QCOMPARE(story_->Log().size(), 2);
    }

    void ReceiptsAreTakenBackOrRefused()
    {
        const QString action = u"ActionBuyerReceiveRollBark"_s;
        const QString failed = u"回退当前验收记录失败！"_s;
        const QString accepted = story_->Find(Receipts, u"DD00019865"_s, u"氟哌啶醇注射液"_s);
        QCOMPARE(story_->RollBack(action, true), u"发票已经验收不能回退！"_s);
        QCOMPARE(story_->State(Receipts, accepted, u"RECEIVE_FLAG"_s), u"1"_s);

        // First the return, then the receipt.
        const QString returned = story_->Find(Receipts, u"DD00019783"_s, u"地榆升白片"_s);
        QCOMPARE(story_->RollBack(action, true), failed);
        const QString back = story_->Find(Returns, u"DD00019783"_s, u"地榆升白片"_s);
        QCOMPARE(story_->RollBack(u"ActionBuyerReturn"_s, false), QString());
        story_->Find(Receipts, u"DD00019783"_s, u"地榆升白片"_s);
        const int total = story_->Total(Receipts);
        QCOMPARE(story_->RollBack(action, false), QString());
        QCOMPARE(story_->Total(Receipts), total - 1);
        QCOMPARE(story_->State(Receipts, returned, u"RECEIVE_FLAG||SEND_FLAG||LAST_OPERATE"_s),
                 u"011"_s);
        QCOMPARE(story_->Log(), QStringList({ByAdmin(Returns, back, Deleted),
                                             ByAdmin(Receipts, returned, Modified)}));

        const QString late = story_->Find(Receipts, u"DD00019869"_s, u"注射用苄星青霉素"_s);
        QCOMPARE(story_->Colleague(u"ReceiveRollBack"_s, {{u"SEND_ID"_s, late}}), u"1"_s);
        QCOMPARE(story_->RollBack(action, true), failed);
        QCOMPARE(story_->Log().size(), 3);
    }

private:
    std::unique_ptr<Story> story_; // one for all: each test takes orders of its own
};

QTEST_MAIN(RollbackStoryTest)
#include "RollbackStoryTest.moc"
