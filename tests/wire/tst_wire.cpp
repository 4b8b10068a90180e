#include "wire/Wire.h"

#include <QFile>
#include <QTest>

using namespace Qel;
using namespace Qel::Wire;
using namespace Qt::StringLiterals;

namespace {

QueryAnswer SmallAnswer()
{
    RowSetBuilder builder({{u"ID"_s, FieldType::Integer, 0}, {u"NAME"_s, FieldType::Text, 20}});
    builder.AddCell("1");
    builder.AddCell("集团");
    builder.EndRow();
    builder.AddNull();
    builder.AddCell("");
    builder.EndRow();
    return {7, RowSet::Load(builder.Finish(7))};
}

/// The worked example of the protocol page: first word of each line of its block.
QByteArray ExampleBlock()
{
    QFile page(QStringLiteral(QEL_PROTOCOL_PAGE));
    if (!page.open(QIODevice::ReadOnly))
        return {};
    QByteArray hex;
    bool inside = false;
    while (!page.atEnd()) {
        const QByteArray line = page.readLine().trimmed();
        if (line == "```row-block")
            inside = true;
        else if (line == "```")
            inside = false;
        else if (inside)
            hex += line.split(' ').first();
    }
    return QByteArray::fromHex(hex);
}

const QByteArray kExampleJson =
    "{\"total\":7,\"fields\":[{\"name\":\"ID\",\"type\":\"integer\",\"size\":0},"
    "{\"name\":\"NAME\",\"type\":\"text\",\"size\":20}],\"rows\":[[\"1\",\"集团\"],[null,\"\"]]}";

template <typename Decode>
QString ErrorOf(Decode decode)
{
    try {
        decode();
    } catch (const EWireError &error) {
        return error.Message();
    }
    return {};
}

void AddFormats()
{
    QTest::addColumn<Format>("format");
    QTest::newRow("CBOR") << Format::Cbor;
    QTest::newRow("JSON") << Format::Json;
}

} // namespace

Q_DECLARE_METATYPE(Qel::Wire::Format)

class WireTest : public QObject
{
    Q_OBJECT

private slots:
    void MessagesComeBack_data() { AddFormats(); }
    void MessagesComeBack()
    {
        QFETCH(Format, format);
        const auto query = DecodeQueryRequest(
            Encode(QueryRequest{u"SELECT '\\\"中' FROM T"_s, 3, 50, 2}, format), format);
        QCOMPARE(query.sql, u"SELECT '\\\"中' FROM T"_s);
        QCOMPARE(query.page, 3);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);

        const NamedValues first{{u"UNION_ID"_s, u"1"_s}, {u"NAME"_s, u"集团"_s}};
        const auto post = DecodePostRequest(
            Encode(PostRequest{u"com.business.admin.UniUnion"_s, u"m"_s, {first, {}}}, format),
            format);
        QCOMPARE(post.manager, u"com.business.admin.UniUnion"_s);
        QCOMPARE(post.method, u"m"_s);
        QCOMPARE(post.rows, QList<NamedValues>({first, {}}));

        const auto results =
            DecodePostAnswer(Encode(PostAnswer{{{u"1"_s, first}, {u"-2"_s, {}}}}, format), format);
        QCOMPARE(results.rows.size(), 2);
        QCOMPARE(results.rows[0].values, first);
        QCOMPARE(results.rows[1].code, u"-2"_s);

        const auto error = DecodeErrorAnswer(
            Encode(ErrorAnswer{u"sql.syntax"_s, u"语句有误"_s, u"R1"_s}, format), format);
        QCOMPARE(error.code + error.message + error.reference, u"sql.syntax语句有误R1"_s);

