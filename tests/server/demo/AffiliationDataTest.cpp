#include "SampleDatabase.h"

#include "store/QueryRunner.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// The sample affiliation, as its screen and the rules of an organisation find it.
class AffiliationDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void HoldsFourHundredOrganisationsOnFiveLevels()
    {
        const QByteArray live = " FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D'";
        QCOMPARE(data_->Number("SELECT COUNT(*)" + live), 400);
        for (char level = '1'; level <= '5'; ++level)
            QVERIFY2(data_->Number("SELECT COUNT(*)" + live + " AND TREE_LEVEL = '" + level +
                                   '\'') >= 10,
                     QByteArray(1, level).constData());
    }

    void OneBranchHasEveryCodeUpToNinetyNine()
    {
        const QByteArray full = "SELECT PARENT_ORGID FROM BAS_ORG_AFFILIATION WHERE "
                                "ENABLE_FLAG <> 'D' AND PARENT_ORGID IS NOT NULL GROUP BY 1 "
                                "HAVING COUNT(*) = 99 AND MAX(SUBSTR(TREE_CODE, -2)) = '99'";
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM (" + full + ')'), 1);
        const QString parent = data_->Text(full);
        QCOMPARE(data_->Text("SELECT TREE_CODE FROM BAS_ORG_AFFILIATION WHERE ORG_ID = '" +
                             parent.toUtf8() + '\''),
                 u"0001"_s);
        QCOMPARE(Ask(u" SELECT nvl(Max(TREE_CODE)+1,'01') AS CODE  FROM BAS_ORG_AFFILIATION  WHERE "
                     "PARENT_ORGID='%1' and enable_flag <>'D' "_s.arg(parent)),
                 u"200"_s);
    }

    void RemovedTopRowLeavesItsCodeFree()
    {
        const int removed =
            data_->Number("SELECT TREE_CODE FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG = 'D'");
        QVERIFY(removed > 0);
        QCOMPARE(Ask(u" SELECT NVL(MAX(TREE_CODE)+1,'1') AS CODE  FROM BAS_ORG_AFFILIATION  WHERE "
                     "PARENT_ORGID IS NULL and enable_flag <>'D' "_s),
                 QString::number(removed));
    }

    void TreeShowsEveryRowWithItsOrganisation()
    {
        Store::QueryRunner runner(*data_->connection, {});
        const RowSet tree = RowSet::Load(
            runner
                .Run(u" SELECT A.*,    B.ORG_ABBR,    B.ORG_NAME  FROM BAS_ORG_AFFILIATION A,      "
                     " BAS_ORG B  WHERE A.ORG_ID=B.ORG_ID      AND B.LAST_OPERATE <>'D'      and "
                     "a.enable_flag <> 'D' ORDER BY A.TREE_CODE"_s,
                     0, 0)
                .block);
        QCOMPARE(tree.RowCount(), 400);
        QCOMPARE(tree.Text(0, tree.FieldIndex(u"TREE_CODE")), u"0001"_s);
        QCOMPARE(tree.Text(0, tree.FieldIndex(u"ORG_ABBR")), u"营运中心"_s);
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &rows) {
            QTest::newRow(name) << rows;
        };
        const QByteArray table = "BAS_ORG_AFFILIATION A";
        const QByteArray pairs = table + ", BAS_ORG_AFFILIATION B WHERE A.PARENT_ORGID = B.ORG_ID"
                                         " AND B.ENABLE_FLAG <> 'D' AND ";
        row("organisation that is not there or deleted",
            table + " WHERE ORG_ID NOT IN (SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D')");
        row("superior that is not in the tree",
            table + " WHERE PARENT_ORGID IS NOT NULL AND PARENT_ORGID NOT IN "
                    "(SELECT ORG_ID FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D')");
        row("organisation twice", "(SELECT 1 FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D' "
                                  "GROUP BY ORG_ID HAVING COUNT(*) > 1)");
        row("code twice", "(SELECT 1 FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D' "
                          "GROUP BY TREE_CODE HAVING COUNT(*) > 1)");
        row("code of other than digits", table + " WHERE TREE_CODE GLOB '*[^0-9]*'");
        row("long code at the top",
            table + " WHERE PARENT_ORGID IS NULL AND LENGTH(TREE_CODE) <> 4");
        row("code that is not its superior's and two digits",
            pairs + "SUBSTR(A.TREE_CODE, 1, LENGTH(A.TREE_CODE) - 2) <> B.TREE_CODE");
        row("level that does not follow from the code",
            table + " WHERE TREE_LEVEL <> LENGTH(TREE_CODE) / 2 - 1");
        row("flags of a removed row that differ",
            table + " WHERE (LAST_OPERATE = 'D') <> (ENABLE_FLAG = 'D')");
        row("removed row that still names a superior",
            table + " WHERE ENABLE_FLAG = 'D' AND PARENT_ORGID IS NOT NULL");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    void NextKeyIsFree()
    {
        QCOMPARE(data_->Number("SELECT NEXT FROM SRV_SEQUENCE WHERE NAME = 'BAS_ORG_AFFILIATION'"),
                 data_->Number("SELECT MAX(ID) FROM BAS_ORG_AFFILIATION") + 1);
    }

private:
    /// The first value of what a screen asks.
    QString Ask(const QString &sql)
    {
        Store::QueryRunner runner(*data_->connection, {});
        return RowSet::Load(runner.Run(sql, 0, 0).block).Text(0, 0);
    }

    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(AffiliationDataTest)
#include "AffiliationDataTest.moc"
