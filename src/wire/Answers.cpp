#include "wire/WireTree.h"

namespace Qel::Wire {

using namespace Qt::StringLiterals;

QByteArray Encode(const ErrorAnswer &answer, Format format)
{
    return WriteTree({{u"code"_s, answer.code},
                      {u"message"_s, answer.message},
                      {u"reference"_s, answer.reference}},
                     format);
}

ErrorAnswer DecodeErrorAnswer(const QByteArray &body, Format format)
{
    const QCborValue tree = WireItem::Parse(body, format);
    const WireItem message(tree);
    message.ExpectKeys({"code"_L1, "message"_L1, "reference"_L1});
    return {message["code"_L1].Text(), message["message"_L1].Text(),
            message["reference"_L1].Text()};
}

QByteArray Encode(const SessionAnswer &answer, Format format)
{
    return WriteTree({{u"UserId"_s, answer.userId},
                      {u"UserCode"_s, answer.userCode},
                      {u"UserName"_s, answer.userName},
                      {u"OrgId"_s, answer.orgId},
                      {u"OrgAbbr"_s, answer.orgAbbr},
                      {u"OrgName"_s, answer.orgName},
                      {u"ServerName"_s, answer.serverName}},
                     format);
}

SessionAnswer DecodeSessionAnswer(const QByteArray &body, Format format)
{
    const QCborValue tree = WireItem::Parse(body, format);
    const WireItem message(tree);
    message.ExpectKeys({"UserId"_L1, "UserCode"_L1, "UserName"_L1, "OrgId"_L1, "OrgAbbr"_L1,
                        "OrgName"_L1, "ServerName"_L1});
    const auto text = [&message](QLatin1StringView key) { return message[key].Text(); };
    return {text("UserId"_L1),  text("UserCode"_L1), text("UserName"_L1),  text("OrgId"_L1),
            text("OrgAbbr"_L1), text("OrgName"_L1),  text("ServerName"_L1)};
}

} // namespace Qel::Wire
