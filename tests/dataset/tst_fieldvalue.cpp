#include "dataset/FieldValue.h"
#include "dataset/QelError.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

class FieldValueTest : public QObject
{
    Q_OBJECT

private slots:
    void HasOneTextForm_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("form"); // null text: refused
        const auto row = [](const char *name, FieldType type, const QString &text,
                            const QString &form) {
            QTest::newRow(name) << int(type) << text << form;
        };
        using enum FieldType;
        row("integer", Integer, u"12"_s, u"12"_s);
        row("leading zeros", Integer, u"-0012"_s, u"-12"_s);
        row("plus and blanks", Integer, u" +7 "_s, u"7"_s);
        row("minus zero", Integer, u"-0"_s, u"0"_s);
        row("whole decimal", Integer, u"3.00"_s, u"3"_s);
        row("largest", Integer, u"9223372036854775807"_s, u"9223372036854775807"_s);
        row("too large", Integer, u"9223372036854775808"_s, {});
        row("fraction in an integer", Integer, u"1.5"_s, {});
        row("letters", Integer, u"12a"_s, {});
        row("two signs", Integer, u"--1"_s, {});
        row("sign alone", Integer, u"-"_s, {});
        row("real", Real, u"12.50"_s, u"12.5"_s);
        row("no whole part", Real, u".5"_s, u"0.5"_s);
        row("no fraction", Real, u"5."_s, u"5"_s);
        row("point alone", Real, u"."_s, {});
        row("negative", Real, u"-00.050"_s, u"-0.05"_s);
        row("zero", Real, u"-0.00"_s, u"0"_s);
        row("exponent up", Real, u"1.5e3"_s, u"1500"_s);
        row("exponent down", Real, u"15E-3"_s, u"0.015"_s);
        row("exponent without digits", Real, u"1e"_s, {});
        row("exponent with a blank", Real, u"1e 3"_s, {});
        row("huge exponent", Real, u"1e999"_s, {});
        row("exponent beyond all", Real, u"1e99999999999"_s, {});
        row("exact beyond a double", Real, u"12345678901234567890.12"_s,
            u"12345678901234567890.12"_s);
        row("group separators", Real, u"1,000"_s, {});
        row("not a number", Real, u"nan"_s, {});
        row("date and time", DateTime, u"2024-03-05 13:07:09"_s, u"2024-03-05 13:07:09"_s);
        row("no seconds", DateTime, u"2024-03-05 13:07"_s, u"2024-03-05 13:07:00"_s);
        row("date alone", DateTime, u"2024-02-29"_s, u"2024-02-29 00:00:00"_s);
        row("no such day", DateTime, u"2023-02-29"_s, {});
        row("no such hour", DateTime, u"2024-03-05 24:00:00"_s, {});
        row("date in words", DateTime, u"5 March 2024"_s, {});
        row("text as it is", Text, u" 01 "_s, u" 01 "_s);
        row("text as long as may be", Text, u"12345"_s, u"12345"_s);
        row("text too long", Text, u"123456"_s, {});
        row("wide text too long", WideText, u"一二三四五六"_s, {});
        row("rare characters count once", Text, u"𠀀𠀁𠀂𠀃𠀄"_s, u"𠀀𠀁𠀂𠀃𠀄"_s);
        row("auto-increment", AutoIncrement, u"1"_s, {});
    }
    void HasOneTextForm()
    {
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QString, form);
        const FieldDef field{u"F"_s, FieldType(type), 5};
        if (form.isNull()) {
            QVERIFY_THROWS_EXCEPTION(EDataSetError, CanonicalValue(field, text));
            return;
        }
        const FieldValue value = CanonicalValue(field, text);
        QVERIFY(!value.isNull);
        QCOMPARE(QString::fromUtf8(value.utf8), form);
    }
    void EmptyTextIsNullForAllButTexts()
    {
        QVERIFY(CanonicalValue({u"F"_s, FieldType::Real, 0}, u""_s).isNull);
        QVERIFY(CanonicalValue({u"F"_s, FieldType::DateTime, 0}, u"  "_s).isNull);
        QVERIFY(!CanonicalValue({u"F"_s, FieldType::Text, 0}, u""_s).isNull);
    }
    void ErrorNamesTheField()
    {
        try {
            CanonicalValue({u"QTY"_s, FieldType::Integer, 0}, u"x"_s);
            QFAIL("not refused");
        } catch (const EDataSetError &error) {
            QVERIFY(error.Message().contains(u"QTY"));
        }
    }
    void NumbersOrderByValue()
    {
        const QList<QByteArray> ascending{"-12.5", "-12", "-3", "-0.5", "0",
                                          "0.05",  "0.5", "3",  "12",   "100"};
        for (qsizetype i = 0; i < ascending.size(); ++i) {
            for (qsizetype j = 0; j < ascending.size(); ++j) {
                QVERIFY2(CompareDecimals(ascending[i], ascending[j]) == (i <=> j),
                         (ascending[i] + " and " + ascending[j]).constData());
            }
        }
    }
};

QTEST_GUILESS_MAIN(FieldValueTest)
#include "tst_fieldvalue.moc"
