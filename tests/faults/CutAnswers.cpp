#include "faults/Bed.h"
#include "faults/CuttingProxy.h"
#include "faults/Posts.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"
#include "faults/StreamCutter.h"

#include "dataset/ClientDataSet.h"
#include "host/Session.h"
#include "remote/SoapCtrl.h"
#include "support/TestAuthority.h"

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
    /// `scheme`: "http" or "https".
    CutClient(Site &site, Cutter &cutter, const QString &scheme, const Task &task,
              Findings &findings)
        : cutter_(cutter)
        , scheme_(scheme)
        , random_(task.seed)
        , most_(task.count)
        , findings_(findings)
        , connection_(site.Connect())
    {
    }

    qint64 Cuts() const { return cuts_; }

    /// `encoding`: of the answers, for the findings.
    void CutQueriesAndPosts(const QString &encoding)
    {
        encoding_ = encoding;
        CutQueries();
        CutPosts();
    }

    void CutSessions()
    {
        encoding_ = u"session"_s;
        Host::Session whole;
        Host::Session session;
        const auto fetch = [&] { session = Host::FetchSession(QUrl(Address())); };
        cutter_.Cut({});
        fetch();
        whole = session;
        for (const qsizetype length : Lengths(cutter_.LastAnswerSize())) {
            // More than once, in case the network repeats it by itself.
            cutter_.Cut(QList<qsizetype>(5, length), Reset());
            if (!FailureOf(fetch) && cutter_.Cuts() > 0)
                Tell(length, session == whole ? u"a session all the same"_s : u"half a session"_s);
        }
    }

private:
    QString Address() const
    {
        return u"%1://%2@127.0.0.1:%3"_s.arg(scheme_, QString::fromLatin1(own_.credential))
            .arg(cutter_.Port());
    }

    /// A client without a connection.
    void Connect()
    {
        const QString post = u"NorvaneServlet"_s;
        soap_.emplace();
        soap_->SetServletURL(Address(), u"NorvaneSelectServlet"_s, post, post);
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
            soap_->SQLQuery(u"SELECT PRODUCT_ID, PRODUCT_NAME, TRADE_NAME FROM BAS_PRODUCT"
                            " WHERE PRODUCT_ID LIKE '9000%' ORDER BY PRODUCT_ID"_s,
                            1, 8, table_, TQueryType::List);
        };
        Connect();
        cutter_.Cut({});
        query();
        const int rows = table_.RecordCount();
        const QString first = table_.FieldText(u"PRODUCT_ID");
        for (const qsizetype length : Lengths(cutter_.LastAnswerSize())) {
            Connect();
            cutter_.Cut({length, length}, Reset());
            const auto failure = FailureOf(query);
            if (failure.has_value() != (cutter_.Cuts() == 2))
                Tell(length, failure.value_or(u"the query succeeded"_s));
            CheckRequests(length, 2);
            if (table_.RecordCount() != rows || table_.FieldText(u"PRODUCT_ID") != first)
                Tell(length, u"the table has changed"_s);
        }
        cutter_.Cut({});
        if (const auto failure = FailureOf(query))
            findings_.Add(u"afterwards: "_s + *failure);
    }

    /// Posts what a second time would be refused: a drug store of this name. Nothing: stored.
    std::optional<QString> Post(int number)
    {
        name_ = u"断%1"_s.arg(number);
        const Wire::PostRequest post = NewStore(own_, name_);
        soap_->RequestParams.Clear();
        soap_->RequestParams.NewParams();
        for (const auto &[name, value] : post.rows.first())
            soap_->RequestParams.AddParam(name, value);
        soap_->RequestParams.PostParams();
        return FailureOf([&] {
            soap_->PostDataList(post.manager, post.method, soap_->RequestParams,
                                soap_->ResultParams);
        });
    }

    /// Once with one cut answer, once with two and the user pressing the button again.
    void CutPosts()
    {
        Connect();
        cutter_.Cut({});
        if (const auto failure = Post(++number_))
            findings_.Add(*failure);
        CheckEffect(0);
        for (const qsizetype length : Lengths(cutter_.LastAnswerSize())) {
            Connect();
            cutter_.Cut({length}, Reset());
            if (const auto failure = Post(++number_))
                Tell(length, *failure);
            CheckRequests(length, 2);
            CheckEffect(length);

            Connect();
            cutter_.Cut({length, length}, Reset());
            const auto failure = Post(++number_);
            if (failure.has_value() != (cutter_.Cuts() == 2))
                Tell(length, failure.value_or(u"the post succeeded without an answer"_s));
            if (failure) {
                if (const auto again = Post(number_))
                    Tell(length, u"again: "_s + *again);
                CheckRequests(length, 3);
            }
            CheckEffect(length);
        }
    }

    /// One for each cut and one for the answer, as the client repeats once and no more. Over TLS
    /// connections are counted, of which Qt makes one or two more by itself when one ends while it
    /// shakes hands; a post has one effect all the same.
    void CheckRequests(qsizetype length, int most)
    {
        const int expected = std::min(cutter_.Cuts() + 1, most);
        const int ofQt = scheme_ == u"https"_s ? 2 : 0;
        if (cutter_.Requests() < expected || cutter_.Requests() > expected + ofQt)
            Tell(length, u"asked %1 times"_s.arg(cutter_.Requests()));
    }

    /// The last post is stored, and once.
    void CheckEffect(qsizetype length)
    {
        if (soap_->ResultParams.GetResultCode(0) != u"1")
            Tell(length, u"result code "_s + soap_->ResultParams.GetResultCode(0));
        const QString id = ReadStores(*connection_, own_).value(name_);
        if (id.isEmpty() || id != soap_->ResultParams.GetParamValue(0, u"CATALOG_ID"_s))
            Tell(length, u"the row has the id %1"_s.arg(id));
        const QStringList entries = ReadEntries(*connection_, own_, lastEntry_);
        if (entries.size() != 1)
            Tell(length, u"%1 entries in the log"_s.arg(entries.size()));
    }

    Cutter &cutter_;
    QString scheme_;
    Random random_;
    int most_;
    Findings &findings_;
    std::unique_ptr<Store::Connection> connection_;
    const Domain own_{0};
    std::optional<TSoapCtrl> soap_;
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
    CuttingProxy proxy(site.Port());
    CutClient client(site, proxy, u"http"_s, task, findings);
    for (const char *mediaType : {Wire::CborType, Wire::JsonType}) {
        proxy.SetAccept(mediaType);
        client.CutQueriesAndPosts(QString::fromLatin1(mediaType));
    }
    proxy.SetAccept({});
    client.CutSessions();
    return findings.Result(u"%1 places to cut"_s.arg(Counted(client.Cuts())), {});
}

/// The same with TLS, from the first byte of the server's handshake on. That a stream ends without
/// the alert that closes it is no end of an answer.
Outcome CutTls(const Task &task)
{
    Findings findings;
    TestAuthority authority;
    authority.Issue(u"server"_s, u"IP:127.0.0.1"_s);
    authority.Trust();
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, 1);
    site.LaunchServer(authority.Options(u"server"_s));
    StreamCutter cutter(site.Port());
    CutClient client(site, cutter, u"https"_s, task, findings);
    client.CutQueriesAndPosts(u"TLS"_s);
    client.CutSessions();
    return findings.Result(u"%1 places to cut"_s.arg(Counted(client.Cuts())), {});
}

} // namespace Qel::Faults
