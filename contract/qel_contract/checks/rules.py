"""RuleManager: rules of groups and of organisations."""

from ..methods import SAVE_GROUP_RULE, SAVE_ORG_RULE
from ..registry import check
from ..case import Missing
from .members import add, new_type

METHODS = "Methods"
GROUP, ORG = "method.RuleManager.insertUpdateUnionRule.", "method.RuleManager.insertUpdateOrgRule."


def rule(code, value, kind, **values):
    return {"RULE_CODE": code, "RULE_NAME": "规则", "RULE_VALUE": value, "VALUE_TYPE": kind,
            "ENABLE_FLAG": "1", "REMARK": "", "LAST_OPERATE": "1", **values}


def stored(case, table, key, holder):
    return dict(case.peer.query(f"SELECT RULE_CODE, RULE_VALUE FROM {table} WHERE LAST_OPERATE <> 'D'"
                                f" AND {key} = '{holder}'").rows)


@check(GROUP + "1", METHODS, "Rules of a group are stored by their code, changed and deleted; the log has 1,"
       " 2 and 5", writes=True)
def group_rules(case):
    group, organisation = case.site.new_group(case), case.site.members(1)[0]
    add(case, group, organisation, new_type(case, group))
    flag = {"UNION_ID": group, **rule("UNI_JTCGDSH", "1", "B")}
    auditor = {"UNION_ID": group, **rule("UNI_JTCGDSH_ORGID", organisation, "S", LAST_OPERATE="")}
    case.answers("1", SAVE_GROUP_RULE, flag, auditor)
    case.equal(stored(case, "UNI_UNION_RULE", "UNION_ID", group),
               {"UNI_JTCGDSH": "1", "UNI_JTCGDSH_ORGID": organisation}, "rules")
    case.answers("1", SAVE_GROUP_RULE, flag)
    case.answers("1", SAVE_GROUP_RULE, {**flag, "RULE_VALUE": "0"})
    for row in (flag, auditor):
        case.answers("1", SAVE_GROUP_RULE, {**row, "LAST_OPERATE": "D"})
        case.answers("0", SAVE_GROUP_RULE, {**row, "LAST_OPERATE": "D"})
    case.equal(case.log("UNI_UNION_RULE", group, "UNI_JTCGDSH"), ["1", "2", "5"], "changes in the log")


@check(GROUP + "0", METHODS, "0: a rule that there is not, a value that it does not take, a group that is"
       " gone; nothing of the list is stored", writes=True)
def wrong_group_rules(case):
    group, organisation = case.site.new_group(case), case.site.members(1)[0]
    good = {"UNION_ID": group, **rule("UNI_JTCGDSH", "1", "B")}
    for bad in (rule("NO_SUCH_RULE", "1", "B"), rule("UNI_JTCGDSH_ORGID", organisation, "S"),
                rule("UNI_JTCGDSH_ORGID", "no-such", "S"), rule("UNI_JTCGDSH_ORGID", "", "S")):
        case.answers("0", SAVE_GROUP_RULE, good, {"UNION_ID": group, **bad})
    for values in ({"RULE_VALUE": "2"}, {"RULE_VALUE": ""}, {"VALUE_TYPE": "S"}, {"RULE_NAME": " "},
                   {"ENABLE_FLAG": "x"}, {"UNION_ID": "no-such"}, {"LAST_OPERATE": "D"}):
        case.answers("0", SAVE_GROUP_RULE, {**good, **values})
    case.equal(stored(case, "UNI_UNION_RULE", "UNION_ID", group), {}, "rules")


def without_rules(case, count):
    found = case.column("SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D' AND ENABLE_FLAG = '1' AND ORG_ID"
                        " NOT IN (SELECT ORG_ID FROM UNI_ORG_RULE WHERE LAST_OPERATE <> 'D')"
                        " ORDER BY ORG_ID", 1, count)
    if len(found) < count:
        raise Missing(f"{count} organisations in use without rules")
    return found


@check(ORG + "1", METHODS, "Rules of an organisation are stored; the superior under its other code",
       writes=True)
def organisation_rules(case):
    organisation, superior = without_rules(case, 2)
    rows = [{"ORG_ID": organisation, **one} for one in (
        rule("ORG_SJJGSH", "1", "B"), rule("ORG_SJJGSH_ID", superior, "S"), rule("ORG_DDYXQ", "1", "B"),
        rule("ORG_DDYXQ_TS", "30", "S"), rule("ORG_HPTX", "0", "B"))]
    case.later(lambda: [case.codes(SAVE_ORG_RULE, {**row, "LAST_OPERATE": "D"}) for row in rows])
    before = case.log("UNI_ORG_RULE", organisation, "ORG_SJJGSH_ORGID")
    for _ in range(2):
        case.answers("1", SAVE_ORG_RULE, *rows)
    case.equal(stored(case, "UNI_ORG_RULE", "ORG_ID", organisation),
               {"ORG_SJJGSH": "1", "ORG_SJJGSH_ORGID": superior, "ORG_DDYXQ": "1", "ORG_DDYXQ_TS": "30",
                "ORG_HPTX": "0"}, "rules")
    case.answers("1", SAVE_ORG_RULE, {**rows[1], "LAST_OPERATE": "D"})
    case.equal(case.log("UNI_ORG_RULE", organisation, "ORG_SJJGSH_ORGID")[len(before):], ["1", "5"],
               "changes of the superior in the log")


@check(ORG + "0", METHODS, "0: a rule that there is not, a value that it does not take, an organisation that"
       " is not in use", writes=True)
def wrong_organisation_rules(case):
    organisation, superior = without_rules(case, 2)
    for bad in (rule("ORG_SJJGSH_ORGID", superior, "S"), rule("ORG_SJJGSH_ID", organisation, "S"),
                rule("ORG_SJJGSH_ID", "no-such", "S"), rule("ORG_SJJGSH", "2", "B"),
                rule("ORG_DDYXQ_TS", "10000", "S"), rule("ORG_DDYXQ_TS", "x", "S"),
                rule("NO_SUCH_RULE", "1", "B"), rule("ORG_HPTX", "1", "S"), rule("ORG_HPTX", "1", "B",
                                                                                 RULE_NAME="")):
        case.answers("0", SAVE_ORG_RULE, {"ORG_ID": organisation, **bad})
    case.answers("0", SAVE_ORG_RULE, {"ORG_ID": "no-such", **rule("ORG_HPTX", "1", "B")})
    case.equal(stored(case, "UNI_ORG_RULE", "ORG_ID", organisation), {}, "rules")


@check(ORG + "days", METHODS, "While orders expire their days are 0 to 9999; else they may be left empty",
       writes=True)
def days(case):
    organisation = without_rules(case, 1)[0]

    def save(*rules):
        return case.codes(SAVE_ORG_RULE, *({"ORG_ID": organisation, **one} for one in rules))

    case.later(lambda: [save({**rule(code, "0", kind), "LAST_OPERATE": "D"})
                        for code, kind in (("ORG_DDYXQ", "B"), ("ORG_DDYXQ_TS", "S"))])
    empty = rule("ORG_DDYXQ_TS", "", "S")
    case.equal(save(empty), ["1"], "code without expiry")
    case.equal(save(rule("ORG_DDYXQ", "1", "B"), rule("ORG_DDYXQ_TS", "9999", "S")), ["1", "1"], "codes")
    case.equal(save(empty), ["0"], "code with expiry")
    case.equal(save(rule("ORG_DDYXQ", "0", "B"), empty), ["1", "1"], "codes")
