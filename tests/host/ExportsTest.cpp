#include "QelLibAdmin.h"

#include <QLibrary>
#include <QStringEncoder>
#include <QTest>
#include <QWidget>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

struct Entry
{
    const char16_t *code;
    const char16_t *name;
    const char16_t *className;
};

constexpr Entry Entries[]{
    {u"ADMIN01", u"营运管理－集团管理", u"TFrmUniUnion"},
    {u"ADMIN02", u"营运管理－企业报价维护", u"TFrmPrcUniPrice"},
    {u"ADMIN03", u"营运管理－集团用户", u"TFrmUniUser"},
    {u"ADMIN04", u"营运管理－业务回退", u"TFrmTraRollBack"},
    {u"ADMIN05", u"营运管理－库存开放维护", u"TFrmStockOrgSet"},
    {u"ADMIN06", u"营运管理－机构规则设置", u"TFrmOrgRuleSet"},
    {u"ADMIN07", u"营运管理－机构从属关系", u"TFrmMrgOrgAffiliation"},
    {u"ADMIN08", u"营运管理－机构药库设置", u"TFrmTraBuyCatalog"},
    {u"ADMIN09", u"营运管理－公告管理", u"TFrmSysAffiche"},
};

QByteArray Gbk(const QString &text)
{
    return QStringEncoder("GBK").encode(text);
}

} // namespace

/// The three functions as a host calls them.
class ExportsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void FormListIsXmlInUtf8WithTheAttributesInOrder();
    void ScreenBeforeLibInitBelongsToTheLibrary();
    void ScreenIsFoundByCaptionOnly();
    void NameThatIsNotGbkFindsNothing();
    void TwoCallsAreTwoScreens();
    void ScreenBelongsToTheHostsWindow();
    void ScreenIsHiddenAndAtTheOrigin();
    void EveryCaptionOpensItsOwnScreen();
    void EmptyRunParamsAreAccepted();
    void WrongRootIsNoFailure();
    void RefusesHostileRunParams_data();
    void RefusesHostileRunParams();
    void RefusesAServerAddressThatIsNotGbk();

private:
    void Init(QWidget *application, const QByteArray &runParams,
              const QByteArray &server = "http://127.0.0.1:9");
    QWidget *Open(const QByteArray &name) { return open_(&name); }

    QLibrary module_{QStringLiteral(QEL_MODULE)};
    TLibInit init_ = nullptr;
    TLibGetFormInfo list_ = nullptr;
    TLibOpenForm open_ = nullptr;
};

void ExportsTest::initTestCase()
{
    init_ = reinterpret_cast<TLibInit>(module_.resolve("LibInit"));
    list_ = reinterpret_cast<TLibGetFormInfo>(module_.resolve("LibGetFormInfo"));
    open_ = reinterpret_cast<TLibOpenForm>(module_.resolve("LibOpenForm"));
    QVERIFY2(init_ && list_ && open_, qPrintable(module_.errorString()));
}

void ExportsTest::Init(QWidget *application, const QByteArray &runParams, const QByteArray &server)
{
    const THostInit info{application, nullptr, server, runParams};
    init_(&info, 4711);
}

void ExportsTest::FormListIsXmlInUtf8WithTheAttributesInOrder()
{
    QByteArray xml("left over");
    list_(&xml);
    QVERIFY(xml.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    QXmlStreamReader reader(xml);
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.name(), u"FormEntrys");
    for (const Entry &entry : Entries) {
        QVERIFY(reader.readNextStartElement());
        QCOMPARE(reader.name(), u"FormEntry");
        QStringList found;
        for (const auto &attribute : reader.attributes())
            found.append(attribute.name().toString() + u'=' + attribute.value().toString());
        QCOMPARE(found, (QStringList{u"FormCode="_s + QString::fromUtf16(entry.code),
                                     u"FormName="_s + QString::fromUtf16(entry.name),
                                     u"ClassName="_s + QString::fromUtf16(entry.className),
                                     u"ParamValue="_s, u"FnKeyList="_s, u"BeginGroup=0"_s}));
        reader.skipCurrentElement();
    }
    QVERIFY(!reader.readNextStartElement());
    QVERIFY(!reader.hasError());
}

