#include "DataSetSamples.h"

#include "dataset/CborWriter.h"

#include <QTest>

#include <functional>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const FieldDefs kFields{{u"ID"_s, FieldType::Integer, 0}, {u"NAME"_s, FieldType::Text, 20}};

QByteArray SmallBlock()
{
    RowSetBuilder builder(kFields);
    builder.AddCell("1");
    builder.AddCell("集团");
    builder.EndRow();
    builder.AddNull();
    builder.AddCell("");
    builder.EndRow();
    return builder.Finish(7);
}

/// A block whose parts can each be wrong: one column, as a test states it.
struct Parts
{
    QByteArray offsets;
    QByteArray bytes;
    QByteArray nulls = {};
    quint64 rows = 2;
    quint64 total = 2;
    QByteArray type = "text";
};

QByteArray Offsets(const QList<quint32> &values)
{
    QByteArray bytes;
    for (const quint32 value : values) {
        char number[4];
        qToLittleEndian(value, number);
        bytes.append(number, 4);
    }
    return bytes;
}

QByteArray Write(const Parts &parts)
{
    using namespace CborWriter;
    QByteArray out;
    AddMapHead(out, 4);
    AddText(out, "rows");
    AddUnsigned(out, parts.rows);
    AddText(out, "total");
    AddUnsigned(out, parts.total);
    AddText(out, "fields");
    AddArrayHead(out, 1);
    AddMapHead(out, 3);
    AddText(out, "name");
    AddText(out, "N");
    AddText(out, "size");
    AddUnsigned(out, 0);
    AddText(out, "type");
    AddText(out, parts.type);
    AddText(out, "columns");
    AddArrayHead(out, 1);
    AddMapHead(out, parts.nulls.isNull() ? 2 : 3);
    AddText(out, "bytes");
    AddBytes(out, parts.bytes);
    if (!parts.nulls.isNull()) {
        AddText(out, "nulls");
        AddBytes(out, parts.nulls);
    }
    AddText(out, "offsets");
    AddBytes(out, parts.offsets);
    return out;
}

QString ErrorOf(const QByteArray &block)
{
    try {
        RowSet::Load(block);
    } catch (const EDataSetError &error) {
        return error.Message();
    }
    return {};
}

} // namespace

class RowSetTest : public QObject
{
    Q_OBJECT

private slots:
    void ReadsWhatWasWritten()
    {
        const QByteArray block = SmallBlock();
        const RowSet rows = RowSet::Load(block);
        QCOMPARE(rows.RowCount(), 2);
        QCOMPARE(rows.Total(), 7);
        QCOMPARE(rows.Fields(), kFields);
        QCOMPARE(rows.FieldIndex(u"name"), 1);
        QCOMPARE(rows.FieldIndex(u"x"), -1);
        QCOMPARE(rows.Text(0, 1), u"集团"_s);
        QVERIFY(rows.IsNull(1, 0));
        QVERIFY(!rows.IsNull(1, 1));
        QVERIFY(rows.Bytes(1, 0).isEmpty());
    }
    void CellsAreViewsIntoTheBody()
    {
        const QByteArray block = SmallBlock();
        const RowSet rows = RowSet::Load(block);
        const char *cell = rows.Bytes(0, 1).data();
        QVERIFY(cell > block.constData() && cell < block.constData() + block.size());
        QCOMPARE(rows.Body().constData(), block.constData());
    }
    void DefaultOneIsAnEmptyTable()
    {
        const RowSet rows;
        QCOMPARE(rows.RowCount(), 0);
        QCOMPARE(RowSet::Load(rows.Body()).FieldCount(), 0);
    }
    void AnotherTotalLeavesTheRows()
    {
        const RowSet rows = RowSet::Load(SmallBlock());
        const RowSet other = RowSet::Load(rows.BodyWithTotal(50));
        QCOMPARE(other.Total(), 50);
        QCOMPARE(other.Text(0, 1), u"集团"_s);
        QVERIFY(other.IsNull(1, 0));
        QCOMPARE(rows.BodyWithTotal(7).constData(), rows.Body().constData());
        QVERIFY_THROWS_EXCEPTION(EDataSetError, rows.BodyWithTotal(1));
    }
    void KeysMayStandInAnyOrderAndTotalMayBeMissing()
    {
        using namespace CborWriter;
        QByteArray out;
        AddMapHead(out, 3);
        AddText(out, "columns");
        AddArrayHead(out, 0);
        AddText(out, "fields");
        AddArrayHead(out, 0);
        AddText(out, "rows");
        AddUnsigned(out, 0);
        QCOMPARE(RowSet::Load(out).Total(), 0);
    }

