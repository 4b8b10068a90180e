#include "store/QueryRunner.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// What breaks out of a literal somewhere, or looks as if it did.
QStringList AwkwardTexts()
{
    QStringList texts{u"'"_s,
                      u"''"_s,
                      u"\\"_s,
                      u"\\'"_s,
                      u"\\\\"_s,
                      u"x\\"_s,
                      u"\\'; DROP TABLE BAS_ORG; --"_s,
                      u"'; DROP TABLE BAS_ORG; --"_s,
                      u"' OR '1'='1"_s,
                      u"\""_s,
                      u"\"\""_s,
                      u"--"_s,
                      u"/*"_s,
                      u"*/"_s,
                      u"; SELECT"_s,
                      u"$$"_s,
                      u"$1"_s,
                      u"?1"_s,
                      u":x"_s,
                      u"@x"_s,
                      u"E'x'"_s,
                      u"\\n"_s,
                      u"\\x27"_s,
                      u"\\047"_s,
                      u"U&'\\0027'"_s,
                      u"%"_s,
                      u"_"_s,
                      u"%%__"_s,
                      u"\t"_s,
                      u"\n"_s,
                      u"\r\n"_s,
                      u" leading"_s,
                      u"trailing "_s,
                      u" "_s,
                      u"NULL"_s,
                      u"null"_s,
                      u"0"_s,
                      u"1e5"_s,
                      u"\u0085"_s,
                      u"\u00a0"_s,
                      u"\u2018x\u2019"_s,
                      u"\u201cx\u201d"_s,
                      u"\uff07x\uff07"_s,
                      u"\u02bc"_s,
                      u"\u2028\u2029"_s,
                      u"\u200b"_s,
                      u"a\ufeff"_s,
                      u"\u202eabc\u202c"_s,
                      u"\u2066abc\u2069"_s,
                      u"e\u0301"_s,
                      u"\ufffd"_s,
                      u"\uffff"_s,
                      u"縗'"_s,
                      u"運\\'"_s,
                      u"药品（甲）"_s,
                      QString::fromUcs4(U"\U0001F48A"),
                      QString::fromUcs4(U"\U0010FFFF"),
                      QString(1'333, u'药'),
                      QString(4'000, u'x'),
                      QString(2'000, u'\'')};
    for (char16_t control = 1; control < 0x20; ++control)
        texts << u'a' + QString(QChar(control)) + u'b';
    return texts << u"\x7f"_s;
}

QString Quoted(QString text)
{
    return u'\'' + text.replace(u'\'', u"''"_s) + u'\'';
}

} // namespace

/// A literal is data, whatever stands in it.
class AwkwardTextTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        int id = 700'000;
        for (const QString &text : AwkwardTexts())
            data_.Connection().Run(
                "INSERT INTO SYS_AFFICHE (ID, CREATE_USER, AFFICHE_CONTENT) VALUES (?1, ?2, ?3)",
                {QString::number(++id), u"AWKWARD"_s, text});
    }

    void ComesBackAsItWasWritten_data()
    {
        QTest::addColumn<QString>("text");
        for (const QString &text : AwkwardTexts())
            QTest::addRow("%s", text.left(20).toUtf8().toHex().constData()) << text;
    }

    void ComesBackAsItWasWritten()
    {
        QFETCH(QString, text);
        const QString literal = Quoted(text);
        const RowSet rows = RowSet::Load(
            runner_
                .Run(u"SELECT %1,'a'||%1||'b',NVL(NULL,%1),DECODE(%1,%1,'same'),"
                     "CASE WHEN %1 IN ('x''x',%1) THEN %1 END,(SELECT MAX(%1) FROM BAS_ORG)"
                     " FROM BAS_ORG WHERE ORG_ID='200001' AND %1 LIKE '%'"_s.replace(u"%1"_s,
                                                                                     literal),
                     0, 0)
                .block);
        QCOMPARE(rows.RowCount(), 1);
        QCOMPARE(rows.Text(0, 0), text);
        QCOMPARE(rows.Text(0, 1), u'a' + text + u'b');
        QCOMPARE(rows.Text(0, 2), text);
        QCOMPARE(rows.Text(0, 3), u"same"_s);
        QCOMPARE(rows.Text(0, 4), text);
        QCOMPARE(rows.Text(0, 5), text);
    }

    void FindsTheOneRowThatHasIt_data() { ComesBackAsItWasWritten_data(); }

    void FindsTheOneRowThatHasIt()
    {
        QFETCH(QString, text);
        QStringList conditions{u"AFFICHE_CONTENT="_s + Quoted(text),
                               u"AFFICHE_CONTENT IN ("_s + Quoted(text) + u')'};
        // SQLite's LIKE takes what is no character for U+FFFD.
        if (!text.contains(u'%') && !text.contains(u'_') && text != u"\ufffd" && text != u"\uffff")
            conditions << u"AFFICHE_CONTENT LIKE "_s + Quoted(text);
        for (const QString &condition : std::as_const(conditions)) {
            const RowSet rows = RowSet::Load(
                runner_
                    .Run(
                        u"SELECT AFFICHE_CONTENT FROM SYS_AFFICHE WHERE CREATE_USER='AWKWARD' AND "_s +
                            condition,
                        1, 10)
                    .block);
            QCOMPARE(rows.RowCount(), 1);
            QCOMPARE(rows.Text(0, 0), text);
        }
    }

    void LabelsToo()
    {
        const QString label = u"a'b\"\"c\\;--$1 药\u202e"_s;
        const RowSet rows = RowSet::Load(
            runner_.Run(u"SELECT ORG_ID AS \""_s + label + u"\" FROM BAS_ORG"_s, 0, 0).block);
        QCOMPARE(rows.Fields()[0].name, u"a'b\"c\\;--$1 药\u202e"_s);
    }

    void NothingWasChangedByIt()
    {
        QCOMPARE(data_.Number("SELECT COUNT(*) FROM BAS_ORG"), 8);
        QCOMPARE(data_.Number("SELECT COUNT(*) FROM SYS_AFFICHE WHERE CREATE_USER = 'AWKWARD'"),
                 AwkwardTexts().size());
    }

private:
    TestDatabase data_;
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

QTEST_GUILESS_MAIN(AwkwardTextTest)
#include "AwkwardTextTest.moc"
