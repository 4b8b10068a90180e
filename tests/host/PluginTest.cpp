#include "host/Plugin.h"
#include "dataset/QelError.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

using namespace Qel;
using namespace Qel::Host;
using namespace Qt::StringLiterals;

namespace {

template <typename Action>
QString ErrorOf(Action action)
{
    try {
        action();
    } catch (const std::exception &error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

} // namespace

class PluginTest : public QObject
{
    Q_OBJECT

private slots:
    void MissingModuleIsToldByItsName();
    void FileThatIsNoModuleIsToldByItsName();
    void ModuleWithoutExportsIsToldByTheFunction();
    void ListThatIsNoneIsRefused();
    void ErrorsOfTheModuleComeThrough();
    void UnknownScreenIsAnError();
    void EnvironmentNamesTheModule();
    void RealModuleGivesNineScreens();
    void FormListKeepsItsOrderAndGroups();
    void TitleIsWhatFollowsTheFullWidthHyphen();
};

void PluginTest::MissingModuleIsToldByItsName()
{
    QVERIFY(ErrorOf([] { Plugin{u"/nowhere/libAdmin.so"_s}; }).contains(u"/nowhere/libAdmin.so"_s));
    QVERIFY(!ErrorOf([] { Plugin{QString{}}; }).isEmpty());
}

void PluginTest::FileThatIsNoModuleIsToldByItsName()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"libText.so"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
    file.close();
    QVERIFY(ErrorOf([&] { Plugin{path}; }).contains(path));
}

void PluginTest::ModuleWithoutExportsIsToldByTheFunction()
{
    const QString error = ErrorOf([] { Plugin{QStringLiteral(QEL_NO_EXPORTS)}; });
    QVERIFY2(error.contains(u"LibInit"_s), qPrintable(error));
}

void PluginTest::ListThatIsNoneIsRefused()
{
    const Plugin plugin(QStringLiteral(QEL_BAD_LIST));
    QVERIFY_THROWS_EXCEPTION(EQelError, plugin.Forms());
    QVERIFY_THROWS_EXCEPTION(EQelError, ParseFormList("<FormEntrys><FormEntry"));
    QVERIFY_THROWS_EXCEPTION(EQelError, ParseFormList({}));
}

void PluginTest::ErrorsOfTheModuleComeThrough()
{
    const Plugin plugin(QStringLiteral(QEL_BAD_LIST));
    QWidget window;
    const QUrl server(u"http://127.0.0.1:1"_s);
    QCOMPARE(ErrorOf([&] { plugin.Init(&window, server, {}); }), u"运行参数不对"_s);
    QCOMPARE(ErrorOf([&] { plugin.OpenForm(u"raise"_s); }), u"窗体无法创建"_s);
}

void PluginTest::UnknownScreenIsAnError()
{
    const Plugin plugin(QStringLiteral(QEL_MODULE));
    QVERIFY(ErrorOf([&] { plugin.OpenForm(u"ADMIN01"_s); }).contains(u"ADMIN01"_s));
}

void PluginTest::EnvironmentNamesTheModule()
{
    qputenv("QEL_PLUGIN", "/somewhere/libQelLibAdmin.so");
    QCOMPARE(Plugin::Find(), u"/somewhere/libQelLibAdmin.so"_s);
    qunsetenv("QEL_PLUGIN");
}

void PluginTest::RealModuleGivesNineScreens()
{
    const QList<FormInfo> forms = Plugin(QStringLiteral(QEL_MODULE)).Forms();
    QCOMPARE(forms.size(), 9);
    QCOMPARE(forms.first().code, u"ADMIN01"_s);
    QCOMPARE(forms.first().name, u"营运管理－集团管理"_s);
    QCOMPARE(forms.last().code, u"ADMIN09"_s);
}

void PluginTest::FormListKeepsItsOrderAndGroups()
{
    const QByteArray list("<?xml version=\"1.0\" encoding=\"UTF-8\"?><FormEntrys>"
                          "<FormEntry FormCode=\"B\" FormName=\"乙\" BeginGroup=\"0\"/>"
                          "<FormEntry FormCode=\"A\" FormName=\"甲\" BeginGroup=\"1\"/>"
                          "</FormEntrys>");
    const QList<FormInfo> forms = ParseFormList(list);
    QCOMPARE(forms.size(), 2);
    QCOMPARE(forms.at(0).name, u"乙"_s);
    QVERIFY(!forms.at(0).beginGroup);
    QCOMPARE(forms.at(1).code, u"A"_s);
    QVERIFY(forms.at(1).beginGroup);
}

void PluginTest::TitleIsWhatFollowsTheFullWidthHyphen()
{
    const FormInfo form{u"ADMIN02"_s, u"营运管理－企业报价维护"_s};
    QCOMPARE(form.Menu(), u"营运管理"_s);
    QCOMPARE(form.Title(), u"企业报价维护"_s);
}

QTEST_MAIN(PluginTest)
#include "PluginTest.moc"
