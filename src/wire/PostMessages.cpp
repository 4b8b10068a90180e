#include "dataset/CborReader.h"
#include "dataset/CborWriter.h"
#include "wire/WireTree.h"

#include <algorithm>
#include <optional>

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

namespace {

/// A row whose names are not empty and differ; nothing for any other.
std::optional<NamedValues> ReadRow(CborReader &reader)
{
    const qsizetype size = reader.EnterArray();
    constexpr qsizetype few = 16; // names of more are compared by the tree's reader
    if (size > few)
        return std::nullopt;
    NamedValues values;
    values.reserve(size);
    for (qsizetype i = 0; i < size; ++i) {
        if (reader.EnterArray() != 2)
            return std::nullopt;
        const QString name = QString::fromUtf8(reader.ReadText());
        const bool isKnown = std::any_of(values.begin(), values.end(), [&](const NamedValue &one) {
            return one.first.compare(name, Qt::CaseInsensitive) == 0;
        });
        if (name.isEmpty() || isKnown)
            return std::nullopt;
        values.append({name, QString::fromUtf8(reader.ReadText())});
    }
    return values;
}

bool ReadRows(CborReader &reader, QList<NamedValues> &rows)
{
    const qsizetype count = reader.EnterArray();
    if (count > MaxPostRows)
        return false;
    rows.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        auto row = ReadRow(reader);
        if (!row)
            return false;
        rows.append(*std::move(row));
    }
    return true;
}

/// A post as the library writes it, read without a tree in between: it may have thousands of
/// rows. Nothing for any other bytes, right or wrong: those are told apart, and errors worded, by
/// the tree's reader.
std::optional<PostRequest> ReadPlainPost(const QByteArray &body)
try {
    CborReader reader(body);
    if (reader.EnterMap() != 3 || reader.ReadText() != QByteArrayView("manager"))
        return std::nullopt;
    PostRequest request;
    request.manager = QString::fromUtf8(reader.ReadText());
    if (reader.ReadText() != QByteArrayView("method"))
        return std::nullopt;
    request.method = QString::fromUtf8(reader.ReadText());
    if (reader.ReadText() != QByteArrayView("rows") || !ReadRows(reader, request.rows))
        return std::nullopt;
    reader.ExpectEnd();
    return request;
} catch (const EDataSetError &) {
    return std::nullopt;
}

} // namespace

PostRequest DecodePostRequest(const QByteArray &body, Format format)
{
    if (format == Format::Cbor) {
        if (auto request = ReadPlainPost(body))
            return *std::move(request);
    }
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
