#include "screens/walk/Dialogs.h"
#include "screens/walk/FormRules.h"

#include "FormList.h"
#include "frame/BaseForm.h"
#include "frame/FormRegistryCtrl.h"
#include "host/Chinese.h"

#include <QDirIterator>
#include <QFontDatabase>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpression>

#include <algorithm>
#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// The name of a form's class without its namespace.
QString ClassOf(const QObject &form)
{
    return QString::fromLatin1(form.metaObject()->className()).section(u"::"_s, -1);
}

/// The classes of the library's headers and their base classes.
QHash<QString, QString> DeclaredClasses()
{
    static const QRegularExpression declaration(u"^class (\\w+)(?: final)? : public (\\w+)"_s,
                                                QRegularExpression::MultilineOption);
    QHash<QString, QString> bases;
    QDirIterator headers(QStringLiteral(QEL_LIBRARY_SOURCES), {u"*.h"_s}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (headers.hasNext()) {
        QFile header(headers.next());
        if (!header.open(QIODevice::ReadOnly))
            FailTest(u"cannot read "_s + header.fileName());
        auto matches = declaration.globalMatch(QString::fromUtf8(header.readAll()));
        while (matches.hasNext()) {
            const auto match = matches.next();
            bases.insert(match.captured(1), match.captured(2));
        }
    }
    return bases;
}

/// The forms among them. A class that another derives from is no form of its own.
QStringList DeclaredForms()
{
    const QHash<QString, QString> bases = DeclaredClasses();
    QStringList forms;
    for (auto at = bases.begin(); at != bases.end(); ++at) {
        QString base = at.value();
        while (bases.contains(base) && base != u"TFrmBaseForm")
            base = bases.value(base);
        const bool isBase = std::find(bases.begin(), bases.end(), at.key()) != bases.end();
        if (base == u"TFrmBaseForm" && !isBase)
            forms << at.key();
    }
    return forms;
}

/// Every statement that nothing else answers has no rows, nor columns.
void AnswerTheRest(WalkStage &stage)
{
    stage.server.OnAnyQuery().Answer(Rows({}, {}));
}

void ReportFaults(const QStringList &faults, const WalkStage &stage)
{
    QCOMPARE(stage.Boxes(), QStringList());
    QVERIFY2(faults.isEmpty(), qUtf8Printable(u'\n' + faults.join(u'\n')));
}

} // namespace

/// Opens every form as it is opened in the host and looks for what a person would stumble over.
/// Run once as it is and once with QT_SCALE_FACTOR=2.
class FormWalkTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Host::SetUpChinese(*qApp);
        CreateFormLibrary();
        RegisterForms();
    }
    void cleanupTestCase() { DestroyFormLibrary(); }

    void TextsAreMeasuredInAChineseFontAtTheScaleAskedFor()
    {
        QVERIFY2(!QFontDatabase::families(QFontDatabase::SimplifiedChinese).isEmpty(),
                 "no Chinese font: see packaging/packages.txt");
        const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s);
        QCOMPARE(qGuiApp->devicePixelRatio(), scale.toDouble());
    }

    void ScreensAreInOrder_data()
    {
        QTest::addColumn<int>("index");
        for (int index = 0; index < FormLibrary()->Count(); ++index)
            QTest::newRow(qPrintable(FormLibrary()->GetEntry(index)->FormCode)) << index;
    }
    void ScreensAreInOrder()
    {
        QFETCH(int, index);
        WalkStage stage;
        AnswerTheRest(stage);
        QWidget place; // a page of the host's tabs
        QLineEdit other(&place);
        const QPointer<TFrmBaseForm> screen =
            FormLibrary()->GetEntry(index)->FormClass.Create(&place);
        walked_ << ClassOf(*screen);
        place.resize(screen->size());
        screen->MakeEmbedded();
        screen->show();
        ShowScreen(place);
        QStringList faults = FormFaults(*screen);
        screen->close();
        QTRY_VERIFY(!screen);
        faults << FocusChainFaults(place);
        ReportFaults(faults, stage);
    }

    void DialogsAreInOrder_data()
    {
        QTest::addColumn<const WalkedDialog *>("walked");
        for (const WalkedDialog &dialog : WalkedDialogs())
            QTest::newRow(dialog.className) << &dialog;
    }
    void DialogsAreInOrder()
    {
        QFETCH(const WalkedDialog *, walked);
        WalkStage stage;
        QPointer<TFrmBaseForm> form = walked->make(stage);
        AnswerTheRest(stage);
        QCOMPARE(ClassOf(*form), QString::fromLatin1(walked->className));
        walked_ << ClassOf(*form);
        QStringList faults;
        ModalVisitor visitor([&faults](QWidget *dialog) {
            faults = FormFaults(*dialog);
            dialog->close();
        });
        form->ShowModal();
        std::unique_ptr<TFrmBaseForm>(form.data()).reset(); // one may have freed itself
        ReportFaults(faults, stage);
    }

    void EveryFormOfTheLibraryWasWalked()
    {
        const QStringList declared = DeclaredForms();
        for (const auto &known : {u"TFrmUniUnion"_s, u"TFrmTraBuyCatalogEdit"_s})
            QVERIFY2(declared.contains(known), "the headers are read wrong");
        QStringList missed;
        for (const QString &form : declared) {
            if (!walked_.contains(form))
                missed << form;
        }
        QVERIFY2(missed.isEmpty(),
                 qUtf8Printable(u"add to Dialogs.cpp or to the registry: "_s + missed.join(u' ')));
    }

private:
    QStringList walked_;
};

QTEST_MAIN(FormWalkTest)
#include "FormWalkTest.moc"
