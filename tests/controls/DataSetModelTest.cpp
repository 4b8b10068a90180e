#include "controls/DataSetModel.h"

#include "TestTable.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

namespace {

QList<GridColumn> OrgColumns()
{
    return ParseGridColumns({u"SELECTED|选择|40|check"_s, u"ORG_NAME|企业名称|200|text"_s,
                             u"ORG_TYPE|企业类型|90|combo"_s, u"ORG_ID|编号|90"_s});
}

RowSet Orgs()
{
    return Rows({u"ORG_ID:24"_s, u"ORG_NAME:8"_s, u"ORG_TYPE"_s, u"SELECTED:1"_s},
                {{u"7"_s, u"仁爱医院"_s, u"4"_s, u"0"_s},
                 {u"8"_s, u"百草药房"_s, u"5"_s, u"1"_s},
                 {u"9"_s, Null(), u"66"_s, Null()}});
}

} // namespace

class DataSetModelTest : public QObject
{
    Q_OBJECT

    ClientDataSet dataSet_;
    std::unique_ptr<DataSetModel> model_;
    std::unique_ptr<QAbstractItemModelTester> tester_;

private slots:
    void init()
    {
        dataSet_.Close();
        model_ = std::make_unique<DataSetModel>();
        tester_ = std::make_unique<QAbstractItemModelTester>(
            model_.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        model_->SetColumns(OrgColumns());
        model_->SetValueList(2, ParseValueList({u"4|医院"_s, u"5|药房"_s}));
        model_->SetDataSet(&dataSet_);
        dataSet_.Open(Orgs());
    }

    void cleanup()
    {
        tester_.reset();
        model_.reset();
    }

    void ShowsRowsThroughItsColumns()
    {
        QCOMPARE(model_->rowCount(), 3);
        QCOMPARE(RowTexts(*model_, 0), u"|仁爱医院|医院|7"_s);
        QCOMPARE(RowTexts(*model_, 1), u"|百草药房|药房|8"_s);
        QCOMPARE(model_->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(model_->index(2, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        QCOMPARE(model_->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), u"企业名称"_s);
    }

    void AValueOutsideTheValueListShowsNothing()
    {
        QCOMPARE(model_->index(2, 2).data().toString(), QString());
        QCOMPARE(model_->index(2, 2).data(RawValueRole).toString(), u"66"_s);
    }

    void DateOfMidnightShowsNoTime()
    {
        RowSetBuilder builder({{u"AT"_s, FieldType::DateTime}, {u"TOLD"_s, FieldType::Text}});
        for (const auto &[at, told] : {std::pair{"2026-07-21 00:00:00", "2026-07-21 00:00:00"},
                                       std::pair{"2026-07-21 10:00:00", "x"}}) {
            builder.AddCell(at);
            builder.AddCell(told);
            builder.EndRow();
        }
        dataSet_.Open(RowSet::Load(builder.Finish()));
        model_->SetColumns(ParseGridColumns({u"AT"_s, u"TOLD"_s}));
        QCOMPARE(RowTexts(*model_, 0), u"2026-07-21|2026-07-21 00:00:00"_s);
        QCOMPARE(RowTexts(*model_, 1), u"2026-07-21 10:00:00|x"_s);
        QCOMPARE(model_->index(0, 0).data(RawValueRole).toString(), u"2026-07-21 00:00:00"_s);
    }

    void TwoColumnsMayShowOneField()
    {
        model_->SetColumns(ParseGridColumns({u"ORG_TYPE"_s, u"org_type"_s}));
        model_->SetValueList(0, ParseValueList({u"4|医院"_s}));
        QCOMPARE(RowTexts(*model_, 0), u"医院|4"_s);
    }

    void AColumnWithoutItsFieldStaysEmpty()
    {
        model_->SetColumns(ParseGridColumns({u"ORG_CODE|机构编码|80|text"_s, u"ORG_ID"_s}));
        QCOMPARE(RowTexts(*model_, 0), u"|7"_s);
        QVERIFY(!model_->setData(model_->index(0, 0), u"x"_s, Qt::EditRole));
    }

    void RowNumbersCountFromOneAndCloseUpBehindADeletedRow()
    {
        model_->SetColumns(ParseGridColumns({u"ORG_ID"_s, u"ROW_NO|序号|48||rownumber"_s}));
        QCOMPARE(RowTexts(*model_, 0), u"7|1"_s);
        QCOMPARE(RowTexts(*model_, 2), u"9|3"_s);
        QVERIFY(!model_->flags(model_->index(0, 1)).testFlag(Qt::ItemIsEditable));
        const QSignalSpy repainted(model_.get(), &QAbstractItemModel::dataChanged);
        dataSet_.First();
        dataSet_.Delete();
        QCOMPARE(RowTexts(*model_, 0), u"8|1"_s);
        QCOMPARE(RowTexts(*model_, 1), u"9|2"_s);
        QCOMPARE(repainted.size(), 1);
        QCOMPARE(repainted[0][0].toModelIndex(), model_->index(0, 1));
        QCOMPARE(repainted[0][1].toModelIndex(), model_->index(1, 1));
    }

    void FieldPositionsFollowTheNextQuery()
    {
        QCOMPARE(RowTexts(*model_, 0), u"|仁爱医院|医院|7"_s);
        dataSet_.Open(Rows({u"ORG_NAME"_s, u"ORG_ID"_s}, {{u"甲"_s, u"1"_s}}));
        QCOMPARE(RowTexts(*model_, 0), u"|甲||1"_s);
    }

    void TellsPreciselyOfInsertedRemovedAndChangedRows()
    {
        QSignalSpy inserted(model_.get(), &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(model_.get(), &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(model_.get(), &QAbstractItemModel::dataChanged);
        QSignalSpy reset(model_.get(), &QAbstractItemModel::modelReset);
        dataSet_.Append();
        dataSet_.SetFieldText(u"ORG_NAME", u"新单位"_s);
        dataSet_.Post();
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(inserted[0][1].toInt(), 3);
        QVERIFY(!changed.isEmpty());
        QCOMPARE(changed.last()[0].toModelIndex().row(), 3);
        QCOMPARE(model_->index(3, 1).data().toString(), u"新单位"_s);
        dataSet_.SetRecNo(1);
        dataSet_.Delete();
        QCOMPARE(removed.size(), 1);
        QCOMPARE(removed[0][1].toInt(), 1);
        QCOMPARE(model_->rowCount(), 3);
        QCOMPARE(model_->index(1, 3).data().toString(), u"9"_s);
        QCOMPARE(reset.size(), 0);
    }

    void ACancelledAppendVanishes()
    {
        dataSet_.Append();
        QCOMPARE(model_->rowCount(), 4);
        dataSet_.Cancel();
        QCOMPARE(model_->rowCount(), 3);
    }

    void ARowThatLeavesTheFilterLeavesTheModel()
    {
        dataSet_.SetFilter(u"ORG_TYPE <> '4'"_s);
        dataSet_.SetFiltered(true);
        QCOMPARE(model_->rowCount(), 2);
        dataSet_.Edit();
        dataSet_.SetFieldText(u"ORG_TYPE", u"4"_s);
        dataSet_.Post();
        QCOMPARE(model_->rowCount(), 1);
        dataSet_.SetFiltered(false);
        dataSet_.SetFilter({});
    }

    void AnsweringIsSafeWhileTheDataSetIsSuspendedAndOtherwiseFilled()
    {
        {
            const ControlsSuspender suspender(dataSet_);
            dataSet_.Close();
            QCOMPARE(model_->rowCount(), 3); // as the views know it
            QCOMPARE(RowTexts(*model_, 2), u"|||"_s);
            dataSet_.Open(Rows({u"ORG_NAME"_s}, {{u"甲"_s}}));
            QCOMPARE(RowTexts(*model_, 0), u"|甲||"_s);
            QCOMPARE(RowTexts(*model_, 2), u"|||"_s);
        }
        QCOMPARE(model_->rowCount(), 1);
    }

    void TextIsWrittenAndPosted()
    {
        dataSet_.SetRecNo(2);
        QVERIFY(model_->setData(model_->index(1, 1), u"百草堂"_s, Qt::EditRole));
        QCOMPARE(dataSet_.RecNo(), 1);
        QCOMPARE(dataSet_.FieldText(u"ORG_NAME"), u"百草堂"_s);
        QVERIFY(!dataSet_.IsEditing());
    }

    void TextWrittenInsideAnEditStaysPending()
    {
        dataSet_.Append();
        QVERIFY(model_->setData(model_->index(3, 1), u"新单位"_s, Qt::EditRole));
        QVERIFY(dataSet_.CurrentState() == ClientDataSet::State::Insert);
        QCOMPARE(dataSet_.FieldText(u"ORG_NAME"), u"新单位"_s);
    }

    void ATickIsPostedAtOnce()
    {
        QVERIFY(model_->setData(model_->index(0, 0), int(Qt::Checked), Qt::CheckStateRole));
        QCOMPARE(dataSet_.TextAt(0, 3), u"1"_s);
        QVERIFY(!dataSet_.IsEditing());
        QVERIFY(model_->setData(model_->index(0, 0), int(Qt::Unchecked), Qt::CheckStateRole));
        QCOMPARE(dataSet_.TextAt(0, 3), u"0"_s);
    }

    void OnlyEditableColumnsCanBeChanged()
    {
        QVERIFY(model_->flags(model_->index(0, 0)).testFlag(Qt::ItemIsUserCheckable));
        QVERIFY(!model_->flags(model_->index(0, 0)).testFlag(Qt::ItemIsEditable));
        QVERIFY(model_->flags(model_->index(0, 1)).testFlag(Qt::ItemIsEditable));
        QVERIFY(!model_->flags(model_->index(0, 3)).testFlag(Qt::ItemIsEditable));
        QVERIFY(!model_->setData(model_->index(0, 3), u"x"_s, Qt::EditRole));
        model_->SetReadOnly(0, true);
        QVERIFY(!model_->flags(model_->index(0, 0)).testFlag(Qt::ItemIsUserCheckable));
        QVERIFY(!model_->setData(model_->index(0, 0), int(Qt::Checked), Qt::CheckStateRole));
        QCOMPARE(dataSet_.TextAt(0, 3), u"0"_s);
    }

    void ARefusalIsReportedAndTheCellKeepsItsValue()
    {
        RowSetBuilder builder({{u"AMOUNT"_s, FieldType::Integer, 0}});
        builder.AddCell("5");
        builder.EndRow();
        dataSet_.Open(RowSet::Load(builder.Finish()));
        model_->SetColumns(ParseGridColumns({u"AMOUNT|数量|80|text"_s}));
        QSignalSpy failed(model_.get(), &DataSetModel::EditFailed);
        QVERIFY(!model_->setData(model_->index(0, 0), u"五"_s, Qt::EditRole));
        QCOMPARE(failed.size(), 1);
        QVERIFY2(failed[0][0].toString().contains(u"AMOUNT"), "the message names the field");
        QCOMPARE(model_->index(0, 0).data().toString(), u"5"_s);
        QVERIFY(!dataSet_.IsEditing());
    }

    void FieldSizeBoundsTheEditor()
    {
        QCOMPARE(model_->index(0, 1).data(FieldSizeRole).toInt(), 8);
        QCOMPARE(model_->index(0, 2).data(FieldSizeRole).toInt(), 0);
    }

    void ADataSetThatGoesLeavesAnEmptyModel()
    {
        {
            ClientDataSet shortLived;
            shortLived.Open(Orgs());
            model_->SetDataSet(&shortLived);
            QCOMPARE(model_->rowCount(), 3);
        }
        QCOMPARE(model_->rowCount(), 0);
        model_->SetDataSet(nullptr);
    }
};

QTEST_GUILESS_MAIN(DataSetModelTest)
#include "DataSetModelTest.moc"
