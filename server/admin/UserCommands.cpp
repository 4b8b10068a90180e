#include "admin/UserCommands.h"

#include "admin/DatabaseOption.h"
#include "store/Credentials.h"
#include "store/Migrations.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

constexpr int MaxDays = 3'660;
constexpr qsizetype MaxLabel = 100;

Store::TokenTerms TermsOf(const QCommandLineParser &parser)
{
    Store::TokenTerms terms;
    terms.label = parser.value(u"label"_s).trimmed();
    const bool printable =
        std::all_of(terms.label.begin(), terms.label.end(), [](QChar c) { return c.isPrint(); });
    if (terms.label.size() > MaxLabel || !printable)
        throw EQelError(u"--label 应为至多 %1 个可见字符。"_s.arg(MaxLabel));
    if (parser.isSet(u"unions"_s)) {
        terms.unions = parser.value(u"unions"_s).split(u',');
        terms.unions.removeDuplicates();
    }
    if (parser.isSet(u"expires"_s))
        terms.days = NumberOption(parser, u"expires"_s, 1, MaxDays);
    return terms;
}

/// A connection that sees the tokens, which those for queries do not.
std::unique_ptr<Store::Connection> OpenTables(Store::Database &database)
{
    auto connection = database.OpenWriter();
    Store::RequireSchema(*connection);
    return connection;
}

/// Only the token on standard output, so that a script can take it from there.
int Add(const QCommandLineParser &parser, const QStringList &arguments)
{
    const QString &code = arguments.first();
    const Store::TokenTerms terms = TermsOf(parser);
    const auto database = OpenDatabase(parser);
    const Store::NewToken made = Store::AddToken(*OpenTables(*database), code, terms);
    std::printf("%s\n", made.token.constData());
    const QString until = made.expires.isEmpty() ? u"不过期"_s : u"至 %1 有效"_s.arg(made.expires);
    std::fprintf(stderr, "用户 %s 的令牌 %s，%s。它只显示这一次。\n", qUtf8Printable(code),
                 qUtf8Printable(made.tokenId), qUtf8Printable(until));
    return 0;
}

int Revoke(const QCommandLineParser &parser, const QStringList &arguments)
{
    const QString &code = arguments.first();
    const QString tokenId = parser.value(u"token-id"_s);
    if (parser.isSet(u"token-id"_s) && tokenId.isEmpty())
        throw EQelError(u"--token-id 是空的。"_s);
    const auto database = OpenDatabase(parser);
    const int revoked = Store::RevokeTokens(*OpenTables(*database), code, tokenId);
    if (revoked == 0)
        throw EQelError(tokenId.isEmpty() ? u"用户 %1 没有令牌。"_s.arg(code)
                                          : u"用户 %1 没有令牌 %2。"_s.arg(code, tokenId));
    std::fprintf(stderr, "已撤销用户 %s 的 %d 个令牌。\n", qUtf8Printable(code), revoked);
    return 0;
}

int List(const QCommandLineParser &parser, const QStringList &arguments)
{
    const auto database = OpenDatabase(parser);
    const QList<Store::TokenInfo> tokens =
        Store::ListTokens(*OpenTables(*database), arguments.value(0));
    std::printf("USER\tTOKEN\tCREATED\tEXPIRES\tUNIONS\tLABEL\n");
    const auto shown = [](const QString &text) { return text.isEmpty() ? u"-"_s : text; };
    for (const Store::TokenInfo &token : tokens) {
        const QStringList cells{token.userCode,       token.tokenId,       token.created,
                                shown(token.expires), shown(token.unions), shown(token.label)};
        std::printf("%s\n", qUtf8Printable(cells.join(u'\t')));
    }
    return 0;
}

} // namespace

QList<Command> UserCommands()
{
    return {
        {u"user add"_s,
         u"CODE"_s,
         u"Make a token for a user and print it, this once."_s,
         {{u"expires"_s, u"Days until the token is refused; without it never."_s, u"days"_s},
          {u"label"_s, u"What to call the token in lists."_s, u"text"_s},
          {u"unions"_s, u"Limit the token to these groups: UNION_ID,UNION_ID."_s, u"ids"_s}},
         Add},
        {u"user revoke"_s,
         u"CODE"_s,
         u"Refuse a user's tokens from now on."_s,
         {{u"token-id"_s, u"Only the token of this number."_s, u"id"_s}},
         Revoke},
        {u"user list"_s, u"[CODE]"_s, u"List tokens: of one user, or of all."_s, {}, List},
    };
}

} // namespace Qel::Admin