void ExportsTest::ScreenBeforeLibInitBelongsToTheLibrary()
{
    const std::unique_ptr<QWidget> screen(Open(Gbk(u"营运管理－集团管理"_s)));
    QVERIFY(screen);
    QVERIFY(screen->parentWidget());
    QVERIFY(!screen->parentWidget()->isVisible());
}

void ExportsTest::ScreenIsFoundByCaptionOnly()
{
    for (const Entry &entry : Entries) {
        const std::unique_ptr<QWidget> screen(Open(Gbk(QString::fromUtf16(entry.name))));
        QVERIFY(screen);
        QVERIFY(!Open(Gbk(QString::fromUtf16(entry.code))));
    }
    QVERIFY(!Open(QByteArray()));
    QVERIFY(!open_(nullptr));
    QVERIFY(!Open(Gbk(u"营运管理-集团管理"_s))); // an ASCII hyphen
}

void ExportsTest::NameThatIsNotGbkFindsNothing()
{
    QVERIFY(!Open(QByteArray("\xff\xff")));
    QVERIFY(!Open(u"营运管理－集团管理"_s.toUtf8()));
}

void ExportsTest::TwoCallsAreTwoScreens()
{
    const QByteArray name = Gbk(u"营运管理－集团管理"_s);
    const std::unique_ptr<QWidget> first(Open(name));
    const std::unique_ptr<QWidget> second(Open(name));
    QVERIFY(first && second && first != second);
}

void ExportsTest::ScreenBelongsToTheHostsWindow()
{
    QWidget window;
    Init(&window, {});
    QWidget *screen = Open(Gbk(u"营运管理－集团管理"_s));
    QCOMPARE(screen->parentWidget(), &window);
    QCOMPARE(screen->objectName(), u"TFrmUniUnion"_s);
}

void ExportsTest::ScreenIsHiddenAndAtTheOrigin()
{
    QWidget window;
    window.show();
    Init(&window, {});
    QWidget *screen = Open(Gbk(u"营运管理－集团管理"_s));
    QVERIFY(!screen->isVisible());
    QVERIFY(!screen->isWindow());
    QCOMPARE(screen->pos(), QPoint(0, 0));
}

void ExportsTest::EveryCaptionOpensItsOwnScreen()
{
    QWidget window;
    Init(&window, {});
    for (const Entry &entry : Entries) {
        const QString caption = QString::fromUtf16(entry.name);
        const QWidget *screen = Open(Gbk(caption));
        QVERIFY2(screen, qUtf8Printable(caption));
        QCOMPARE(QString::fromLatin1(screen->metaObject()->className()),
                 u"Qel::"_s + QString::fromUtf16(entry.className));
    }
}

void ExportsTest::EmptyRunParamsAreAccepted()
{
    QWidget window;
    Init(&window, {});
}

void ExportsTest::WrongRootIsNoFailure()
{
    QWidget window;
    Init(&window, QByteArray("<Params/>").toBase64());
}

void ExportsTest::RefusesHostileRunParams_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("no base64") << QByteArray("%%%");
    QTest::newRow("no XML") << QByteArray("rubbish").toBase64();
    QTest::newRow("entities") << QByteArray(
                                     "<!DOCTYPE r [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"
                                     "<RunParams>&a;</RunParams>")
                                     .toBase64();
    QTest::newRow("too large") << QByteArray(2 * 1024 * 1024, 'A');
}

void ExportsTest::RefusesHostileRunParams()
{
    QFETCH(QByteArray, text);
    QWidget window;
    try {
        Init(&window, text);
        QFAIL("accepted");
    } catch (const std::exception &error) {
        QVERIFY(QString::fromUtf8(error.what()).startsWith(u"运行参数"_s));
    }
}

void ExportsTest::RefusesAServerAddressThatIsNotGbk()
{
    QWidget window;
    try {
        Init(&window, {}, "http://\xff");
        QFAIL("accepted");
    } catch (const std::exception &error) {
        QVERIFY(QString::fromUtf8(error.what()).contains(u"偏移 7 "_s));
    }
}

QTEST_MAIN(ExportsTest)
#include "ExportsTest.moc"
