#pragma once

#include "dataset/QelError.h"
#include "dataset/RowSet.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// How queries, posts and their answers are written as bytes. docs/wire-protocol.md is the
/// description of the same; client and server both use these routines.
namespace Qel::Wire {

// Bounds that both sides hold to; a message beyond them is refused whole.
inline constexpr int MaxPage = 1'000'000'000;
inline constexpr int MaxPageSize = 1'000'000;
inline constexpr int MaxPostRows = 100'000;
inline constexpr int MaxValuesPerRow = 1'000;

inline constexpr char CborType[] = "application/cbor";
inline constexpr char JsonType[] = "application/json";

enum class Format { Cbor, Json };

/// Bytes that are not what they should be. Says what is missing or wrong, and where.
class EWireError : public EQelError
{
public:
    using EQelError::EQelError;
};

struct QueryRequest
{
    QString sql;
    int page = 0;     ///< from 1; 0 together with pageSize 0 means all rows
    int pageSize = 0; ///< rows per page
    int queryType = 1;

    friend bool operator==(const QueryRequest &, const QueryRequest &) = default;
};

struct QueryAnswer
{
    qint64 total = 0; ///< rows that the statement selects, over all pages
    RowSet rows;      ///< those of the page
};

using NamedValue = std::pair<QString, QString>;
using NamedValues = QList<NamedValue>; ///< in the order in which they were added

struct PostRequest
{
    QString manager;
    QString method;
    QList<NamedValues> rows;

    friend bool operator==(const PostRequest &, const PostRequest &) = default;
};

struct ResultRow
{
    QString code; ///< "1", "0", "-1", "-2"
    NamedValues values;

    friend bool operator==(const ResultRow &, const ResultRow &) = default;
};

struct PostAnswer
{
    QList<ResultRow> rows;

    friend bool operator==(const PostAnswer &, const PostAnswer &) = default;
};

/// The body of every answer whose HTTP status is not 200.
struct ErrorAnswer
{
    QString code;      ///< short and stable, e.g. "sql.unknown_table"
    QString message;   ///< for the operator
    QString reference; ///< finds the entry in the server's log

    friend bool operator==(const ErrorAnswer &, const ErrorAnswer &) = default;
};

/// Who the credential of a request is, and what the server calls itself.
struct SessionAnswer
{
    QString userId;
    QString userCode;
    QString userName;
    QString orgId;
    QString orgAbbr;
    QString orgName;
    QString serverName;

    friend bool operator==(const SessionAnswer &, const SessionAnswer &) = default;
};

// The rows of a query answer are not copied if they carry the answer's total already (see
// RowSetBuilder::Finish). Throws EDataSetError if the total is smaller than the number of rows.
QByteArray Encode(const QueryRequest &request, Format format);
QByteArray Encode(const QueryAnswer &answer, Format format);
QByteArray Encode(const PostRequest &request, Format format);
QByteArray Encode(const PostAnswer &answer, Format format);
QByteArray Encode(const ErrorAnswer &answer, Format format);
QByteArray Encode(const SessionAnswer &answer, Format format);

// All throw EWireError that names key and place (or EDataSetError for a row block). Nothing is
// tolerated: unknown, missing or repeated keys, other types, numbers out of bounds, bytes after
// the end.
QueryRequest DecodeQueryRequest(const QByteArray &body, Format format);
QueryAnswer DecodeQueryAnswer(const QByteArray &body, Format format); ///< CBOR: rows stay views
PostRequest DecodePostRequest(const QByteArray &body, Format format);
PostAnswer DecodePostAnswer(const QByteArray &body, Format format);
ErrorAnswer DecodeErrorAnswer(const QByteArray &body, Format format);
SessionAnswer DecodeSessionAnswer(const QByteArray &body, Format format);

} // namespace Qel::Wire
