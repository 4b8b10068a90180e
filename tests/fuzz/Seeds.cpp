#include "../server/sql/TextFile.h"

#include "dataset/DataFile.h"
#include "managers/Method.h"
#include "wire/Wire.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QStringEncoder>

using namespace Qel;
using namespace Qt::StringLiterals;

/// Writes the seeds of every target below the folder that it is given, from the tree's own test
/// data: statements of the SQL tests and of the screens, a post for each method, row blocks of each
/// type. What the first bytes of a seed choose stands in the target.
namespace {

constexpr int QueryBody = 0; // as BodiesFuzz.cpp counts them
constexpr int PostBody = 1;
constexpr int QueryAnswerBody = 2;
constexpr int PostAnswerBody = 3;
constexpr int ErrorBody = 4;
constexpr int SessionBody = 5;

class Folder
{
public:
    explicit Folder(const QString &path)
        : folder_(path)
    {
        if (!folder_.mkpath(u"."_s))
            qFatal("cannot make %s", qUtf8Printable(path));
    }

    void Add(const QByteArray &seed)
    {
        QFile file(folder_.filePath(u"seed-%1"_s.arg(++count_, 3, 10, QChar(u'0'))));
        if (!file.open(QIODevice::WriteOnly) || file.write(seed) != seed.size())
            qFatal("cannot write %s", qUtf8Printable(file.fileName()));
    }

private:
    QDir folder_;
    int count_ = 0;
};

QByteArray Bytes(std::initializer_list<int> bytes)
{
    QByteArray joined;
    for (const int byte : bytes)
        joined += static_cast<char>(byte);
    return joined;
}

/// Every statement once, from the shortest on.
QStringList Statements(const QDir &tests)
{
    QSet<QString> found;
    for (const QString &name : QDir(tests.filePath(u"server/sql"_s)).entryList({u"*.test"_s}))
        for (const auto &one : Test::ReadTextFile(tests.filePath(u"server/sql/"_s + name)).cases)
            found.insert(one.sql);
    static const QRegularExpression line(uR"re(^\S+ "(\s*select .*)"$)re"_s,
                                         QRegularExpression::CaseInsensitiveOption |
                                             QRegularExpression::MultilineOption);
    for (const QFileInfo &info :
         QDir(tests.filePath(u"screens/data"_s)).entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qUtf8Printable(info.filePath()));
        auto matches = line.globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext())
            found.insert(matches.next().captured(1));
    }
    QStringList statements(found.begin(), found.end());
    std::sort(statements.begin(), statements.end(), [](const QString &a, const QString &b) {
        return std::pair(a.size(), a) < std::pair(b.size(), b);
    });
    return statements;
}

RowSet SampleRows(int rows, qint64 total)
{
    RowSetBuilder builder({{u"ID"_s, FieldType::Integer, 0},
                           {u"NAME"_s, FieldType::Text, 20},
                           {u"PRICE"_s, FieldType::Real, 0},
                           {u"CREATED"_s, FieldType::DateTime, 0}});
    for (int row = 0; row < rows; ++row) {
        builder.AddCell(QByteArray::number(row));
        if (row % 3 == 1)
            builder.AddNull();
        else
            builder.AddCell(row % 3 == 0 ? "集团" : "");
        builder.AddCell("-0.5");
        builder.AddCell("2024-03-05 13:07:00");
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish(total));
}

QList<QByteArray> Blocks()
{
    return {RowSet().Body(), SampleRows(0, 0).Body(), SampleRows(1, 1).Body(),
            SampleRows(9, 700).Body(), SampleRows(3, 3).Body()};
}

void AddRunParams(Folder folder)
{
    const QString values =
        uR"(<RunParam UserId="600001" UserCode="admin" UserName="系统管理员")"
        uR"( OrgId="1" OrgAbbr="a&amp;b" OrgName="&#x20;" PinCode="" CaType="0"/>)"_s;
    const QString document = u"<RunParams>"_s + values + u"</RunParams>"_s;
    QStringEncoder gbk("GBK");
    const QList<QByteArray> documents{
        document.toUtf8(),
        "\xef\xbb\xbf" + document.toUtf8(),
        (uR"(<?xml version="1.0" encoding="utf-8"?>)"_s + document).toUtf8(),
        gbk.encode(uR"(<?xml version="1.0" encoding="GBK"?>)"_s + document),
        gbk.encode(uR"(<?xml version="1.0" encoding='gb2312'?>)"_s + document),
        "<!DOCTYPE x><RunParams/>",
        "<RUNPARAMS><a/><!-- b --><RunParam/></RUNPARAMS>",
        "<other/>"};
    for (const QByteArray &one : documents) {
        folder.Add(one);
        folder.Add(one.toBase64());
    }
}

void AddCacheFiles(Folder folder, const QString &scratch)
{
    for (const QByteArray &block : Blocks()) {
        DataFile::Write(scratch, block);
        QFile file(scratch);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qUtf8Printable(scratch));
        folder.Add(Bytes({0}) + file.readAll());
        folder.Add(Bytes({1}) + block);
        folder.Add(Bytes({2, 20, 0, 7}) + block);
    }
    QFile::remove(scratch);
}

