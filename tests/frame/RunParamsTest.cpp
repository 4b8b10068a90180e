#include "frame/RunParams.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// "张三" and "测试机构" in GBK, byte by byte, so that the expectation does not come from the code.
const QByteArray ZhangSanGbk("\xd5\xc5\xc8\xfd");
const QByteArray OrgNameGbk("\xb2\xe2\xca\xd4\xbb\xfa\xb9\xb9");

TRunParam Parse(const QByteArray &document)
{
    return ParseRunParams(document.toBase64());
}

QString RefusalOf(const QByteArray &text)
{
    try {
        ParseRunParams(text);
    } catch (const EHostTextError &error) {
        return error.Message();
    }
    return u"（没有拒绝）"_s;
}

} // namespace

class RunParamsTest : public QObject
{
    Q_OBJECT

private slots:
    void EmptyTextLeavesEveryFieldEmpty();
    void ReadsTheEightAttributes();
    void MissingAttributeIsEmptyAndOthersAreIgnored();
    void RootIsComparedWithoutCase();
    void OtherRootLeavesTheRecordEmpty();
    void MissingRunParamLeavesTheRecordEmpty();
    void TakesTheFirstRunParamAnywhereBelowTheRoot();
    void ReadsGbkDocuments_data();
    void ReadsGbkDocuments();
    void ReadsUtf8WithAndWithoutDeclaration_data();
    void ReadsUtf8WithAndWithoutDeclaration();
    void LineEndsInBase64AreRead();
    void RefusesWhatIsNotBase64_data();
    void RefusesWhatIsNotBase64();
    void RefusesBrokenDocuments_data();
    void RefusesBrokenDocuments();
    void SaysWhereTheXmlIsBroken();
    void RefusesTextOverOneMebibyte();
    void PairsLeftToUsersArePrivateCharacters();
    void RefusesGbkThatIsNone_data();
    void RefusesGbkThatIsNone();
};

void RunParamsTest::EmptyTextLeavesEveryFieldEmpty()
{
    QCOMPARE(ParseRunParams({}), TRunParam());
}

void RunParamsTest::ReadsTheEightAttributes()
{
    const TRunParam values =
        Parse("<RunParams><RunParam UserId=\"1\" UserCode=\"2\" UserName=\"3\" OrgId=\"4\" "
              "OrgAbbr=\"5\" OrgName=\"6\" PinCode=\"7\" CaType=\"8\"/></RunParams>");
    TRunParam expected;
    expected.UserId = u"1"_s;
    expected.UserCode = u"2"_s;
    expected.UserName = u"3"_s;
    expected.OrgId = u"4"_s;
    expected.OrgAbbr = u"5"_s;
    expected.OrgName = u"6"_s;
    expected.PinCode = u"7"_s;
    expected.CaType = u"8"_s;
    QCOMPARE(values, expected);
}

void RunParamsTest::MissingAttributeIsEmptyAndOthersAreIgnored()
{
    const TRunParam values = Parse("<RunParams Version=\"2\"><Other/><RunParam userid=\"lower\" "
                                   "UserCode=\"op\" Extra=\"x\">text<Inner/></RunParam>"
                                   "</RunParams>");
    TRunParam expected;
    expected.UserCode = u"op"_s;
    QCOMPARE(values, expected);
}

void RunParamsTest::RootIsComparedWithoutCase()
{
    QCOMPARE(Parse("<runparams><RunParam UserId=\"7\"/></runparams>").UserId, u"7"_s);
    QCOMPARE(Parse("<RUNPARAMS><RunParam UserId=\"7\"/></RUNPARAMS>").UserId, u"7"_s);
}

void RunParamsTest::OtherRootLeavesTheRecordEmpty()
{
    QCOMPARE(Parse("<Params><RunParam UserId=\"7\"/></Params>"), TRunParam());
    QCOMPARE(Parse("<RunParam UserId=\"7\"/>"), TRunParam());
}

void RunParamsTest::MissingRunParamLeavesTheRecordEmpty()
{
    QCOMPARE(Parse("<RunParams/>"), TRunParam());
    QCOMPARE(Parse("<RunParams><runparam UserId=\"7\"/></RunParams>"), TRunParam());
}

void RunParamsTest::TakesTheFirstRunParamAnywhereBelowTheRoot()
{
    QCOMPARE(Parse("<RunParams><a><b><RunParam UserId=\"1\"/></b></a><RunParam UserId=\"2\"/>"
                   "</RunParams>")
                 .UserId,
             u"1"_s);
}

