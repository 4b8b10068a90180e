#include "wire/WireTree.h"

namespace Qel::Wire {

using namespace Qt::StringLiterals;

QByteArray Encode(const PostRequest &request, Format format)
{
    QCborArray rows;
    for (const NamedValues &row : request.rows)
        rows.append(NamedValuesTree(row));
    return WriteTree(
        {{u"manager"_s, request.manager}, {u"method"_s, request.method}, {u"rows"_s, rows}},
        format);
}

PostRequest DecodePostRequest(const QByteArray &body, Format format)
{
    const QCborValue tree = WireItem::Parse(body, format);
    const WireItem message(tree);
    message.ExpectKeys({"manager"_L1, "method"_L1, "rows"_L1});
    PostRequest request{message["manager"_L1].Text(), message["method"_L1].Text(), {}};
    const WireItem rows = message["rows"_L1];
    const qsizetype count = rows.ArraySize(MaxPostRows);
    for (qsizetype i = 0; i < count; ++i)
        request.rows.append(ReadNamedValues(rows[i]));
    return request;
}

QByteArray Encode(const PostAnswer &answer, Format format)
{
    QCborArray rows;
    for (const ResultRow &row : answer.rows)
        rows.append(QCborMap{{u"code"_s, row.code}, {u"values"_s, NamedValuesTree(row.values)}});
    return WriteTree({{u"rows"_s, rows}}, format);
}

PostAnswer DecodePostAnswer(const QByteArray &body, Format format)
{
    const QCborValue tree = WireItem::Parse(body, format);
    const WireItem message(tree);
    message.ExpectKeys({"rows"_L1});
    const WireItem rows = message["rows"_L1];
    PostAnswer answer;
    const qsizetype count = rows.ArraySize(MaxPostRows);
    for (qsizetype i = 0; i < count; ++i) {
        const WireItem row = rows[i];
        row.ExpectKeys({"code"_L1, "values"_L1});
        answer.rows.append({row["code"_L1].Text(), ReadNamedValues(row["values"_L1])});
    }
    return answer;
}

} // namespace Qel::Wire