    // --- Hostile bytes ---
    void BlockCutAtAnyByteIsRefused()
    {
        const QByteArray block = SmallBlock();
        for (qsizetype length = 0; length < block.size(); ++length) {
            const QString error = ErrorOf(block.first(length));
            QVERIFY2(error.contains(u"字节"), qPrintable(QString::number(length)));
        }
    }
    void BytesAfterTheEndAreRefused() { QVERIFY(ErrorOf(SmallBlock() + '\0').contains(u"多余")); }
    void NoSingleWrongByteGetsPastTheLimits()
    {
        // Any byte may be anything: the block is refused, or every cell of what it says is there.
        const QByteArray block = SmallBlock();
        for (qsizetype at = 0; at < block.size(); ++at) {
            for (int value = 0; value < 256; ++value) {
                QByteArray wrong = block;
                wrong[at] = char(value);
                try {
                    const RowSet rows = RowSet::Load(wrong);
                    for (int row = 0; row < rows.RowCount(); ++row) {
                        for (int field = 0; field < rows.FieldCount(); ++field)
                            QVERIFY(rows.Text(row, field).toUtf8() == rows.Bytes(row, field));
                    }
                } catch (const EDataSetError &) {
                    // refused
                }
            }
        }
    }
    void WrongParts_data()
    {
        QTest::addColumn<QByteArray>("block");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *name, const Parts &parts, const QString &error) {
            QTest::newRow(name) << Write(parts) << error;
        };
        const QByteArray good = Offsets({0, 1, 3});
        row("sound", {good, "abc"}, {});
        row("offsets go backwards", {Offsets({0, 3, 1}), "abc"}, u"倒退"_s);
        row("offset past the end", {Offsets({0, 1, 4}), "abc"}, u"超出"_s);
        row("huge offset between", {Offsets({0, 0xFFFFFFFF, 3}), "abc"}, u"超出"_s);
        row("first offset not 0", {Offsets({1, 1, 3}), "abc"}, u"第一个偏移"_s);
        row("bytes left over", {Offsets({0, 1, 2}), "abc"}, u"最后一个偏移"_s);
        row("offset missing", {Offsets({0, 3}), "abc"}, u"偏移表"_s);
        row("offset too many", {Offsets({0, 1, 2, 3}), "abc"}, u"偏移表"_s);
        row("more rows than there are", {good, "abc", {}, 2'000'000'000, 2'000'000'000},
            u"偏移表"_s);
        row("row count beyond an int", {good, "abc", {}, 1ULL << 31, 1ULL << 32}, u"过大"_s);
        row("total below rows", {good, "abc", {}, 2, 1}, u"总行数"_s);
        row("unknown type", {good, "abc", {}, 2, 2, "blob"}, u"类型"_s);
        row("stray continuation", {good, "a\x80z"}, u"不是 UTF-8"_s);
        row("overlong form", {Offsets({0, 1, 3}), "a\xC0\x80"}, u"不是 UTF-8"_s);
        row("surrogate", {Offsets({0, 0, 3}), "\xED\xA0\x80"}, u"不是 UTF-8"_s);
        row("character cut at the end", {Offsets({0, 1, 3}), "a\xE9\x9B"}, u"不是 UTF-8"_s);
        row("character over two cells", {Offsets({0, 1, 3}), "\xE9\x9B\x86"}, u"不是 UTF-8"_s);
        row("nulls sound", {Offsets({0, 3, 3}), "abc", QByteArray("\x02", 1)}, {});
        row("nulls too short", {good, "abc", QByteArray("")}, u"位图"_s);
        row("nulls too long", {good, "abc", QByteArray(2, '\0')}, u"位图"_s);
        row("null with content", {good, "abc", QByteArray("\x01", 1)}, u"有内容"_s);
        row("null beyond the rows", {good, "abc", QByteArray("\x04", 1)}, u"多余的位"_s);
    }
    void WrongParts()
    {
        QFETCH(QByteArray, block);
        QFETCH(QString, error);
        const QString message = ErrorOf(block);
        if (error.isEmpty())
            QCOMPARE(message, QString());
        else
            QVERIFY2(message.contains(error) && message.contains(u"字节"), qPrintable(message));
    }
    void WrongStructure_data()
    {
        QTest::addColumn<QByteArray>("block");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no map") << QByteArray("\x80", 1);
        QTest::newRow("map of 2^63 pairs") << QByteArray::fromHex("bb8000000000000000");
        QTest::newRow("indefinite map") << QByteArray::fromHex("bfff");
        QTest::newRow("reserved length") << QByteArray::fromHex("bc");
        QTest::newRow("text of 2^64-1 bytes") << QByteArray::fromHex("a17bffffffffffffffff");
        QTest::newRow("no keys") << QByteArray::fromHex("a0");
        QTest::newRow("rows twice") << QByteArray::fromHex("a264726f77730064726f777300");
        QTest::newRow("unknown key") << QByteArray::fromHex("a1617800");
        QTest::newRow("negative rows") << QByteArray::fromHex("a164726f777320");
        QTest::newRow("key not UTF-8") << QByteArray::fromHex("a161ff00");
        QTest::newRow("array of 2^32 fields")
            << QByteArray::fromHex("a1666669656c64739b0000000100000000");
    }
    void WrongStructure()
    {
        QFETCH(QByteArray, block);
        QVERIFY_THROWS_EXCEPTION(EDataSetError, RowSet::Load(block));
    }
    void FirstWrongByteIsNamed()
    {
        Parts parts{Offsets({0, 1, 3}), "a\xE9z"};
        const QByteArray block = Write(parts);
        const qsizetype at = block.indexOf("a\xE9z") + 1;
        QVERIFY2(ErrorOf(block).contains(u"第 %1 字节"_s.arg(at)), qPrintable(ErrorOf(block)));
    }
    void CharactersCutAtChunkBoundariesAreRefused_data()
    {
        QTest::addColumn<int>("row"); // whose end lies inside a character
        for (const int row : {0, 510, 511, 512, 1022, 1023, 1024, 2046, 2047, 2048, 2998})
            QTest::newRow(qPrintable(QString::number(row))) << row;
    }
    void CharactersCutAtChunkBoundariesAreRefused()
    {
        QFETCH(int, row);
        RowSetBuilder builder({{u"N"_s, FieldType::Text, 0}});
        for (int i = 0; i < 3000; ++i) {
            builder.AddCell(i == row       ? QByteArray("\xE9\x9B")
                            : i == row + 1 ? QByteArray("\x86\xE5\x9B\xA2")
                                           : QByteArray("集团"));
            builder.EndRow();
        }
        const QString error = ErrorOf(builder.Finish());
        QVERIFY2(error.contains(u"第 %1 行不是 UTF-8"_s.arg(row + 1)), qPrintable(error));
    }
    void LoneWrongByteInAsciiIsFoundEverywhere()
    {
        const QByteArray ascii(300, 'a');
        for (qsizetype at = 0; at < ascii.size(); ++at) {
            Parts parts{Offsets({0, 1, quint32(ascii.size())}), ascii};
            parts.bytes[at] = '\x80';
            const QString error = ErrorOf(Write(parts));
            QVERIFY2(error.contains(u"不是 UTF-8"), qPrintable(error));
        }
    }
    void EmptyCellsAreSoundEverywhere()
    {
        RowSetBuilder builder({{u"N"_s, FieldType::Text, 0}, {u"M"_s, FieldType::Text, 0}});
        for (int i = 0; i < 2050; ++i) {
            builder.AddCell(i % 2 ? QByteArray() : QByteArray("集"));
            builder.AddCell({});
            builder.EndRow();
        }
        const RowSet rows = RowSet::Load(builder.Finish());
        QCOMPARE(rows.Text(2048, 0), u"集"_s);
        QCOMPARE(rows.Text(2049, 0), QString());
    }

    // --- Writing ---
    void BuilderRefusesIncompleteRows()
    {
        RowSetBuilder builder(kFields);
        builder.AddCell("1");
        QVERIFY_THROWS_EXCEPTION(EDataSetError, builder.EndRow());
        QVERIFY_THROWS_EXCEPTION(EDataSetError, builder.Finish());
        builder.AddCell("2");
        QVERIFY_THROWS_EXCEPTION(EDataSetError, builder.AddCell("3"));
        builder.EndRow();
        QVERIFY_THROWS_EXCEPTION(EDataSetError, builder.Finish(0));
    }
    void BuilderIsEmptyAfterFinish()
    {
        RowSetBuilder builder(kFields);
        builder.AddNull();
        builder.AddNull();
        builder.EndRow();
        builder.Finish();
        QCOMPARE(builder.RowCount(), 0);
        const RowSet rows = RowSet::Load(builder.Finish());
        QCOMPARE(rows.RowCount(), 0);
        QCOMPARE(rows.Fields(), kFields);
    }
    void ByteCountIsCloseToTheBlocksSize()
    {
        RowSetBuilder builder(kFields);
        for (int i = 0; i < 1000; ++i) {
            builder.AddCell(QByteArray::number(i));
            if (i % 3)
                builder.AddNull();
            else
                builder.AddCell("集团");
            builder.EndRow();
        }
        const qint64 promised = builder.ByteCount();
        const qint64 size = builder.Finish().size();
        QVERIFY(promised >= size && promised - size < 512);
    }
};

QTEST_GUILESS_MAIN(RowSetTest)
#include "tst_rowset.moc"
