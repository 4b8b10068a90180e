#include "DataSetSamples.h"

#include "dataset/RowFilter.h"

#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// Rows a to e.
RowTable Sample()
{
    return RowTable(RowsOf({{u"NAME"_s, FieldType::Text, 0},
                            {u"QTY"_s, FieldType::Real, 0},
                            {u"OP"_s, FieldType::Text, 0}},
                           {
                               {u"a"_s, u"10"_s, u"1"_s},
                               {u"b"_s, u"9.0"_s, u"D"_s},
                               {u"c"_s, std::nullopt, std::nullopt},
                               {u"d"_s, u"-2"_s, u""_s},
                               {u"e'E"_s, u"100"_s, u"d"_s},
                           }));
}

} // namespace

class RowFilterTest : public QObject
{
    Q_OBJECT

private slots:
    void LetsRowsPass_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("rows"); // first letters of the names
        const auto row = [](const QString &filter, const QString &rows) {
            QTest::newRow(qPrintable(filter)) << filter << rows;
        };
        row(u""_s, u"abcde"_s);
        row(u"LAST"_s, {}); // refused
        row(u"OP<> 'D' or OP = NULL"_s, u"acde"_s);
        row(u"OP <> 'D'"_s, u"acde"_s); // a null field is not equal to any text
        row(u"OP = 'D'"_s, u"b"_s);
        row(u"op = 'd'"_s, u"e"_s);
        row(u"OP = NULL"_s, u"c"_s);
        row(u"OP <> null"_s, u"abde"_s);
        row(u"OP = ''"_s, u"d"_s);
        row(u"OP >= ''"_s, u"abde"_s);
        row(u"not OP = 'D'"_s, u"acde"_s);
        row(u"NOT (OP = 'D' OR NAME = 'a')"_s, u"cde"_s);
        row(u"OP = '1' or OP = 'D' and NAME = 'x'"_s, u"a"_s); // and before or
        row(u"(OP = '1' or OP = 'D') and NAME = 'b'"_s, u"b"_s);
        row(u"QTY > 9"_s, u"ae"_s);
        row(u"QTY = 9"_s, u"b"_s);
        row(u"QTY = '9'"_s, u"b"_s); // a numeric field compares as number
        row(u"QTY < 10"_s, u"bd"_s);
        row(u"QTY<=-2"_s, u"d"_s);
        row(u"OP < 5"_s, u"a"_s);
        row(u"OP <> 5"_s, u"abcde"_s);
        row(u"NAME = 'e''E'"_s, u"e"_s);
        row(u"NAME contains 'E'"_s, u"e"_s);
        row(u"NAME contains ''"_s, u"abcde"_s);
        row(u"not NAME contains 'a'"_s, u"bcde"_s);
        row(u"NAME > 'b' and NAME < 'd'"_s, u"c"_s);
    }
    void LetsRowsPass()
    {
        QFETCH(QString, filter);
        QFETCH(QString, rows);
        const RowTable table = Sample();
        if (rows.isEmpty()) {
            QVERIFY_THROWS_EXCEPTION(EDataSetError, RowFilter::Parse(filter));
            return;
        }
        RowFilter parsed = RowFilter::Parse(filter);
        parsed.Bind(table.Loaded().Fields());
        QString passing;
        for (const quint32 row : parsed.PassingRows(table))
            passing += table.Loaded().Text(int(row), 0).first(1);
        QCOMPARE(passing, rows);
    }
    void UnreadableTextIsRefusedWithItsPlace_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<int>("place"); // from 1
        QTest::newRow("nothing compared") << u"OP"_s << 3;
        QTest::newRow("no literal") << u"OP ="_s << 5;
        QTest::newRow("bare word") << u"OP = D"_s << 6;
        QTest::newRow("open quote") << u"OP = 'D"_s << 6;
        QTest::newRow("open parenthesis") << u"(OP = 'D'"_s << 10;
        QTest::newRow("two comparisons") << u"OP = 'D' OP = 'E'"_s << 10;
        QTest::newRow("dangling or") << u"OP = 'D' or"_s << 12;
        QTest::newRow("order of null") << u"OP < NULL"_s << 6;
        QTest::newRow("part of a number") << u"OP contains 5"_s << 13;
        QTest::newRow("no field") << u"= 'D'"_s << 1;
        QTest::newRow("too deep") << QString(500, u'(') + u"OP = 'D'"_s + QString(500, u')') << 102;
    }
    void UnreadableTextIsRefusedWithItsPlace()
    {
        QFETCH(QString, filter);
        QFETCH(int, place);
        try {
            RowFilter::Parse(filter);
            QFAIL("not refused");
        } catch (const EDataSetError &error) {
            QVERIFY2(error.Message().contains(u"第 %1 个字符"_s.arg(place)), error.what());
        }
    }
    void UnknownFieldIsRefused()
    {
        RowFilter filter = RowFilter::Parse(u"NOBODY = '1'"_s);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, filter.Bind(Sample().Loaded().Fields()));
    }
    void SearchesBytesLikeCells_data()
    {
        QTest::addColumn<QString>("part");
        for (const QString &part :
             {u"集"_s, u"团"_s, u"集团"_s, u"a"_s, u"aa"_s, u"团集"_s, u"zz"_s})
            QTest::newRow(qPrintable(part)) << part;
    }
    void SearchesBytesLikeCells()
    {
        // Hits near and far, over cell ends, in deleted, changed and appended rows.
        QFETCH(QString, part);
        const QStringList values{u"集团"_s, u"团"_s, u"集"_s, {}, u"aaa"_s, u"a"_s, u"医药集团a"_s};
        std::vector<std::vector<Cell>> rows;
        for (int i = 0; i < 300; ++i)
            rows.push_back({i > 100 && i < 200 ? u"x"_s : values[(i * 5 + i / 7) % values.size()]});
        RowTable table(RowsOf({{u"N"_s, FieldType::Text, 0}}, rows));
        table.Delete(4);
        const quint32 added = table.AddRow();
        for (const bool touched : {false, true}) {
            if (touched)
                table.SetCode(added, 0, table.CodeOf("zz集团"));
            std::vector<quint32> expected;
            for (quint32 row = 0; row < table.RowCount(); ++row) {
                if (!table.IsDeleted(row) && QString::fromUtf8(table.Bytes(row, 0)).contains(part))
                    expected.push_back(row);
            }
            std::vector<quint32> found;
            const QByteArray bytes = part.toUtf8();
            const ContainsSearch search(table, 0, bytes);
            for (qint64 row = search.Next(0); row >= 0; row = search.Next(quint32(row) + 1))
                found.push_back(quint32(row));
            QCOMPARE(found, expected);
        }
    }
};

QTEST_GUILESS_MAIN(RowFilterTest)
#include "tst_rowfilter.moc"
