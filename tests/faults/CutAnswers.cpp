#include "faults/Bed.h"
#include "faults/CuttingProxy.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include "dataset/ClientDataSet.h"
#include "host/Session.h"
#include "remote/SoapCtrl.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ResetShare = 4; ///< one connection in so many ends by a reset

/// What the real client makes of cut answers.
class CutClient
{
public:
    CutClient(Site &site, const Task &task, Findings &findings)
        : proxy_(site.Port())
        , random_(task.seed)
        , most_(task.count)
        , findings_(findings)
        , connection_(site.Connect())
    {
        const QString post = u"NorvaneServlet"_s;
        soap_.SetServletURL(Address(), u"NorvaneSelectServlet"_s, post, post);
    }

    qint64 Cuts() const { return cuts_; }

    void Run()
    {
        for (const QByteArray &mediaType :
             {QByteArray(Wire::CborType), QByteArray(Wire::JsonType)}) {
            proxy_.SetAccept(mediaType);
            encoding_ = QString::fromLatin1(mediaType);
            CutQueries();
            CutPosts();
        }
        CutSessions();
    }

private:
    QString Address() const
    {
        return u"http://%1@127.0.0.1:%2"_s.arg(QString::fromLatin1(own_.credential))
            .arg(proxy_.Port());
    }

    void Tell(qsizetype length, const QString &what)
    {
        findings_.Add(u"%1, cut after %2 bytes: %3"_s.arg(encoding_).arg(length).arg(what));
    }

    /// Every length at which an answer of `size` bytes can be cut, or as many of them as are
    /// wanted, evenly spread.
    QList<qsizetype> Lengths(qsizetype size)
    {
        const qsizetype step = std::max<qsizetype>(1, (size + most_ - 1) / most_);
        QList<qsizetype> lengths;
        for (qsizetype at = Between(random_, 0, int(step) - 1); at < size; at += step)
            lengths.append(at);
        cuts_ += lengths.size();
        return lengths;
    }

    bool Reset() { return Between(random_, 1, ResetShare) == 1; }

    /// Nothing if the call succeeded.
    template <typename Call>
    std::optional<QString> FailureOf(Call call)
    {
        try {
            call();
            return std::nullopt;
        } catch (const EQelError &error) {
            return error.Message();
        }
    }

    void CutQueries()
    {
        const auto query = [this] {
            soap_.SQLQuery(u"SELECT PRODUCT_ID, PRODUCT_NAME, TRADE_NAME FROM BAS_PRODUCT"
                           " WHERE PRODUCT_ID LIKE '9000%' ORDER BY PRODUCT_ID"_s,
                           1, 8, table_, TQueryType::List);
        };
        proxy_.Cut({});
        query();
        const int rows = table_.RecordCount();
        const QString first = table_.FieldText(u"PRODUCT_ID");
        for (const qsizetype length : Lengths(proxy_.LastAnswerSize())) {
            proxy_.Cut({length, length}, Reset());
            if (!FailureOf(query))
                Tell(length, u"the query succeeded"_s);
            if (proxy_.Requests() != 2)
                Tell(length, u"asked %1 times"_s.arg(proxy_.Requests()));
            if (table_.RecordCount() != rows || table_.FieldText(u"PRODUCT_ID") != first)
                Tell(length, u"the table has changed"_s);
        }
        proxy_.Cut({});
        if (const auto failure = FailureOf(query))
            findings_.Add(u"afterwards: "_s + *failure);
    }

    /// Posts what a second time would be refused: a drug store of this name. Nothing: stored.
    std::optional<QString> Post(int number)
    {
        name_ = u"断%1"_s.arg(number);
        const Wire::PostRequest post = NewStore(own_, name_);
        soap_.RequestParams.Clear();
        soap_.RequestParams.NewParams();
        for (const auto &[name, value] : post.rows.first())
            soap_.RequestParams.AddParam(name, value);
        soap_.RequestParams.PostParams();
        return FailureOf([&] {
            soap_.PostDataList(post.manager, post.method, soap_.RequestParams, soap_.ResultParams);
        });
    }

    /// Once with one cut answer, once with two and the user pressing the button again.
    void CutPosts()
    {
        proxy_.Cut({});
        if (const auto failure = Post(++number_))
            findings_.Add(*failure);
        CheckEffect(0);
        for (const qsizetype length : Lengths(proxy_.LastAnswerSize())) {
            proxy_.Cut({length}, Reset());
            if (const auto failure = Post(++number_))
                Tell(length, *failure);
            if (proxy_.Requests() != 2)
                Tell(length, u"posted %1 times"_s.arg(proxy_.Requests()));
            CheckEffect(length);

            proxy_.Cut({length, length}, Reset());
            if (!Post(++number_))
                Tell(length, u"the post succeeded without an answer"_s);
            if (const auto failure = Post(number_))
                Tell(length, u"again: "_s + *failure);
            if (proxy_.Requests() != 3)
                Tell(length, u"posted %1 times"_s.arg(proxy_.Requests()));
            CheckEffect(length);
        }
    }

    /// The last post is stored, and once.
    void CheckEffect(qsizetype length)
    {
        if (soap_.ResultParams.GetResultCode(0) != u"1")
            Tell(length, u"result code "_s + soap_.ResultParams.GetResultCode(0));
        const QString id = ReadStores(*connection_, own_).value(name_);
        if (id.isEmpty() || id != soap_.ResultParams.GetParamValue(0, u"CATALOG_ID"_s))
            Tell(length, u"the row has the id %1"_s.arg(id));
        const QStringList entries = ReadEntries(*connection_, own_, lastEntry_);
        if (entries.size() != 1)
            Tell(length, u"%1 entries in the log"_s.arg(entries.size()));
    }

    void CutSessions()
    {
        proxy_.SetAccept({});
        encoding_ = u"session"_s;
        Host::Session whole;
        Host::Session session;
        const auto fetch = [&] { session = Host::FetchSession(QUrl(Address())); };
        proxy_.Cut({});
        fetch();
        whole = session;
        for (const qsizetype length : Lengths(proxy_.LastAnswerSize())) {
            // More than once, in case the network repeats it by itself.
            proxy_.Cut(QList<qsizetype>(5, length), Reset());
            if (!FailureOf(fetch))
                Tell(length, session == whole ? u"a session all the same"_s : u"half a session"_s);
        }
    }

    CuttingProxy proxy_;
    Random random_;
    int most_;
    Findings &findings_;
    std::unique_ptr<Store::Connection> connection_;
    const Domain own_{0};
    TSoapCtrl soap_;
    ClientDataSet table_;
    QString encoding_;
    qint64 cuts_ = 0;
    qint64 lastEntry_ = 0;
    int number_ = 0;
    QString name_;
};

} // namespace

/// A proxy cuts the answers to queries, posts and the question for the session. The client never
/// shows a part of a table, always an error; a post takes effect once.
Outcome CutAnswers(const Task &task)
{
    Findings findings;
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, 1);
    site.StartServer();
    CutClient client(site, task, findings);
    client.Run();
    return findings.Result(u"%1 places to cut"_s.arg(Counted(client.Cuts())), {});
}

} // namespace Qel::Faults
