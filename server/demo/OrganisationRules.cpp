#include "demo/OrganisationRules.h"

#include "demo/History.h"

#include <QSet>

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr int Ruled = 200;
constexpr int RuledEvery = 2;      ///< one buyer of so many
constexpr int UnapprovedEvery = 5; ///< of those that have a superior
constexpr int OffEvery = 7;        ///< of the others, approval switched off again
constexpr int LastingEvery = 3;    ///< orders that do not expire
constexpr int UntickedEvery = 2;   ///< goods that travel without their invoice
constexpr std::array<const char16_t *, 6> Days{u"6", u"30", u"7", u"15", u"3", u"60"};

bool Buys(const Organisation &organisation)
{
    return organisation.InUse() &&
           (organisation.type == OrgType::Hospital || organisation.type == OrgType::Pharmacy);
}

/// The superior of each organisation that has one.
QHash<QString, QString> Superiors(const TableRows &affiliation)
{
    const qsizetype organisation = affiliation.Place(u"ORG_ID"_s);
    const qsizetype superior = affiliation.Place(u"PARENT_ORGID"_s);
    QHash<QString, QString> superiors;
    for (const qsizetype row : affiliation.LiveRows()) {
        if (const QString id = affiliation.Text(row, superior); !id.isEmpty())
            superiors.insert(affiliation.Text(row, organisation), id);
    }
    return superiors;
}

class Maker
{
public:
    explicit Maker(History &history)
        : history_(history)
    {
    }

    void Add(const QString &orgId, const QString &groupId, const QString &superior)
    {
        const int number = added_++;
        const bool approved = !superior.isEmpty() && number % UnapprovedEvery != 0;
        const bool off = approved && number % OffEvery == 0;
        const bool expires = number % LastingEvery != 0;
        const bool withInvoice = number % UntickedEvery != 0;
        const auto add = [&](const QString &code, const QString &name, const QString &value,
                             const QString &type, bool changed = false) {
            const Stamp last = history_.Note(
                {rows_.Table(), orgId, code}, groupId, history_.Begin(Phase::Rules, groupId),
                changed ? QList{Change::Insert, Change::Modify} : LifeOf(State::Live));
            rows_.Add({orgId, code, name, value, type, {}, u"1"_s}, last);
        };
        add(u"ORG_SJJGSH"_s, u"是否启用上级机构审核！"_s, FlagText(approved && !off), u"B"_s, off);
        if (approved)
            add(u"ORG_SJJGSH_ORGID"_s, u"上级审核机构ID"_s, superior, u"S"_s);
        add(u"ORG_DDYXQ"_s, u"启用订单有效期"_s, FlagText(expires), u"B"_s);
        add(u"ORG_DDYXQ_TS"_s, u"订单有效期天数"_s,
            expires ? QString::fromUtf16(Days[static_cast<std::size_t>(number) % Days.size()])
                    : QString(),
            u"S"_s);
        add(u"ORG_HPTX"_s, u"货票同行"_s, FlagText(withInvoice), u"B"_s);
    }

    int Added() const { return added_; }
    TableRows Rows() { return std::move(rows_); }

private:
    TableRows rows_{u"UNI_ORG_RULE"_s,
                    {u"ORG_ID"_s, u"RULE_CODE"_s, u"RULE_NAME"_s, u"RULE_VALUE"_s, u"VALUE_TYPE"_s,
                     u"REMARK"_s, u"ENABLE_FLAG"_s}};
    History &history_;
    int added_ = 0;
};

} // namespace

TableRows OrganisationRuleRows(const std::vector<Membership> &memberships,
                               const TableRows &affiliation, History &history)
{
    const QHash<QString, QString> superiors = Superiors(affiliation);
    Maker maker(history);
    QSet<QString> seen;
    for (const Membership &membership : memberships) {
        const QString &orgId = membership.organisation->id;
        if (maker.Added() == Ruled)
            break;
        if (membership.state == State::Deleted || !Buys(*membership.organisation) ||
            seen.contains(orgId))
            continue;
        seen.insert(orgId);
        if (seen.size() % RuledEvery == 0)
            maker.Add(orgId, membership.groupId, superiors.value(orgId));
    }
    return maker.Rows();
}

} // namespace Qel::Demo
