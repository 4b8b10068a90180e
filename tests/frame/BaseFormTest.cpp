#include "frame/BaseForm.h"
#include "dataset/QelError.h"
#include "frame/FormTitle.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <memory>
#include <stdexcept>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

class EDetailed : public EQelError
{
public:
    using EQelError::EQelError;
    QString Details() const override { return u"GET http://server/\nHTTP 500"_s; }
};

/// A main window with error handling of its own.
class Host : public QWidget
{
    Q_OBJECT

public:
    Q_INVOKABLE void HandleException(const QString &text) { errors.append(text); }
    QStringList errors;
};

/// A form with one control of each kind that treats Enter in its own way.
class Form : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit Form(QWidget *owner = nullptr)
        : TFrmBaseForm(owner)
    {
        setWindowTitle(u"集团维护"_s);
        auto *layout = new QVBoxLayout(this);
        for (QWidget *widget : {static_cast<QWidget *>(&first), static_cast<QWidget *>(&second),
                                static_cast<QWidget *>(&check), static_cast<QWidget *>(&memo),
                                static_cast<QWidget *>(&list), static_cast<QWidget *>(&save),
                                static_cast<QWidget *>(&cancel)})
            layout->addWidget(widget);
        SetCancelButton(&cancel);
        Handle(&save, &QPushButton::clicked, &Form::SaveClick);
        Handle(&cancel, &QPushButton::clicked, &Form::CancelClick);
        resize(300, 300);
    }

    using TFrmBaseForm::AllowMaximize;
    using TFrmBaseForm::Handle;
    using TFrmBaseForm::HandleKey;

    QLineEdit first;
    QLineEdit second;
    QCheckBox check;
    QPlainTextEdit memo;
    QTreeView list;
    QPushButton save;
    QPushButton cancel;

    std::function<void()> onShow = [] {};
    std::function<void()> onSave = [this] { SetModalResult(TModalResult::Ok); };
    int shows = 0;

protected:
    void FormShow() override
    {
        ++shows;
        onShow();
    }

private:
    void SaveClick() { onSave(); }
    void CancelClick() { SetModalResult(TModalResult::Cancel); }
};

/// Shows the form modally, lets `act` act once it is up, and gives the modal result. What `act`
/// leaves open is closed.
template <typename Act>
TModalResult Modal(Form &form, Act act)
{
    QTimer::singleShot(0, &form, [&] {
        QVERIFY(QTest::qWaitForWindowActive(&form));
        act();
        form.close();
    });
    return form.ShowModal();
}

} // namespace

class BaseFormTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        RestoreHostObjects();
        RestoreHostObjects();
    }

    void TitleBarShowsTheCaption();
    void TitleBarHasItsSizeAndHint();
    void ClickOnTheTitleBarCloses();
    void FormIsWhiteWithTwelvePixelText();
    void FormParamIsEmptyUnlessSet();

    void EmbeddedScreenIsInvisibleAtTheOrigin();
    void EmbeddedScreenGrowsWithItsParent();
    void EmbeddedScreenFreesItselfWhenClosed();
    void EmbeddedScreenStaysOnEsc();

    void FormShowRunsOnceAndNotInsideTheShowEvent();
    void ErrorInFormShowGoesToTheHost();

    void HandlerTakesAsManyArgumentsAsItLikes();
    void ErrorOfAHandlerGoesToTheHostWithDetails();
    void ErrorOutOfAnExportCarriesItsDetails();
    void ErrorWithoutAHandlingHostIsABox();
    void ErrorThatIsNotOursIsToldInWords();
    void ClosingWaitsForTheRunningHandler();
    void ClosingWaitsForTheOuterOfTwoHandlers();
    void ErrorInAHandlerStillClosesAfterwards();

    void DialogGivesItsModalResult();
    void ClosedDialogGivesCancel();
    void ModalResultSetDuringShowDoesNotClose();
    void ModalResultNoneKeepsTheDialogOpen();
    void DialogCanBeShownAgain();
    void DialogEndsWhenItsOwnerGoes();
    void EscPressesTheCancelButton();
    void EscDoesNothingWhileTheCancelButtonIsDisabled();
    void DialogIsMaximizedOnlyIfItAllowsThat();
    void DoubleClickOnTheBarMaximizesAndRestores();
    void EnterMovesToTheNextControl();
    void EnterPressesTheFocusedButton();
    void EnterStaysInMemoAndList();
    void EnterInAnEmbeddedScreenMovesNothing();
    void KeyHandlerSwallowsItsKeyOnly();
};

void BaseFormTest::TitleBarShowsTheCaption()
{
    Form form;
    QCOMPARE(form.findChild<FormTitle *>(u"FormTitle"_s)->Text(), u"集团维护"_s);
    form.setWindowTitle(u"X"_s);
    QCOMPARE(form.findChild<FormTitle *>(u"FormTitle"_s)->Text(), u"X"_s);
}

