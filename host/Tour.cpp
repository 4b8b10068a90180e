#include "host/Tour.h"

#include "host/MainWindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QTabWidget>
#include <QThread>

#include <array>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr int TickTime = 50;  // milliseconds
constexpr int QuietTicks = 6; // how long nothing must have happened
constexpr int PatienceTicks = 600;

/// A dialog and how to come to it: from a screen, over actions and controls by object name. Each
/// opens a dialog, but one behind "+": that is a query or a page to turn to; one behind "-" is an
/// edit to be emptied; and "?list=text" is a choice.
struct Dialog
{
    const char16_t *file;
    const char16_t *screen;
    std::array<const char16_t *, 3> way;
};

constexpr Dialog Dialogs[]{
    {u"ADMIN01-new-group", u"ADMIN01", {u"UniNew"}},
    {u"ADMIN01-new-sub-group", u"ADMIN01", {u"UniChildNew"}},
    {u"ADMIN01-modify-group", u"ADMIN01", {u"UniModify"}},
    {u"ADMIN01-region", u"ADMIN01", {u"UniModify", u"edRegionName"}},
    {u"ADMIN01-organisation", u"ADMIN01", {u"UniModify", u"edMasterOrgName"}},
    {u"ADMIN01-member-types", u"ADMIN01", {u"ActMemberType"}},
    {u"ADMIN01-rules", u"ADMIN01", {u"ActRuleConfigure"}},
    {u"ADMIN01-products", u"ADMIN01", {u"ActUniProduct", u"+ActionQueryIn"}},
    {u"ADMIN01-product-log", u"ADMIN01", {u"ActUniProduct", u"+ActionQueryIn", u"ActionLog"}},
    {u"ADMIN01-product-candidates",
     u"ADMIN01",
     {u"ActUniProduct", u"+cxTabSheet2", u"+ActionQueryOut"}},
    {u"ADMIN01-new-members", u"ADMIN01", {u"OrgNew", u"+BtnQuery"}},
    {u"ADMIN01-modify-member", u"ADMIN01", {u"OrgModify"}},
    {u"ADMIN02-prices", u"ADMIN02", {u"?cxUniOrg=广安睿禾医药贸易有限公司", u"+BtnQuery"}},
    {u"ADMIN02-price-types", u"ADMIN02", {u"+cxTabSheet3", u"+btnOrgQuery"}},
    {u"ADMIN03-move-in", u"ADMIN03", {u"ActionNew", u"+btnQuery"}},
    {u"ADMIN04-orders", u"ADMIN04", {u"-edBuyerOrderStart", u"+ActionBuyerOrderQuery"}},
    {u"ADMIN04-returns",
     u"ADMIN04",
     {u"+cxTabSheet2", u"-dtReceiveDateFrom1", u"+ActionBuyerReturnQuery"}},
    {u"ADMIN04-receipts",
     u"ADMIN04",
     {u"+cxTabSheet3", u"-dtReceiveDateFrom", u"+ActionBuyerReceiveQuery"}},
    {u"ADMIN05-add", u"ADMIN05", {u"ActAdd"}},
    {u"ADMIN05-owner", u"ADMIN05", {u"ActAdd", u"edOwnerOrg", u"+BtnQuery"}},
    {u"ADMIN06-rules", u"ADMIN06", {u"+ActModify"}},
    {u"ADMIN07-new", u"ADMIN07", {u"ActionNew"}},
    {u"ADMIN07-new-below", u"ADMIN07", {u"ActionChildNew"}},
    {u"ADMIN07-modify", u"ADMIN07", {u"ActionModify"}},
    {u"ADMIN08-drug-stores", u"ADMIN08", {u"+ActionFullExpand"}},
    {u"ADMIN08-new", u"ADMIN08", {u"ActionNewCatalog"}},
    {u"ADMIN08-users", u"ADMIN08", {u"ActionCatalogUser"}},
    {u"ADMIN09-new", u"ADMIN09", {u"ActionNew"}},
    {u"ADMIN09-modify", u"ADMIN09", {u"ActionModify"}},
    {u"ADMIN09-log", u"ADMIN09", {u"ActionLog"}},
};

} // namespace

Tour::Tour(MainWindow &window, const QString &folder)
    : window_(window)
    , folder_(folder)
{
    connect(&clock_, &QTimer::timeout, this, &Tour::Tick);
    connect(&window, &MainWindow::ErrorTold, this, &Tour::Finish);
}

void Tour::Start()
{
    if (!QDir().mkpath(folder_))
        return Finish(u"无法创建文件夹 %1"_s.arg(folder_));
    Plan();
    clock_.start(TickTime);
}

