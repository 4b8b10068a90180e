#include "screens/walk/FormRules.h"
#include "controls/ButtonEdit.h"
#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "host/Chinese.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

using Build = std::function<void(QWidget &form)>;
using Rule = QStringList (*)(const QWidget &form);

/// A control at a place of its own, without a layout.
template <typename Control>
Control *Put(QWidget &parent, const QString &name, const QRect &place)
{
    auto *control = new Control(&parent);
    control->setObjectName(name);
    control->setGeometry(place);
    return control;
}

template <typename Control>
Control *PutText(QWidget &parent, const QRect &place)
{
    auto *control = Put<Control>(parent, u"bad"_s, place);
    control->setText(u"很长很长的文字"_s);
    return control;
}

constexpr QRect Narrow(10, 10, 40, 24);
constexpr QRect First(10, 10, 100, 24);
constexpr QRect Right(200, 10, 100, 24);
constexpr QRect Below(10, 50, 100, 24);

/// Two edits; the later one in the tab order has the second place.
void Edits(QWidget &form, const QRect &first, const QRect &second)
{
    auto *from = Put<QLineEdit>(form, u"edFrom"_s, first);
    auto *to = Put<QLineEdit>(form, u"edTo"_s, second);
    QWidget::setTabOrder(from, to);
}

struct BadForm
{
    const char *name;
    Rule rule;
    Build build;
    QString fault; ///< how a line of the report begins, numbers of pixels left out
};