void RunParamsTest::ReadsGbkDocuments_data()
{
    QTest::addColumn<QByteArray>("declaration");
    QTest::newRow("GBK") << QByteArray("<?xml version=\"1.0\" encoding=\"GBK\"?>");
    QTest::newRow("lower case") << QByteArray("<?xml version='1.0' encoding='gbk'?>");
    QTest::newRow("GB2312") << QByteArray("<?xml version=\"1.0\" encoding=\"gb2312\"?>");
}

void RunParamsTest::ReadsGbkDocuments()
{
    QFETCH(QByteArray, declaration);
    const TRunParam values = Parse(declaration + "\r\n<RunParams><RunParam UserName=\"" +
                                   ZhangSanGbk + "\" OrgName=\"" + OrgNameGbk + "\"/></RunParams>");
    QCOMPARE(values.UserName, u"张三"_s);
    QCOMPARE(values.OrgName, u"测试机构"_s);
}

void RunParamsTest::ReadsUtf8WithAndWithoutDeclaration_data()
{
    QTest::addColumn<QByteArray>("declaration");
    QTest::newRow("none") << QByteArray();
    QTest::newRow("no encoding") << QByteArray("<?xml version=\"1.0\"?>");
    QTest::newRow("UTF-8") << QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
    QTest::newRow("byte order mark")
        << QByteArray("\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
}

void RunParamsTest::ReadsUtf8WithAndWithoutDeclaration()
{
    QFETCH(QByteArray, declaration);
    const QByteArray body("<RunParams><RunParam UserName=\"张三\"/></RunParams>");
    QCOMPARE(Parse(declaration + body).UserName, u"张三"_s);
}

void RunParamsTest::LineEndsInBase64AreRead()
{
    const QByteArray whole =
        QByteArray("<RunParams><RunParam UserId=\"9\"/></RunParams>").toBase64();
    const QByteArray wrapped = whole.left(20) + "\r\n" + whole.mid(20) + "\n";
    QCOMPARE(ParseRunParams(wrapped).UserId, u"9"_s);
}

void RunParamsTest::RefusesWhatIsNotBase64_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("where");
    QTest::newRow("junk inside") << QByteArray("PFJ1*5Q=") << u"偏移 4 "_s;
    QTest::newRow("URL alphabet") << QByteArray("PF-_") << u"偏移 2 "_s;
    QTest::newRow("no padding") << QByteArray("PFJ1bg") << u"偏移 6 "_s;
    QTest::newRow("one character") << QByteArray("P") << u"偏移 1 "_s;
    QTest::newRow("text after padding") << QByteArray("PA==PA==") << u"偏移 4 "_s;
    QTest::newRow("three paddings") << QByteArray("P===") << u"偏移 3 "_s;
    QTest::newRow("bits beyond the end") << QByteArray("PB==") << u"多余的位"_s;
    QTest::newRow("NUL") << QByteArray("PFJ1\0bg=", 8) << u"偏移 4 "_s;
    QTest::newRow("XML itself") << QByteArray("<RunParams/>") << u"偏移 0 "_s;
}

void RunParamsTest::RefusesWhatIsNotBase64()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, where);
    const QString refusal = RefusalOf(text);
    QVERIFY2(refusal.contains(u"base64"_s) && refusal.contains(where), qPrintable(refusal));
}

void RunParamsTest::RefusesBrokenDocuments_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("why");
    const auto row = [](const char *name, const QByteArray &document, const QString &why) {
        QTest::newRow(name) << document << why;
    };
    row("no XML", "hello", u"第 1 行"_s);
    row("blanks only", "   ", u"XML"_s);
    row("cut off", "<RunParams><RunParam UserId=\"1\"/>", u"XML"_s);
    row("two roots", "<RunParams/><RunParams/>", u"XML"_s);
    row("rubbish behind", "<RunParams><RunParam/></RunParams>x", u"XML"_s);
    row("rubbish behind another root", "<Params/>x", u"XML"_s);
    row("attribute twice", "<RunParams><RunParam UserId=\"1\" UserId=\"2\"/></RunParams>",
        u"XML"_s);
    row("DOCTYPE", "<!DOCTYPE RunParams><RunParams/>", u"DOCTYPE"_s);
    row("DOCTYPE with entities",
        "<!DOCTYPE r [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>"
        "<RunParams><RunParam UserId=\"&b;\"/></RunParams>",
        u"DOCTYPE"_s);
    row("unknown entity", "<RunParams><RunParam UserId=\"&a;\"/></RunParams>", u"XML"_s);
    row("other encoding", "<?xml version=\"1.0\" encoding=\"Big5\"?><RunParams/>", u"BIG5"_s);
    row("UTF-8 that is none", "<RunParams><RunParam UserId=\"\xc3(\"/></RunParams>", u"偏移 29 "_s);
    row("GBK declared as UTF-8",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><RunParams><RunParam UserName=\"" + ZhangSanGbk +
            "\"/></RunParams>",
        u"UTF-8"_s);
    row("GBK that is none",
        "<?xml version=\"1.0\" encoding=\"GBK\"?><RunParams><RunParam UserName=\"\xff\"/>"
        "</RunParams>",
        u"GBK"_s);
}

