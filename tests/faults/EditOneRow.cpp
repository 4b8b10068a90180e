#include "faults/Bed.h"
#include "faults/Posts.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include <algorithm>
#include <functional>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int EditorCount = 50;

/// One of the operators who edit the row at the same time.
struct Editor
{
    Editor(int number, quint16 port)
        : own(number)
        , line(port)
    {
    }

    Domain own;
    Line line;
    QString value; ///< what the round's post leaves if it is the last
    bool acknowledged = false;
    Times waits = {};
};

using Editors = std::vector<std::unique_ptr<Editor>>;

/// The row or list as it stands (columns parted by "|", rows by blanks) and who changed it last.
struct Found
{
    QString value;
    QString lastUserId; ///< in the row; empty for a list
    QString lastLogged; ///< who wrote the last entry
    int loggers = 0;    ///< how many operators wrote entries in this round
};

/// The last column of `valueSql` is who stored the row.
Found ReadRound(Store::Connection &connection, const QByteArray &valueSql, const QString &key,
                const QString &table, qint64 &lastEntry)
{
    const Store::Snapshot snapshot(connection);
    Found found;
    const auto rows = connection.Prepare(valueSql);
    rows->Bind(1, key);
    QStringList values;
    while (rows->Step()) {
        const int last = rows->ColumnCount() - 1;
        QStringList columns;
        for (int column = 0; column < last; ++column)
            columns += rows->ColumnText(column);
        values += columns.join(u'|');
        found.lastUserId = rows->ColumnText(last);
    }
    found.value = values.join(u' ');
    const auto log = connection.Prepare("SELECT USER_ID, LOG_ID FROM SYS_UPDATE_LOG"
                                        " WHERE TABLE_NAME = ?1 AND CAST(LOG_ID AS BIGINT) > ?2"
                                        " ORDER BY CAST(LOG_ID AS BIGINT)");
    log->Bind(1, table);
    log->BindInt(2, lastEntry);
    QStringList loggers;
    while (log->Step()) {
        loggers += log->ColumnText(0);
        lastEntry = log->ColumnText(1).toLongLong();
    }
    found.lastLogged = loggers.value(loggers.size() - 1);
    loggers.removeDuplicates();
    found.loggers = int(loggers.size());
    return found;
}

