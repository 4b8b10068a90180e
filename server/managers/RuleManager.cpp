#include "managers/RuleManager.h"

#include "managers/Records.h"
#include "managers/References.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString Code = u"RULE_CODE"_s;
const QStringList Contents{u"RULE_NAME"_s, u"RULE_VALUE"_s, u"VALUE_TYPE"_s, u"ENABLE_FLAG"_s,
                           u"REMARK"_s};

using Takes = bool (*)(Store::Connection &connection, const QString &holder, const QString &value);

/// A rule that the system knows.
struct Rule
{
    QString code;
    QString valueType; ///< "B" yes or no, "S" a text
    Takes takes;
    QString filedAs = code; ///< the code under which it is stored and read
};

/// Who has rules, where they are stored, and which there are.
struct RuleBook
{
    RecordTable table;
    bool (*holds)(Store::Connection &connection, const QString &holder);
    QList<Rule> rules;
};

bool TakesFlag(Store::Connection &, const QString &, const QString &value)
{
    return IsFlag(value);
}

/// Who approves the orders of the organisation.
bool TakesSuperior(Store::Connection &connection, const QString &orgId, const QString &value)
{
    return value != orgId && IsLiveOrganisation(connection, value);
}

/// 0 to 9999 days, while orders expire. Else they count for nothing and may be what was left in the
/// field: nothing, or days below zero.
bool TakesDays(Store::Connection &connection, const QString &orgId, const QString &value)
{
    constexpr int MostDays = 9999;
    bool isNumber = false;
    const int days = value.toInt(&isNumber);
    if (isNumber && days >= 0)
        return days <= MostDays;
    const bool isEmptyOrBelow = value.isEmpty() || (isNumber && days >= -MostDays);
    return isEmptyOrBelow && !connection.Exists("SELECT 1 FROM UNI_ORG_RULE WHERE ORG_ID = ?1"
                                                " AND RULE_CODE = 'ORG_DDYXQ' AND RULE_VALUE = '1'"
                                                " AND LAST_OPERATE <> 'D'",
                                                {orgId});
}

const QStringList GroupKeys{u"UNION_ID"_s, Code};
const QStringList OrganisationKeys{u"ORG_ID"_s, Code};

const RuleBook &GroupRules()
{
    static const RuleBook book{
        .table = RecordTable(u"UNI_UNION_RULE"_s, GroupKeys, Contents),
        .holds = IsLiveGroup,
        .rules =
            {
                {u"UNI_JTCGDSH"_s, u"B"_s, TakesFlag},
                {u"UNI_JTCGDSH_ORGID"_s, u"S"_s, IsLiveMember}, // who audits the members' orders
            },
    };
    return book;
}

const RuleBook &OrganisationRules()
{
    static const RuleBook book{
        .table = RecordTable(u"UNI_ORG_RULE"_s, OrganisationKeys, Contents),
        .holds = IsOrganisationInUse,
        .rules =
            {
                {u"ORG_SJJGSH"_s, u"B"_s, TakesFlag},
                // The screen writes the superior under one code and reads it under the other.
                {u"ORG_SJJGSH_ID"_s, u"S"_s, TakesSuperior, u"ORG_SJJGSH_ORGID"_s},
                {u"ORG_DDYXQ"_s, u"B"_s, TakesFlag},
                {u"ORG_DDYXQ_TS"_s, u"S"_s, TakesDays},
                {u"ORG_HPTX"_s, u"B"_s, TakesFlag},
            },
    };
    return book;
}

bool MakesSense(Store::Connection &connection, const Rule &rule, const QString &holder,
                const PostedRow &row)
{
    return rule.valueType == row[u"VALUE_TYPE"_s] &&
           rule.takes(connection, holder, row[u"RULE_VALUE"_s]) &&
           !row[u"RULE_NAME"_s].trimmed().isEmpty() && IsFlag(row[u"ENABLE_FLAG"_s]);
}

/// Stores a rule, by holder and code, or, with LAST_OPERATE "D", deletes it. "0": there is no such
/// holder, the system knows no such rule, or the rule does not take the value; there is nothing to
/// delete.
Wire::ResultRow StoreRule(PostContext &post, const PostedRow &row, const RuleBook &book,
                          const QString &holder)
{
    const auto rule = std::ranges::find(book.rules, row[Code], &Rule::code);
    if (rule == book.rules.end())
        return {Failed, {}};
    const QStringList keys{holder, rule->filedAs};
    const auto old = book.table.Ask(post.connection, keys);
    if (!book.holds(post.connection, holder))
        return {Failed, {}};
    if (row[u"LAST_OPERATE"_s] == Deletion)
        return {book.table.Delete(post, keys) ? Stored : Failed, {}};
    if (!MakesSense(post.connection, *rule, holder, row))
        return {Failed, {}};
    book.table.Put(post, old(), keys, row.Of(Contents));
    return {Stored, {}};
}

Wire::ResultRow InsertUpdateUnionRule(PostContext &post, const PostedRow &row)
{
    return StoreRule(post, row, GroupRules(), row[GroupKeys[0]]);
}

Wire::ResultRow InsertUpdateOrgRule(PostContext &post, const PostedRow &row)
{
    return StoreRule(post, row, OrganisationRules(), row[OrganisationKeys[0]]);
}

} // namespace

QList<Method> RuleManagerMethods()
{
    const auto method = [](const QString &name, const QString &table, const QStringList &keys,
                           MethodFunction run) {
        return Method{.manager = u"com.business.admin.RuleManager"_s,
                      .name = name,
                      .table = table,
                      .parameters = keys + Contents + QStringList{u"LAST_OPERATE"_s},
                      .key = keys,
                      .run = run};
    };
    return {
        method(u"insertUpdateUnionRule"_s, u"UNI_UNION_RULE"_s, GroupKeys, InsertUpdateUnionRule),
        method(u"insertUpdateOrgRule"_s, u"UNI_ORG_RULE"_s, OrganisationKeys, InsertUpdateOrgRule),
    };
}

} // namespace Qel::Managers
