#include "SampleDatabase.h"

#include "managers/PostRunner.h"
#include "store/Credentials.h"
#include "store/QueryRunner.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

/// A line of the manual: what is done to the row of a code, with which organisation.
struct Step
{
    QString action;
    QString code;
    QString organisation;
    QString answer;
};

QList<Step> StepsOfTheManual()
{
    QFile file(QStringLiteral(QEL_MANUAL));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString page = QString::fromUtf8(file.readAll());
    QList<Step> steps;
    for (const QString &line : page.mid(page.indexOf(u"## 机构从属关系"_s)).split(u'\n')) {
        const QStringList cells = line.split(u'|');
        if (cells.size() == 7 && cells[2].trimmed().toInt() > 0)
            steps +=
                {cells[1].trimmed(), cells[2].trimmed(), cells[3].trimmed(), cells[4].trimmed()};
    }
    return steps;
}

/// The step as the screens post it. A row that was taken out is named by those who still see it.
Wire::PostRequest PostOf(SampleDatabase &data, const Step &step)
{
    const QByteArray row = " FROM BAS_ORG_AFFILIATION WHERE TREE_CODE = '" + step.code.toUtf8() +
                           "' ORDER BY ENABLE_FLAG = 'D'";
    const QString rowOrganisation = data.Text("SELECT ORG_ID" + row);
    const QString organisation = data.Text("SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME = '" +
                                           step.organisation.toUtf8() + '\'');
    const QString manager = u"com.business.basedata.OrgAffiliationManager"_s;
    if (step.action.startsWith(u"删除"))
        return {manager,
                u"deleteOrgAffiliation"_s,
                {{{u"ORG_ID"_s, rowOrganisation}, {u"ENABLE_FLAG"_s, u"D"_s}}}};
    const bool isNew = step.action.startsWith(u"新增子机构");
    const QString code =
        isNew ? step.code + (step.action.contains(u"02") ? u"02"_s : u"01"_s) : step.code;
    const QString superior = isNew ? rowOrganisation : data.Text("SELECT PARENT_ORGID" + row);
    return {manager,
            u"insertUpdateOrgAffiliation"_s,
            {{{u"ID"_s, isNew ? QString() : data.Text("SELECT ID" + row)},
              {u"ORG_ID"_s, organisation},
              {u"PARENT_ORGID"_s, superior},
              {u"TREE_CODE"_s, code},
              {u"TREE_LEVEL"_s, QString::number(code.size() / 2 - 1)}}}};
}

} // namespace

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

    void ManualNamesARecordForEveryAnswer()
    {
        const QList<Step> steps = StepsOfTheManual();
        QCOMPARE(steps.size(), 8);
        SampleDatabase data;
        const QByteArray token = "0123456789abcdef";
        Store::SetToken(*data.connection, u"admin"_s, token);
        const auto admin = Store::FindOperator(*data.connection, u"admin"_s, token);
        for (const Step &step : steps) {
            const Wire::PostAnswer answer = Managers::RunPost(
                *data.connection, *admin, {.request = PostOf(data, step), .key = {}, .body = {}});
            QVERIFY2(answer.rows.value(0).code == step.answer,
                     qPrintable(step.action + u' ' + step.code + u' ' + answer.rows.value(0).code));
        }
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
