#include "controls/LevelGridModel.h"

#include "LevelSample.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

namespace {

QList<GridColumn> ColumnsOf(const QString &level)
{
    QStringList own;
    const QStringList all = SampleColumns();
    for (const QString &line : all) {
        if (line.startsWith(level + u'.'))
            own.append(line.mid(level.size() + 1));
    }
    return ParseGridColumns(own);
}

/// The whole tree as text, a line a row, indented by level; header rows in brackets.
void Write(const LevelGridModel &model, const QModelIndex &parent, int depth, QStringList &lines)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const QString text = index.data().toString();
        lines.append(QString(depth, u' ') + (model.IsHeader(index) ? u'[' + text + u']' : text));
        Write(model, index, depth + 1, lines);
    }
}

} // namespace

class LevelGridModelTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<LevelSample> sample_;
    std::unique_ptr<LevelGridModel> model_;
    std::unique_ptr<QAbstractItemModelTester> tester_;

    QStringList Tree() const
    {
        QStringList lines;
        Write(*model_, {}, 0, lines);
        return lines;
    }

private slots:
    void init()
    {
        sample_ = std::make_unique<LevelSample>();
        model_ = std::make_unique<LevelGridModel>();
        tester_ = std::make_unique<QAbstractItemModelTester>(
            model_.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        model_->SetLevels({{u"OrgView"_s, u"ORG_ID"_s, {}, ColumnsOf(u"OrgView"_s)},
                           {u"StoreView"_s, u"STORE_ID"_s, u"ORG_ID"_s, ColumnsOf(u"StoreView"_s)},
                           {u"UserView"_s, u"USER_ID"_s, u"STORE_ID"_s, ColumnsOf(u"UserView"_s)}});
        model_->SetDataSet(0, &sample_->orgs);
        model_->SetDataSet(1, &sample_->stores);
        model_->SetDataSet(2, &sample_->users);
        sample_->Open();
    }

    void cleanup()
    {
        tester_.reset();
        model_.reset();
        sample_.reset();
    }

    void DetailsStandUnderTheMasterThatTheyNameBelowAHeaderRow()
    {
        const QStringList wanted{u"市一医院"_s, u" [药库]"_s, u" 西药库"_s, u"  [用户]"_s,
                                 u"  王 甲"_s,  u"  李 乙"_s, u" 中药库"_s, u"县医院"_s,
                                 u"大药房"_s,   u" [药库]"_s, u" 总库"_s,   u"  [用户]"_s,
                                 u"  赵 丙"_s};
        QCOMPARE(Tree(), wanted);
    }

    void TheOrderInWhichTheTablesAreOpenedDoesNotMatter()
    {
        const QStringList wanted = Tree();
        sample_->orgs.Close();
        QCOMPARE(Tree(), QStringList());
        sample_->stores.Close();
        sample_->users.Close();
        sample_->OpenUsers();
        sample_->OpenStores();
        QCOMPARE(Tree(), QStringList());
        sample_->OpenOrgs();
        QCOMPARE(Tree(), wanted);
    }

    void EachLevelHasItsOwnColumns()
    {
        const QModelIndex org = model_->IndexOf(0, 0);
        const QModelIndex store = model_->IndexOf(1, 0);
        QCOMPARE(model_->columnCount(), 2);
        QCOMPARE(model_->columnCount(org), 2);
        QCOMPARE(model_->columnCount(store), 3);
        QCOMPARE(RowTexts(*model_, 0, store), u"用户|关联|编号"_s);
        QCOMPARE(RowTexts(*model_, 1, store), u"王 甲||u1"_s);
        QCOMPARE(model_->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), u"类型"_s);
    }

    void TicksAreShownAndCannotBeChanged()
    {
        const QModelIndex ticked = model_->IndexOf(2, 0, 1);
        QCOMPARE(ticked.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(model_->IndexOf(2, 1, 1).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        QVERIFY(!ticked.flags().testAnyFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEditable));
    }

    void HeaderRowsCannotBeFocused()
    {
        const QModelIndex header = model_->index(0, 0, model_->IndexOf(0, 0));
        QVERIFY(model_->IsHeader(header));
        QVERIFY(!header.flags().testFlag(Qt::ItemIsEnabled));
        QCOMPARE(model_->RecNoOf(header), -1);
        QCOMPARE(model_->LevelOf(header), 1);
    }

    void AnAppendedRowAppearsUnderItsMaster()
    {
        QSignalSpy inserted(model_.get(), &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(model_.get(), &QAbstractItemModel::modelReset);
        sample_->AppendStore(u"s5"_s, u"新库"_s, u"o1"_s);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(reset.size(), 0);
        QCOMPARE(Tree().mid(6, 2), QStringList({u" 中药库"_s, u" 新库"_s}));
    }

    void TheFirstDetailBringsTheHeaderRowAndTheLastTakesItAway()
    {
        sample_->AppendStore(u"s5"_s, u"新库"_s, u"o2"_s);
        QCOMPARE(Tree().mid(7, 3), QStringList({u"县医院"_s, u" [药库]"_s, u" 新库"_s}));
        sample_->stores.Delete();
        QCOMPARE(Tree().mid(7, 2), QStringList({u"县医院"_s, u"大药房"_s}));
    }

    void ADeletedMasterTakesItsDetailsOutOfSightAndLeavesThemInTheirTable()
    {
        sample_->stores.SetRecNo(0);
        sample_->stores.Delete();
        QCOMPARE(Tree().mid(0, 4),
                 QStringList({u"市一医院"_s, u" [药库]"_s, u" 中药库"_s, u"县医院"_s}));
        QCOMPARE(sample_->users.RecordCount(), 3);
        QVERIFY(!model_->IndexOf(2, 0).isValid());
        QVERIFY(model_->IndexOf(2, 1).isValid());
    }

    void ARowWithoutAMasterIsNotShownUntilTheMasterComes()
    {
        QVERIFY(!model_->IndexOf(1, 3).isValid());
        sample_->orgs.Append();
        sample_->orgs.SetFieldText(u"ORG_NAME", u"新医院"_s);
        sample_->orgs.SetFieldText(u"ORG_ID", u"o9"_s);
        sample_->orgs.Post();
        QCOMPARE(Tree().mid(13), QStringList({u"新医院"_s, u" [药库]"_s, u" 无主库"_s}));
        QVERIFY(model_->IsUnder(1, 3, model_->IndexOf(0, 3)));
    }

    void ADetailWhoseLinkChangesMovesToTheOtherMasterWithItsOwnDetails()
    {
        sample_->stores.SetRecNo(0);
        sample_->stores.Edit();
        sample_->stores.SetFieldText(u"ORG_ID", u"o2"_s);
        sample_->stores.Post();
        QCOMPARE(Tree().mid(0, 8),
                 QStringList({u"市一医院"_s, u" [药库]"_s, u" 中药库"_s, u"县医院"_s, u" [药库]"_s,
                              u" 西药库"_s, u"  [用户]"_s, u"  王 甲"_s}));
        sample_->stores.Edit();
        sample_->stores.SetFieldText(u"STORE_ID", u"s9"_s); // no user names it any more
        sample_->stores.Post();
        QCOMPARE(Tree().mid(3, 4),
                 QStringList({u"县医院"_s, u" [药库]"_s, u" 西药库"_s, u"大药房"_s}));
    }

    void ACancelledRowLeavesNothingBehind()
    {
        const QStringList before = Tree();
        sample_->stores.Append();
        sample_->stores.SetFieldText(u"ORG_ID", u"o2"_s);
        sample_->stores.Cancel();
        QCOMPARE(Tree(), before);
    }

    void ManyRowsDeletedAtOnceAreBuiltAnew()
    {
        sample_->users.DeleteRows([](int recNo) { return recNo != 1; });
        QCOMPARE(Tree().mid(1, 3), QStringList({u" [药库]"_s, u" 西药库"_s, u" 中药库"_s}));
        QCOMPARE(model_->DetailCount(1, 1), 1);
        QCOMPARE(model_->DetailRecNo(1, 1, 0), 0);
    }

    void WhatIsDoneWhileATableIsSuspendedShowsWhenItGoesOn()
    {
        {
            const ControlsSuspender quiet(sample_->stores);
            sample_->AppendStore(u"s5"_s, u"新库"_s, u"o2"_s);
            sample_->users.Edit(); // its master cannot be asked meanwhile
            sample_->users.SetFieldText(u"USER_NAME", u"王 丁"_s);
            sample_->users.Post();
        }
        QCOMPARE(Tree().mid(4, 1), QStringList({u"  王 丁"_s}));
        QCOMPARE(Tree().mid(7, 3), QStringList({u"县医院"_s, u" [药库]"_s, u" 新库"_s}));
    }

    void EqualKeysCountOnceTheFirstRowHasTheDetails()
    {
        sample_->orgs.Close();
        sample_->orgs.Open(Rows({u"ORG_ID"_s, u"ORG_NAME"_s},
                                {{u"o1"_s, u"甲"_s}, {u"o1"_s, u"乙"_s}, {Null(), u"丙"_s}}));
        QCOMPARE(model_->DetailCount(0, 0), 2);
        QCOMPARE(model_->DetailCount(0, 1), 0);
        QCOMPARE(model_->DetailCount(0, 2), 0);
    }

    void AValueListStandsForItsLevelsCodesOnly()
    {
        model_->SetValueList(0, u"ORG_TYPE", {{u"4"_s, u"医院"_s}, {u"5"_s, u"药房"_s}});
        QCOMPARE(RowTexts(*model_, 0), u"市一医院|医院"_s);
        QCOMPARE(RowTexts(*model_, 1, model_->IndexOf(0, 0)), u"西药库|s1"_s);
    }

    void ATableThatGoesAwayLeavesAnEmptyLevel()
    {
        auto other = std::make_unique<ClientDataSet>();
        other->Open(Rows({u"USER_ID"_s, u"STORE_ID"_s}, {{u"u9"_s, u"s3"_s}}));
        model_->SetDataSet(2, other.get());
        QCOMPARE(model_->DetailCount(1, 2), 1);
        other.reset();
        QCOMPARE(model_->DetailCount(1, 2), 0);
        QCOMPARE(model_->rowCount(model_->IndexOf(0, 0)), 3);
    }
};

QTEST_GUILESS_MAIN(LevelGridModelTest)
#include "LevelGridModelTest.moc"
