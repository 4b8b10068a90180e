#include "store/PostgresAddress.h"

#include "store/Connection.h"

#include <QRandomGenerator>

#include <libpq-fe.h>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

using Parameter = std::pair<QByteArray, QByteArray>;

using Default = std::pair<const char *, const char *>;

constexpr std::array<const char *, 3> ListsOfHosts = {"host", "hostaddr", "port"};

// What is set where the address says nothing itself. A host that has gone without a word is to be
// noticed before the operator gives up.
constexpr std::array<Default, 2> OneHost = {{
    {"fallback_application_name", "qel-server"},
    {"connect_timeout", "10"},
}};
constexpr std::array<Default, 6> SeveralHosts = {{
    {"fallback_application_name", "qel-server"},
    {"connect_timeout", "3"},
    {"keepalives_idle", "10"},
    {"keepalives_interval", "5"},
    {"keepalives_count", "3"},
    {"tcp_user_timeout", "15000"},
}};

bool IsListOfHosts(const QByteArray &name)
{
    return std::find(ListsOfHosts.begin(), ListsOfHosts.end(), name) != ListsOfHosts.end();
}

/// The list in another order; one that has fewer entries than there are hosts is for all of them.
QByteArray Reordered(const QByteArray &list, const std::vector<qsizetype> &order)
{
    const QList<QByteArray> entries = list.split(',');
    if (entries.size() != std::ssize(order))
        return list;
    QList<QByteArray> reordered;
    for (const qsizetype place : order)
        reordered.append(entries[place]);
    return reordered.join(',');
}

} // namespace

PostgresAddress::PostgresAddress(const QByteArray &url)
{
    char *reason = nullptr;
    const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(
        PQconninfoParse(url.constData(), &reason), &PQconninfoFree);
    PQfreemem(reason); // it repeats parts of the address
    if (!options)
        throw EStoreError(EStoreError::Kind::Failure,
                          u"无法理解 postgresql:// 之后的数据库地址。"_s);
    for (const PQconninfoOption *option = options.get(); option->keyword; ++option) {
        if (!option->val)
            continue;
        given_.emplaceBack(option->keyword, option->val);
        if (IsListOfHosts(option->keyword))
            hosts_ = std::max<qsizetype>(hosts_, QByteArrayView(option->val).count(',') + 1);
    }
}

QList<Parameter> PostgresAddress::Parameters(PostgresCopy copy) const
{
    std::vector<qsizetype> order(static_cast<std::size_t>(hosts_));
    std::iota(order.begin(), order.end(), 0);
    if (copy == PostgresCopy::Any)
        std::shuffle(order.begin(), order.end(), *QRandomGenerator::global());

    // Of a name that comes twice, the last value counts.
    QList<Parameter> parameters;
    const auto defaults = NamesSeveralHosts() ? std::span<const Default>(SeveralHosts)
                                              : std::span<const Default>(OneHost);
    for (const auto &[name, value] : defaults)
        parameters.emplaceBack(name, value);
    for (const auto &[name, value] : given_)
        parameters.emplaceBack(name, IsListOfHosts(name) ? Reordered(value, order) : value);
    parameters.emplaceBack("client_encoding", "UTF8");
    if (NamesSeveralHosts())
        parameters.emplaceBack("target_session_attrs",
                               copy == PostgresCopy::Primary ? "read-write" : "prefer-standby");
    return parameters;
}

} // namespace Qel::Store
