#include "copies/PostLoad.h"

#include "wire/Wire.h"

#include <chrono>

namespace Qel {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

HttpReply Ask(quint16 port, const HttpCall &call)
{
    RawClient client(port);
    client.Send(ToBytes(call));
    return client.Receive();
}

} // namespace

QString TypeQuery(const QString &name)
{
    return u"SELECT ORG_TYPE_ID FROM UNI_ORG_TYPE WHERE ORG_TYPE_NAME = '%1'"_s.arg(name);
}

HttpCall NewType(const QString &name, const QByteArray &key)
{
    const Wire::PostRequest request{u"com.business.admin.UniUnion"_s,
                                    u"insert_update_UniOrgType"_s,
                                    {{{u"ORG_TYPE_ID"_s, u""_s},
                                      {u"ORG_TYPE_NAME"_s, name},
                                      {u"UNION_ID"_s, u"300001"_s},
                                      {u"BUYER_FLAG"_s, u"1"_s},
                                      {u"SALER_FLAG"_s, u"0"_s},
                                      {u"SENDER_FLAG"_s, u"0"_s},
                                      {u"ADMIN_FLAG"_s, u"0"_s},
                                      {u"REMARK"_s, u""_s},
                                      {u"LAST_OPERATE"_s, u"1"_s}}}};
    return {
        .path = "/NorvaneServlet", .body = Wire::Encode(request, Wire::Format::Json), .key = key};
}

HttpCall Query(const QString &sql, const QByteArray &position)
{
    return {.path = "/NorvaneSelectServlet",
            .body = Wire::Encode(Wire::QueryRequest{sql, 0, 0, 1}, Wire::Format::Json),
            .position = position};
}

qint64 RowsOf(const HttpReply &reply)
{
    return reply.status == 200
               ? Wire::DecodeQueryAnswer(reply.body, Wire::Format::Json).rows.RowCount()
               : -1;
}

QString CodeOf(const HttpReply &reply)
{
    if (reply.status != 200)
        return {};
    return Wire::DecodePostAnswer(reply.body, Wire::Format::Json).rows.value(0).code;
}

PostLoad::PostLoad(const std::vector<quint16> &ports, int operators)
    : ports_(ports)
{
    for (int number = 0; number < operators; ++number)
        threads_.emplace_back([this, number] { Work(number); });
}

void PostLoad::End()
{
    stop_ = true;
    for (std::thread &thread : threads_) {
        if (thread.joinable())
            thread.join();
    }
}

void PostLoad::Work(int number)
{
    const auto port = [this](int count) { return ports_[size_t(count) % ports_.size()]; };
    for (int count = 0; !stop_; ++count) {
        const QString name = u"T%1-%2"_s.arg(number).arg(count);
        HttpReply stored;
        while (CodeOf(stored = Ask(port(count), NewType(name, name.toLatin1()))) != "1"_L1) {
            ++failedPosts;
            std::this_thread::sleep_for(20ms);
        }
        ++acknowledged;
        const qint64 rows =
            RowsOf(Ask(port(count + 1), Query(TypeQuery(name), stored.Header("QEL-Position"))));
        if (rows < 0)
            ++failedQueries;
        else if (rows != 1)
            ++unseen;
    }
}

} // namespace Qel