/// All editors post at the same time; their connections stay.
void PostAll(Editors &editors, const std::function<Wire::PostRequest(const Editor &)> &request,
             Findings &findings)
{
    std::vector<std::thread> threads;
    for (const auto &editor : editors)
        threads.emplace_back([&] {
            const Wire::PostRequest post = request(*editor);
            const QByteArray bytes = ToBytes({.path = "/NorvaneServlet",
                                              .body = Wire::Encode(post, Wire::Format::Cbor),
                                              .format = Wire::Format::Cbor,
                                              .credential = editor->own.credential});
            const Stopwatch watch;
            const HttpReply reply = editor->line.Ask(bytes);
            editor->waits.Add(watch.Elapsed());
            editor->acknowledged = reply.status == 200;
            if (reply.status == 200) {
                for (const auto &row : Wire::DecodePostAnswer(reply.body, Wire::Format::Cbor).rows)
                    if (row.code != u"1")
                        findings.Add(u"result code %1"_s.arg(row.code));
            } else {
                findings.Add(u"HTTP %1: %2"_s.arg(reply.status).arg(QString::fromUtf8(reply.body)));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

/// What stands is what one of the acknowledged posts left, whole, and that one's entries are the
/// last in the log; every acknowledged post is in the log.
void CheckRound(const Editors &editors, const Found &found, const QString &what, Findings &findings)
{
    const auto author = std::find_if(editors.begin(), editors.end(), [&](const auto &editor) {
        return editor->value == found.value;
    });
    const auto acknowledged = std::count_if(editors.begin(), editors.end(),
                                            [](const auto &one) { return one->acknowledged; });
    if (author == editors.end())
        return findings.Add(u"%1 is nobody's: %2"_s.arg(what, found.value));
    const Editor &last = **author;
    if (!last.acknowledged)
        findings.Add(what + u" is that of a post that was not acknowledged"_s);
    if (found.lastLogged != last.own.userId)
        findings.Add(what + u" is not what the log has last"_s);
    if (!found.lastUserId.isEmpty() && found.lastUserId != last.own.userId)
        findings.Add(what + u" names another operator"_s);
    if (found.loggers != acknowledged)
        findings.Add(u"%1: %2 posts acknowledged, %3 in the log"_s.arg(what)
                         .arg(acknowledged)
                         .arg(found.loggers));
}

/// A list of users of which no two editors of a round, and no two rounds in a row, have the same:
/// the number's digits to base 3 say who is not there, there, or there with the flag.
QList<std::pair<QString, QString>> ListOf(const Domain &domain, int number)
{
    QList<std::pair<QString, QString>> users;
    for (const QString &user : domain.staff) {
        if (number % 3 != 0)
            users.append({user, QString::number(number % 3 - 1)});
        number /= 3;
    }
    return users;
}

QString TextOf(const QList<std::pair<QString, QString>> &users)
{
    QStringList texts;
    for (const auto &[user, flag] : users)
        texts += user + u'|' + flag;
    return texts.join(u' ');
}

} // namespace

/// Fifty operators store the same row, and in every second round the same list, at the same time.
Outcome EditOneRow(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, EditorCount);
    site.StartServer();
    const auto connection = site.Connect();
    const Domain shared(0);
    const QString product = shared.priced.first();
    qint64 lastEntry = connection
                           ->QueryText("SELECT COALESCE(MAX(CAST(LOG_ID AS BIGINT)), 0)"
                                       " FROM SYS_UPDATE_LOG")
                           ->toLongLong();

    const HttpReply made =
        site.Server().Call({.path = "/NorvaneServlet",
                            .body = Wire::Encode(NewStore(shared, u"共用"_s), Wire::Format::Json),
                            .credential = shared.credential});
    const QString store = ReadStores(*connection, shared).value(u"共用"_s);
    if (made.status != 200 || store.isEmpty())
        findings.Add(u"no list to edit"_s);

    Editors editors;
    for (int number = 0; number < EditorCount; ++number)
        editors.push_back(std::make_unique<Editor>(number, site.Port()));
    int stamp = Between(random, 1, 1000);
    for (int round = 0; round < task.count; ++round) {
        const bool isRow = round % 2 == 0;
        QHash<const Editor *, QList<std::pair<QString, QString>>> lists;
        std::shuffle(editors.begin(), editors.end(), random);
        for (const auto &editor : editors) {
            ++stamp;
            lists[editor.get()] = ListOf(shared, stamp);
            editor->value = isRow ? QStringList(10, QString::number(stamp)).join(u'|')
                                  : TextOf(lists[editor.get()]);
        }
        if (isRow) {
            PostAll(
                editors,
                [&](const Editor &editor) {
                    return Prices(shared, {product}, editor.value.section(u'|', 0, 0));
                },
                findings);
            CheckRound(editors,
                       ReadRound(*connection,
                                 "SELECT COST_PRICE, PRICE_01, PRICE_02, PRICE_03, PRICE_04,"
                                 " PRICE_05, PRICE_06, PRICE_07, PRICE_08, PRICE_09, LAST_USER_ID"
                                 " FROM PRC_UNI_PRICE_PRODUCT WHERE PRODUCT_ID = ?1",
                                 product, u"PRC_UNI_PRICE_PRODUCT"_s, lastEntry),
                       u"the row"_s, findings);
        } else {
            PostAll(
                editors,
                [&](const Editor &editor) {
                    return ListOfUsers(shared, store, lists.value(&editor));
                },
                findings);
            CheckRound(editors,
                       ReadRound(*connection,
                                 "SELECT USER_ID, RELATION_FLAG, NULL"
                                 " FROM TRA_USER_BUY_CATALOG WHERE CATALOG_ID = ?1"
                                 " AND LAST_OPERATE <> 'D' ORDER BY USER_ID",
                                 store, u"TRA_USER_BUY_CATALOG"_s, lastEntry),
                       u"the list"_s, findings);
        }
    }
    Times waits;
    for (const auto &editor : editors)
        waits.Add(editor->waits);
    return findings.Result(u"%1 rounds of %2 editors"_s.arg(Counted(task.count)).arg(EditorCount),
                           u"an answer: "_s + waits.Text());
}

} // namespace Qel::Faults
