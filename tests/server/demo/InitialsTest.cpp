#include "demo/Initials.h"
#include "dataset/QelError.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// The expected keys were looked up by hand in dictionaries, not in the table.
class InitialsTest : public QObject
{
    Q_OBJECT

private slots:
    void GivesPinyinAndWubi_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pinyin");
        QTest::addColumn<QString>("wubi");
        const auto row = [](const char *id, const QString &name, const QString &pinyin,
                            const QString &wubi) { QTest::newRow(id) << name << pinyin << wubi; };
        row("medicine", u"阿莫西林胶囊"_s, u"AMXLJN"_s, u"BASSEG"_s);
        row("city", u"杭州市人民医院"_s, u"HZSRMYY"_s, u"SYYWNAB"_s);
        row("latin and digits as they are", u"维生素b12片"_s, u"WSSB12P"_s, u"XTGB12T"_s);
        row("brackets as they are", u"中国（大）"_s, u"ZG（D）"_s, u"KL（D）"_s);
        row("nothing", u""_s, u""_s, u""_s);
    }
    void GivesPinyinAndWubi()
    {
        QFETCH(QString, name);
        const Demo::Initials initials;
        QTEST(initials.Pinyin(name), "pinyin");
        QTEST(initials.Wubi(name), "wubi");
    }

    void TakesTheReadingOfPlacesAndMedicines_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pinyin");
        const auto row = [](const char *id, const QString &name, const QString &pinyin) {
            QTest::newRow(id) << name << pinyin;
        };
        row("chong", u"重庆市"_s, u"CQS"_s);
        row("zhong", u"重酒石酸间羟胺注射液"_s, u"ZJSSJQAZSY"_s);
        row("xia", u"厦门市"_s, u"XMS"_s);
        row("zang", u"西藏自治区"_s, u"XZZZQ"_s);
        row("chang", u"长沙市"_s, u"CSS"_s);
        row("zhang", u"长子县"_s, u"ZZX"_s);
        row("yue", u"乐清市"_s, u"YQS"_s);
        row("le", u"乐山市"_s, u"LSS"_s);
        row("shen", u"人参归脾丸"_s, u"RSGPW"_s);
        row("e", u"复方阿胶浆"_s, u"FFEJJ"_s);
        row("zhu", u"白术"_s, u"BZ"_s);
        row("shan", u"单县"_s, u"SX"_s);
        row("pan", u"番禺区"_s, u"PYQ"_s);
        row("yu", u"蔚县"_s, u"YX"_s);
    }
    void TakesTheReadingOfPlacesAndMedicines()
    {
        QFETCH(QString, name);
        QTEST(Demo::Initials().Pinyin(name), "pinyin");
    }

    void RefusesCharacterThatTheTableLacks()
    {
        const Demo::Initials initials;
        QVERIFY_THROWS_EXCEPTION(EQelError, initials.Pinyin(u"龘"_s));
        QVERIFY_THROWS_EXCEPTION(EQelError, initials.Wubi(u"龘"_s));
    }
};

QTEST_APPLESS_MAIN(InitialsTest)
#include "InitialsTest.moc"
