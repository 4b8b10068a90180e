// The largest page of the drug stores, from the press of the button to the picture, beside what its
// three statements alone take through the same service and server.

#include "controls/LevelGrid.h"
#include "frame/DataModule.h"
#include "host/LocalServer.h"
#include "remote/PageGuide.h"
#include "screens/TraBuyCatalog.h"
#include "support/Timing.h"

#include <QAction>
#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 15;
constexpr double Bound = 1.5;
constexpr int AllRows = 2'000; ///< more than the sample database has organisations that buy

QStringList Ids(const ClientDataSet &rows, QStringView field)
{
    QStringList ids;
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo)
        ids.append(rows.TextAt(recNo, field));
    return ids;
}

/// The statements that the screen sends for the page, each into a table that nothing shows.
class Statements
{
public:
    Statements()
        : orgSql_(BuyCatalogSql::Organisations({}))
    {
        Query(orgSql_, 1, AllRows, orgs);
        catalogSql_ = BuyCatalogSql::Catalogs(Ids(orgs, u"BUY_ORGID"));
        Query(catalogSql_, 0, 0, catalogs);
        userSql_ = BuyCatalogSql::Users(Ids(catalogs, u"CATALOG_ID"));
    }

    void Run()
    {
        Query(orgSql_, 1, AllRows, orgs);
        Query(catalogSql_, 0, 0, catalogs);
        Query(userSql_, 0, 0, users);
    }

    ClientDataSet orgs;
    ClientDataSet catalogs;
    ClientDataSet users;

private:
    static void Query(const QString &sql, int page, int size, ClientDataSet &target)
    {
        DataModule().SoapCtrl().SQLQuery(sql, page, size, target, TQueryType::List);
    }

    QString orgSql_;
    QString catalogSql_;
    QString userSql_;
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Host::LocalServer server(u"admin"_s, QString());
    const QUrl address = server.Start(QStringLiteral(QEL_SERVER_PROGRAM));
    const QString post = u"NorvaneServlet"_s;
    DataModule().SoapCtrl().SetServletURL(QString::fromUtf8(address.toEncoded()),
                                          u"NorvaneSelectServlet"_s, post, post);

    std::vector<double> alone;
    std::vector<double> whole;
    Statements statements;
    statements.Run();
    {
        TFrmTraBuyCatalog screen;
        screen.show();
        screen.findChild<TPageGuide *>(u"PageGuide1"_s)->SetPageSize(AllRows);
        auto *query = screen.findChild<QAction *>(u"ActionQuery"_s);
        query->trigger(); // once, with fonts and plans fresh
        screen.grab();
        for (int round = 0; round < Rounds; ++round) {
            alone.push_back(Milliseconds([&] { statements.Run(); }));
            whole.push_back(Milliseconds([&] {
                query->trigger();
                screen.grab();
            }));
        }
        if (screen.findChild<LevelGrid *>()->model()->rowCount() != statements.orgs.RecordCount()) {
            std::fprintf(stderr, "the screen does not show what the statements give\n");
            return EXIT_FAILURE;
        }
    }
    const double ratio = Median(whole) / Median(alone);
    std::printf("%d organisations, %d drug stores, %d assignments; medians of %d\n",
                statements.orgs.RecordCount(), statements.catalogs.RecordCount(),
                statements.users.RecordCount(), Rounds);
    std::printf("query to picture %9.2f ms, statements alone %9.2f ms, ratio %6.3f <= %g  %s\n",
                Median(whole), Median(alone), ratio, Bound, ratio <= Bound ? "met" : "MISSED");
    DestroyDataModule();
    return ratio <= Bound ? EXIT_SUCCESS : 2;
}