/// A row with every parameter of the method, for records that TestDatabase has.
Wire::PostRequest PostFor(const Managers::Method &method)
{
    Wire::NamedValues row;
    for (const QString &name : method.parameters + method.flags) {
        const QString id = name.contains(u"UNION_ID"_s) ? u"300002"_s
                           : name.contains(u"ORGID"_s)  ? u"200005"_s
                           : name == u"ORG_ID"_s        ? u"200006"_s
                           : name == u"REGION_ID"_s     ? u"100001"_s
                           : name == u"USER_ID"_s       ? u"600002"_s
                           : name.endsWith(u"_ID"_s)    ? QString()
                           : name.endsWith(u"_CODE"_s)  ? u"000102"_s
                                                        : u"1"_s;
        row.append({name, id});
    }
    row.append({u"LAST_USER"_s, u"系统管理员"_s});
    return {method.manager, method.name, {row}};
}

template <typename Message>
void AddBody(Folder &folder, int kind, const Message &message)
{
    folder.Add(Bytes({2 * kind}) + Wire::Encode(message, Wire::Format::Cbor));
    folder.Add(Bytes({2 * kind + 1}) + Wire::Encode(message, Wire::Format::Json));
}

void AddBodies(Folder folder, const QString &statement)
{
    AddBody(folder, QueryBody, Wire::QueryRequest{statement, 0, 0, 1});
    AddBody(folder, QueryBody, Wire::QueryRequest{statement, 1, 50, 2});
    AddBody(folder, PostBody, PostFor(Managers::Methods().first()));
    AddBody(folder, QueryAnswerBody, Wire::QueryAnswer{700, SampleRows(9, 700)});
    AddBody(folder, PostAnswerBody,
            Wire::PostAnswer{{{u"1"_s, {{u"UNION_ID"_s, u"300002"_s}}}, {u"-2"_s, {}}}});
    AddBody(folder, ErrorBody, Wire::ErrorAnswer{u"sql.syntax"_s, u"语法"_s, u"ABC"_s});
    AddBody(folder, SessionBody,
            Wire::SessionAnswer{u"1"_s, u"a"_s, u"张"_s, u"2"_s, u"b"_s, u"c"_s, u"d"_s});
}

/// Address 0 takes posts, 1 queries; headers 0 and 1 say CBOR and JSON, 16 adds a key.
void AddRequests(Folder folder, const QStringList &statements)
{
    for (const Managers::Method &method : Managers::Methods()) {
        const Wire::PostRequest post = PostFor(method);
        folder.Add(Bytes({0, 0 + 16}) + Wire::Encode(post, Wire::Format::Cbor));
        folder.Add(Bytes({0, 1}) + Wire::Encode(post, Wire::Format::Json));
    }
    for (qsizetype at = 0; at < statements.size(); at += 10) {
        const Wire::QueryRequest query{statements[at], 1, 50, 2};
        folder.Add(Bytes({1, 0}) + Wire::Encode(query, Wire::Format::Cbor));
        folder.Add(Bytes({1, 1 + 4 * 1}) + Wire::Encode(query, Wire::Format::Json));
    }
    folder.Add(Bytes({2 + 4, 1}));
    folder.Add(Bytes({1 + 8, 1}));
}

void AddHeads(Folder folder)
{
    folder.Add("GET /healthz HTTP/1.1\r\nHost: localhost\r\n\r\n");
    folder.Add("POST /NorvaneServlet HTTP/1.1\r\nHost: localhost\r\nAuthorization: Basic YTpi\r\n"
               "Content-Type: application/cbor\r\nIdempotency-Key: a-1\r\nContent-Length: 3\r\n"
               "Connection: close\r\n\r\nabc");
    folder.Add(
        "POST /a HTTP/1.1\r\nHost: b\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\n\r\n");
    folder.Add("POST /a HTTP/1.0\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n");
    folder.Add("GET /a HTTP/1.1\r\nHost : b\r\n folded\r\n\r\n");
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QDir out(QCoreApplication::arguments().value(1));
    const QStringList statements = Statements(QDir(QStringLiteral(QEL_TESTS_DIR)));
    AddRunParams(Folder(out.filePath(u"RunParams"_s)));
    Folder rows(out.filePath(u"RowSet"_s));
    for (const QByteArray &block : Blocks())
        rows.Add(block);
    AddCacheFiles(Folder(out.filePath(u"CacheFile"_s)), out.filePath(u"scratch"_s));
    Folder sql(out.filePath(u"Sql"_s));
    for (const QString &statement : statements)
        sql.Add(statement.toUtf8());
    AddBodies(Folder(out.filePath(u"Bodies"_s)), statements.first());
    AddRequests(Folder(out.filePath(u"Service"_s)), statements);
    AddHeads(Folder(out.filePath(u"RequestHead"_s)));
    return 0;
}
