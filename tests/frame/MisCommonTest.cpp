#include "frame/MisCommon.h"
#include "frame/LibrarySide.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// What a person sees of a real box, and then the press of a button or key.
struct Seen
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString text;
    QString caption;
    QStringList buttons;
    QString defaultButton;
    Qt::TextFormat format = Qt::AutoText;
    Qt::WindowModality modality = Qt::NonModal;
    QWidget *owner = nullptr;
};

Seen Look(const QMessageBox &box)
{
    Seen seen{box.icon(), box.text(),       box.windowTitle(),    {},
              {},         box.textFormat(), box.windowModality(), box.parentWidget()};
    for (QAbstractButton *button : box.buttons())
        seen.buttons.append(button->text());
    if (box.defaultButton())
        seen.defaultButton = box.defaultButton()->text();
    return seen;
}

/// Looks at the box that `show` brings up and lets `answer` act on it.
template <typename Show, typename Answer>
Seen WithBox(Show show, Answer answer)
{
    Seen seen;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        watch.stop();
        seen = Look(*box);
        answer(box);
    });
    watch.start(0);
    show();
    return seen;
}

void PressFirst(QMessageBox *box)
{
    box->buttons().first()->click();
}

auto Press(const QString &name)
{
    return [name](QMessageBox *box) { box->findChild<QPushButton *>(name)->click(); };
}

} // namespace

class MisCommonTest : public QObject
{
    Q_OBJECT

private slots:
    void BoxesOfOneButtonShowIconTextAndCaption();
    void QuestionHasYesAndNoAndYesIsDefault();
    void QuestionWithFlagMakesNoTheDefault();
    void QuestionGoesOnUnlessTheAnswerIsNo();
    void EscMeansNo();
    void DataIsNeverReadAsRichText();
    void BoxBelongsToTheMainWindow();
    void BoxBelongsToTheDialogInFront();
    void HookAnswersAndWritesDown();
    void InnerHookTakesOverForItsLife();
};

void MisCommonTest::BoxesOfOneButtonShowIconTextAndCaption()
{
    const Seen info = WithBox([] { InfoBox(u"已保存！"_s, u"提示"_s); }, PressFirst);
    QCOMPARE(info.icon, QMessageBox::Information);
    QCOMPARE(info.text, u"已保存！"_s);
    QCOMPARE(info.caption, u"提示"_s);
    QCOMPARE(info.buttons, QStringList{u"确定"_s});
    QCOMPARE(info.modality, Qt::ApplicationModal);
    QCOMPARE(WithBox([] { WarningBox(u"a"_s, u"警告"_s); }, PressFirst).icon, QMessageBox::Warning);
    QCOMPARE(WithBox([] { ErrorBox(u"a"_s, u"错误"_s); }, PressFirst).icon, QMessageBox::Critical);
    QCOMPARE(WithBox([] { InfoBox(u"a"_s, {}); }, PressFirst).caption, QString());
}

void MisCommonTest::QuestionHasYesAndNoAndYesIsDefault()
{
    const Seen seen = WithBox([] { QuestionBox(u"删除？"_s, u"提示"_s); }, PressFirst);
    QCOMPARE(seen.icon, QMessageBox::Question);
    QStringList buttons = seen.buttons;
    buttons.sort();
    QCOMPARE(buttons, (QStringList{u"否"_s, u"是"_s}));
    QCOMPARE(seen.defaultButton, u"是"_s);
}

void MisCommonTest::QuestionWithFlagMakesNoTheDefault()
{
    const Seen seen = WithBox([] { QuestionBox(u"删除？"_s, u"提示"_s, true); }, PressFirst);
    QCOMPARE(seen.defaultButton, u"否"_s);
}

void MisCommonTest::QuestionGoesOnUnlessTheAnswerIsNo()
{
    bool goesOn = false;
    const auto ask = [&goesOn] { goesOn = QuestionBox(u"删除？"_s, u"提示"_s); };
    WithBox(ask, Press(u"Yes"_s));
    QVERIFY(goesOn);
    WithBox(ask, Press(u"No"_s));
    QVERIFY(!goesOn);
}

void MisCommonTest::EscMeansNo()
{
    bool goesOn = true;
    WithBox([&goesOn] { goesOn = QuestionBox(u"删除？"_s, u"提示"_s); },
            [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
    QVERIFY(!goesOn);
}

void MisCommonTest::DataIsNeverReadAsRichText()
{
    const QString data = u"<b>机构</b><img src=\"http://example.invalid/x\">"_s;
    const Seen seen = WithBox([&data] { InfoBox(data, u"提示"_s); }, PressFirst);
    QCOMPARE(seen.format, Qt::PlainText);
    QCOMPARE(seen.text, data);
}

void MisCommonTest::BoxBelongsToTheMainWindow()
{
    QWidget window;
    window.show();
    SwapHostObjects({&window, nullptr});
    QCOMPARE(WithBox([] { InfoBox(u"a"_s, {}); }, PressFirst).owner, &window);
    RestoreHostObjects();
}

void MisCommonTest::BoxBelongsToTheDialogInFront()
{
    QWidget dialog;
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QWidget *owner = nullptr;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            owner = box->parentWidget();
            box->buttons().first()->click();
        }
    });
    watch.start(0);
    InfoBox(u"a"_s, {});
    QCOMPARE(owner, &dialog);
}

void MisCommonTest::HookAnswersAndWritesDown()
{
    MessageBoxHook hook;
    QVERIFY(QuestionBox(u"一"_s, u"提示"_s));
    QVERIFY(!QuestionBox(u"二"_s, u"提示"_s, true)); // the default button
    hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
    QVERIFY(!QuestionBox(u"三"_s, u"提示"_s));
    ErrorBox(u"四"_s, u"错误"_s);
    QCOMPARE(hook.Boxes().size(), 4);
    QCOMPARE(hook.Boxes().at(1).defaultButton, TBoxButton::No);
    QCOMPARE(hook.Boxes().at(3).icon, TBoxIcon::Error);
    QCOMPARE(hook.Boxes().at(3).text, u"四"_s);
    QCOMPARE(hook.Boxes().at(3).caption, u"错误"_s);
    QCOMPARE(hook.Boxes().at(3).buttons, QList{TBoxButton::Ok});
}

void MisCommonTest::InnerHookTakesOverForItsLife()
{
    MessageBoxHook outer;
    {
        MessageBoxHook inner([](const TMessageBox &) { return TBoxButton::No; });
        QVERIFY(!QuestionBox(u"内"_s, {}));
        QCOMPARE(inner.Boxes().size(), 1);
    }
    QVERIFY(QuestionBox(u"外"_s, {}));
    QCOMPARE(outer.Boxes().size(), 1);
}

QTEST_MAIN(MisCommonTest)
#include "MisCommonTest.moc"
