#include "faults/Bed.h"
#include "faults/Posts.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ThreadCount = 32;

} // namespace

/// Many threads send one and the same post under one key: it takes effect once, and everybody gets
/// the same answer.
Outcome RepeatPost(const Task &task)
{
    Findings findings;
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, 1);
    site.StartServer();
    const Domain domain(0);
    const auto connection = site.Connect();
    qint64 lastEntry = 0;
    const QString name = u"只建一次"_s;
    const QByteArray bytes =
        ToBytes({.path = "/NorvaneServlet",
                 .body = Wire::Encode(NewStore(domain, name), Wire::Format::Cbor),
                 .format = Wire::Format::Cbor,
                 .credential = domain.credential,
                 .key = "faults-" + QByteArray::number(task.seed)});

    std::mutex lock;
    std::set<QByteArray> answers;
    Times waits;
    std::atomic<int> left = task.count;
    std::vector<std::thread> threads;
    for (int at = 0; at < ThreadCount; ++at)
        threads.emplace_back([&] {
            Line line(site.Port());
            Times own;
            while (left-- > 0) {
                const Stopwatch watch;
                const HttpReply reply = line.Ask(bytes);
                own.Add(watch.Elapsed());
                const std::lock_guard guard(lock);
                if (reply.status == 200)
                    answers.insert(reply.body);
                else
                    findings.Add(
                        u"HTTP %1: %2"_s.arg(reply.status).arg(QString::fromUtf8(reply.body)));
            }
            const std::lock_guard guard(lock);
            waits.Add(own);
        });
    for (std::thread &thread : threads)
        thread.join();

    const QHash<QString, QString> stores = ReadStores(*connection, domain);
    const QStringList entries = ReadEntries(*connection, domain, lastEntry);
    if (answers.size() != 1)
        findings.Add(u"%1 different answers"_s.arg(answers.size()));
    else if (Wire::DecodePostAnswer(*answers.begin(), Wire::Format::Cbor).rows.value(0).values !=
             Wire::NamedValues{{u"CATALOG_ID"_s, stores[name]}})
        findings.Add(u"the answer names another record than the one that is there"_s);
    if (stores.size() != 1)
        findings.Add(u"%1 records made"_s.arg(stores.size()));
    if (entries.size() != 1)
        findings.Add(u"%1 entries in the log"_s.arg(entries.size()));
    return findings.Result(u"%1 posts from %2 threads"_s.arg(Counted(task.count)).arg(ThreadCount),
                           u"an answer: "_s + waits.Text());
}

} // namespace Qel::Faults