const QList<BadForm> BadForms{
    {"label", ClippedTexts, [](QWidget &form) { PutText<QLabel>(form, Narrow); },
     u"bad: \"很长很长的文字\" needs"_s},
    {"label with line breaks that is too low", ClippedTexts,
     [](QWidget &form) {
         PutText<QLabel>(form, {10, 10, 40, 12})->setWordWrap(true);
     },
     u"bad: \"很长很长的文字\" needs"_s},
    {"push button", ClippedTexts, [](QWidget &form) { PutText<QPushButton>(form, Narrow); },
     u"bad: \"很长很长的文字\" needs"_s},
    {"tool button", ClippedTexts, [](QWidget &form) { PutText<QToolButton>(form, Narrow); },
     u"bad: \"很长很长的文字\" needs"_s},
    {"check box", ClippedTexts, [](QWidget &form) { PutText<QCheckBox>(form, Narrow); },
     u"bad: \"很长很长的文字\" needs"_s},
    {"radio button", ClippedTexts, [](QWidget &form) { PutText<QRadioButton>(form, Narrow); },
     u"bad: \"很长很长的文字\" needs"_s},
    {"button that is too low", ClippedTexts,
     [](QWidget &form) {
         PutText<QPushButton>(form, {10, 10, 200, 10});
     },
     u"bad: \"很长很长的文字\" needs"_s},
    {"group box", ClippedTexts,
     [](QWidget &form) { Put<QGroupBox>(form, u"bad"_s, Narrow)->setTitle(u"很长的标题"_s); },
     u"bad: \"很长的标题\" needs"_s},
    {"tab", ClippedTexts,
     [](QWidget &form) {
         auto *tabs = Put<QTabWidget>(form, u"bad"_s, {10, 10, 60, 100});
         tabs->addTab(new QWidget, u"很长的页名"_s);
     },
     u"qt_tabwidget_tabbar: \"很长的页名\" needs"_s},
    {"column header", ClippedTexts,
     [](QWidget &form) {
         Put<DataGrid>(form, u"bad"_s, {10, 10, 300, 100})
             ->SetColumns({u"A|成员类型名称|40||"_s, u"B|备注|100||"_s});
     },
     u"bad: \"成员类型名称\" needs"_s},
    {"choice of a combo box", ClippedTexts,
     [](QWidget &form) {
         Put<QComboBox>(form, u"bad"_s, {10, 10, 60, 24})->addItems({u"无"_s, u"采购联合体"_s});
     },
     u"bad: \"采购联合体\" needs"_s},
    {"hint of an edit", ClippedTexts,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"bad"_s, Narrow)->setPlaceholderText(u"按名称定位"_s);
     },
     u"bad: \"按名称定位\" needs"_s},
    {"edit with no room beside its button", ClippedTexts,
     [](QWidget &form) { Put<ButtonEdit>(form, u"bad"_s, Narrow)->SetButtons({u"选择"_s}); },
     u"bad: \"国国\" needs"_s},
    {"date edit", ClippedTexts,
     [](QWidget &form) {
         Put<DateEdit>(form, u"bad"_s, {10, 10, 60, 24});
     },
     u"bad: \"____-__-__\" needs"_s},

    {"overlapping siblings", MisplacedControls,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"edFrom"_s, First);
         Put<QLabel>(form, u"bad"_s, First.translated(90, 0));
     },
     u"bad (100,10 100 x 24) lies over edFrom (10,10 100 x 24)"_s},
    {"outside of the form", MisplacedControls,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"bad"_s, {350, 10, 100, 24});
     },
     u"bad (350,10 100 x 24) reaches out of form (0,0 400 x 300)"_s},
    {"outside of its container", MisplacedControls,
     [](QWidget &form) {
         auto *frame = Put<QFrame>(form, u"frame"_s, {10, 10, 200, 100});
         Put<QLineEdit>(*frame, u"bad"_s, {150, 10, 100, 24});
     },
     u"bad (150,10 100 x 24) reaches out of frame (0,0 200 x 100)"_s},
    {"without size", MisplacedControls,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"bad"_s, {10, 10, 100, 0});
     },
     u"bad has no size"_s},

    {"tab order to the left", TabOrderFaults,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"edTop"_s, First);
         Edits(form, Below.translated(190, 0), Below);
     },
     u"Tab goes backwards from edFrom to edTo"_s},
    {"tab order upwards", TabOrderFaults,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"edTop"_s, First);
         Edits(form, Below.translated(0, 40), Below);
     },
     u"Tab goes backwards from edFrom to edTo"_s},
    {"tab order upwards in nested layouts", TabOrderFaults,
     [](QWidget &form) {
         auto *rows = new QVBoxLayout(&form);
         for (const auto &name : {u"edTop"_s, u"edMiddle"_s, u"edBottom"_s}) {
             auto *row = new QHBoxLayout;
             auto *edit = new QLineEdit;
             edit->setObjectName(name);
             row->addWidget(edit);
             rows->addLayout(row);
         }
         QWidget::setTabOrder(form.findChild<QWidget *>(u"edBottom"_s),
                              form.findChild<QWidget *>(u"edMiddle"_s));
     },
     u"Tab goes backwards from edBottom to edMiddle"_s},
    {"container that Tab leaves and enters again", TabOrderFaults,
     [](QWidget &form) {
         auto *frame = Put<QFrame>(form, u"frame"_s, {0, 0, 150, 100});
         auto *in = Put<QLineEdit>(*frame, u"edIn"_s, First);
         auto *inToo = Put<QLineEdit>(*frame, u"edInToo"_s, Below);
         auto *out = Put<QLineEdit>(form, u"edOut"_s, Right);
         QWidget::setTabOrder(in, out);
         QWidget::setTabOrder(out, inToo);
     },
     u"Tab leaves frame and comes back to it at edInToo"_s},
    {"edit that Tab does not reach", TabOrderFaults,
     [](QWidget &form) { Put<QLineEdit>(form, u"bad"_s, First)->setFocusPolicy(Qt::ClickFocus); },
     u"Tab does not reach bad"_s},
    {"button that Tab does not reach", TabOrderFaults,
     [](QWidget &form) { Put<QPushButton>(form, u"bad"_s, First)->setFocusPolicy(Qt::NoFocus); },
     u"Tab does not reach bad"_s},
    {"tab widget that hides its tabs", TabOrderFaults,
     [](QWidget &form) {
         auto *tabs = Put<QTabWidget>(form, u"bad"_s, {10, 10, 300, 200});
         tabs->setTabBarAutoHide(true);
         tabs->addTab(new QLineEdit, u"第一页"_s);
     },
     u"Tab gets lost at bad"_s},
    {"read-only edit that Tab stops at", TabOrderFaults,
     [](QWidget &form) { Put<QLineEdit>(form, u"bad"_s, First)->setReadOnly(true); },
     u"Tab stops at the read-only bad"_s},

    {"pages that come after their own controls", FocusChainFaults,
     [](QWidget &form) {
         Put<QLineEdit>(form, u"edOther"_s, First);
         auto *screen = Put<QWidget>(form, u"screen"_s, {0, 50, 300, 100});
         auto *tabs = Put<QTabWidget>(*screen, u"tabs"_s, {0, 0, 300, 100});
         auto *page = new QWidget;
         auto *first = Put<QLineEdit>(*page, u"edFirst"_s, {10, 10, 50, 24});
         auto *second = Put<QLineEdit>(*page, u"edSecond"_s, {70, 10, 50, 24});
         tabs->addTab(page, u"页"_s);
         QWidget::setTabOrder(first, second);
         QWidget::setTabOrder(second, tabs);
     },
     u"the focus chain is broken between screen and form"_s},

    {"no focus", DefaultFocusFaults,
     [](QWidget &form) { Put<QLineEdit>(form, u"bad"_s, First)->setFocusPolicy(Qt::NoFocus); },
     u"no control has the focus"_s},
    {"focus on the tabs", DefaultFocusFaults,
     [](QWidget &form) {
         auto *tabs = Put<QTabWidget>(form, u"tabs"_s, {10, 10, 300, 200});
         tabs->addTab(new QLineEdit, u"第一页"_s);
         tabs->setFocus();
     },
     u"the focus is on the tabs qt_tabwidget_tabbar"_s},
    {"focus on a control that is hidden", DefaultFocusFaults,
     [](QWidget &form) {
         auto *edit = Put<QLineEdit>(form, u"bad"_s, First);
         edit->setFocus();
         edit->setVisible(false);
         form.setFocusProxy(edit);
     },
     u"the focus is on bad, which cannot be used"_s},

    {"mnemonic used twice", KeysUsedTwice,
     [](QWidget &form) {
         Put<QPushButton>(form, u"BtnOne"_s, First)->setText(u"保存(&S)"_s);
         Put<QCheckBox>(form, u"ckTwo"_s, Below)->setText(u"停用(&S)"_s);
     },
     u"Alt+S is claimed by BtnOne and ckTwo"_s},
    {"mnemonic of a label and of a group box", KeysUsedTwice,
     [](QWidget &form) {
         auto *label = Put<QLabel>(form, u"lbName"_s, First);
         label->setText(u"名称(&N)"_s);
         label->setBuddy(Put<QLineEdit>(form, u"edName"_s, Right));
         Put<QGroupBox>(form, u"group"_s, Below)->setTitle(u"说明(&N)"_s);
     },
     u"Alt+N is claimed by lbName and group"_s},
    {"shortcut used twice", KeysUsedTwice,
     [](QWidget &form) {
         for (const auto &name : {u"ActOne"_s, u"ActTwo"_s}) {
             auto *action = new QAction(&form);
             action->setObjectName(name);
             action->setShortcut(QKeySequence(Qt::Key_F5));
         }
     },
     u"F5 is claimed by ActOne and ActTwo"_s},

    {"button without handler", UnhandledButtons,
     [](QWidget &form) { Put<QPushButton>(form, u"bad"_s, First); }, u"bad does nothing"_s},
    {"button whose action has no handler", UnhandledButtons,
     [](QWidget &form) {
         auto *button = Put<QPushButton>(form, u"bad"_s, First);
         button->setProperty("action", u"Act"_s);
         auto *action = new QAction(&form);
         action->setObjectName(u"Act"_s);
         action->setEnabled(false);
         QObject::connect(button, &QPushButton::clicked, action, &QAction::trigger);
     },
     u"bad does nothing: its action Act is not handled"_s},
    {"menu action without handler", UnhandledButtons,
     [](QWidget &form) { (new QAction(&form))->setObjectName(u"bad"_s); },
     u"action bad is enabled and does nothing"_s},
    {"edit whose buttons nobody hears", UnhandledButtons,
     [](QWidget &form) { Put<ButtonEdit>(form, u"bad"_s, Right)->SetButtons({u"选择"_s}); },
     u"the buttons of bad do nothing"_s},
    {"paging bar that nobody hears", UnhandledButtons,
     [](QWidget &form) {
         Put<TPageGuide>(form, u"bad"_s, {0, 0, 400, 30});
     },
     u"bad changes no page"_s},
};

