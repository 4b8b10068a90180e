#include "MixedLoad.h"

#include "Cases.h"
#include "Rounds.h"

#include "server/HttpLine.h"
#include "server/ServerRun.h"
#include "wire/Wire.h"

#include <QStringList>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds SampleTime{500};

QByteArray RequestOfAll(const QString &sql)
{
    return Request("POST /NorvaneSelectServlet",
                   Wire::Encode(Wire::QueryRequest{sql, 0, 0, 2}, Wire::Format::Cbor));
}

/// Too long a text to be kept.
QByteArray ManyKeys(int first)
{
    constexpr int count = 3'000;
    QStringList keys;
    for (int key = 0; key < count; ++key)
        keys.append(u"'%1'"_s.arg(first + key));
    return RequestOfAll(
        u"SELECT ORG_ID, ORG_NAME FROM BAS_ORG WHERE ORG_ID IN (%1)"_s.arg(keys.join(u',')));
}

/// One client's requests, one after the other.
class Client
{
public:
    Client(quint16 port, int number)
        : line_(port)
        , number_(number)
    {
    }

    void AskNext()
    {
        constexpr int turn = 10;
        const int at = asked_++;
        switch (at % turn) {
        case 0:
        case 1:
            last_ = PostRequest(Change(number_, stored_++));
            ExpectStored(line_.Ask(last_));
            break;
        case 2: // as after a broken connection
            ExpectStored(line_.Ask(last_));
            break;
        case 3:
            line_.Ask(Rare(at / turn));
            break;
        default:
            line_.Ask(NextPage());
        }
    }

private:
    QByteArray NextPage()
    {
        constexpr int regions = 1'000;
        return PageRequest(IndexedPage((asked_ * 7 + number_) % regions).sql);
    }

    QByteArray Rare(int turn)
    {
        constexpr int keys = 200'000;
        constexpr int turns = 100;
        switch (turn % turns) {
        case 5:
            return RequestOfAll(u"SELECT * FROM BAS_ORG ORDER BY ORG_ABBR "_s);
        case 6:
            return ManyKeys(keys + turn);
        default:
            return turn % 10 == 0 ? PageRequest(ScanningPage().sql) : NextPage();
        }
    }

    HttpLine line_;
    int number_;
    int asked_ = 0;
    int stored_ = 0;
    QByteArray last_;
};

} // namespace

MixedResult RunMixedLoad(const QString &database, int clients, std::chrono::seconds time)
{
    const ServerRun server(database);
    std::vector<std::unique_ptr<Client>> all;
    for (int number = 0; number < clients; ++number)
        all.push_back(std::make_unique<Client>(server.Port(), number));

    MixedResult result;
    std::jthread watch([&](const std::stop_token &stop) {
        std::mutex lock;
        std::condition_variable_any wake;
        std::unique_lock locked(lock);
        const auto begin = Clock::now();
        while (!wake.wait_for(locked, stop, SampleTime, [] { return false; }) &&
               !stop.stop_requested())
            result.memory.push_back(LookAt(
                server.ProcessId(),
                std::chrono::duration<double, std::ratio<60>>(Clock::now() - begin).count()));
    });
    result.rate =
        Rate(clients, time, [&](int client) { all[static_cast<std::size_t>(client)]->AskNext(); });
    watch.request_stop();
    watch.join();
    return result;
}

} // namespace Qel::Bench