void BaseFormTest::TitleBarHasItsSizeAndHint()
{
    Form form;
    form.resize(640, 480);
    form.show();
    const auto *title = form.findChild<FormTitle *>();
    QCOMPARE(title->geometry(), QRect(0, 0, 640, 25));
    QCOMPARE(title->findChild<QAbstractButton *>()->toolTip(), u"关闭"_s);
    QVERIFY(form.first.y() >= 25);
}

void BaseFormTest::ClickOnTheTitleBarCloses()
{
    Form form;
    form.show();
    QTest::mouseClick(form.findChild<QAbstractButton *>(u"BtnFormTitleClose"_s), Qt::LeftButton);
    QVERIFY(!form.isVisible());
}

void BaseFormTest::FormIsWhiteWithTwelvePixelText()
{
    Form form;
    QCOMPARE(form.palette().color(QPalette::Window), QColor(Qt::white));
    QCOMPARE(form.font().pixelSize(), 12);
}

void BaseFormTest::FormParamIsEmptyUnlessSet()
{
    QCOMPARE(Form().FormParam(), QString());
}

void BaseFormTest::EmbeddedScreenIsInvisibleAtTheOrigin()
{
    QWidget owner;
    owner.show();
    auto *form = new Form(&owner);
    form->MakeEmbedded();
    QVERIFY(!form->isVisible());
    QVERIFY(!form->isWindow());
    QCOMPARE(form->pos(), QPoint(0, 0));
    QCOMPARE(form->parentWidget(), &owner);
}

void BaseFormTest::EmbeddedScreenGrowsWithItsParent()
{
    QWidget owner;
    QWidget page;
    page.resize(400, 300);
    page.show();
    auto *form = new Form(&owner);
    form->MakeEmbedded();
    form->setParent(&page);
    form->resize(380, 290);
    form->show();
    page.resize(500, 350);
    QTRY_COMPARE(form->geometry(), QRect(0, 0, 480, 340));
}

void BaseFormTest::EmbeddedScreenFreesItselfWhenClosed()
{
    QWidget owner;
    owner.show();
    QPointer<Form> form = new Form(&owner);
    form->MakeEmbedded();
    form->show();
    form->close();
    QTRY_VERIFY(!form);
}

void BaseFormTest::EmbeddedScreenStaysOnEsc()
{
    QWidget owner;
    owner.show();
    Form form(&owner);
    form.MakeEmbedded();
    form.show();
    QTest::keyClick(&form.first, Qt::Key_Escape);
    QVERIFY(form.isVisible());
}

void BaseFormTest::FormShowRunsOnceAndNotInsideTheShowEvent()
{
    QWidget owner;
    owner.show();
    Form form(&owner);
    form.MakeEmbedded();
    form.show();
    QCOMPARE(form.shows, 0);
    QTRY_COMPARE(form.shows, 1);
    form.hide();
    form.show();
    QCoreApplication::processEvents();
    QCOMPARE(form.shows, 1);
}

void BaseFormTest::ErrorInFormShowGoesToTheHost()
{
    Host host;
    SwapHostObjects({&host, nullptr});
    Form form;
    form.onShow = [] { throw EQelError(u"查询失败"_s); };
    form.show();
    QTRY_COMPARE(host.errors, QStringList{u"查询失败"_s});
    QVERIFY(form.isVisible());
}

void BaseFormTest::HandlerTakesAsManyArgumentsAsItLikes()
{
    Form form;
    QString text;
    int calls = 0;
    form.Handle(&form.first, &QLineEdit::textChanged, [&](const QString &now) { text = now; });
    form.Handle(&form.first, &QLineEdit::textChanged, [&] { ++calls; });
    form.first.setText(u"甲"_s);
    QCOMPARE(text, u"甲"_s);
    QCOMPARE(calls, 1);
}

void BaseFormTest::ErrorOutOfAnExportCarriesItsDetails()
{
    const auto told = [](const std::function<void()> &work) {
        try {
            RunForHost(work);
        } catch (const std::exception &error) {
            return QString::fromUtf8(error.what());
        }
        return QString();
    };
    QCOMPARE(told([] { throw EDetailed(u"服务器没有应答"_s); }),
             u"服务器没有应答\n\nGET http://server/\nHTTP 500"_s);
    QCOMPARE(told([] { throw EQelError(u"不是 GBK"_s); }), u"不是 GBK"_s);
    QCOMPARE(told([] { throw std::runtime_error("bad index"); }),
             u"程序内部错误，操作已中止。\n\nbad index"_s);
    QCOMPARE(told([] {}), QString());
}

