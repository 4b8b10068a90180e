#include "wire/QueryJson.h"
#include "wire/WireTree.h"

namespace Qel::Wire {

using namespace Qt::StringLiterals;

QByteArray Encode(const QueryRequest &request, Format format)
{
    return WriteTree({{u"sql"_s, request.sql},
                      {u"page"_s, request.page},
                      {u"pageSize"_s, request.pageSize},
                      {u"queryType"_s, request.queryType}},
                     format);
}

QueryRequest DecodeQueryRequest(const QByteArray &body, Format format)
{
    const QCborValue tree = WireItem::Parse(body, format);
    const WireItem message(tree);
    message.ExpectKeys({"sql"_L1, "page"_L1, "pageSize"_L1, "queryType"_L1});
    const QueryRequest request{
        .sql = message["sql"_L1].Text(),
        .page = int(message["page"_L1].Number(0, MaxPage)),
        .pageSize = int(message["pageSize"_L1].Number(0, MaxPageSize)),
        .queryType = int(message["queryType"_L1].Number(1, 2)),
    };
    if ((request.page == 0) != (request.pageSize == 0))
        message["page"_L1].Fail(u"page 与 pageSize 必须同时为 0 或同时大于 0"_s);
    return request;
}

QByteArray Encode(const QueryAnswer &answer, Format format)
{
    if (format == Format::Json)
        return WriteAnswerAsJson(answer);
    return answer.rows.BodyWithTotal(answer.total);
}

QueryAnswer DecodeQueryAnswer(const QByteArray &body, Format format)
{
    if (format == Format::Json)
        return ReadAnswerFromJson(body);
    const RowSet rows = RowSet::Load(body);
    return {rows.Total(), rows};
}

} // namespace Qel::Wire