void Tour::Plan()
{
    steps_.push_back({Kind::Grab, u"welcome"_s});
    for (const FormInfo &form : window_.Forms()) {
        steps_.push_back({Kind::Open, form.code});
        for (const auto &query : {u"ActionQuery"_s, u"ActQuery"_s})
            steps_.push_back({Kind::Press, query});
        steps_.push_back({Kind::Grab, form.code});
        for (const Dialog &dialog : Dialogs) {
            if (form.code != QStringView(dialog.screen))
                continue;
            int opened = 0;
            for (const char16_t *name : dialog.way) {
                if (name && *name == u'+')
                    steps_.push_back({Kind::Press, QString::fromUtf16(name + 1)});
                else if (name && *name == u'-')
                    steps_.push_back({Kind::Empty, QString::fromUtf16(name + 1)});
                else if (name && *name == u'?')
                    steps_.push_back({Kind::Choose, QString::fromUtf16(name + 1)});
                else if (name && ++opened)
                    steps_.push_back({Kind::Dialog, QString::fromUtf16(name)});
            }
            steps_.push_back({Kind::Grab, QString::fromUtf16(dialog.file)});
            while (opened-- > 0)
                steps_.push_back({Kind::Leave, {}});
        }
        steps_.push_back({Kind::Close, {}});
    }
}

void Tour::Tick()
{
    if (!AtRest()) {
        quietTicks_ = 0;
        if (++waitedTicks_ > PatienceTicks)
            Finish(u"等待超时：%1"_s.arg(steps_.empty() ? QString() : steps_.front().name));
        return;
    }
    if (++quietTicks_ < QuietTicks)
        return;
    quietTicks_ = 0;
    waitedTicks_ = 0;
    if (steps_.empty())
        return Finish({});
    const Step step = steps_.front();
    steps_.pop_front();
    // Not from here: a step that opens a dialog comes back only when that is closed.
    QMetaObject::invokeMethod(
        this, [this, step] { Run(step); }, Qt::QueuedConnection);
}

/// Each open dialog runs one event loop inside the program's; a running query runs another.
bool Tour::AtRest()
{
    return QThread::currentThread()->loopLevel() == 1 + dialogs_ &&
           (QApplication::activeModalWidget() != nullptr) == (dialogs_ > 0);
}

QWidget *Tour::Front() const
{
    QWidget *modal = QApplication::activeModalWidget();
    return modal ? modal : window_.Tabs()->currentWidget();
}

void Tour::Run(const Step &step)
{
    switch (step.kind) {
    case Kind::Open:
        window_.OpenScreen(step.name);
        break;
    case Kind::Press:
        Press(step.name, false);
        break;
    case Kind::Empty:
        Empty(step.name);
        break;
    case Kind::Choose:
        Choose(step.name);
        break;
    case Kind::Dialog:
        ++dialogs_;
        Press(step.name, true);
        break;
    case Kind::Grab:
        Grab(step.name);
        break;
    case Kind::Leave:
        --dialogs_;
        Front()->close();
        break;
    case Kind::Close:
        window_.Tabs()->currentWidget()->close();
        break;
    }
}

void Tour::Press(const QString &name, bool required)
{
    if (auto *action = Front()->findChild<QAction *>(name))
        return action->trigger();
    auto *control = Front()->findChild<QWidget *>(name);
    if (auto *tabs = control ? qobject_cast<QTabWidget *>(control->parent()->parent()) : nullptr)
        return tabs->setCurrentWidget(control);
    // A control is pressed at its first button, if it is none itself.
    auto *button = qobject_cast<QAbstractButton *>(control);
    if (!button && control)
        button = control->findChild<QAbstractButton *>();
    if (button)
        button->click();
    else if (required)
        Finish(u"找不到 %1"_s.arg(name));
}

void Tour::Empty(const QString &name)
{
    if (auto *edit = Front()->findChild<QLineEdit *>(name))
        edit->clear();
    else
        Finish(u"找不到 %1"_s.arg(name));
}

void Tour::Choose(const QString &listAndText)
{
    auto *list = Front()->findChild<QComboBox *>(listAndText.section(u'=', 0, 0));
    const int choice = list ? list->findText(listAndText.section(u'=', 1)) : -1;
    if (choice >= 0)
        list->setCurrentIndex(choice);
    else
        Finish(u"找不到 %1"_s.arg(listAndText));
}

void Tour::Grab(const QString &file)
{
    QWidget *front = QApplication::activeModalWidget();
    const QPixmap picture = (front ? front : &window_)->grab();
    const QString path = QDir(folder_).filePath(file + u".png"_s);
    if (!picture.save(path))
        Finish(u"无法写入 %1"_s.arg(path));
}

void Tour::Finish(const QString &problem)
{
    if (std::exchange(ended_, true))
        return;
    clock_.stop();
    emit Ended(problem);
}

} // namespace Qel::Host