void BaseFormTest::ErrorOfAHandlerGoesToTheHostWithDetails()
{
    Host host;
    SwapHostObjects({&host, nullptr});
    Form form;
    form.onSave = [] { throw EDetailed(u"服务器没有应答"_s); };
    form.save.click();
    QCOMPARE(host.errors, QStringList{u"服务器没有应答\n\nGET http://server/\nHTTP 500"_s});
    QVERIFY(!form.IsHandlerRunning());
}

void BaseFormTest::ErrorWithoutAHandlingHostIsABox()
{
    MessageBoxHook hook;
    Form form;
    form.onSave = [] { throw EDetailed(u"服务器没有应答"_s); };
    form.save.click();
    QCOMPARE(hook.Boxes().size(), 1);
    QCOMPARE(hook.Boxes().first().icon, TBoxIcon::Error);
    QCOMPARE(hook.Boxes().first().text, u"服务器没有应答"_s);
    QCOMPARE(hook.Boxes().first().caption, u"错误"_s);
}

void BaseFormTest::ErrorThatIsNotOursIsToldInWords()
{
    Host host;
    SwapHostObjects({&host, nullptr});
    Form form;
    form.onSave = [] { throw std::out_of_range("vector::at"); };
    form.save.click();
    QCOMPARE(host.errors.size(), 1);
    QCOMPARE(host.errors.first().section(u"\n\n"_s, 1), u"vector::at"_s);
    form.onSave = [] { throw 42; };
    form.save.click();
    QCOMPARE(host.errors.size(), 2);
}

void BaseFormTest::ClosingWaitsForTheRunningHandler()
{
    Form form;
    form.show();
    bool visibleInside = false;
    form.onSave = [&] {
        form.close();
        visibleInside = form.isVisible();
    };
    form.save.click();
    QVERIFY(visibleInside);
    QVERIFY(!form.isVisible());
}

void BaseFormTest::ClosingWaitsForTheOuterOfTwoHandlers()
{
    Form form;
    form.show();
    bool visibleInside = false;
    form.onSave = [&] {
        form.cancel.click();
        visibleInside = form.isVisible();
    };
    form.save.click();
    QVERIFY(visibleInside);
    QVERIFY(!form.isVisible());
}

void BaseFormTest::ErrorInAHandlerStillClosesAfterwards()
{
    MessageBoxHook hook;
    Form form;
    form.show();
    form.onSave = [&] {
        form.close();
        throw EQelError(u"之后"_s);
    };
    form.save.click();
    QVERIFY(!form.isVisible());
    QCOMPARE(hook.Boxes().size(), 1);
}

void BaseFormTest::DialogGivesItsModalResult()
{
    Form form;
    QCOMPARE(Modal(form, [&] { form.save.click(); }), TModalResult::Ok);
    QVERIFY(!form.isVisible());
    QVERIFY(!form.IsModal());
    QCOMPARE(form.shows, 1);
}

void BaseFormTest::ClosedDialogGivesCancel()
{
    Form form;
    QCOMPARE(Modal(form, [&] { form.close(); }), TModalResult::Cancel);
    QCOMPARE(Modal(form, [&] { form.cancel.click(); }), TModalResult::Cancel);
}

void BaseFormTest::ModalResultSetDuringShowDoesNotClose()
{
    Form form;
    form.onShow = [&] { form.SetModalResult(TModalResult::Ok); };
    bool stayed = false;
    const auto result = Modal(form, [&] {
        stayed = form.isVisible();
        form.cancel.click();
    });
    QVERIFY(stayed);
    QCOMPARE(result, TModalResult::Cancel);
}

void BaseFormTest::ModalResultNoneKeepsTheDialogOpen()
{
    Form form;
    form.onSave = [&] {
        form.SetModalResult(TModalResult::Ok);
        form.SetModalResult(TModalResult::None);
    };
    bool stayed = false;
    Modal(form, [&] {
        form.save.click();
        stayed = form.isVisible();
        form.close();
    });
    QVERIFY(stayed);
}

void BaseFormTest::DialogCanBeShownAgain()
{
    Form form;
    QCOMPARE(Modal(form, [&] { form.save.click(); }), TModalResult::Ok);
    QCOMPARE(Modal(form, [&] { form.cancel.click(); }), TModalResult::Cancel);
}

void BaseFormTest::DialogEndsWhenItsOwnerGoes()
{
    auto owner = std::make_unique<QWidget>();
    owner->show();
    auto *form = new Form(owner.get());
    QTimer::singleShot(0, qApp, [&] { owner.reset(); });
    QCOMPARE(form->ShowModal(), TModalResult::Cancel);
}