void ShowForm(QWidget &form, const Build &build)
{
    form.setObjectName(u"form"_s);
    form.resize(400, 300);
    build(form);
    ShowScreen(form);
}

} // namespace

/// Each rule of the walk on a form that breaks it, and all of them on one that keeps them.
class FormRulesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Host::SetUpChinese(*qApp); }

    void BadFormIsReported_data()
    {
        QTest::addColumn<int>("index");
        for (int index = 0; index < BadForms.size(); ++index)
            QTest::newRow(BadForms[index].name) << index;
    }
    void BadFormIsReported()
    {
        QFETCH(int, index);
        const BadForm &bad = BadForms[index];
        QWidget form;
        ShowForm(form, bad.build);
        const QStringList faults = bad.rule(form);
        QVERIFY2(faults.size() == 1, qUtf8Printable(faults.join(u'\n')));
        QVERIFY2(faults.first().startsWith(bad.fault), qUtf8Printable(faults.first()));
        QVERIFY(FormFaults(form).contains(faults.first()));
    }

    void GoodFormHasNoFaults()
    {
        QWidget form;
        int presses = 0;
        ShowForm(form, [&presses](QWidget &good) {
            auto *rows = new QVBoxLayout(&good);
            auto *filter = new QHBoxLayout;
            filter->addWidget(new QLabel(u"企业名称"_s));
            filter->addWidget(new QLineEdit);
            auto *query = new QPushButton(u"查询"_s);
            QObject::connect(query, &QPushButton::clicked, &good, [&presses] { ++presses; });
            filter->addWidget(query);
            rows->addLayout(filter);
            auto *shown = new QLineEdit(u"0013"_s);
            shown->setReadOnly(true);
            shown->setFocusPolicy(Qt::ClickFocus);
            rows->addWidget(shown);
            auto *tabs = new QTabWidget;
            tabs->addTab(new QLineEdit, u"第一页"_s);
            tabs->addTab(new QLineEdit, u"第二页"_s);
            rows->addWidget(tabs);
            auto *grid = new DataGrid;
            grid->SetColumns({u"A|机构编码|90||"_s, u"B|备注|100||"_s});
            rows->addWidget(grid);
        });
        QCOMPARE(FormFaults(form), QStringList());
    }

    void FaultOnAHiddenTabPageIsReported()
    {
        QWidget form;
        ShowForm(form, [](QWidget &bad) {
            auto *tabs = Put<QTabWidget>(bad, u"tabs"_s, {10, 10, 300, 200});
            tabs->addTab(new QLineEdit, u"第一页"_s);
            auto *page = new QWidget;
            PutText<QLabel>(*page, Narrow);
            tabs->addTab(page, u"第二页"_s);
        });
        QCOMPARE(ClippedTexts(form), QStringList());
        QVERIFY(FormFaults(form).join(u'\n').contains(u"bad: \"很长很长的文字\" needs"_s));
    }
};

QTEST_MAIN(FormRulesTest)
#include "FormRulesTest.moc"
