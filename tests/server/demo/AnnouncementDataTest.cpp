#include "SampleDatabase.h"

#include "store/QueryRunner.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

const QString ListSql =
    u" SELECT B.*, C.UNION_NAME    FROM UNI_USER_UNION A, SYS_AFFICHE B, UNI_UNION C   WHERE "
    "A.UNION_ID = B.UNION_ID     AND B.UNION_ID = C.UNION_ID     AND A.LAST_OPERATE <> 'D'     "
    "AND A.USER_ID = '600001'%1 ORDER BY B.CREATE_DATE DESC "_s;

const QByteArray Entry = "SYS_UPDATE_LOG L WHERE L.TABLE_NAME = 'SYS_AFFICHE' AND L.KEY_ID1 = R.ID"
                         " AND L.KEY_ID2 IS NULL";

QByteArray LastEntry(const QByteArray &column, const QByteArray &condition = {})
{
    return "(SELECT L." + column + " FROM " + Entry + condition +
           " ORDER BY L.LOG_ID DESC LIMIT 1)";
}

} // namespace

/// Announcements of the sample database.
class AnnouncementDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        QTest::newRow("announcements")
            << QByteArray("SYS_AFFICHE WHERE LAST_OPERATE <> 'D'") << 400;
        QTest::newRow("deleted ones")
            << QByteArray("SYS_UPDATE_LOG L WHERE TABLE_NAME = 'SYS_AFFICHE' AND OPTION_TYPE = '6'"
                          " AND NOT EXISTS (SELECT 1 FROM SYS_AFFICHE R WHERE R.ID = L.KEY_ID1)")
            << 20;
        QTest::newRow("title and content as long as can be")
            << QByteArray(
                   "SYS_AFFICHE WHERE LENGTH(AFFICHE_TITLE) = 50 AND LENGTH(AFFICHE_CONTENT) = 500")
            << 1;
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    void HasSomeOfEach_data()
    {
        QTest::addColumn<QByteArray>("condition");
        QTest::addColumn<int>("least");
        const auto row = [](const QByteArray &condition, int least) {
            QTest::newRow(condition.constData()) << condition << least;
        };
        for (const char *audience : {"000", "001", "010", "011", "100", "101", "110", "111"})
            row(QByteArray("PUBLIC_FLAG||BUYER_FLAG||SALER_FLAG = '") + audience + '\'', 15);
        for (const char *state : {"0", "1"})
            row(QByteArray("ENABLE_FLAG = '") + state + '\'', 100);
        row("END_DATE IS NULL", 50);
        row("END_DATE = START_DATE", 2);
        row("END_DATE > START_DATE", 200);
        row("ENABLE_FLAG = '0' AND EXISTS (SELECT 1 FROM " + Entry + " AND OPTION_TYPE = '3')", 30);
        row("ENABLE_FLAG = '1' AND EXISTS (SELECT 1 FROM " + Entry + " AND OPTION_TYPE = '2')", 30);
        row("CREATE_USER <> LAST_USER", 30);
    }
    void HasSomeOfEach()
    {
        QFETCH(QByteArray, condition);
        QFETCH(int, least);
        const int count = data_->Number("SELECT COUNT(*) FROM SYS_AFFICHE R WHERE " + condition);
        QVERIFY2(count >= least, QByteArray::number(count).constData());
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &condition) {
            QTest::newRow(name) << "SYS_AFFICHE R WHERE " + condition;
        };
        row("to a deleted group", "NOT EXISTS (SELECT 1 FROM UNI_UNION U WHERE U.UNION_ID = "
                                  "R.UNION_ID AND U.LAST_OPERATE <> 'D')");
        row("end before the start", "END_DATE < START_DATE");
        row("shown before it was written", "START_DATE <= CREATE_DATE");
        row("first entry is no insertion by the creator",
            "COALESCE((SELECT L.OPTION_TYPE||L.USER_NAME||L.OPTION_DATE FROM " + Entry +
                " ORDER BY L.LOG_ID LIMIT 1), '') <> '1'||R.CREATE_USER||R.CREATE_DATE");
        row("not stamped with its last entry",
            "R.LAST_UPDATE||R.LAST_USER_ID||R.LAST_USER <> " + LastEntry("OPTION_DATE") + "||" +
                LastEntry("USER_ID") + "||" + LastEntry("USER_NAME"));
        row("published without an approval that holds",
            "(ENABLE_FLAG = '1') <> (" + LastEntry("OPTION_TYPE") + " = '3')");
        row("published by another, or at another time",
            "ENABLE_FLAG = '1' AND COALESCE(CHECK_USER||CHECK_DATE, '') <> " +
                LastEntry("USER_NAME") + "||" + LastEntry("OPTION_DATE"));
        row("unpublished with a publisher",
            "ENABLE_FLAG = '0' AND (CHECK_USER IS NOT NULL OR CHECK_DATE IS NOT NULL)");
        row("there in spite of a deletion", LastEntry("OPTION_TYPE") + " IN ('5', '6')");
        row("of an unknown kind", "AFFICHE_TYPE <> '1'");
        row("two of one title", "EXISTS (SELECT 1 FROM SYS_AFFICHE O WHERE O.AFFICHE_TITLE = "
                                "R.AFFICHE_TITLE AND O.ID <> R.ID)");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    void AnnouncementsAreOfTwoYearsUpToTheLastWorkingDay()
    {
        QCOMPARE(data_->Text("SELECT MIN(DATE(CREATE_DATE)) FROM SYS_AFFICHE"), u"2024-11-21"_s);
        QCOMPARE(data_->Text("SELECT MAX(DATE(CREATE_DATE)) FROM SYS_AFFICHE"), u"2026-11-20"_s);
    }

    void ListShowsAllAndComesUpWithAFullPage()
    {
        const auto reader = data_->database->OpenReader();
        Store::QueryRunner runner(*reader, {});
        QCOMPARE(runner.Run(ListSql.arg(QString()), 1, 50).total, 400);
        // The 15 days with which the list comes up.
        const QString dates = u" AND B.CREATE_DATE between"
                              " to_date('2026-11-06 00:00:00','yyyy-mm-dd HH24:MI:SS') and"
                              " to_date('2026-11-21 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s;
        QVERIFY(runner.Run(ListSql.arg(dates), 1, 50).total >= 50);
    }

private:
    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(AnnouncementDataTest)
#include "AnnouncementDataTest.moc"
