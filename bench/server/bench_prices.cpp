// Saving a page of edited prices, against the same rows stored and logged in one transaction of the
// database library.

#include "HttpLine.h"
#include "PeerDatabase.h"
#include "ServerRun.h"

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "support/Timing.h"
#include "wire/Wire.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Page = 200;
constexpr int Rounds = 41; // each stores another price
constexpr int Slots = 9;
constexpr double Goal = 3.0;
const QString Group = u"300001"_s;
const QString UserId = u"699999"_s;

struct QuotedPage
{
    QString seller;
    QStringList products;
    QStringList prices; ///< keys
};

/// Fills the file; gives products of the seller that quotes most to the group.
QuotedPage Fill(const QString &url)
{
    const auto database = Store::Database::Open(url);
    const auto connection = database->OpenWriter();
    Store::CreateSchema(*connection);
    Demo::Fill(*connection, QDate(2026, 11, 21));
    AddOperator(*connection, UserId, u"200001"_s);
    QuotedPage page;
    page.seller = connection
                      ->QueryText("SELECT SALE_ORGID FROM PRC_UNI_PRICE_PRODUCT WHERE UNION_ID = ?1"
                                  " GROUP BY SALE_ORGID ORDER BY COUNT(*) DESC",
                                  {Group})
                      .value_or(QString());
    const auto rows = connection->Prepare(
        "SELECT P.PRODUCT_ID, P.PRICE_ID FROM PRC_UNI_PRICE_PRODUCT P, BAS_PRODUCT B"
        " WHERE P.UNION_ID = ?1 AND P.SALE_ORGID = ?2 AND P.LAST_OPERATE <> 'D'"
        " AND B.PRODUCT_ID = P.PRODUCT_ID ORDER BY B.PRODUCT_NAME LIMIT ?3");
    rows->Bind(1, Group);
    rows->Bind(2, page.seller);
    rows->BindInt(3, Page);
    while (rows->Step()) {
        page.products += rows->ColumnText(0);
        page.prices += rows->ColumnText(1);
    }
    return page;
}

QString Price(int round, int row)
{
    return QString::number(10 + row + round / 100.0, 'f', 2);
}

/// What the price screen posts for a page of edited rows.
QByteArray Save(const QuotedPage &page, int round)
{
    Wire::PostRequest request{
        u"com.business.admin.UniPrice"_s, u"insertUpdatePrcUniPriceProduct"_s, {}};
    for (int row = 0; row < Page; ++row) {
        const QString price = Price(round, row);
        Wire::NamedValues values{
            {u"PRICE_ID"_s, page.prices[row]},     {u"UNION_ID"_s, Group},
            {u"SALE_ORGID"_s, page.seller},        {u"SEND_ORGID"_s, page.seller},
            {u"PRODUCT_ID"_s, page.products[row]}, {u"COST_PRICE"_s, price}};
        for (int slot = 1; slot <= Slots; ++slot)
            values.append({u"PRICE_0%1"_s.arg(slot), price});
        values.append({u"LAST_OPERATE"_s, u"1"_s});
        values.append({u"LAST_USER"_s, u"测量员"_s});
        request.rows.append(values);
    }
    return Wire::Encode(request, Wire::Format::Cbor);
}

/// The same rows and their entries in the log, prepared once; nothing is checked.
class Direct
{
public:
    explicit Direct(const QString &file)
        : database_(file)
    {
    }

    void Store(const QuotedPage &page, int round)
    {
        database_.Execute("BEGIN IMMEDIATE");
        for (int row = 0; row < Page; ++row) {
            const QByteArray key = page.prices[row].toUtf8();
            update_.Run({key, Price(round, row).toUtf8()});
            log_.Run({QByteArray::number(79'000'000 + round * Page + row), key});
        }
        database_.Execute("COMMIT");
    }

private:
    PeerDatabase database_;
    PeerStatement update_{database_.Handle(),
                          "UPDATE PRC_UNI_PRICE_PRODUCT SET COST_PRICE = ?2, PRICE_01 = ?2,"
                          " PRICE_02 = ?2, PRICE_03 = ?2, PRICE_04 = ?2, PRICE_05 = ?2,"
                          " PRICE_06 = ?2, PRICE_07 = ?2, PRICE_08 = ?2, PRICE_09 = ?2,"
                          " LAST_OPERATE = '1', LAST_USER = '测量员', LAST_USER_ID = '699999',"
                          " LAST_UPDATE = '2026-11-21 08:00:00' WHERE PRICE_ID = ?1"};
    PeerStatement log_{database_.Handle(),
                       "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, OPTION_TYPE,"
                       " USER_ID, USER_NAME, OPTION_DATE, LAST_OPERATE) VALUES (?1,"
                       " 'PRC_UNI_PRICE_PRODUCT', ?2, '2', '699999', '测量员',"
                       " '2026-11-21 08:00:00', '1')"};
};

void ExpectStored(const QByteArray &body)
{
    const Wire::PostAnswer answer = Wire::DecodePostAnswer(body, Wire::Format::Cbor);
    if (answer.rows.size() != Page || answer.rows[0].code != u"1"_s)
        qFatal("the server did not store the rows");
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"server.sqlite"_s);
    const QString peerFile = folder.filePath(u"peer.sqlite"_s);
    const QuotedPage page = Fill(u"sqlite:"_s + file);
    if (page.products.size() != Page)
        qFatal("too few prices");
    QFile::copy(file, peerFile);

    std::vector<double> served;
    std::vector<double> direct;
    {
        const ServerRun server(u"sqlite:"_s + file);
        HttpLine line(server.Port());
        Direct peer(peerFile);
        for (int round = 0; round < Rounds; ++round) {
            const QByteArray post =
                Request("POST /NorvaneServlet", Save(page, round), QByteArray::number(round));
            QByteArray answer;
            served.push_back(Milliseconds([&] { answer = line.Ask(post); }));
            ExpectStored(answer);
            direct.push_back(Milliseconds([&] { peer.Store(page, round); }));
        }
    }
    const double ratio = Median(served) / Median(direct);
    std::printf(
        "%d edited prices in one post, checked and logged, against the same rows and entries"
        " stored in\none transaction; medians of %d rounds in turn\n"
        "server %.3f ms, rows alone %.3f ms: %.2f <= %.1f  %s\n",
        Page, Rounds, Median(served), Median(direct), ratio, Goal,
        ratio <= Goal ? "met" : "MISSED");
    return ratio <= Goal ? 0 : 2;
}
