#include "host/MainWindow.h"

#include "host/ErrorDialog.h"
#include "host/WelcomePage.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>

#include <algorithm>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize FirstSize(1280, 800);
const auto GeometryKey = u"window/geometry"_s;

} // namespace

MainWindow::MainWindow(const Plugin &plugin)
    : plugin_(plugin)
    , forms_(plugin.Forms())
    , tabs_(new QTabWidget)
    , user_(new QLabel)
    , server_(new QLabel)
{
    setObjectName(u"MainWindow"_s);
    setWindowTitle(u"药品交易平台 · 营运管理"_s);
    setWindowIcon(QIcon::fromTheme(u"org.qel.host"_s));
    tabs_->setObjectName(u"Tabs"_s);
    tabs_->setTabsClosable(true);
    tabs_->setMovable(true);
    tabs_->setDocumentMode(true);
    setCentralWidget(tabs_);
    connect(tabs_, &QTabWidget::tabCloseRequested, this, &MainWindow::CloseTab);

    MakeMenus();
    tabs_->addTab(new WelcomePage(entries_), u"首页"_s);
    for (const auto side : {QTabBar::LeftSide, QTabBar::RightSide})
        tabs_->tabBar()->setTabButton(0, side, nullptr);

    user_->setObjectName(u"lbUser"_s);
    server_->setObjectName(u"lbServer"_s);
    for (QLabel *label : {user_, server_}) {
        label->setTextFormat(Qt::PlainText);
        label->setContentsMargins(6, 0, 6, 0);
    }
    statusBar()->addWidget(user_);
    statusBar()->addPermanentWidget(server_);

    resize(FirstSize);
    restoreGeometry(QSettings().value(GeometryKey).toByteArray());
}

MainWindow::~MainWindow() = default;

void MainWindow::MakeMenus()
{
    QMenu *file = menuBar()->addMenu(u"文件(&F)"_s);
    QAction *closeTab = file->addAction(u"关闭当前页(&C)"_s, this, &MainWindow::CloseCurrentTab);
    closeTab->setObjectName(u"ActionCloseTab"_s);
    closeTab->setShortcut(QKeySequence::Close);
    file->addSeparator();
    QAction *quit = file->addAction(u"退出(&X)"_s, this, &QWidget::close);
    quit->setObjectName(u"ActionQuit"_s);
    quit->setShortcut(QKeySequence(u"Ctrl+Q"_s));

    QHash<QString, QMenu *> menus;
    for (const FormInfo &form : std::as_const(forms_)) {
        QMenu *&menu = menus[form.Menu()];
        if (!menu)
            menu = menuBar()->addMenu(form.Menu());
        else if (form.beginGroup)
            menu->addSeparator();
        entries_.append(AddEntry(menu, form));
    }

    QMenu *help = menuBar()->addMenu(u"帮助(&H)"_s);
    help->addAction(u"关于(&A)"_s, this, &MainWindow::ShowAbout);
}

QAction *MainWindow::AddEntry(QMenu *menu, const FormInfo &form)
{
    QAction *entry = menu->addAction(form.Title());
    entry->setObjectName(form.code);
    connect(entry, &QAction::triggered, this, [this, code = form.code] { OpenScreen(code); });
    return entry;
}

void MainWindow::ShowSession(const QString &userName, const QString &userCode,
                             const QString &server)
{
    user_->setText(u"用户：%1（%2）"_s.arg(userName, userCode));
    server_->setText(u"服务器：%1"_s.arg(server));
}

QWidget *MainWindow::OpenScreen(const QString &code)
{
    const auto form = std::find_if(forms_.cbegin(), forms_.cend(),
                                   [&code](const FormInfo &entry) { return entry.code == code; });
    if (form == forms_.cend())
        return nullptr;
    try {
        QWidget *screen = plugin_.OpenForm(form->name);
        tabs_->setCurrentIndex(tabs_->addTab(screen, form->Title()));
        return screen;
    } catch (const std::exception &error) {
        HandleException(QString::fromUtf8(error.what()));
        return nullptr;
    }
}

void MainWindow::CloseTab(int index)
{
    if (index > 0)
        tabs_->widget(index)->close(); // frees itself, now or when its running handler has ended
}

void MainWindow::CloseCurrentTab()
{
    CloseTab(tabs_->currentIndex());
}

bool MainWindow::CloseScreens()
{
    for (int index = tabs_->count() - 1; index > 0; --index) {
        if (!tabs_->widget(index)->close())
            return false;
    }
    return true;
}

void MainWindow::HandleException(const QString &text)
{
    emit ErrorTold(text);
    QWidget *front = QApplication::activeModalWidget();
    ErrorDialog(text, front ? front : this).exec();
}

void MainWindow::ShowAbout()
{
    QMessageBox about(
        QMessageBox::Information, u"关于"_s,
        u"药品交易平台营运管理客户端\n版本 %1"_s.arg(QCoreApplication::applicationVersion()),
        QMessageBox::NoButton, this);
    about.addButton(u"确定"_s, QMessageBox::AcceptRole);
    about.exec();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!CloseScreens()) {
        event->ignore();
        return;
    }
    QSettings().setValue(GeometryKey, saveGeometry());
    event->accept();
}

} // namespace Qel::Host
