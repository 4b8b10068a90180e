#include "http/RequestHead.h"

#include <QTest>

using Qel::Http::RequestHead;
using State = RequestHead::State;

namespace {

constexpr char Start[] = "POST /a?b=c HTTP/1.1\r\nHost: x\r\n";

State StateOf(const QByteArray &bytes)
{
    RequestHead head;
    return head.Look({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

} // namespace

class RequestHeadTest : public QObject
{
    Q_OBJECT

private slots:
    void EndsBehindTheEmptyLine()
    {
        const QByteArray bytes = QByteArray(Start) + "Content-Length: 3\r\n\r\nabc";
        RequestHead head;
        QCOMPARE(head.Look({bytes.constData(), static_cast<std::size_t>(bytes.size())}),
                 State::Complete);
        QCOMPARE(head.Size(), static_cast<std::size_t>(bytes.size() - 3));
    }

    void ByteByByteIsTheSameAsAtOnce()
    {
        const QByteArray bytes = QByteArray(Start) + "Transfer-Encoding: chunked\r\n\r\n";
        RequestHead head;
        for (qsizetype size = 1; size < bytes.size(); ++size)
            QCOMPARE(head.Look({bytes.constData(), static_cast<std::size_t>(size)}),
                     State::Incomplete);
        QCOMPARE(head.Look({bytes.constData(), static_cast<std::size_t>(bytes.size())}),
                 State::Complete);
    }

    void TakesWhatGoodClientsSend_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("no body") << QByteArray(Start) + "\r\n";
        QTest::newRow("old version without a host") << QByteArray("GET / HTTP/1.0\r\n\r\n");
        QTest::newRow("text beyond ASCII in a value")
            << QByteArray(Start) + "X-Name: \xe5\xbc\xa0\r\n\r\n";
        QTest::newRow("blanks around a value")
            << QByteArray(Start) + "Content-Length:\t 12 \r\n\r\n";
        QTest::newRow("capitals") << QByteArray(Start) + "TRANSFER-ENCODING: Chunked\r\n\r\n";
        QTest::newRow("the same header twice")
            << QByteArray(Start) + "Accept: a/b\r\nAccept: c/d\r\n\r\n";
    }
    void TakesWhatGoodClientsSend()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(StateOf(bytes), State::Complete);
    }

    void RefusesWhatCanBeReadInTwoWays_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const auto header = [](const char *name, const QByteArray &lines) {
            QTest::newRow(name) << QByteArray(Start) + lines + "\r\n\r\n";
        };
        header("length and encoding", "Content-Length: 5\r\nTransfer-Encoding: chunked");
        header("two lengths", "Content-Length: 5\r\nContent-Length: 6");
        header("the same length twice", "Content-Length: 5\r\nContent-Length: 5");
        header("list of lengths", "Content-Length: 5, 5");
        header("signed length", "Content-Length: +5");
        header("negative length", "Content-Length: -5");
        header("length in other digits", "Content-Length: 0x5");
        header("length with a blank inside", "Content-Length: 1 2");
        header("empty length", "Content-Length:");
        header("length beyond all bounds", "Content-Length: 99999999999999999999");
        header("encoding twice", "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked");
        header("other encoding", "Transfer-Encoding: gzip, chunked");
        header("unknown encoding", "Transfer-Encoding: identity");
        header("disguised encoding", "Transfer-Encoding: \x0b"
                                     "chunked");
        header("two hosts", "Host: y");
        header("two credentials", "Authorization: Basic YTpi\r\nAuthorization: Basic Yzpk");
        header("two keys", "Idempotency-Key: a\r\nIdempotency-Key: b");
        header("folded line", "X-A: b\r\n c");
        header("folded line with a tab", "X-A: b\r\n\tc");
        header("blank before the colon", "Content-Length : 5");
        header("no colon", "Content-Length 5");
        header("no name", ": 5");
        header("name with a blank", "X A: 5");
        header("null byte", QByteArray("X-A: b\0c", 8));
        header("bare return", "X-A: b\rContent-Length: 5");
        header("bare line feed", "X-A: b\nContent-Length: 5");
        header("more lines than any client sends", QByteArray("X-A: b\r\n").repeated(100) + "X: y");
        const auto line = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << bytes + "\r\nHost: x\r\n\r\n";
        };
        line("absolute target", "GET http://x/healthz HTTP/1.1");
        line("target of a proxy", "CONNECT x:80 HTTP/1.1");
        line("asterisk", "OPTIONS * HTTP/1.1");
        line("fragment", "GET /a#b HTTP/1.1");
        line("blank in the target", "GET /a b HTTP/1.1");
        line("control character in the target", "GET /a\x01 HTTP/1.1");
        line("tab for a blank", "GET\t/a HTTP/1.1");
        line("two blanks", "GET  /a HTTP/1.1");
        line("no version", "GET /a");
        line("another version", "GET /a HTTP/2.0");
        line("version in small letters", "GET /a http/1.1");
        line("no method", " /a HTTP/1.1");
        line("empty line in front", "\r\nGET /a HTTP/1.1");
        QTest::newRow("first header folded") << QByteArray("GET / HTTP/1.1\r\n Host: x\r\n\r\n");
        QTest::newRow("no host") << QByteArray("GET / HTTP/1.1\r\n\r\n");
        QTest::newRow("encoding in the old version")
            << QByteArray("POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n");
    }
    void RefusesWhatCanBeReadInTwoWays()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(StateOf(bytes), State::Malformed);
    }

    void RefusesAnotherProtocolAtItsFirstBytes()
    {
        QCOMPARE(StateOf(QByteArray("\x16\x03\x01\x02", 4)), State::Malformed);
    }
};

QTEST_GUILESS_MAIN(RequestHeadTest)
#include "RequestHeadTest.moc"
