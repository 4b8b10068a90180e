#include "controls/CurrencyText.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

class CurrencyTextTest : public QObject
{
    Q_OBJECT

private slots:
    void ShowsTwoDecimals_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("empty stays empty") << u""_s << u""_s;
        QTest::newRow("zero") << u"0"_s << u"0.00"_s;
        QTest::newRow("whole") << u"12"_s << u"12.00"_s;
        QTest::newRow("one decimal") << u"12.5"_s << u"12.50"_s;
        QTest::newRow("two") << u"12.50"_s << u"12.50"_s;
        QTest::newRow("no digit before the point") << u".5"_s << u"0.50"_s;
        QTest::newRow("nor behind it") << u"7."_s << u"7.00"_s;
        QTest::newRow("leading zeros") << u"007.25"_s << u"7.25"_s;
        QTest::newRow("highest") << u"99999999"_s << u"99999999.00"_s;
        QTest::newRow("half up") << u"12.345"_s << u"12.35"_s;
        QTest::newRow("half up, binary below") << u"1.005"_s << u"1.01"_s;
        QTest::newRow("below the half") << u"12.3449"_s << u"12.34"_s;
        QTest::newRow("negative of another source") << u"-1.5"_s << u"-1.50"_s;
        QTest::newRow("no number") << u"面议"_s << u"面议"_s;
        QTest::newRow("no finite number") << u"inf"_s << u"inf"_s;
    }
    void ShowsTwoDecimals()
    {
        QFETCH(QString, stored);
        QTEST(CurrencyText(stored), "shown");
    }

    void TakesWhatIsAnAmount_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("taken");
        QTest::newRow("empty") << u""_s << u""_s;
        QTest::newRow("whole") << u"12"_s << u"12"_s;
        QTest::newRow("while typing") << u"12."_s << u"12."_s;
        QTest::newRow("two decimals") << u"12.50"_s << u"12.50"_s;
        QTest::newRow("no digit before the point") << u".5"_s << u".5"_s;
        QTest::newRow("lone point") << u"."_s << u"0."_s;
        QTest::newRow("highest") << u"99999999"_s << u"99999999"_s;
        QTest::newRow("eight characters") << u"12345.67"_s << u"12345.67"_s;
        QTest::newRow("outer blanks") << u" 12.5 "_s << u"12.5"_s;
        QTest::newRow("line and cell ends") << u"\t12.5\r\n"_s << u"12.5"_s;
        QTest::newRow("wide blanks") << u"　12.5　"_s << u"12.5"_s;
        QTest::newRow("full-width") << u"１２．５０"_s << u"12.50"_s;
        QTest::newRow("Chinese full stop") << u"12。5"_s << u"12.5"_s;
        QTest::newRow("groups") << u"1,234.50"_s << u"1234.50"_s;
        QTest::newRow("full-width groups") << u"１，２３４．５"_s << u"1234.5"_s;
        QTest::newRow("groups that leave eight") << u"99,999,999"_s << u"99999999"_s;
    }
    void TakesWhatIsAnAmount()
    {
        QFETCH(QString, typed);
        QFETCH(QString, taken);
        QCOMPARE(CurrencyInput(typed).value_or(u"refused"_s), taken);
    }

    void RefusesWhatIsNone_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("letters") << u"abc"_s;
        QTest::newRow("a letter behind") << u"12a"_s;
        QTest::newRow("Chinese number") << u"十二"_s;
        QTest::newRow("exponent") << u"1e5"_s;
        QTest::newRow("negative") << u"-5"_s;
        QTest::newRow("full-width minus") << u"－5"_s;
        QTest::newRow("plus") << u"+5"_s;
        QTest::newRow("currency sign") << u"¥12.50"_s;
        QTest::newRow("nine digits") << u"123456789"_s;
        QTest::newRow("nine characters") << u"123456.78"_s;
        QTest::newRow("third decimal") << u"12.345"_s;
        QTest::newRow("two points") << u"1.2.3"_s;
        QTest::newRow("inner blank") << u"1 2"_s;
        QTest::newRow("decimal comma") << u"12,50"_s;
        QTest::newRow("groups of two") << u"12,34,567"_s;
        QTest::newRow("other digits") << u"١٢"_s;
        QTest::newRow("two lines") << u"12\n13"_s;
    }
    void RefusesWhatIsNone()
    {
        QFETCH(QString, typed);
        QCOMPARE(CurrencyInput(typed).value_or(u"refused"_s), u"refused"_s);
    }

    void RefusesMoreThanTheHighestAlsoWhereThereIsRoom()
    {
        QVERIFY(CurrencyInput(u"99999999.00"_s, 11));
        QVERIFY(!CurrencyInput(u"99999999.01"_s, 11));
        QVERIFY(!CurrencyInput(u"100000000"_s, 11));
    }

    void ComparesAmountsNotTexts()
    {
        QVERIFY(IsSameCurrency(u"12.5"_s, u"12.50"_s));
        QVERIFY(IsSameCurrency(u""_s, u""_s));
        QVERIFY(IsSameCurrency(u"面议"_s, u"面议"_s));
        QVERIFY(!IsSameCurrency(u"12.345"_s, u"12.35"_s));
        QVERIFY(!IsSameCurrency(u""_s, u"0.00"_s));
        QVERIFY(!IsSameCurrency(u"面议"_s, u"0.00"_s));
    }
};

QTEST_APPLESS_MAIN(CurrencyTextTest)
#include "CurrencyTextTest.moc"
