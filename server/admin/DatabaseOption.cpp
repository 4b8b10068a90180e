#include "admin/DatabaseOption.h"

#include <QCommandLineParser>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

constexpr auto Variable = "QEL_DATABASE";

} // namespace

QCommandLineOption DatabaseOption()
{
    return {u"database"_s,
            u"The database: sqlite:PATH or postgresql://HOST/NAME. Without it the one in the"
            " environment variable QEL_DATABASE."_s,
            u"url"_s};
}

bool HasPassword(const QString &url)
{
    const qsizetype scheme = url.indexOf("://"_L1);
    if (scheme < 0)
        return false;
    const QString rest = url.mid(scheme + 3);
    const QString place = rest.section(u'?', 0, 0);
    // Up to the last "@": a password may hold characters that should have been encoded, libpq takes
    // a "?" for one of them.
    for (const QString &text : {place, rest.section(u'/', 0, 0)}) {
        const qsizetype at = text.lastIndexOf(u'@');
        if (at > 0 && text.first(at).contains(u':'))
            return true;
    }
    for (const QString &parameter : rest.section(u'?', 1).split(u'&')) {
        const QString name = QUrl::fromPercentEncoding(parameter.section(u'=', 0, 0).toUtf8());
        if (name.compare("password"_L1, Qt::CaseInsensitive) == 0 ||
            name.compare("sslpassword"_L1, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString DatabaseUrl(const QCommandLineParser &parser)
{
    if (!parser.isSet(u"database"_s))
        return qEnvironmentVariable(Variable);
    const QString url = parser.value(u"database"_s);
    if (HasPassword(url))
        throw EQelError(u"命令行上不能写数据库口令：本机的每个用户都能看到。请把带口令的地址放在"
                        "环境变量 QEL_DATABASE 中，或把口令放在口令文件中（~/.pgpass，或环境变量"
                        " PGPASSFILE 所指的文件）。"_s);
    return url;
}

QString NamedDatabaseUrl(const QCommandLineParser &parser)
{
    const QString url = DatabaseUrl(parser);
    if (url.isEmpty())
        throw EQelError(u"没有指定数据库：请给出 --database 或环境变量 QEL_DATABASE。"_s);
    return url;
}

std::unique_ptr<Store::Database> OpenDatabase(const QCommandLineParser &parser)
{
    return Store::Database::Open(NamedDatabaseUrl(parser));
}

int NumberOption(const QCommandLineParser &parser, const QString &option, int least, int most)
{
    bool ok = false;
    const int value = parser.value(option).toInt(&ok);
    if (!ok || value < least || value > most)
        throw EQelError(u"--%1 应为 %2 至 %3 的整数。"_s.arg(option).arg(least).arg(most));
    return value;
}

} // namespace Qel::Admin
