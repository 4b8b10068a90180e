#include "DataSetSamples.h"

#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

/// What bound controls are told, as one line a signal, with the state that is visible then.
class ClientDataSetSignalsTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ClientDataSet> dataSet;
    QStringList told;

    QString Told() { return std::exchange(told, {}).join(u' '); }

private slots:
    void init()
    {
        dataSet = std::make_unique<ClientDataSet>();
        ClientDataSet *const ds = dataSet.get();
        ds->Open(RowsOf({{u"N"_s, FieldType::Text, 0}}, {{u"a"_s}, {u"b"_s}, {u"c"_s}}));
        const auto rows = [ds] { return QString::number(ds->RecordCount()); };
        connect(ds, &ClientDataSet::ResetBegin, this, [=, this] { told << u"reset("_s + rows(); });
        connect(ds, &ClientDataSet::ResetEnd, this, [=, this] { told << rows() + u')'; });
        connect(ds, &ClientDataSet::RowsAboutToBeInserted, this, [=, this](int first, int last) {
            told << u"insert%1-%2("_s.arg(first).arg(last) + rows();
        });
        connect(ds, &ClientDataSet::RowsInserted, this, [=, this] { told << rows() + u')'; });
        connect(ds, &ClientDataSet::RowsAboutToBeRemoved, this, [=, this](int first, int last) {
            told << u"remove%1-%2("_s.arg(first).arg(last) + rows();
        });
        connect(ds, &ClientDataSet::RowsRemoved, this, [=, this] { told << rows() + u')'; });
        connect(ds, &ClientDataSet::RowChanged, this,
                [=, this](int recNo) { told << u"row%1"_s.arg(recNo); });
        connect(ds, &ClientDataSet::CurrentChanged, this, [=, this](int recNo) {
            QCOMPARE(recNo, ds->RecNo());
            told << u"current%1"_s.arg(recNo);
        });
        connect(ds, &ClientDataSet::Changed, this, [=, this] { told << u"changed"_s; });
    }

    void MovesTellTheCurrentRowOnce()
    {
        dataSet->Next();
        QCOMPARE(Told(), u"current1"_s);
        dataSet->SetRecNo(1);
        dataSet->Post();
        QCOMPARE(Told(), QString());
        dataSet->Last();
        dataSet->Next();
        QCOMPARE(Told(), u"current2"_s);
    }
    void OpenAndCloseAreResets()
    {
        dataSet->Close();
        QCOMPARE(Told(), u"reset(3 0) current-1 changed"_s);
        dataSet->Close();
        QCOMPARE(Told(), QString());
        dataSet->CreateDataSet();
        QCOMPARE(Told(), u"reset(0 0) current-1 changed"_s);
    }
    void EditTellsRowsAndPostTellsTheChange()
    {
        dataSet->SetRecNo(1);
        Told();
        dataSet->Edit();
        QCOMPARE(Told(), QString());
        dataSet->SetFieldText(u"N", u"x"_s);
        QCOMPARE(Told(), u"row1"_s);
        dataSet->Post();
        QCOMPARE(Told(), u"row1 changed"_s);
        dataSet->Edit();
        dataSet->SetFieldText(u"N", u"y"_s);
        dataSet->Cancel();
        QCOMPARE(Told(), u"row1 row1 changed"_s);
        dataSet->Edit();
        dataSet->Post();
        QCOMPARE(Told(), u"row1"_s); // nothing was set
    }
    void AppendAndCancelBracketTheRow()
    {
        dataSet->Append();
        QCOMPARE(Told(), u"insert3-3(3 4) current3 changed"_s);
        dataSet->Cancel();
        QCOMPARE(Told(), u"remove3-3(4 3) current0 changed"_s);
    }
    void DeleteBracketsTheRow()
    {
        dataSet->Delete();
        QCOMPARE(Told(), u"remove0-0(3 2) current0 changed"_s);
    }
    void RowThatLeavesTheFilterIsRemovedOnPost()
    {
        dataSet->SetFilter(u"N <> 'x'"_s);
        dataSet->SetFiltered(true);
        QCOMPARE(Told(), u"reset(3 3) current0 changed"_s);
        dataSet->Edit();
        dataSet->SetFieldText(u"N", u"x"_s);
        dataSet->Post();
        QCOMPARE(Told(), u"row0 remove0-0(3 2) current0 changed"_s);
    }
    void BulkOperationsAreResets()
    {
        dataSet->SetAll(u"N", u"x"_s);
        QCOMPARE(Told(), u"reset(3 3) current0 changed"_s);
        dataSet->DeleteRows([](int recNo) { return recNo < 2; });
        QCOMPARE(Told(), u"reset(3 1) current0 changed"_s);
        dataSet->DeleteRows([](int) { return false; });
        QCOMPARE(Told(), QString());
    }
    void SuspendedControlsAreToldOnceAtTheEnd()
    {
        {
            const ControlsSuspender outer(*dataSet);
            {
                const ControlsSuspender inner(*dataSet);
                dataSet->Append();
                dataSet->SetFieldText(u"N", u"d"_s);
                dataSet->Post();
            }
            dataSet->First();
            dataSet->Delete();
            QVERIFY(dataSet->ControlsDisabled());
            QCOMPARE(Told(), QString());
        }
        QVERIFY(!dataSet->ControlsDisabled());
        QCOMPARE(Told(), u"reset(3 3) current0 changed"_s);
    }
    void SuspensionWithoutAChangeTellsNothing()
    {
        {
            const ControlsSuspender suspender(*dataSet);
            dataSet->RecordCount();
        }
        QCOMPARE(Told(), QString());
        {
            const ControlsSuspender suspender(*dataSet);
            dataSet->Last();
        }
        QCOMPARE(Told(), u"current2"_s);
    }
    void RefusedOpenTellsNothing()
    {
        dataSet->SetFilter(u"N <> 'x'"_s);
        dataSet->SetFiltered(true);
        Told();
        QVERIFY_THROWS_EXCEPTION(EDataSetError,
                                 dataSet->Open(RowsOf({{u"M"_s, FieldType::Text, 0}}, {{u"a"_s}})));
        QCOMPARE(Told(), QString());
    }
    void DestroyingWhileEditingTellsNothing()
    {
        dataSet->Edit();
        dataSet->SetFieldText(u"N", u"x"_s);
        Told();
        dataSet.reset();
        QCOMPARE(Told(), QString());
    }
    void CellsOutsideMayBeReadWhileControlsAreSuspended()
    {
        const ControlsSuspender suspender(*dataSet);
        dataSet->Close();
        QCOMPARE(dataSet->TextAt(2, 0), QString()); // a view that still counts three rows
    }
};

QTEST_GUILESS_MAIN(ClientDataSetSignalsTest)
#include "tst_clientdataset_signals.moc"
