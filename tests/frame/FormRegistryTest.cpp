#include "frame/BaseForm.h"
#include "frame/FormRegistryCtrl.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

TFormClass Class(const QString &name)
{
    return {name, [](QWidget *owner) { return new TFrmBaseForm(owner); }};
}

} // namespace

class FormRegistryTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { CreateFormLibrary(); }
    void cleanup() { DestroyFormLibrary(); }

    void KeepsTheOrderOfRegistration();
    void GetEntryYieldsNoneOutsideTheRegistry();
    void FindByNameComparesCaptionsWithoutCase();
    void FindByNameNeverFindsACode();
    void FindByNameTakesTheFirstOfTwo();
    void RegisterFormTakesBeginGroupFourth();
    void IsMadeOnceAndGoesWithTheLastUser();
    void FactoryMakesAScreenUnderItsOwner();
};

void FormRegistryTest::KeepsTheOrderOfRegistration()
{
    FormLibrary()->Add(Class(u"TFrmB"_s), u"B"_s, u"乙"_s, {}, {}, false);
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"甲"_s, {}, {}, false);
    QCOMPARE(FormLibrary()->Count(), 2);
    QCOMPARE(FormLibrary()->Caption(0), u"乙"_s);
    QCOMPARE(FormLibrary()->Caption(1), u"甲"_s);
    QCOMPARE(FormLibrary()->GetEntry(1)->FormClass.ClassName, u"TFrmA"_s);
}

void FormRegistryTest::GetEntryYieldsNoneOutsideTheRegistry()
{
    QVERIFY(!FormLibrary()->GetEntry(0));
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"甲"_s, {}, {}, false);
    QVERIFY(!FormLibrary()->GetEntry(-1));
    QVERIFY(!FormLibrary()->GetEntry(1));
    QCOMPARE(FormLibrary()->GetEntry(0)->FormCode, u"A"_s);
    QCOMPARE(FormLibrary()->Caption(1), QString());
}

void FormRegistryTest::FindByNameComparesCaptionsWithoutCase()
{
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"营运管理－Abc"_s, {}, {}, false);
    const TFormEntry *entry = FormLibrary()->GetEntry(0);
    QCOMPARE(FormLibrary()->FindByName(u"营运管理－aBC"_s), entry);
    QVERIFY(!FormLibrary()->FindByName(u"营运管理-Abc"_s)); // an ASCII hyphen is another caption
    QVERIFY(!FormLibrary()->FindByName(QString()));
}

void FormRegistryTest::FindByNameNeverFindsACode()
{
    FormLibrary()->Add(Class(u"TFrmA"_s), u"ADMIN09"_s, u"营运管理－公告管理"_s, {}, {}, false);
    QVERIFY(!FormLibrary()->FindByName(u"ADMIN09"_s));
}

void FormRegistryTest::FindByNameTakesTheFirstOfTwo()
{
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"同名"_s, {}, {}, false);
    FormLibrary()->Add(Class(u"TFrmB"_s), u"B"_s, u"同名"_s, {}, {}, false);
    QCOMPARE(FormLibrary()->FindByName(u"同名"_s)->FormCode, u"A"_s);
}

void FormRegistryTest::RegisterFormTakesBeginGroupFourth()
{
    RegisterForm(Class(u"TFrmA"_s), u"A"_s, u"甲"_s, true, u"参数"_s, u"F2"_s);
    const TFormEntry *entry = FormLibrary()->GetEntry(0);
    QCOMPARE(entry->BeginGroup, true);
    QCOMPARE(entry->ParamValue, u"参数"_s);
    QCOMPARE(entry->FnKeyList, u"F2"_s);
}

void FormRegistryTest::IsMadeOnceAndGoesWithTheLastUser()
{
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"甲"_s, {}, {}, false);
    CreateFormLibrary();
    QCOMPARE(FormLibrary()->Count(), 1);
    DestroyFormLibrary();
    QVERIFY(FormLibrary());
    DestroyFormLibrary();
    QVERIFY(!FormLibrary());
    CreateFormLibrary();
    QCOMPARE(FormLibrary()->Count(), 0);
}

void FormRegistryTest::FactoryMakesAScreenUnderItsOwner()
{
    FormLibrary()->Add(Class(u"TFrmA"_s), u"A"_s, u"甲"_s, {}, {}, false);
    QWidget owner;
    TFrmBaseForm *screen = FormLibrary()->GetEntry(0)->FormClass.Create(&owner);
    QCOMPARE(screen->parentWidget(), &owner);
}

QTEST_MAIN(FormRegistryTest)
#include "FormRegistryTest.moc"