void RunParamsTest::RefusesBrokenDocuments()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, why);
    const QString refusal = RefusalOf(document.toBase64());
    QVERIFY2(refusal.startsWith(u"运行参数"_s) && refusal.contains(why), qPrintable(refusal));
}

void RunParamsTest::SaysWhereTheXmlIsBroken()
{
    const QByteArray document("<RunParams>\n <RunParam UserId=1/>\n</RunParams>");
    const QString refusal = RefusalOf(document.toBase64());
    QVERIFY2(refusal.contains(u"第 2 行"_s), qPrintable(refusal));
    const QRegularExpression place(u"第 2 行第 (\\d+) 列（偏移 (\\d+)）"_s);
    const auto match = place.match(refusal);
    QVERIFY2(match.hasMatch(), qPrintable(refusal));
    // The "1" that lacks its quotes is the 19th character of its line, 30 characters from the
    // start; a reader may stop at it or just behind it.
    QVERIFY2(qAbs(match.captured(1).toInt() - 19) <= 1, qPrintable(refusal));
    QVERIFY2(qAbs(match.captured(2).toInt() - 30) <= 1, qPrintable(refusal));
}

void RunParamsTest::RefusesTextOverOneMebibyte()
{
    QByteArray document("<RunParams><RunParam UserId=\"5\"/><!--");
    const QByteArray end("--></RunParams>");
    // 768 KiB of document are exactly 1 MiB of base64.
    document.append(QByteArray(768 * 1024 - document.size() - end.size(), 'x')).append(end);
    QCOMPARE(document.toBase64().size(), qsizetype(1024 * 1024));
    QCOMPARE(Parse(document).UserId, u"5"_s);

    const QString refusal = RefusalOf(document.toBase64() + '\n');
    QVERIFY2(refusal.contains(u"1048577"_s) && refusal.contains(u"1048576"_s), qPrintable(refusal));
}

void RunParamsTest::PairsLeftToUsersArePrivateCharacters()
{
    // Rare names are written with pairs that the code page leaves to its users.
    const QString text = DecodeGbk("\xaa\xa1", u"姓名"_s);
    QCOMPARE(text.size(), 1);
    QVERIFY(text.front().unicode() >= 0xe000 && text.front().unicode() < 0xf900);
}

void RunParamsTest::RefusesGbkThatIsNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("offset");
    QTest::newRow("single lead byte at the end") << QByteArray("ab\xd5") << 2;
    QTest::newRow("trail below 0x40") << QByteArray("\xd5\xc5\xc8 ") << 2;
    QTest::newRow("trail 0x7f") << QByteArray("\xd5\x7f") << 0;
    QTest::newRow("0x80") << QByteArray("a\x80") << 1;
    QTest::newRow("0xff") << QByteArray("\xff\xff") << 0;
    QTest::newRow("UTF-8 of one Chinese character") << QByteArray("\xe5\xbc\xa0") << 2;
}

void RunParamsTest::RefusesGbkThatIsNone()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, offset);
    try {
        const QString text = DecodeGbk(bytes, u"服务器地址"_s);
        QFAIL(qPrintable(u"read as “%1”"_s.arg(text)));
    } catch (const EHostTextError &error) {
        QVERIFY2(error.Message().startsWith(u"服务器地址不是有效的 GBK 文本"_s) &&
                     error.Message().contains(u"偏移 %1 "_s.arg(offset)),
                 error.what());
    }
}

QTEST_GUILESS_MAIN(RunParamsTest)
#include "RunParamsTest.moc"
