#include "remote/SoapCtrl.h"

#include "dataset/ClientDataSet.h"
#include "support/Raised.h"
#include "support/ScriptedServer.h"
#include "support/Service.h"

#include <QTest>
#include <QUuid>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = ERemoteError::Kind;

class PostDataListTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        server_ = std::make_unique<ScriptedServer>();
        soap_ = std::make_unique<TSoapCtrl>();
        UseServer(*soap_, server_->Url());
    }
    void cleanup()
    {
        soap_.reset();
        server_.reset();
    }

    void SendsEveryRowWithItsValuesInOrder()
    {
        server_->OnPost(u"com.business.admin.UniUnion"_s, u"insert_update_UniUnion"_s)
            .Codes({u"1"_s, u"1"_s});
        TSoapParamsList &request = soap_->RequestParams;
        request.NewParams();
        request.AddParam(u"UNION_ID"_s, u"7"_s);
        request.AddParam(u"UNION_NAME"_s, u"华东集团"_s);
        request.PostParams();
        request.NewParams();
        request.AddParam(u"UNION_ID"_s, QString());
        request.PostParams();
        soap_->PostDataList(u"com.business.admin.UniUnion"_s, u"insert_update_UniUnion"_s, request,
                            soap_->ResultParams);

        const auto post = server_->LastPost();
        QCOMPARE(post.manager, u"com.business.admin.UniUnion"_s);
        QCOMPARE(post.method, u"insert_update_UniUnion"_s);
        QCOMPARE(post.rows, (QList<Wire::NamedValues>{
                                {{u"UNION_ID"_s, u"7"_s}, {u"UNION_NAME"_s, u"华东集团"_s}},
                                {{u"UNION_ID"_s, QString()}}}));
        QCOMPARE(soap_->ResultParams.Count(), 2);
    }

    void GivesBackCodesAndKeysOfTheServer()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s, {{u"UNION_ID"_s, u"42"_s}});
        Post(u"a"_s);
        QCOMPARE(soap_->ResultParams.GetResultCode(0), u"1"_s);
        QCOMPARE(soap_->ResultParams.GetParamValue(0, u"UNION_ID"), u"42"_s);
    }

    void RefusalIsACodeAndNoError()
    {
        server_->OnPost(u"m"_s).Code(u"-1"_s);
        QVERIFY(!RaisedByPost(u"a"_s));
        QCOMPARE(soap_->ResultParams.GetResultCode(0), u"-1"_s);
    }

    void ListsKeepTheirContentBetweenPosts()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s, {{u"ID"_s, u"42"_s}});
        Post(u"a"_s);
        QCOMPARE(soap_->RequestParams.Count(), 1);
        QCOMPARE(soap_->RequestParams.GetParamValue(0, u"NAME"), u"a"_s);
        QCOMPARE(soap_->ResultParams.GetParamValue(0, u"ID"), u"42"_s);
    }

    void FailureLeavesTheResultListAsItWas()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s, {{u"ID"_s, u"42"_s}}).Times(1);
        server_->OnPost(u"m"_s).Status(500);
        Post(u"a"_s);
        QVERIFY(RaisedByPost(u"b"_s));
        QCOMPARE(soap_->ResultParams.GetParamValue(0, u"ID"), u"42"_s);
    }

    void RequestListMayBeTheResultList()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s, {{u"ID"_s, u"42"_s}});
        FillRequest(u"a"_s);
        soap_->PostDataList(u"M"_s, u"m"_s, soap_->RequestParams, soap_->RequestParams);
        QCOMPARE(soap_->RequestParams.GetParamValue(0, u"ID"), u"42"_s);
    }

    void AnswerWithoutAResultRowIsMalformed()
    {
        server_->OnPost(u"m"_s).Codes({});
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::MalformedAnswer);
    }

    void ErrorNamesManagerAndMethod()
    {
        server_->OnPost(u"m"_s).Error(400, u"post.bad_row"_s, u"缺少 UNION_ID"_s, u"R9"_s);
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QCOMPARE(error->Message(), u"保存失败：缺少 UNION_ID（参考号 R9）"_s);
        QVERIFY2(error->Details().contains(u"M.m"_s), qUtf8Printable(error->Details()));
    }

    // --- The key -------------------------------------------------------------------------------

    void EveryPostCarriesAKeyOfItsOwn()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s);
        Post(u"a"_s);
        Post(u"a"_s);
        const QString first = server_->Posts().at(0).key;
        QCOMPARE(first.size(), 36);
        QVERIFY(!QUuid::fromString(first).isNull());
        QVERIFY(server_->Posts().at(1).key != first);
    }

    void BrokenConnectionSendsOnceMoreWithTheSameKey()
    {
        server_->OnPost(u"m"_s).BreakConnection().Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        Post(u"a"_s);
        QCOMPARE(soap_->ResultParams.GetResultCode(0), u"1"_s);
        QCOMPARE(server_->Posts().size(), 2);
        QCOMPARE(server_->Posts().at(1).key, server_->Posts().at(0).key);
        QCOMPARE(server_->Posts().at(1).rows, server_->Posts().at(0).rows);
    }

    void HalfAnAnswerSendsOnceMoreWithTheSameKey()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s).HalfAnswer().Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        Post(u"a"_s);
        QCOMPARE(server_->Posts().size(), 2);
        QCOMPARE(server_->Posts().at(1).key, server_->Posts().at(0).key);
    }

    void IsNeverSentMoreThanTwice()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s).Times(1);
        server_->OnPost(u"m"_s).BreakConnection();
        Post(u"a"_s); // the next goes over a kept-alive connection
        const auto error = RaisedByPost(u"b"_s);
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Transport);
        QCOMPARE(server_->Posts().size(), 3);
    }

    void TimedOutPostIsNotRepeatedByItself()
    {
        server_->OnPost(u"m"_s).HoldUntilReleased();
        soap_->SetTimeOut(50ms);
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::TimeOut);
        QCOMPARE(server_->Posts().size(), 1);
    }

    void SameRowsPostedAgainReuseTheKeyOfALostAnswer_data()
    {
        QTest::addColumn<int>("fault");
        QTest::newRow("time-out") << 0;
        QTest::newRow("broken twice") << 1;
        QTest::newRow("malformed") << 2;
        QTest::newRow("gateway status") << 3;
        QTest::newRow("server in trouble") << 4;
        QTest::newRow("still at work on it") << 5;
    }
    void SameRowsPostedAgainReuseTheKeyOfALostAnswer()
    {
        QFETCH(int, fault);
        auto &lost = server_->OnPost(u"m"_s).Times(fault == 1 ? 2 : 1);
        if (fault == 0)
            lost.HoldUntilReleased();
        if (fault == 1)
            lost.BreakConnection();
        if (fault == 2)
            lost.Body("junk");
        if (fault == 3)
            lost.Status(504);
        if (fault == 4)
            lost.Error(503, u"store.busy"_s, u"数据库忙"_s, u"R1"_s);
        if (fault == 5)
            lost.Error(409, u"post.in_progress"_s, u"上一次提交还在处理"_s, u"R1"_s);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        soap_->SetTimeOut(200ms);

        QVERIFY(RaisedByPost(u"a"_s));
        const QString key = server_->LastPost().key;
        QVERIFY(!RaisedByPost(u"a"_s));
        QCOMPARE(server_->LastPost().key, key);
        QVERIFY(!RaisedByPost(u"a"_s)); // answered now: the next is another post
        QVERIFY(server_->LastPost().key != key);
    }

    void OtherRowsAfterALostAnswerGetAnotherKey()
    {
        server_->OnPost(u"m"_s).Body("junk").Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        QVERIFY(RaisedByPost(u"a"_s));
        const QString key = server_->LastPost().key;
        Post(u"b"_s);
        QVERIFY(server_->LastPost().key != key);
    }

    void DefiniteRefusalEndsTheKey()
    {
        server_->OnPost(u"m"_s).Error(400, u"post.bad_row"_s, u"缺少 UNION_ID"_s, u"R9"_s).Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        QVERIFY(RaisedByPost(u"a"_s));
        const QString key = server_->LastPost().key;
        Post(u"a"_s);
        QVERIFY(server_->LastPost().key != key);
    }

    void LostAnswerTellsThatSavingAgainIsSafe()
    {
        server_->OnPost(u"m"_s).BreakConnection();
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QVERIFY2(error->Message().contains(u"不会重复存入"_s), error->what());
    }

    void RefusalBeforeAnythingWasDoneDoesNotSpeakOfSaving_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("code");
        QTest::newRow("too many failed log-ins") << 429 << u"auth.too_many"_s;
        QTest::newRow("no room") << 503 << u"server.busy"_s;
        QTest::newRow("stopping") << 503 << u"server.stopping"_s;
        QTest::newRow("others stored the same") << 503 << u"post.not_done"_s;
        QTest::newRow("no credential") << 401 << u"auth.refused"_s;
        QTest::newRow("not for this operator") << 403 << u"post.scope"_s;
    }
    void RefusalBeforeAnythingWasDoneDoesNotSpeakOfSaving()
    {
        QFETCH(int, status);
        QFETCH(QString, code);
        server_->OnPost(u"m"_s).Error(status, code, u"请稍后再试。"_s, u"R1"_s).Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QCOMPARE(error->Message(), u"保存失败：请稍后再试。（参考号 R1）"_s);
        QVERIFY(!error->MayBeStored());
        const QString key = server_->LastPost().key;
        Post(u"a"_s); // another post: nothing came of the first
        QVERIFY(server_->LastPost().key != key);
    }

    void RefusalBeforeAnythingWasDoneLeavesAnEarlierSendingOpen_data()
    {
        RefusalBeforeAnythingWasDoneDoesNotSpeakOfSaving_data();
    }
    void RefusalBeforeAnythingWasDoneLeavesAnEarlierSendingOpen()
    {
        QFETCH(int, status);
        QFETCH(QString, code);
        server_->OnPost(u"m"_s).BreakConnection().Times(1); // stored or not, nobody knows
        server_->OnPost(u"m"_s).Error(status, code, u"请稍后再试。"_s, u"R1"_s).Times(2);
        server_->OnPost(u"m"_s).Code(u"1"_s);
        for (int time = 0; time < 2; ++time) { // repeated by itself, then by the user
            const auto error = RaisedByPost(u"a"_s);
            QVERIFY(error);
            QCOMPARE(
                error->Message(),
                u"保存失败：请稍后再试。（参考号 R1）服务器可能已经保存；用相同的内容再保存一次，"
                "不会重复存入。"_s);
            QVERIFY(error->MayBeStored());
        }
        Post(u"a"_s);
        QCOMPARE(server_->Posts().size(), 4);
        for (const auto &post : server_->Posts())
            QCOMPARE(post.key, server_->Posts().first().key);
    }

    void ServerThatWentAwayAfterABrokenConnectionMayHaveSaved()
    {
        server_->OnPost(u"m"_s).HoldUntilReleased();
        connect(server_.get(), &ScriptedServer::RequestArrived, server_.get(),
                &ScriptedServer::Stop, Qt::QueuedConnection);
        const auto error = RaisedByPost(u"a"_s);
        QVERIFY(error);
        QVERIFY2(error->Message().startsWith(u"保存失败：服务器拒绝连接"_s), error->what());
        QVERIFY2(error->Message().endsWith(u"不会重复存入。"_s), error->what());
    }

    void QueriesCarryThePositionOfTheLastPost()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        server_->OnPost(u"m"_s).Code(u"1"_s).Position("1/A0").Times(1);
        server_->OnPost(u"m"_s).Code(u"1"_s).Position("1/B8").Times(1);
        QCOMPARE(PositionOfAQuery(), QByteArray()); // nothing was posted yet
        Post(u"a"_s);
        QCOMPARE(PositionOfAQuery(), "1/A0");
        QCOMPARE(PositionOfAQuery(), "1/A0");
        Post(u"b"_s);
        QCOMPARE(PositionOfAQuery(), "1/B8");
        UseServer(*soap_, server_->Url());
        QCOMPARE(PositionOfAQuery(), QByteArray()); // of another server, for all that is known
    }

    void AnswerWithoutAPositionKeepsTheEarlierOne()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        server_->OnPost(u"m"_s).Code(u"1"_s).Position("1/A0").Times(1);
        server_->OnPost(u"m"_s).Code(u"-1"_s).Times(1);
        server_->OnPost(u"m"_s).Error(400, u"post.bad_row"_s, u"缺少 UNION_ID"_s, u"R9"_s);
        Post(u"a"_s);
        Post(u"b"_s);
        QCOMPARE(PositionOfAQuery(), "1/A0");
        QVERIFY(RaisedByPost(u"c"_s));
        QCOMPARE(PositionOfAQuery(), "1/A0");
    }

    void LostAnswerLetsQueriesAskForTheLatestState()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        server_->OnPost(u"m"_s).Code(u"1"_s).Position("1/A0").Times(1);
        server_->OnPost(u"m"_s).BreakConnection().Times(2);
        server_->OnPost(u"m"_s).Code(u"1"_s).Position("1/C0");
        Post(u"a"_s);
        QVERIFY(RaisedByPost(u"b"_s));
        QCOMPARE(PositionOfAQuery(), "latest");
        Post(u"b"_s);
        QCOMPARE(PositionOfAQuery(), "1/C0");
    }

    void PositionThatIsNoHeaderTextIsNotSentBack_data()
    {
        QTest::addColumn<QByteArray>("position");
        QTest::newRow("blank") << QByteArray("1/A0 1/B0");
        QTest::newRow("not ASCII") << QByteArray("1/\xc3\xa4");
        QTest::newRow("too long") << QByteArray(65, '1');
    }
    void PositionThatIsNoHeaderTextIsNotSentBack()
    {
        QFETCH(const QByteArray, position);
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        server_->OnPost(u"m"_s).Code(u"1"_s).Position(position);
        Post(u"a"_s);
        QCOMPARE(PositionOfAQuery(), QByteArray());
    }

    void QueryCarriesNoKey()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        ClientDataSet table;
        soap_->SQLQuery(u"select A from T"_s, 0, 0, table, TQueryType::List);
        QVERIFY(!server_->Headers().first().contains("idempotency-key"));
    }

private:
    void FillRequest(const QString &name)
    {
        soap_->RequestParams.Clear();
        soap_->RequestParams.NewParams();
        soap_->RequestParams.AddParam(u"NAME"_s, name);
        soap_->RequestParams.PostParams();
    }
    void Post(const QString &name)
    {
        FillRequest(name);
        soap_->PostDataList(u"M"_s, u"m"_s, soap_->RequestParams, soap_->ResultParams);
    }
    /// The header that a query is sent with.
    QByteArray PositionOfAQuery()
    {
        ClientDataSet table;
        soap_->SQLQuery(u"select A from T"_s, 0, 0, table, TQueryType::List);
        return server_->Headers().last().value("qel-position");
    }
    std::optional<ERemoteError> RaisedByPost(const QString &name)
    {
        return Raised<ERemoteError>([&] { Post(name); });
    }

    std::unique_ptr<ScriptedServer> server_;
    std::unique_ptr<TSoapCtrl> soap_;
};

QTEST_MAIN(PostDataListTest)
#include "PostDataListTest.moc"
