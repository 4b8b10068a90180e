#include "DataSetSamples.h"

#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const FieldDefs kFields{
    {u"USER_ID"_s, FieldType::Text, 24},      {u"CATALOG_ID"_s, FieldType::Text, 24},
    {u"USER_NAME"_s, FieldType::WideText, 4}, {u"QTY"_s, FieldType::Integer, 0},
    {u"LAST_OPERATE"_s, FieldType::Text, 1},
};

/// Five rows, 张三 to 孙七; the third has no LAST_OPERATE.
RowSet Sample()
{
    return RowsOf(kFields, {
                               {u"1"_s, u"A"_s, u"张三"_s, u"10"_s, u"1"_s},
                               {u"2"_s, u"A"_s, u"李四"_s, u"9"_s, u"D"_s},
                               {u"3"_s, u"B"_s, u"王五"_s, u"8"_s, std::nullopt},
                               {u"1"_s, u"B"_s, u"赵六"_s, u"7"_s, u"1"_s},
                               {u"4"_s, std::nullopt, u"孙七"_s, u"6"_s, u""_s},
                           });
}

QStringList Names(const ClientDataSet &dataSet)
{
    return Column(dataSet, u"USER_NAME");
}

} // namespace

class ClientDataSetTest : public QObject
{
    Q_OBJECT

    ClientDataSet dataSet;

private slots:
    void init()
    {
        dataSet.SetFiltered(false);
        dataSet.SetFilter({});
        dataSet.Open(Sample());
    }
    void cleanup()
    {
        for (const FieldDef &field : kFields)
            dataSet.SetFieldChangeHandler(field.name, {});
        dataSet.Close();
    }

