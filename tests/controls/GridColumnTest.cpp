#include "controls/GridColumn.h"

#include "dataset/QelError.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

class GridColumnTest : public QObject
{
    Q_OBJECT

private slots:
    void ReadsEveryPart()
    {
        const GridColumn column = ParseGridColumn(u"PRICE|成本价|80|text|right,readonly,hidden"_s);
        QCOMPARE(column.field, u"PRICE"_s);
        QCOMPARE(column.caption, u"成本价"_s);
        QCOMPARE(column.width, 80);
        QVERIFY(column.editor == GridEditor::Text);
        QVERIFY(column.hidden);
        QVERIFY(column.readOnly);
        QVERIFY(!column.IsEditable());
        QCOMPARE(column.alignment, Qt::Alignment(Qt::AlignRight));
    }

    void MissingPartsHaveDefaults()
    {
        const GridColumn column = ParseGridColumn(u"ORG_NAME"_s);
        QCOMPARE(column.caption, QString());
        QCOMPARE(column.width, 100);
        QVERIFY(column.editor == GridEditor::None);
        QVERIFY(!column.hidden);
        QVERIFY(!column.IsEditable());
    }

    void AmountsAreRightAlignedAndEditable()
    {
        const GridColumn column = ParseGridColumn(u"PRICE|成本价|80|currency"_s);
        QVERIFY(column.editor == GridEditor::Currency);
        QVERIFY(column.IsEditable());
        QCOMPARE(column.alignment, Qt::Alignment(Qt::AlignRight));
    }

    void CaptionsKeepTheirBlanks()
    {
        QCOMPARE(ParseGridColumn(u"F|品 名 |50"_s).caption, u"品 名 "_s);
    }

    void FormatGivesWhatWasParsed_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("shown") << u"ORG_NAME|机构名称|200||"_s;
        QTest::newRow("tick") << u"SELECTED|选择|40|check|center"_s;
        QTest::newRow("list") << u"ORG_TYPE|企业类型|90|combo|hidden,readonly"_s;
        QTest::newRow("date") << u"D|日期|90|date|right"_s;
        QTest::newRow("row number") << u"ROW_NO|序号|48||rownumber,center"_s;
        QTest::newRow("amount") << u"P|成本价|90|currency|right"_s;
        QTest::newRow("amount in the middle") << u"P|成本价|90|currency|center"_s;
    }

    void FormatGivesWhatWasParsed()
    {
        QFETCH(QString, line);
        QCOMPARE(FormatGridColumn(ParseGridColumn(line)), line);
    }

    void RefusesWhatItCannotRead_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("quoted");
        QTest::newRow("no field") << u"|编码|80"_s << u"字段名"_s;
        QTest::newRow("width") << u"A|编码|wide"_s << u"“wide”"_s;
        QTest::newRow("no width at all") << u"A|编码|0"_s << u"“0”"_s;
        QTest::newRow("editor") << u"A|编码|80|spin"_s << u"“spin”"_s;
        QTest::newRow("flag") << u"A|编码|80||bold"_s << u"“bold”"_s;
        QTest::newRow("too many parts") << u"A|编码|80||hidden|x"_s << u"分隔符"_s;
    }

    void RefusesWhatItCannotRead()
    {
        QFETCH(QString, line);
        QFETCH(QString, quoted);
        try {
            ParseGridColumn(line);
            QFAIL("nothing was refused");
        } catch (const EQelError &error) {
            QVERIFY2(error.Message().contains(line), qPrintable(error.Message()));
            QVERIFY2(error.Message().contains(quoted), qPrintable(error.Message()));
        }
    }

    void ValueItemsKeepTheirTextExactly()
    {
        QCOMPARE(ParseValueItem(u"1|买方 "_s), (ValueItem{u"1"_s, u"买方 "_s}));
        QCOMPARE(ParseValueItem(u"|全部"_s), (ValueItem{QString(), u"全部"_s}));
        QCOMPARE(ParseValueItem(u"a|b|c"_s), (ValueItem{u"a"_s, u"b|c"_s}));
        QCOMPARE(ParseValueItem(u"全部"_s), (ValueItem{u"全部"_s, u"全部"_s}));
    }
};

QTEST_APPLESS_MAIN(GridColumnTest)
#include "GridColumnTest.moc"
