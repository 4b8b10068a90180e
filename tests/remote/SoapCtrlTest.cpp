#include "remote/SoapCtrl.h"

#include "dataset/ClientDataSet.h"
#include "support/Raised.h"
#include "support/ScriptedServer.h"
#include "support/Service.h"

#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = ERemoteError::Kind;

class SoapCtrlTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        server_ = std::make_unique<ScriptedServer>();
        soap_ = std::make_unique<TSoapCtrl>();
        UseAddress(server_->Url());
        table_.Open(Rows({u"OLD"_s}, {{u"before"_s}}));
    }
    void cleanup()
    {
        soap_.reset();
        server_.reset();
    }

    void UnpagedQueryWithPageAndSizeZeroReturnsEveryRow()
    {
        QList<QStringList> rows;
        for (int i = 0; i < 1200; ++i)
            rows.append({QString::number(i)});
        server_->OnQueryExact(u"select * from BAS_ORG"_s).Answer(Rows({u"ORG_ID"_s}, rows));

        soap_->SQLQuery(u"select * from BAS_ORG"_s, 0, 0, table_, TQueryType::Detail);

        QCOMPARE(table_.RecordCount(), 1200);
        QCOMPARE(server_->LastQuery().page, 0);
        QCOMPARE(server_->LastQuery().pageSize, 0);
        QCOMPARE(server_->LastQuery().queryType, 1);
    }

    void PagedQueryReturnsTheTotalOverAllPages()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"1"_s}, {u"2"_s}}), 377);

        QCOMPARE(soap_->SQLQuery(u"select A from T"_s, 3, 50, table_, TQueryType::List), 377);

        QCOMPARE(table_.RecordCount(), 2);
        QCOMPARE(server_->LastQuery().page, 3);
        QCOMPARE(server_->LastQuery().pageSize, 50);
        QCOMPARE(server_->LastQuery().queryType, 2);
    }

    void QueryReplacesRowsAndFieldDefinitions()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s, u"B"_s}, {{u"x"_s, Null()}}));

        soap_->SQLQuery(u"select A, B from T"_s, 0, 0, table_, TQueryType::List);

        QVERIFY(!table_.HasField(u"OLD"));
        QCOMPARE(table_.FieldText(u"A"), u"x"_s);
        QVERIFY(table_.FieldIsNull(u"B"));
    }

    void QueryThatSelectsNothingReturnsZero()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        QCOMPARE(soap_->SQLQuery(u"select A from T"_s, 1, 50, table_, TQueryType::List), 0);
        QVERIFY(table_.IsActive());
        QVERIFY(table_.IsEmpty());
    }

    void SendsTheStatementByteForByte()
    {
        const QString sql = u"select '百分%\\' as X  from T where A like '%''_%'or B='\t'"_s;
        server_->OnAnyQuery().Answer(Rows({u"X"_s}, {}));
        soap_->SQLQuery(sql, 0, 0, table_, TQueryType::List);
        QCOMPARE(server_->LastQuery().sql, sql);
    }

    void KeepsOneConnectionForManyCalls()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        for (int i = 0; i < 5; ++i)
            soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List);
        QCOMPARE(server_->Connections(), 1);
    }

    // --- Address and credentials ---------------------------------------------------------------

    void RefusesEveryQueryBeforeAnAddressIsSet()
    {
        TSoapCtrl fresh;
        const auto error = Raised<ERemoteError>(
            [&] { fresh.SQLQuery(u"select 1"_s, 0, 0, table_, TQueryType::List); });
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::NoAddress);
    }

    void RefusesAnAddressThatIsNone_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("empty") << QString();
        QTest::newRow("no scheme") << u"127.0.0.1:8080"_s;
        QTest::newRow("other scheme") << u"ftp://127.0.0.1"_s;
        QTest::newRow("no host") << u"http://"_s;
        QTest::newRow("words") << u"admin:geheim ist kein Server"_s;
    }
    void RefusesAnAddressThatIsNone()
    {
        QFETCH(QString, address);
        UseAddress(address);
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::NoAddress);
        QVERIFY(!error->Message().contains(u"geheim"_s));
    }

    void FindsServletsUnderTheAddress_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QByteArray>("post");
        QTest::newRow("bare") << QString() << QByteArray("/NorvaneSelectServlet")
                              << QByteArray("/NorvaneServlet");
        QTest::newRow("slash") << u"/"_s << QByteArray("/NorvaneSelectServlet")
                               << QByteArray("/NorvaneServlet");
        QTest::newRow("path") << u"/app"_s << QByteArray("/app/NorvaneSelectServlet")
                              << QByteArray("/app/NorvaneServlet");
        QTest::newRow("path and slash") << u"/a/b/"_s << QByteArray("/a/b/NorvaneSelectServlet")
                                        << QByteArray("/a/b/NorvaneServlet");
    }
    void FindsServletsUnderTheAddress()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, query);
        QFETCH(QByteArray, post);
        UseAddress(server_->Url() + path);
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        server_->OnPost(u"m"_s).Code(u"1"_s);
        soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List);
        soap_->PostDataList(u"M"_s, u"m"_s, soap_->RequestParams, soap_->ResultParams);
        QCOMPARE(server_->Targets(), (QList<QByteArray>{query, post}));
    }

    void SendsCredentialsAsAHeaderAndNowhereElse()
    {
        UseAddress(server_->Url(u"boss%40site:ge%3Aheim"_s));
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List);
        QCOMPARE(server_->Headers().first().value("authorization"),
                 "Basic " + QByteArray("boss@site:ge:heim").toBase64());
        QVERIFY(!server_->Targets().first().contains("boss"));
    }

    void ForgetsCredentialsOfAnEarlierAddress()
    {
        UseAddress(server_->Url(u"a:b"_s));
        UseAddress(server_->Url());
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List);
        QVERIFY(!server_->Headers().first().contains("authorization"));
    }

    void CredentialsAreInNoError_data()
    {
        QTest::addColumn<int>("fault");
        QTest::newRow("unreachable") << 0;
        QTest::newRow("broken") << 1;
        QTest::newRow("unauthorized") << 2;
        QTest::newRow("message") << 3;
        QTest::newRow("malformed") << 4;
    }
    void CredentialsAreInNoError()
    {
        QFETCH(int, fault);
        UseAddress(server_->Url(u"boss:geheim"_s));
        if (fault == 0)
            server_->Stop();
        if (fault == 1)
            server_->OnAnyQuery().BreakConnection();
        if (fault == 2)
            server_->OnAnyQuery().Status(401);
        if (fault == 3)
            server_->OnAnyQuery().Error(403, u"auth.refused"_s, u"无权访问"_s, u"R1"_s);
        if (fault == 4)
            server_->OnAnyQuery().Body("junk");
        const auto error = RaisedByQuery();
        QVERIFY(error);
        for (const QString &text :
             {error->Message(), error->Details(), QString::fromUtf8(error->what())}) {
            QVERIFY2(!text.contains(u"geheim"_s) && !text.contains(u"boss"_s) &&
                         !text.contains(u"Basic"_s),
                     qUtf8Printable(text));
        }
    }

    // --- Failures ------------------------------------------------------------------------------

    void TellsWhatTheServerSays()
    {
        server_->OnAnyQuery().Error(400, u"sql.unknown_table"_s, u"没有表 FOO"_s, u"20240305-17"_s);
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::ServerMessage);
        QCOMPARE(error->Message(), u"查询失败：没有表 FOO（参考号 20240305-17）"_s);
        QCOMPARE(error->Code(), u"sql.unknown_table"_s);
        QCOMPARE(error->Reference(), u"20240305-17"_s);
        QCOMPARE(error->HttpStatus(), 400);
    }

    void DetailsHoldAddressStatementStatusAndReference()
    {
        server_->OnAnyQuery().Error(400, u"sql.unknown_table"_s, u"没有表 FOO"_s, u"20240305-17"_s);
        const QString details = RaisedByQuery()->Details();
        for (const QString &part :
             {server_->Url() + u"/NorvaneSelectServlet"_s, u"select A from T"_s, u"400"_s,
              u"sql.unknown_table"_s, u"20240305-17"_s})
            QVERIFY2(details.contains(part), qUtf8Printable(details));
    }

    void TellsAStatusThatComesWithoutAMessageAndSendsOnce_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {302, 307, 308, 401, 403, 404, 413, 500, 502, 504})
            QTest::addRow("%d", status) << status;
    }
    void TellsAStatusThatComesWithoutAMessageAndSendsOnce()
    {
        QFETCH(int, status);
        server_->OnAnyQuery().Status(status, "<html>sorry</html>");
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::HttpStatus);
        QCOMPARE(error->HttpStatus(), status);
        QVERIFY2(error->Message().contains(QString::number(status)), error->what());
        QCOMPARE(server_->Queries().size(), 1);
    }

    void MalformedAnswerLeavesTheTableUnchanged_data()
    {
        QTest::addColumn<QByteArray>("body");
        const QByteArray good =
            Wire::Encode(Wire::QueryAnswer{1, Rows({u"A"_s}, {{u"x"_s}})}, Wire::Format::Cbor);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("words") << QByteArray("service is down");
        QTest::newRow("cut") << good.chopped(3);
        QTest::newRow("more behind") << good + "x";
        QTest::newRow("a post's answer")
            << Wire::Encode(Wire::PostAnswer{{{u"1"_s, {}}}}, Wire::Format::Cbor);
    }
    void MalformedAnswerLeavesTheTableUnchanged()
    {
        QFETCH(QByteArray, body);
        server_->OnAnyQuery().Body(body);
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::MalformedAnswer);
        VerifyTableIsAsBefore();
    }

    void AnswerOfAnotherContentTypeIsMalformed()
    {
        server_->OnAnyQuery().Status(200, "<html>Please log in</html>");
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::MalformedAnswer);
        VerifyTableIsAsBefore();
    }

    void HalfAnAnswerLeavesTheTableUnchanged()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}, {u"y"_s}})).HalfAnswer();
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Transport);
        VerifyTableIsAsBefore();
    }

    void UnreachableServerIsTold()
    {
        server_->Stop();
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Transport);
        QVERIFY2(error->Message().contains(server_->Url()), error->what());
        VerifyTableIsAsBefore();
    }

    void WorksAgainWhenTheServerIsBack()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        QVERIFY(!RaisedByQuery());
        server_->Stop();
        QVERIFY(RaisedByQuery());
        QVERIFY(server_->Restart());
        QVERIFY(!RaisedByQuery());
        QCOMPARE(table_.FieldText(u"A"), u"x"_s);
    }

    void WorksOnWhenTheServerClosedTheIdleConnection()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        QVERIFY(!RaisedByQuery());
        server_->DropConnections();
        const auto error = RaisedByQuery();
        QVERIFY2(!error, error ? error->what() : "");
        QCOMPARE(server_->Queries().size(), 2); // asked once more, on whatever connection
        QVERIFY(server_->Connections() >= 2);   // one more may have been tried in vain
    }

    void RepeatsAQueryOnceAfterABrokenConnection()
    {
        server_->OnAnyQuery().BreakConnection().Times(1);
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        QVERIFY(!RaisedByQuery());
        QCOMPARE(server_->Queries().size(), 2);
    }

    void RepeatsAQueryNoMoreThanOnce()
    {
        server_->OnAnyQuery().BreakConnection();
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Transport);
        QCOMPARE(server_->Queries().size(), 2);
    }

    void TimesOutWhenNothingComes()
    {
        server_->OnAnyQuery().HoldUntilReleased();
        soap_->SetTimeOut(50ms);
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::TimeOut);
        QCOMPARE(server_->Queries().size(), 1);
        VerifyTableIsAsBefore();
    }

    void RefusesACallWhileAnotherRuns()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        std::optional<ERemoteError> error;
        connect(server_.get(), &ScriptedServer::RequestArrived, this, [&] {
            ClientDataSet other;
            error = Raised<ERemoteError>(
                [&] { soap_->SQLQuery(u"select B from T"_s, 0, 0, other, TQueryType::List); });
        });
        QVERIFY(!RaisedByQuery());
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Busy);
        QCOMPARE(server_->Statements(), QStringList{u"select A from T"_s});
    }

    void IsFreeAgainAfterAFailure()
    {
        server_->OnAnyQuery().Status(500).Times(1);
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        QVERIFY(RaisedByQuery());
        QVERIFY(!soap_->IsRunning());
        QVERIFY(!RaisedByQuery());
    }

private:
    void UseAddress(const QString &address) { UseServer(*soap_, address); }
    std::optional<ERemoteError> RaisedByQuery()
    {
        return Raised<ERemoteError>(
            [&] { soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List); });
    }
    void VerifyTableIsAsBefore()
    {
        QCOMPARE(table_.RecordCount(), 1);
        QCOMPARE(table_.FieldText(u"OLD"), u"before"_s);
    }

    std::unique_ptr<ScriptedServer> server_;
    std::unique_ptr<TSoapCtrl> soap_;
    ClientDataSet table_;
};

QTEST_MAIN(SoapCtrlTest)
#include "SoapCtrlTest.moc"