    // --- Opening and closing ---
    void IsClosedAndEmptyBeforeAnythingElse()
    {
        const ClientDataSet fresh;
        QVERIFY(!fresh.IsActive());
        QCOMPARE(fresh.RecordCount(), 0);
        QCOMPARE(fresh.RecNo(), -1);
        QVERIFY(fresh.Eof() && fresh.Bof());
    }
    void OpenReplacesRowsAndFields()
    {
        dataSet.Open(RowsOf({{u"X"_s, FieldType::Text, 0}}, {{u"x"_s}}));
        QCOMPARE(dataSet.FieldCount(), 1);
        QCOMPARE(dataSet.FieldText(u"X"), u"x"_s);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.FieldText(u"USER_ID"));
    }
    void CloseKeepsTheFieldsAndDropsTheRows()
    {
        dataSet.Close();
        QVERIFY(!dataSet.IsActive());
        QCOMPARE(dataSet.RecordCount(), 0);
        QCOMPARE(dataSet.Fields(), kFields);
        QCOMPARE(dataSet.FieldText(u"USER_ID"), QString());
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.First());
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Append());
        dataSet.CreateDataSet();
        QVERIFY(dataSet.IsActive() && dataSet.IsEmpty());
    }
    void FieldsAreDeclaredOnClosedTablesOnly()
    {
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFieldDefs(kFields));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.CreateDataSet());
        ClientDataSet fresh;
        QVERIFY_THROWS_EXCEPTION(EDataSetError, fresh.CreateDataSet());
    }
    void ClosingWhileEditingDropsTheEdit()
    {
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"99"_s);
        dataSet.Close();
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Inactive);
        dataSet.Open(Sample());
        QCOMPARE(dataSet.FieldText(u"QTY"), u"10"_s);
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Browse);
    }
    void AssignDataCopiesChangedRowsAndFields()
    {
        dataSet.SetRecNo(1);
        dataSet.Delete();
        dataSet.Edit();
        dataSet.SetFieldText(u"USER_NAME", u"改名"_s);
        dataSet.Post();
        ClientDataSet copy;
        copy.AssignData(dataSet);
        QCOMPARE(copy.Fields(), kFields);
        QCOMPARE(Names(copy), QStringList({u"张三"_s, u"改名"_s, u"赵六"_s, u"孙七"_s}));
        copy.Delete();
        QCOMPARE(dataSet.RecordCount(), 4);
    }

    // --- Moving ---
    void WalksFromFirstToEofAndBack()
    {
        QStringList seen;
        for (dataSet.First(); !dataSet.Eof(); dataSet.Next())
            seen.append(dataSet.FieldText(u"USER_ID"));
        QCOMPARE(seen.join(u','), u"1,2,3,1,4"_s);
        QCOMPARE(dataSet.RecNo(), 4);
        seen.clear();
        for (dataSet.Last(); !dataSet.Bof(); dataSet.Prior())
            seen.append(dataSet.FieldText(u"USER_ID"));
        QCOMPARE(seen.join(u','), u"4,1,3,2,1"_s);
    }
    void RecNoIsClamped()
    {
        dataSet.SetRecNo(100);
        QCOMPARE(dataSet.RecNo(), 4);
        dataSet.SetRecNo(-3);
        QCOMPARE(dataSet.RecNo(), 0);
    }
    void EveryMovePostsThePendingEdit()
    {
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"11"_s);
        dataSet.Next();
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Browse);
        QCOMPARE(dataSet.RecNo(), 1);
        QCOMPARE(dataSet.TextAt(0, 3), u"11"_s);
    }
    void CellsBesideTheTableAreEmptyAndNull()
    {
        QCOMPARE(dataSet.TextAt(5, 0), QString());
        QVERIFY(dataSet.IsNullAt(0, 99));
        QVERIFY(dataSet.IsNullAt(-1, 0));
    }

    // --- Cells ---
    void FieldNamesIgnoreCase()
    {
        QCOMPARE(dataSet.FieldText(u"user_id"), u"1"_s);
        QCOMPARE(dataSet.FieldIndex(u"Last_Operate"), 4);
        QCOMPARE(dataSet.FieldIndex(u"NOBODY"), -1);
    }
    void NullAndEmptyBothReadAsEmptyAndStayApart()
    {
        dataSet.SetRecNo(2);
        QVERIFY(dataSet.FieldIsNull(u"LAST_OPERATE"));
        QCOMPARE(dataSet.FieldText(u"LAST_OPERATE"), QString());
        dataSet.SetRecNo(4);
        QVERIFY(!dataSet.FieldIsNull(u"LAST_OPERATE"));
        QCOMPARE(dataSet.FieldText(u"LAST_OPERATE"), QString());
        dataSet.Edit();
        dataSet.SetFieldNull(u"LAST_OPERATE");
        QVERIFY(dataSet.FieldIsNull(u"LAST_OPERATE"));
        dataSet.SetFieldText(u"LAST_OPERATE", {});
        QVERIFY(!dataSet.FieldIsNull(u"LAST_OPERATE"));
    }
    void EmptyTextInANumberIsNull()
    {
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u" "_s);
        QVERIFY(dataSet.FieldIsNull(u"QTY"));
    }
    void SettingOutsideAnEditIsRefused()
    {
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFieldText(u"QTY", u"1"_s));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFieldNull(u"QTY"));
    }
    void RefusedTextLeavesTheCellAndTheEditAsTheyWere()
    {
        dataSet.Edit();
        QVERIFY_THROWS_EXCEPTION(EDataSetError,
                                 dataSet.SetFieldText(u"USER_NAME", u"五个字太长"_s));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFieldText(u"QTY", u"十"_s));
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"张三"_s);
        QCOMPARE(dataSet.FieldText(u"QTY"), u"10"_s);
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Edit);
    }
    void ValuesFromTheServerStayAsTheyCame()
    {
        dataSet.Open(RowsOf({{u"N"_s, FieldType::Integer, 0}}, {{u"007"_s}}));
        QCOMPARE(dataSet.FieldText(u"N"), u"007"_s);
        dataSet.Edit();
        dataSet.SetFieldText(u"N", u"008"_s);
        QCOMPARE(dataSet.FieldText(u"N"), u"8"_s);
    }
    void DuplicateLabelsAreToldApartByPosition()
    {
        dataSet.Open(RowsOf({{u"NAME"_s, FieldType::Text, 0}, {u"Name"_s, FieldType::Text, 0}},
                            {{u"first"_s, u"second"_s}}));
        QCOMPARE(dataSet.FieldText(u"NAME"), u"first"_s);
        QCOMPARE(dataSet.FieldTextAt(1), u"second"_s);
        dataSet.Edit();
        dataSet.SetFieldTextAt(1, u"changed"_s);
        QCOMPARE(dataSet.FieldText(u"Name"), u"first"_s);
        QCOMPARE(dataSet.TextAt(0, 1), u"changed"_s);
    }

    // --- Editing ---
    void AppendedRowIsLastNullAndCurrent()
    {
        dataSet.Append();
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Insert);
        QCOMPARE(dataSet.RecordCount(), 6);
        QCOMPARE(dataSet.RecNo(), 5);
        QVERIFY(dataSet.FieldIsNull(u"USER_ID"));
        dataSet.SetFieldText(u"USER_NAME", u"周八"_s);
        dataSet.Post();
        QCOMPARE(Names(dataSet).last(), u"周八"_s);
        QVERIFY(dataSet.FieldIsNull(u"USER_ID"));
    }
    void CancelledAppendVanishesAndGoesBack()
    {
        dataSet.SetRecNo(2);
        dataSet.Append();
        dataSet.SetFieldText(u"USER_NAME", u"周八"_s);
        dataSet.Cancel();
        QCOMPARE(dataSet.RecordCount(), 5);
        QCOMPARE(dataSet.RecNo(), 2);
        QCOMPARE(dataSet.Find(u"USER_NAME", {u"周八"_s}), -1);
    }
    void CancelledEditPutsEveryFieldBack()
    {
        dataSet.SetRecNo(2);
        dataSet.Edit();
        dataSet.SetFieldText(u"USER_NAME", u"甲"_s);
        dataSet.SetFieldText(u"USER_NAME", u"乙"_s);
        dataSet.SetFieldText(u"LAST_OPERATE", u"D"_s);
        dataSet.Cancel();
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"王五"_s);
        QVERIFY(dataSet.FieldIsNull(u"LAST_OPERATE"));
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Browse);
    }
    void PostAndCancelOutsideAnEditDoNothing()
    {
        dataSet.Post();
        dataSet.Cancel();
        QCOMPARE(dataSet.RecordCount(), 5);
    }
    void AppendWhileEditingPostsFirst()
    {
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"1"_s);
        dataSet.Append();
        dataSet.Append();
        QCOMPARE(dataSet.RecordCount(), 7);
        QCOMPARE(dataSet.TextAt(0, 3), u"1"_s);
    }
    void EditNeedsARow()
    {
        dataSet.Close();
        dataSet.CreateDataSet();
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Edit());
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Delete());
    }
    void DeleteGoesToTheNextRowOrTheLast()
    {
        dataSet.SetRecNo(1);
        dataSet.Delete();
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"王五"_s);
        dataSet.Last();
        dataSet.Delete();
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"赵六"_s);
        while (!dataSet.IsEmpty())
            dataSet.Delete();
        QCOMPARE(dataSet.RecNo(), -1);
        QVERIFY(dataSet.Eof() && dataSet.Bof());
    }
    void LoopThatDeletesOrStepsSeesEveryRowOnce()
    {
        QStringList seen;
        dataSet.First();
        while (!dataSet.Eof()) {
            seen.append(dataSet.FieldText(u"USER_NAME"));
            if (dataSet.FieldText(u"USER_ID") == u"1" || dataSet.FieldText(u"USER_ID") == u"4")
                dataSet.Delete();
            else
                dataSet.Next();
        }
        QCOMPARE(seen, QStringList({u"张三"_s, u"李四"_s, u"王五"_s, u"赵六"_s, u"孙七"_s}));
        QCOMPARE(Names(dataSet), QStringList({u"李四"_s, u"王五"_s}));
    }
    void DeleteWhileEditingDeletesTheRow()
    {
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"1"_s);
        dataSet.Delete();
        QCOMPARE(dataSet.CurrentState(), ClientDataSet::State::Browse);
        QCOMPARE(dataSet.RecordCount(), 4);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"李四"_s);
    }
    void DeleteWhileInsertingDropsTheNewRow()
    {
        dataSet.SetRecNo(3);
        dataSet.Append();
        dataSet.Delete();
        QCOMPARE(dataSet.RecordCount(), 5);
        QCOMPARE(dataSet.RecNo(), 3);
    }
    void AutoIncrementNumbersAppendedRowsOnFromTheLargest()
    {
        ClientDataSet numbered;
        numbered.SetFieldDefs(
            {{u"AutoID"_s, FieldType::AutoIncrement, 0}, {u"T"_s, FieldType::Text, 9}});
        numbered.CreateDataSet();
        numbered.Append();
        numbered.Post();
        numbered.Append();
        QVERIFY_THROWS_EXCEPTION(EDataSetError, numbered.SetFieldText(u"AutoID", u"9"_s));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, numbered.SetFieldNull(u"AutoID"));
        numbered.Post();
        QCOMPARE(Column(numbered, u"AutoID"), QStringList({u"1"_s, u"2"_s}));
        numbered.Open(RowsOf(numbered.Fields(), {{u"41"_s, u"x"_s}, {u"7"_s, u"y"_s}}));
        numbered.Append();
        QCOMPARE(numbered.FieldText(u"AutoID"), u"42"_s);
    }

    // --- Change handlers ---
    void HandlerRunsInsideTheEditAndMaySetFields()
    {
        dataSet.SetFieldChangeHandler(u"qty"_s, [this] {
            dataSet.SetFieldText(u"USER_NAME", dataSet.FieldText(u"QTY") + u"个"_s);
        });
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"3"_s);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"3个"_s);
        dataSet.Cancel();
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"张三"_s);
    }
    void HandlersThatSetEachOthersFieldsEnd()
    {
        int runs = 0;
        dataSet.SetFieldChangeHandler(u"QTY"_s, [&] {
            ++runs;
            dataSet.SetFieldText(u"USER_ID", u"9"_s);
        });
        dataSet.SetFieldChangeHandler(u"USER_ID"_s, [&] {
            ++runs;
            dataSet.SetFieldText(u"QTY", u"5"_s);
        });
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"1"_s);
        QCOMPARE(runs, 2);
        QCOMPARE(dataSet.FieldText(u"QTY"), u"5"_s);
    }
    void HandlerSurvivesCloseAndOpen()
    {
        int runs = 0;
        dataSet.SetFieldChangeHandler(u"QTY"_s, [&] { ++runs; });
        dataSet.Close();
        dataSet.Open(Sample());
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"1"_s);
        QCOMPARE(runs, 1);
        dataSet.SetFieldChangeHandler(u"QTY"_s, {});
        dataSet.SetFieldText(u"QTY", u"2"_s);
        QCOMPARE(runs, 1);
    }
    void HandlerThatThrowsRunsAgainNextTime()
    {
        int runs = 0;
        dataSet.SetFieldChangeHandler(u"QTY"_s, [&] {
            if (++runs == 1)
                throw EDataSetError(u"不行"_s);
        });
        dataSet.Edit();
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFieldText(u"QTY", u"1"_s));
        QVERIFY(dataSet.IsEditing());
        dataSet.SetFieldText(u"QTY", u"2"_s);
        QCOMPARE(runs, 2);
    }

    // --- Finding ---
    void LocatesByOneFieldTheFirstRow()
    {
        dataSet.Last();
        QVERIFY(dataSet.Locate(u"USER_ID", {u"1"_s}));
        QCOMPARE(dataSet.RecNo(), 0);
    }
    void LocatesBySeveralFields()
    {
        QVERIFY(dataSet.Locate(u"USER_ID;CATALOG_ID", {u"1"_s, u"B"_s}));
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"赵六"_s);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Locate(u"USER_ID;CATALOG_ID", {u"1"_s}));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Locate(u"NOBODY", {u"1"_s}));
    }
    void FailedLocateMovesNothing()
    {
        dataSet.SetRecNo(3);
        QVERIFY(!dataSet.Locate(u"USER_ID", {u"77"_s}));
        QCOMPARE(dataSet.RecNo(), 3);
        QVERIFY(!dataSet.Locate(u"CATALOG_ID", {u"a"_s}));
    }
    void LocateOfEmptyTextFindsNullToo()
    {
        QVERIFY(dataSet.Locate(u"LAST_OPERATE", {QString()}));
        QCOMPARE(dataSet.RecNo(), 2);
        QCOMPARE(dataSet.Find(u"CATALOG_ID", {QString()}), 4);
    }
    void LocateDoesNotConfuseNeighbouringKeys()
    {
        dataSet.Open(RowsOf({{u"A"_s, FieldType::Text, 0}, {u"B"_s, FieldType::Text, 0}},
                            {{u"ab"_s, u"c"_s}, {u"a"_s, u"bc"_s}}));
        QCOMPARE(dataSet.Find(u"A;B", {u"a"_s, u"bc"_s}), 1);
        QCOMPARE(dataSet.Find(u"A;B", {u"ab"_s, u"c"_s}), 0);
    }
    void LocateFollowsEditsAppendsAndDeletes()
    {
        QCOMPARE(dataSet.Find(u"USER_ID", {u"2"_s}), 1); // builds the index
        dataSet.SetRecNo(3);
        dataSet.Edit();
        dataSet.SetFieldText(u"USER_ID", u"2"_s);
        dataSet.Post();
        QCOMPARE(dataSet.Find(u"USER_ID", {u"2"_s}), 1);
        dataSet.SetRecNo(1);
        dataSet.Delete();
        QCOMPARE(dataSet.Find(u"USER_ID", {u"2"_s}), 2);
        dataSet.Edit();
        dataSet.SetFieldText(u"USER_ID", u"55"_s);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"55"_s}), 1);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"3"_s}), -1);
        dataSet.Cancel();
        QCOMPARE(dataSet.Find(u"USER_ID", {u"55"_s}), -1);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"3"_s}), 1);
        dataSet.Append();
        dataSet.SetFieldText(u"USER_ID", u"66"_s);
        dataSet.Post();
        QCOMPARE(dataSet.Find(u"USER_ID", {u"66"_s}), 4);
        dataSet.SetAll(u"USER_ID", u"0"_s);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"66"_s}), -1);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"0"_s}), 0);
    }
    void LocateStaysRightOverThousandsOfChanges()
    {
        RowSetBuilder builder({{u"ID"_s, FieldType::Text, 0}});
        for (int i = 0; i < 3000; ++i) {
            builder.AddCell(QByteArray::number(i));
            builder.EndRow();
        }
        dataSet.Open(RowSet::Load(builder.Finish()));
        for (int i = 0; i < 3000; ++i) {
            QVERIFY(dataSet.Locate(u"ID", {QString::number(i)}));
            QCOMPARE(dataSet.RecNo(), i);
            dataSet.Edit();
            dataSet.SetFieldText(u"ID", u"x"_s + QString::number(i % 1500));
            dataSet.Post();
        }
        for (int i = 0; i < 1500; ++i)
            QCOMPARE(dataSet.Find(u"ID", {u"x"_s + QString::number(i)}), i);
        QCOMPARE(dataSet.Find(u"ID", {u"7"_s}), -1);
    }
    void LocateSeesOnlyVisibleRows()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"1"_s}), 0);
        dataSet.SetFiltered(true);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"1"_s}), 1);
        QCOMPARE(dataSet.Find(u"USER_ID", {u"2"_s}), -1);
    }
    void FindsPartsOfTextsFromARowOn()
    {
        QCOMPARE(dataSet.FindContaining(u"USER_NAME", u"六"), 3);
        QCOMPARE(dataSet.FindContaining(u"USER_NAME", u"六", 4), -1);
        QCOMPARE(dataSet.FindContaining(u"USER_NAME", u""), -1);
        QCOMPARE(dataSet.FindContaining(u"USER_ID", u"1", 1), 3);
        QCOMPARE(dataSet.FindContaining(u"USER_ID", u"12"), -1); // "1" and "2" are two cells
        dataSet.SetRecNo(3);
        dataSet.Delete();
        QCOMPARE(dataSet.FindContaining(u"USER_ID", u"1", 1), -1);
        dataSet.SetRecNo(2);
        dataSet.Edit();
        dataSet.SetFieldText(u"USER_ID", u"x1"_s);
        QCOMPARE(dataSet.FindContaining(u"USER_ID", u"1", 1), 2);
    }

    // --- Bookmarks ---
    void BookmarksSurviveDeletionsAroundThem()
    {
        dataSet.SetRecNo(3);
        const ClientDataSet::Bookmark mark = dataSet.GetBookmark();
        dataSet.First();
        dataSet.Delete();
        dataSet.Last();
        dataSet.Delete();
        QVERIFY(dataSet.BookmarkValid(mark));
        QVERIFY(dataSet.GotoBookmark(mark));
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"赵六"_s);
        dataSet.Delete();
        QVERIFY(!dataSet.BookmarkValid(mark));
        QVERIFY(!dataSet.GotoBookmark(mark));
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"王五"_s);
    }
    void BookmarksEndWithTheirOpening()
    {
        const ClientDataSet::Bookmark mark = dataSet.BookmarkAt(2);
        dataSet.Open(Sample());
        QVERIFY(!dataSet.BookmarkValid(mark));
        QVERIFY(!dataSet.BookmarkValid(ClientDataSet::NoBookmark));
        QCOMPARE(dataSet.BookmarkAt(9), ClientDataSet::NoBookmark);
    }
    void BookmarkOfAHiddenRowIsNotValidUntilItShows()
    {
        const ClientDataSet::Bookmark mark = dataSet.BookmarkAt(0);
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        QVERIFY(!dataSet.BookmarkValid(mark));
        dataSet.SetFiltered(false);
        QVERIFY(dataSet.GotoBookmark(mark));
    }
    void BookmarkOfACancelledRowIsNeverAnother()
    {
        dataSet.Append();
        const ClientDataSet::Bookmark mark = dataSet.GetBookmark();
        dataSet.Cancel();
        dataSet.Append();
        dataSet.Post();
        QVERIFY(!dataSet.BookmarkValid(mark));
    }

    // --- Filter ---
    void FilterHidesDeletedMarksAndKeepsNulls()
    {
        dataSet.SetFilter(u"LAST_OPERATE<> 'D' or LAST_OPERATE = NULL"_s);
        QCOMPARE(dataSet.RecordCount(), 5); // not switched on yet
        dataSet.SetFiltered(true);
        QCOMPARE(Names(dataSet), QStringList({u"张三"_s, u"王五"_s, u"赵六"_s, u"孙七"_s}));
        dataSet.SetFiltered(false);
        QCOMPARE(dataSet.RecordCount(), 5);
    }
    void RowThatNoLongerPassesLeavesOnPost()
    {
        dataSet.SetFilter(u"LAST_OPERATE<> 'D' or LAST_OPERATE = NULL"_s);
        dataSet.SetFiltered(true);
        dataSet.SetRecNo(1);
        dataSet.Edit();
        dataSet.SetFieldText(u"LAST_OPERATE", u"D"_s);
        QCOMPARE(dataSet.RecordCount(), 4);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"王五"_s);
        dataSet.Post();
        QCOMPARE(dataSet.RecordCount(), 3);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"赵六"_s);
        dataSet.SetFiltered(false);
        QCOMPARE(dataSet.RecordCount(), 5);
    }
    void StepAfterAnEditThatHidesTheRowSkipsNone()
    {
        dataSet.SetFilter(u"LAST_OPERATE <> 'D'"_s);
        dataSet.SetFiltered(true);
        QStringList seen;
        dataSet.First();
        while (!dataSet.Eof()) {
            seen.append(dataSet.FieldText(u"USER_NAME"));
            dataSet.Edit();
            dataSet.SetFieldText(u"LAST_OPERATE", u"D"_s);
            dataSet.Next();
        }
        QCOMPARE(seen, QStringList({u"张三"_s, u"王五"_s, u"赵六"_s, u"孙七"_s}));
        QVERIFY(dataSet.IsEmpty());
    }
    void AppendedRowShowsUntilItIsPosted()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.Append();
        QCOMPARE(dataSet.RecordCount(), 3);
        dataSet.SetFieldText(u"CATALOG_ID", u"A"_s);
        dataSet.Post();
        QCOMPARE(dataSet.RecordCount(), 2);
    }
    void DeletingWhileFilteredDeletesThatRowOnly()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.Delete();
        QCOMPARE(Names(dataSet), QStringList({u"赵六"_s}));
        dataSet.SetFiltered(false);
        QCOMPARE(Names(dataSet), QStringList({u"张三"_s, u"李四"_s, u"赵六"_s, u"孙七"_s}));
    }
    void CurrentRowStaysOrGivesWayToTheNextWhenFiltered()
    {
        dataSet.SetRecNo(3);
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"赵六"_s);
        dataSet.SetFilter(u"CATALOG_ID = 'A'"_s);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"李四"_s); // none after it
        dataSet.SetFilter(u"CATALOG_ID = 'Z'"_s);
        QCOMPARE(dataSet.RecNo(), -1);
    }
    void UnreadableFilterIsRefusedAndTheOldOneStays()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFilter(u"CATALOG_ID ="_s));
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetFilter(u"NOBODY = '1'"_s));
        QCOMPARE(dataSet.Filter(), u"CATALOG_ID = 'B'"_s);
        QCOMPARE(dataSet.RecordCount(), 2);
    }
    void FilterStaysInForceOverOpen()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.Open(Sample());
        QCOMPARE(dataSet.RecordCount(), 2);
        const RowSet others = RowsOf({{u"X"_s, FieldType::Text, 0}}, {{u"x"_s}});
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.Open(others));
        QCOMPARE(dataSet.RecordCount(), 2); // as it was
        dataSet.SetFiltered(false);
        dataSet.Open(others); // a filter that is off is not asked
        QCOMPARE(dataSet.RecordCount(), 1);
    }

    // --- Bulk ---
    void SetAllSetsVisibleRowsAndStaysOnTheRow()
    {
        dataSet.SetRecNo(2);
        dataSet.SetAll(u"QTY", u"07"_s);
        QCOMPARE(Column(dataSet, u"QTY").join(u','), u"7,7,7,7,7"_s);
        QCOMPARE(dataSet.RecNo(), 2);
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.SetAll(u"QTY", u"1"_s);
        dataSet.SetFiltered(false);
        QCOMPARE(Column(dataSet, u"QTY").join(u','), u"7,7,1,1,7"_s);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.SetAll(u"QTY", u"x"_s));
    }
    void SetAllOfTheFilteredFieldAppliesTheFilter()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.SetAll(u"CATALOG_ID", u"C"_s);
        QVERIFY(dataSet.IsEmpty());
    }
    void SetAllRunsTheFieldsHandlerOnEveryRow()
    {
        dataSet.SetFieldChangeHandler(u"QTY"_s, [this] {
            dataSet.SetFieldText(u"USER_NAME", dataSet.FieldText(u"USER_ID"));
        });
        dataSet.SetRecNo(3);
        dataSet.SetAll(u"QTY", u"1"_s);
        QCOMPARE(Names(dataSet).join(u','), u"1,2,3,1,4"_s);
        QCOMPARE(dataSet.RecNo(), 3);
    }
    void SetAllAlsoReachesAppendedRows()
    {
        dataSet.Append();
        dataSet.SetAll(u"QTY", u"1"_s);
        QCOMPARE(Column(dataSet, u"QTY").join(u','), u"1,1,1,1,1,1"_s);
    }
    void DeleteRowsTakesTheDoomedAndKeepsTheRest()
    {
        dataSet.SetRecNo(1);
        const int deleted =
            dataSet.DeleteRows([this](int recNo) { return dataSet.TextAt(recNo, 1) == u"A"; });
        QCOMPARE(deleted, 2);
        QCOMPARE(Names(dataSet), QStringList({u"王五"_s, u"赵六"_s, u"孙七"_s}));
        QCOMPARE(dataSet.RecNo(), 0);
        QCOMPARE(dataSet.FieldText(u"USER_NAME"), u"王五"_s);
        QCOMPARE(dataSet.DeleteRows([](int) { return false; }), 0);
        QCOMPARE(dataSet.DeleteRows([](int) { return true; }), 3);
        QCOMPARE(dataSet.RecNo(), -1);
    }
    void DeleteRowsThatThrowsDeletesNothing()
    {
        QVERIFY_THROWS_EXCEPTION(EDataSetError, dataSet.DeleteRows([](int recNo) {
            if (recNo == 3)
                throw EDataSetError(u"不行"_s);
            return true;
        }));
        QCOMPARE(dataSet.RecordCount(), 5);
    }

    // --- As a finished table ---
    void ToRowSetLeavesOutDeletedAndUnpostedRows()
    {
        dataSet.SetFilter(u"CATALOG_ID = 'B'"_s);
        dataSet.SetFiltered(true);
        dataSet.Delete(); // 王五
        dataSet.Edit();
        dataSet.SetFieldText(u"QTY", u"1"_s);
        QCOMPARE(dataSet.ToRowSet().Text(2, 3), u"7"_s);
        dataSet.Post();
        QCOMPARE(dataSet.ToRowSet().Text(2, 3), u"1"_s);
        dataSet.Append();
        const RowSet rows = dataSet.ToRowSet();
        QCOMPARE(rows.RowCount(), 4);
        QCOMPARE(rows.Fields(), kFields);
        QVERIFY(rows.IsNull(3, 1));
        QVERIFY(!rows.IsNull(3, 4));
    }
};

QTEST_GUILESS_MAIN(ClientDataSetTest)
#include "tst_clientdataset.moc"
