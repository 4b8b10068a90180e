// What an operator waits for at the price screen with the sample database: until the screen is
// there with its groups and sellers, and until a page of 200 products with nine prices is painted.

#include "PaintWatch.h"

#include "host/LocalServer.h"
#include "host/Plugin.h"
#include "host/Session.h"
#include "support/Timing.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QMainWindow>
#include <QPushButton>
#include <QTabWidget>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 21;
constexpr int PageRows = 200;
const QString Form = u"ADMIN02"_s;
const QString Group = u"浙江省卫生系统药品采购集团"_s;
const QString Seller = u"广安睿禾医药贸易有限公司"_s; // quotes at all nine prices

template <typename Widget>
Widget &Child(QWidget *screen, const QString &name)
{
    auto *child = screen->findChild<Widget *>(name);
    if (!child)
        qFatal("no %s", qUtf8Printable(name));
    return *child;
}

void Choose(QComboBox &box, int at)
{
    if (at < 0)
        qFatal("%s: no such item", qUtf8Printable(box.objectName()));
    box.setCurrentIndex(at);
    emit box.activated(at);
}

struct Times
{
    std::vector<double> opened;
    std::vector<double> chosen;
    std::vector<double> shown;
};

/// Opens the screen in a tab of its own and queries a page, as an operator does.
void RunOnce(Host::Plugin &plugin, QTabWidget &tabs, const QString &form, Times &times)
{
    std::unique_ptr<QWidget> screen;
    times.opened.push_back(Milliseconds([&] {
        screen.reset(plugin.OpenForm(form));
        tabs.setCurrentIndex(tabs.addTab(screen.get(), Form));
        WaitForPaint(screen.get());
    }));
    auto &groups = Child<QComboBox>(screen.get(), u"cxUnion"_s);
    auto &sellers = Child<QComboBox>(screen.get(), u"cxUniOrg"_s);
    auto &sizes = Child<QComboBox>(&Child<QWidget>(screen.get(), u"PageGuide1"_s), u"cbPageSize"_s);
    Choose(groups, groups.findText(Group));
    Choose(sizes, sizes.findData(PageRows));
    times.chosen.push_back(Milliseconds([&] { Choose(sellers, sellers.findText(Seller)); }));

    auto &grid = Child<QAbstractItemView>(screen.get(), u"UniPriceGrid"_s);
    times.shown.push_back(Milliseconds([&] {
        Child<QPushButton>(screen.get(), u"BtnQuery"_s).click();
        grid.viewport()->update();
        WaitForPaint(grid.viewport());
    }));
    if (grid.model()->rowCount() != PageRows)
        qFatal("%d rows", grid.model()->rowCount());
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Host::LocalServer server(u"admin"_s, QString());
    const QUrl address = server.Start(QStringLiteral(QEL_SERVER_PROGRAM));

    QMainWindow window;
    auto *tabs = new QTabWidget(&window);
    window.setCentralWidget(tabs);
    window.resize(1280, 800);
    window.show();
    WaitForPaint(&window);
    Host::Plugin plugin(QStringLiteral(QEL_MODULE));
    plugin.Init(&window, address, Host::RunParamsOf(Host::FetchSession(address)));
    const QList<Host::FormInfo> forms = plugin.Forms();
    const auto form = std::find_if(forms.begin(), forms.end(),
                                   [](const Host::FormInfo &info) { return info.code == Form; });

    Times times;
    for (int round = 0; round < Rounds; ++round)
        RunOnce(plugin, *tabs, form->name, times);
    std::printf("the price screen over plug-in and server; medians of %d\n"
                "%-58s %9.2f ms\n%-58s %9.2f ms\n%-58s %9.2f ms\n",
                Rounds, "opened and painted, with groups, sellers and price types",
                Median(times.opened), "a seller chosen: its price types, the columns",
                Median(times.chosen), "from the query to the page of 200 products painted",
                Median(times.shown));
    return EXIT_SUCCESS;
}
