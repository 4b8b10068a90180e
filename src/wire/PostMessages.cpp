#include "dataset/CborWriter.h"
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

namespace {

/// Without a tree in between: an answer has a row for each row of the post.
QByteArray CborAnswer(const PostAnswer &answer)
{
    QByteArray out;
    const auto text = [&out](const QString &value) { CborWriter::AddText(out, value.toUtf8()); };
    CborWriter::AddMapHead(out, 1);
    CborWriter::AddText(out, "rows");
    CborWriter::AddArrayHead(out, answer.rows.size());
    for (const ResultRow &row : answer.rows) {
        CborWriter::AddMapHead(out, 2);
        CborWriter::AddText(out, "code");
        text(row.code);
        CborWriter::AddText(out, "values");
        CborWriter::AddArrayHead(out, row.values.size());
        for (const auto &[name, value] : row.values) {
            CborWriter::AddArrayHead(out, 2);
            text(name);
            text(value);
        }
    }
    return out;
}

} // namespace

QByteArray Encode(const PostAnswer &answer, Format format)
{
    if (format == Format::Cbor)
        return CborAnswer(answer);
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
