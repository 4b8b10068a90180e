#include "managers/RuleManager.h"

#include "managers/Records.h"
#include "managers/References.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Keys{u"UNION_ID"_s, u"RULE_CODE"_s};
const QStringList Contents{u"RULE_NAME"_s, u"RULE_VALUE"_s, u"VALUE_TYPE"_s, u"ENABLE_FLAG"_s,
                           u"REMARK"_s};

const RecordTable &UnionRules()
{
    static const RecordTable table(u"UNI_UNION_RULE"_s, Keys, Contents);
    return table;
}

/// A rule that the system knows.
struct Rule
{
    QString code;
    QString valueType; ///< "B" yes or no, "S" a text
    bool (*takes)(Store::Connection &connection, const QString &unionId, const QString &value);
};

bool TakesFlag(Store::Connection &, const QString &, const QString &value)
{
    return IsFlag(value);
}

const QList<Rule> &KnownUnionRules()
{
    static const QList<Rule> rules{
        {u"UNI_JTCGDSH"_s, u"B"_s, TakesFlag},
        {u"UNI_JTCGDSH_ORGID"_s, u"S"_s, IsLiveMember}, // who audits the orders of the members
    };
    return rules;
}

bool MakesSense(Store::Connection &connection, const PostedRow &row)
{
    const auto &rules = KnownUnionRules();
    const auto rule = std::find_if(rules.begin(), rules.end(), [&](const Rule &one) {
        return one.code == row[u"RULE_CODE"_s];
    });
    return rule != rules.end() && rule->valueType == row[u"VALUE_TYPE"_s] &&
           rule->takes(connection, row[u"UNION_ID"_s], row[u"RULE_VALUE"_s]) &&
           !row[u"RULE_NAME"_s].trimmed().isEmpty() && IsFlag(row[u"ENABLE_FLAG"_s]);
}

/// Stores a rule of a group or, with LAST_OPERATE "D", deletes it.
/// "0": there is no such group, the system knows no such rule, or the rule does not take the value;
/// there is nothing to delete.
Wire::ResultRow InsertUpdateUnionRule(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of(Keys);
    if (!IsLiveGroup(post.connection, keys[0]))
        return {Failed, {}};
    if (row[u"LAST_OPERATE"_s] == Deletion)
        return {UnionRules().Delete(post, keys) ? Stored : Failed, {}};
    if (!MakesSense(post.connection, row))
        return {Failed, {}};
    UnionRules().Put(post, UnionRules().Find(post.connection, keys), keys, row.Of(Contents));
    return {Stored, {}};
}

} // namespace

QList<Method> RuleManagerMethods()
{
    return {
        {.manager = u"com.business.admin.RuleManager"_s,
         .name = u"insertUpdateUnionRule"_s,
         .table = u"UNI_UNION_RULE"_s,
         .parameters = Keys + Contents + QStringList{u"LAST_OPERATE"_s},
         .key = Keys,
         .run = InsertUpdateUnionRule},
    };
}

} // namespace Qel::Managers