        const auto session = DecodeSessionAnswer(
            Encode(SessionAnswer{u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s}, format),
            format);
        QCOMPARE(session.userId + session.userCode + session.userName + session.orgId +
                     session.orgAbbr + session.orgName + session.serverName,
                 u"1234567"_s);
    }
    void RowsComeBack_data() { AddFormats(); }
    void RowsComeBack()
    {
        QFETCH(Format, format);
        const QueryAnswer answer = DecodeQueryAnswer(Encode(SmallAnswer(), format), format);
        QCOMPARE(answer.total, 7);
        QCOMPARE(answer.rows.Fields(), SmallAnswer().rows.Fields());
        QCOMPARE(answer.rows.Text(0, 1), u"集团"_s);
        QVERIFY(answer.rows.IsNull(1, 0));
        QVERIFY(!answer.rows.IsNull(1, 1));
    }
    void RowsTravelWithoutACopy()
    {
        const QueryAnswer answer = SmallAnswer();
        const QByteArray body = Encode(answer, Format::Cbor);
        QCOMPARE(body.constData(), answer.rows.Body().constData());
        QCOMPARE(DecodeQueryAnswer(body, Format::Cbor).rows.Body().constData(), body.constData());
    }
    void AnswersTotalWins()
    {
        QueryAnswer answer = SmallAnswer();
        answer.total = 1000;
        QCOMPARE(DecodeQueryAnswer(Encode(answer, Format::Cbor), Format::Cbor).total, 1000);
    }

    // --- The page ---
    void WorkedExampleIsWhatIsWritten()
    {
        const QByteArray example = ExampleBlock();
        QCOMPARE(example.size(), 159);
        QCOMPARE(Encode(SmallAnswer(), Format::Cbor).toHex(), example.toHex());
        QCOMPARE(DecodeQueryAnswer(example, Format::Cbor).total, 7);
    }
    void WorkedExampleAsJsonIsWhatIsWritten()
    {
        QCOMPARE(Encode(SmallAnswer(), Format::Json), kExampleJson);
    }

    // --- Strictness ---
    void WrongQueryIsRefusedByKey_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("place");
        const auto row = [](const char *name, const QByteArray &json, const QString &place) {
            QTest::newRow(name) << json << place;
        };
        row("sound", R"({"sql":"S","page":1,"pageSize":50,"queryType":2})", {});
        row("missing key", R"({"sql":"S","page":1,"pageSize":50})", u"queryType"_s);
        row("unknown key", R"({"sql":"S","page":1,"pageSize":50,"queryType":2,"x":1})", u"“x”"_s);
        row("text as number", R"({"sql":"S","page":"1","pageSize":50,"queryType":2})", u"page"_s);
        row("number as text", R"({"sql":5,"page":1,"pageSize":50,"queryType":2})", u"sql"_s);
        row("fraction", R"({"sql":"S","page":1.5,"pageSize":50,"queryType":2})", u"page"_s);
        row("negative", R"({"sql":"S","page":-1,"pageSize":50,"queryType":2})", u"page"_s);
        row("page size too large", R"({"sql":"S","page":1,"pageSize":1000001,"queryType":2})",
            u"pageSize"_s);
        row("beyond 64 bits", R"({"sql":"S","page":1e300,"pageSize":50,"queryType":2})", u"page"_s);
        row("page without size", R"({"sql":"S","page":1,"pageSize":0,"queryType":2})", u"page"_s);
        row("query type 3", R"({"sql":"S","page":1,"pageSize":50,"queryType":3})", u"queryType"_s);
        row("array", "[]", u"映射"_s);
        row("text after the end", R"({"sql":"S","page":1,"pageSize":50,"queryType":2} x)",
            u"JSON"_s);
        row("nothing", "", u"JSON"_s);
        row("not UTF-8", "{\"sql\":\"\xff\"}", u"JSON"_s);
        row("too deep", QByteArray(100'000, '['), u"JSON"_s);
    }
    void WrongQueryIsRefusedByKey()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, place);
        const QString error = ErrorOf([&] { DecodeQueryRequest(json, Format::Json); });
        QVERIFY2(place.isEmpty() ? error.isEmpty() : error.contains(place), qPrintable(error));
    }
    void WrongPostIsRefusedByPlace_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<QString>("place");
        QTest::newRow("sound") << QByteArray(R"([[["A","1"]],[]])") << QString();
        QTest::newRow("no array") << QByteArray("{}") << u"rows"_s;
        QTest::newRow("row no array") << QByteArray(R"([[],"x"])") << u"rows[1]"_s;
        QTest::newRow("pair of one") << QByteArray(R"([[["A"]]])") << u"rows[0][0]"_s;
        QTest::newRow("pair of three") << QByteArray(R"([[["A","1","2"]]])") << u"rows[0][0]"_s;
        QTest::newRow("null value") << QByteArray(R"([[["A",null]]])") << u"rows[0][0][1]"_s;
        QTest::newRow("half a surrogate pair")
            << QByteArray(R"([[["A","x\ud800y"]]])") << u"rows[0][0][1]"_s;
        QTest::newRow("empty name") << QByteArray(R"([[["","1"]]])") << u"rows[0][0][0]"_s;
        QTest::newRow("name twice")
            << QByteArray(R"([[["A","1"],["a","2"]]])") << u"rows[0][1][0]"_s;
    }
    void WrongPostIsRefusedByPlace()
    {
        QFETCH(QByteArray, rows);
        QFETCH(QString, place);
        const QByteArray body = R"({"manager":"m","method":"n","rows":)" + rows + '}';
        const QString error = ErrorOf([&] { DecodePostRequest(body, Format::Json); });
        QVERIFY2(place.isEmpty() ? error.isEmpty() : error.contains(place), qPrintable(error));
    }
    void WrongCborIsRefused_data()
    {
        QTest::addColumn<QByteArray>("hex");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("break alone") << QByteArray("ff");
        QTest::newRow("integer key") << QByteArray("a101"
                                                   "80");
        QTest::newRow("rows twice") << QByteArray("a264726f77738064726f777380");
        QTest::newRow("byte string as key") << QByteArray("a144726f777380");
        QTest::newRow("bytes after the end") << QByteArray("a164726f77738000");
        QTest::newRow("array of 2^60 rows") << QByteArray("a164726f77739b1000000000000000");
        QTest::newRow("text of 2^62 bytes") << QByteArray("a17b4000000000000000");
        QTest::newRow("text not UTF-8")
            << QByteArray("a164726f777381a264636f646561ff6676616c75657380");
        QTest::newRow("too deep") << QByteArray(20'000, '8').replace("88", "81");
    }
    void WrongCborIsRefused()
    {
        QFETCH(QByteArray, hex);
        const QByteArray body = QByteArray::fromHex(hex);
        QVERIFY_THROWS_EXCEPTION(EWireError, DecodePostAnswer(body, Format::Cbor));
    }
    void MessageCutAtAnyByteIsRefused_data() { AddFormats(); }
    void MessageCutAtAnyByteIsRefused()
    {
        QFETCH(Format, format);
        const QByteArray body =
            Encode(PostRequest{u"m"_s, u"n"_s, {{{u"A"_s, u"集团"_s}}}}, format);
        for (qsizetype length = 0; length < body.size(); ++length)
            QVERIFY_THROWS_EXCEPTION(EWireError, DecodePostRequest(body.first(length), format));
    }
    void WrongRowsInJsonAreRefused_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("total below rows") << QByteArray("\"total\":7") << QByteArray("\"total\":1");
        QTest::newRow("number in a cell") << QByteArray("[\"1\"") << QByteArray("[1");
        QTest::newRow("cell missing") << QByteArray("null,\"\"") << QByteArray("null");
        QTest::newRow("cell too many") << QByteArray("null") << QByteArray("null,null");
        QTest::newRow("unknown type") << QByteArray("integer") << QByteArray("int");
        QTest::newRow("no name") << QByteArray("\"ID\"") << QByteArray("\"\"");
        QTest::newRow("negative size") << QByteArray(":20") << QByteArray(":-1");
    }
    void WrongRowsInJsonAreRefused()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QByteArray body = kExampleJson;
        QVERIFY(body.contains(from));
        QVERIFY_THROWS_EXCEPTION(EWireError,
                                 DecodeQueryAnswer(body.replace(from, to), Format::Json));
    }
    void ControlCharactersAndQuotesTravelInJson()
    {
        RowSetBuilder builder({{u"A\"B"_s, FieldType::Text, 0}});
        const QByteArray text("\x01\n\"\\/\x7f中", 9);
        builder.AddCell(text);
        builder.EndRow();
        const QueryAnswer answer{1, RowSet::Load(builder.Finish())};
        const QueryAnswer back = DecodeQueryAnswer(Encode(answer, Format::Json), Format::Json);
        QCOMPARE(back.rows.Fields()[0].name, u"A\"B"_s);
        QCOMPARE(back.rows.Bytes(0, 0).toByteArray(), text);
    }
};

QTEST_GUILESS_MAIN(WireTest)
#include "tst_wire.moc"
