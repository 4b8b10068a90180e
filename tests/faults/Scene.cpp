#include "faults/Scene.h"

#include "faults/Bed.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int LongestRun = 250'000; ///< microseconds

}

Load::Load(const Clients &clients, quint16 port)
{
    for (const auto &client : clients)
        threads_.emplace_back([this, port, &client] { client->Work(port, stop_); });
}

void Load::Stop()
{
    stop_ = true;
    for (std::thread &thread : threads_)
        if (thread.joinable())
            thread.join();
}

Scene::Scene(const Task &task, const QString &url, const QString &folder, bool withSampleData,
             int clientCount, Errors errors)
    : random(task.seed)
    , site(url, folder, withSampleData, clientCount)
{
    for (int number = 0; number < clientCount; ++number) {
        clients.push_back(std::make_unique<Client>(number, task.seed, findings));
        clients.back()->SetErrors(errors);
    }
}

Scene::Scene(const Task &task, const QString &url, int clientCount, Errors errors)
    : Scene(task, url, task.bed.NewFolder(), false, clientCount, errors)
{
}

Scene::Scene(const Task &task, int clientCount, Errors errors)
    : Scene(task, task.bed.NewDatabase(task.bed.NewFolder()), task.bed.NewFolder(),
            task.withSampleData, clientCount, errors)
{
}

void Scene::LetRun()
{
    std::this_thread::sleep_for(std::chrono::microseconds(Between(random, 0, LongestRun)));
}

std::chrono::nanoseconds Scene::TimeToNextPost() const
{
    const Stopwatch watch;
    const qint64 before = Sum(&Client::Acknowledged);
    while (Sum(&Client::Acknowledged) == before && watch.Elapsed() < 1min)
        std::this_thread::sleep_for(1ms);
    return watch.Elapsed();
}

void Scene::AskMeanwhile(std::chrono::nanoseconds time, Answer expected)
{
    for (const Stopwatch held; held.Elapsed() < time;) {
        const Stopwatch watch;
        const bool isAnswered = expected == Answer::Good
                                    ? site.Answers()
                                    : Line(site.Port()).Ask(GoodQuery()).status != 0;
        if (!isAnswered)
            findings.Add(u"a query meanwhile was not answered"_s);
        queries.Add(watch.Elapsed());
        std::this_thread::sleep_for(20ms); // pace, not a wait
    }
}

void Scene::Check()
{
    const auto connection = site.Connect();
    for (const auto &client : clients)
        client->Check(*connection);
}

qint64 Scene::Refused() const
{
    return Sum(&Client::Refused);
}

qint64 Scene::Lost() const
{
    return Sum(&Client::Lost);
}

Outcome Scene::Result(const QString &count, const QString &worst) const
{
    QString text = u"%1; %2 posts acknowledged, %3 repeated"_s.arg(
        count, Counted(Sum(&Client::Acknowledged)), Counted(Sum(&Client::Repeated)));
    if (const qint64 refused = Refused(); refused > 0)
        text += u", %1 answered with an error"_s.arg(Counted(refused));
    return findings.Result(text, worst);
}

qint64 Scene::Sum(qint64 (Client::*number)() const) const
{
    qint64 sum = 0;
    for (const auto &client : clients)
        sum += (client.get()->*number)();
    return sum;
}

} // namespace Qel::Faults
