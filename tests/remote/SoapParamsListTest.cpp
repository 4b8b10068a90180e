#include "remote/SoapParamsList.h"

#include "support/Raised.h"

#include <QTest>

using namespace Qel;
using Qel::Test::Raised;
using namespace Qt::StringLiterals;

class SoapParamsListTest : public QObject
{
    Q_OBJECT

private slots:
    void KeepsRowsAndValuesInOrder()
    {
        TSoapParamsList list;
        list.NewParams();
        list.AddParam(u"UNION_ID"_s, u"7"_s);
        list.AddParam(u"LAST_USER"_s, u"张三"_s);
        list.PostParams();
        list.NewParams();
        list.AddParam(u"UNION_ID"_s, u"8"_s);
        list.PostParams();

        const QList<Wire::NamedValues> expected{
            {{u"UNION_ID"_s, u"7"_s}, {u"LAST_USER"_s, u"张三"_s}}, {{u"UNION_ID"_s, u"8"_s}}};
        QCOMPARE(list.Count(), 2);
        QCOMPARE(list.Rows(), expected);
    }

    void CountsOnlyClosedRows()
    {
        TSoapParamsList list;
        list.NewParams();
        list.AddParam(u"A"_s, u"1"_s);
        QCOMPARE(list.Count(), 0);
        list.PostParams();
        QCOMPARE(list.Count(), 1);
    }

    void NewParamsStartsAnEmptyRow()
    {
        TSoapParamsList list;
        list.NewParams();
        list.AddParam(u"A"_s, u"dropped"_s);
        list.NewParams();
        list.AddParam(u"B"_s, u"kept"_s);
        list.PostParams();
        QCOMPARE(list.Rows(), (QList<Wire::NamedValues>{{{u"B"_s, u"kept"_s}}}));
    }

    void ReplacesAValueWhereItStands()
    {
        TSoapParamsList list;
        list.NewParams();
        list.AddParam(u"A"_s, u"1"_s);
        list.AddParam(u"B"_s, u"2"_s);
        list.AddParam(u"a"_s, u"3"_s);
        list.PostParams();
        QCOMPARE(list.Rows(), (QList<Wire::NamedValues>{{{u"A"_s, u"3"_s}, {u"B"_s, u"2"_s}}}));
    }

    void ClearDropsClosedAndCurrentRows()
    {
        TSoapParamsList list;
        list.NewParams();
        list.PostParams();
        list.NewParams();
        list.Clear();
        QCOMPARE(list.Count(), 0);
        QVERIFY(Raised<EParamsError>([&] { list.AddParam(u"A"_s, u"1"_s); }));
    }

    void RefusesAddParamWithoutNewParams()
    {
        TSoapParamsList list;
        const auto error = Raised<EParamsError>([&] { list.AddParam(u"UNION_ID"_s, u"1"_s); });
        QVERIFY(error);
        QVERIFY2(error->Message().contains(u"UNION_ID"_s), error->what());
    }

    void RefusesAddParamAfterPostParams()
    {
        TSoapParamsList list;
        list.NewParams();
        list.PostParams();
        QVERIFY(Raised<EParamsError>([&] { list.AddParam(u"A"_s, u"1"_s); }));
    }

    void RefusesPostParamsWithoutNewParams()
    {
        TSoapParamsList list;
        QVERIFY(Raised<EParamsError>([&] { list.PostParams(); }));
        QCOMPARE(list.Count(), 0);
    }

    void ReadsResultCodesAndReturnedValues()
    {
        TSoapParamsList list;
        list.SetResult({{{u"1"_s, {{u"UNION_ID"_s, u"42"_s}}}, {u"-1"_s, {}}}});
        QCOMPARE(list.Count(), 2);
        QCOMPARE(list.GetResultCode(0), u"1"_s);
        QCOMPARE(list.GetParamValue(0, u"UNION_ID"), u"42"_s);
        QCOMPARE(list.GetParamValue(0, u"union_id"), u"42"_s);
        QCOMPARE(list.GetResultCode(1), u"-1"_s);
    }

    void ValuesThatAreAbsentAreEmpty()
    {
        TSoapParamsList list;
        list.SetResult({{{u"1"_s, {{u"ID"_s, u"42"_s}}}}});
        QCOMPARE(list.GetParamValue(0, u"UNION_ID"), QString());
        QCOMPARE(list.GetParamValue(1, u"ID"), QString());
        QCOMPARE(list.GetParamValue(-1, u"ID"), QString());
        QCOMPARE(list.GetResultCode(1), QString());
    }
};

QTEST_APPLESS_MAIN(SoapParamsListTest)
#include "SoapParamsListTest.moc"
