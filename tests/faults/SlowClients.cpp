#include "faults/Bed.h"
#include "faults/Posts.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include <QDir>
#include <QFile>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr double GoodTime = 200;  ///< milliseconds that 99 of 100 good requests stay under
constexpr auto CloseTime = 10s;   ///< after which the server has closed the slow ones
constexpr auto CloseMargin = 1s;  ///< for its clock and ours
constexpr auto OpenTime = 3s;     ///< in which they all come
constexpr auto DripPause = 250ms; ///< between two bytes of a slow body or header
constexpr auto GoodPause = 10ms;  ///< between two good requests

/// How a client is slow.
enum class Kind { Silent, HalfHeader, DrippingHeader, DrippingBody, NotReading };
constexpr int Kinds = 5;

/// A connection that is slow in one of these ways.
class SlowClient
{
public:
    SlowClient(Kind kind, quint16 port, const QByteArray &request)
        : kind_(kind)
        , request_(request)
        , socket_(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        // As if it were far away: what it does not read stays with the server and not in sockets.
        const int buffer = 4'096;
        const int segment = 536;
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
        ::setsockopt(socket_, IPPROTO_TCP, TCP_MAXSEG, &segment, sizeof segment);
        ::connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address);
    }
    ~SlowClient() { ::close(socket_); }
    Q_DISABLE_COPY_MOVE(SlowClient)

    /// Sends what there is to send at once. True: the connection stands.
    bool Begin()
    {
        const qsizetype head = request_.indexOf("\r\n\r\n") + 4;
        switch (kind_) {
        case Kind::Silent:
            break;
        case Kind::HalfHeader:
            sent_ = head / 2;
            break;
        case Kind::DrippingHeader:
            sent_ = 1;
            break;
        case Kind::DrippingBody:
            sent_ = head;
            break;
        case Kind::NotReading:
            sent_ = request_.size();
            break;
        }
        return ::send(socket_, request_.constData(), size_t(sent_), MSG_NOSIGNAL) == sent_;
    }

    void Drip()
    {
        if ((kind_ == Kind::DrippingHeader || kind_ == Kind::DrippingBody) &&
            sent_ < request_.size() &&
            ::send(socket_, request_.constData() + sent_, 1, MSG_NOSIGNAL) == 1)
            ++sent_;
    }

private:
    Kind kind_;
    QByteArray request_;
    int socket_;
    qsizetype sent_ = 0;
};

/// Sockets that the process has open.
int SocketsOf(qint64 process)
{
    const QDir folder(u"/proc/%1/fd"_s.arg(process));
    const QStringList names = folder.entryList(QDir::Files | QDir::System);
    return int(std::count_if(names.begin(), names.end(), [&](const QString &name) {
        return QFile::symLinkTarget(folder.filePath(name)).contains(u"socket:"_s);
    }));
}

void AllowManyFiles()
{
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 20'000);
    ::setrlimit(RLIMIT_NOFILE, &limit); // the server inherits it
}

/// Something to read that is longer than what the sockets between the two hold.
void AddLongText(Store::Connection &connection)
{
    connection.Run("INSERT INTO SYS_AFFICHE (ID, AFFICHE_CONTENT) VALUES ('900', ?1)",
                   {u"公告"_s.repeated(30'000)});
}

QByteArray LongQuery()
{
    const Wire::QueryRequest request{
        u"SELECT ID, AFFICHE_CONTENT FROM SYS_AFFICHE WHERE ID='900'"_s, 0, 0, 1};
    return ToBytes({.path = "/NorvaneSelectServlet",
                    .body = Wire::Encode(request, Wire::Format::Cbor),
                    .format = Wire::Format::Cbor,
                    .credential = Domain(0).credential});
}

/// Asks now and then, each time over a connection of its own, until told to stop.
void AskGoodQueries(const Site &site, const std::atomic<bool> &stop, Times &times,
                    Findings &findings)
{
    while (!stop) {
        const Stopwatch watch;
        if (!site.Answers())
            findings.Add(u"a good request was not answered"_s);
        times.Add(watch.Elapsed());
        std::this_thread::sleep_for(GoodPause);
    }
}

} // namespace

/// Many clients connect and then hold the server up, each in one of several ways. Good requests are
/// answered meanwhile as ever, and the slow are closed in time.
Outcome SlowClients(const Task &task)
{
    Findings findings;
    AllowManyFiles();
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, 1);
    AddLongText(*site.Connect());
    site.StartServer();
    const QByteArray request = LongQuery();
    const int atRest = SocketsOf(site.Server().Process().processId());

    std::atomic<bool> stop = false;
    Times good;
    std::thread asking([&] { AskGoodQueries(site, stop, good, findings); });
    std::vector<std::unique_ptr<SlowClient>> slow;
    int begun = 0;
    for (int number = 0; number < task.count; ++number) {
        slow.push_back(
            std::make_unique<SlowClient>(static_cast<Kind>(number % Kinds), site.Port(), request));
        std::this_thread::sleep_for(OpenTime / task.count);
        begun += slow.back()->Begin();
    }
    if (begun < task.count)
        findings.Add(u"%1 of the clients could not begin"_s.arg(task.count - begun));

    // One socket more may be a good request's.
    const Stopwatch watch;
    int held = 0;
    do {
        for (const auto &client : slow)
            client->Drip();
        std::this_thread::sleep_for(DripPause);
        held = SocketsOf(site.Server().Process().processId()) - atRest - 1;
    } while (held > 0 && watch.Elapsed() < 2 * (CloseTime + CloseMargin));
    const double closed = std::chrono::duration<double>(watch.Elapsed()).count();
    stop = true;
    asking.join();

    if (held > 0 || watch.Elapsed() > task.patience * (CloseTime + CloseMargin))
        findings.Add(u"%1 connections are held after %2 s"_s.arg(held).arg(closed));
    if (good.Quantile(0.99) > GoodTime * task.patience)
        findings.Add(u"good requests took %1"_s.arg(good.Text()));
    return findings.Result(
        u"%1 clients, %2 good requests"_s.arg(Counted(task.count), Counted(good.Count())),
        u"a good request: %1; the last slow one closed after %2 s"_s.arg(good.Text())
            .arg(closed, 0, 'f', 1));
}

} // namespace Qel::Faults