void BaseFormTest::EscPressesTheCancelButton()
{
    Form form;
    QSignalSpy pressed(&form.cancel, &QPushButton::clicked);
    QCOMPARE(Modal(form, [&] { QTest::keyClick(&form.second, Qt::Key_Escape); }),
             TModalResult::Cancel);
    QCOMPARE(pressed.size(), 1);
}

void BaseFormTest::EscDoesNothingWhileTheCancelButtonIsDisabled()
{
    Form form;
    form.cancel.setEnabled(false);
    bool stayed = false;
    Modal(form, [&] {
        QTest::keyClick(&form.second, Qt::Key_Escape);
        stayed = form.isVisible();
        form.close();
    });
    QVERIFY(stayed);
}

void BaseFormTest::DialogIsMaximizedOnlyIfItAllowsThat()
{
    Form form;
    Modal(form, [&] {
        QVERIFY(!form.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
        QVERIFY(!form.findChild<QAbstractButton *>(u"BtnFormTitleMaximize"_s));
        QTest::mouseDClick(form.findChild<FormTitle *>(), Qt::LeftButton);
        QVERIFY(!form.isMaximized());
    });
}

void BaseFormTest::DoubleClickOnTheBarMaximizesAndRestores()
{
    Form form;
    form.AllowMaximize();
    Modal(form, [&] {
        QVERIFY(form.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
        const auto *button = form.findChild<QAbstractButton *>(u"BtnFormTitleMaximize"_s);
        QCOMPARE(button->toolTip(), u"最大化"_s);
        auto *bar = form.findChild<FormTitle *>();
        const QSize before = form.size();
        QTest::mouseDClick(bar, Qt::LeftButton);
        QTRY_COMPARE(form.size(), form.screen()->availableSize());
        QCOMPARE(button->toolTip(), u"还原"_s);
        QTest::mouseDClick(bar, Qt::LeftButton);
        QTRY_COMPARE(form.size(), before);
        QCOMPARE(button->toolTip(), u"最大化"_s);
    });
}

void BaseFormTest::EnterMovesToTheNextControl()
{
    Form form;
    Modal(form, [&] {
        form.first.setFocus();
        QTest::keyClick(&form.first, Qt::Key_Return);
        QVERIFY(form.second.hasFocus());
        QTest::keyClick(&form.second, Qt::Key_Enter);
        QVERIFY(form.check.hasFocus());
        QTest::keyClick(&form.check, Qt::Key_Return);
        QVERIFY(form.memo.hasFocus());
        form.close();
    });
    QVERIFY(!form.check.isChecked());
}

void BaseFormTest::EnterPressesTheFocusedButton()
{
    Form form;
    const auto result = Modal(form, [&] {
        form.save.setFocus();
        QTest::keyClick(&form.save, Qt::Key_Return);
    });
    QCOMPARE(result, TModalResult::Ok);
}

void BaseFormTest::EnterStaysInMemoAndList()
{
    Form form;
    Modal(form, [&] {
        form.memo.setFocus();
        QTest::keyClick(&form.memo, Qt::Key_Return);
        QVERIFY(form.memo.hasFocus());
        form.list.setFocus();
        QTest::keyClick(&form.list, Qt::Key_Return);
        QVERIFY(form.list.hasFocus());
        form.close();
    });
    QCOMPARE(form.memo.toPlainText(), u"\n"_s);
}

void BaseFormTest::EnterInAnEmbeddedScreenMovesNothing()
{
    QWidget owner;
    Form form(&owner);
    form.MakeEmbedded();
    owner.show();
    form.show();
    QVERIFY(QTest::qWaitForWindowActive(&owner));
    form.first.setFocus();
    QTest::keyClick(&form.first, Qt::Key_Return);
    QVERIFY(form.first.hasFocus());
}

void BaseFormTest::KeyHandlerSwallowsItsKeyOnly()
{
    Form form;
    int queries = 0;
    int refusals = 0;
    form.HandleKey(&form.first, Qt::Key_Return, [&] { ++queries; });
    form.HandleKey(&form.second, Qt::Key_Return, [&] {
        ++refusals;
        return false;
    });
    Modal(form, [&] {
        form.first.setFocus();
        QTest::keyClick(&form.first, Qt::Key_Return);
        QTest::keyClick(&form.first, Qt::Key_Enter);
        QTest::keyClick(&form.first, Qt::Key_A);
        QVERIFY(form.first.hasFocus());
        form.second.setFocus();
        QTest::keyClick(&form.second, Qt::Key_Return);
        QVERIFY(form.check.hasFocus());
        form.close();
    });
    QCOMPARE(queries, 2);
    QCOMPARE(refusals, 1);
    QCOMPARE(form.first.text(), u"a"_s);
}

QTEST_MAIN(BaseFormTest)
#include "BaseFormTest.moc"
