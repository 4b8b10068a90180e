"""UniUnion: types of members. UniUnionOrg: members."""

from ..methods import DELETE_MEMBER, SAVE_MEMBER, SAVE_TYPE
from ..registry import check
from ..site import type_row

METHODS = "Methods"
TYPE = "method.UniUnion.insert_update_UniOrgType."
SAVE, DELETE = "method.UniUnionOrg.insert_update_UniUnionOrg.", "method.UniUnionOrg.delete_UniOrg."


def new_type(case, group, name="采购成员", flag="BUYER_FLAG"):
    row = type_row(group, name, flag)
    row["ORG_TYPE_ID"] = case.stored(SAVE_TYPE, row)[0]["ORG_TYPE_ID"]
    forget_later(case, row)
    return row["ORG_TYPE_ID"]


def forget_later(case, row):
    case.later(lambda: case.codes(SAVE_TYPE, {**row, "LAST_OPERATE": "D"}))


def add(case, group, organisation, kind):
    member = {"UNION_ID": group, "ORG_ID": organisation}
    case.stored(SAVE_MEMBER, {**member, "ORG_TYPE_ID": kind})
    case.later(lambda: case.codes(DELETE_MEMBER, member))
    return member


def kinds_of_members(case, group):
    return dict(case.peer.query("SELECT ORG_ID, ORG_TYPE_ID FROM UNI_ORG WHERE LAST_OPERATE <> 'D'"
                                f" AND UNION_ID = '{group}'").rows)


@check(TYPE + "1", METHODS, "Types are added, changed and deleted; the log has 1, 2 and 5", writes=True)
def types(case):
    group = case.site.new_group(case)
    row = type_row(group, "采购成员", "BUYER_FLAG", REMARK="备注")
    first, second = [values["ORG_TYPE_ID"] for values in case.stored(
        SAVE_TYPE, row, type_row(group, "配送成员", "SENDER_FLAG"))]
    forget_later(case, type_row(group, "配送成员", "SENDER_FLAG", ORG_TYPE_ID=second))
    stored = f"SELECT ORG_TYPE_NAME, BUYER_FLAG, SALER_FLAG, REMARK FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '{first}'"
    case.equal(case.peer.query(stored).rows, [["采购成员", "1", "0", "备注"]], "the stored type")
    changed = {**row, "ORG_TYPE_ID": first, "ORG_TYPE_NAME": "医院", "SALER_FLAG": "1", "LAST_OPERATE": ""}
    case.equal(case.stored(SAVE_TYPE, changed), [{"ORG_TYPE_ID": first}], "values")
    case.equal(case.peer.query(stored).rows, [["医院", "1", "1", "备注"]], "the changed type")
    case.answers("1", SAVE_TYPE, {**changed, "LAST_OPERATE": "D"},
                 type_row(group, "配送成员", "SENDER_FLAG", ORG_TYPE_ID=second))
    case.equal(case.log("UNI_ORG_TYPE", first), ["1", "2", "5"], "changes in the log")
    case.equal(case.log("UNI_ORG_TYPE", second), ["1"], "changes of the other type in the log")
    case.answers("1", SAVE_TYPE, {**changed, "LAST_OPERATE": "D"})
    case.equal(case.log("UNI_ORG_TYPE", first), ["1", "2", "5"], "changes after a second deletion")


@check(TYPE + "-1", METHODS, "-1: live members have the type that is to be deleted", writes=True)
def type_in_use(case):
    group = case.site.new_group(case)
    kind = new_type(case, group)
    member = add(case, group, case.site.members(1)[0], kind)
    deletion = type_row(group, "采购成员", "BUYER_FLAG", ORG_TYPE_ID=kind, LAST_OPERATE="D")
    case.answers("-1", SAVE_TYPE, deletion)
    case.answers("-1", SAVE_TYPE, type_row(group, "又一个", "BUYER_FLAG"), deletion)
    case.equal(case.count(f"UNI_ORG_TYPE WHERE UNION_ID = '{group}' AND LAST_OPERATE <> 'D'"), 1, "types")
    case.answers("1", DELETE_MEMBER, member)
    case.answers("1", SAVE_TYPE, deletion)


@check(TYPE + "0", METHODS, "0: ids that name nothing, a blank name, a flag that is none, a type that is"
       " gone or another group's", writes=True)
def type_makes_no_sense(case):
    group, other = case.site.new_group(case), case.site.new_group(case)
    kind = new_type(case, group)
    for values in ({"ORG_TYPE_NAME": ""}, {"ORG_TYPE_NAME": "  "}, {"BUYER_FLAG": "2"},
                   {"ADMIN_FLAG": ""}, {"ORG_TYPE_ID": "no-such"}, {"UNION_ID": "no-such"},
                   {"UNION_ID": other, "ORG_TYPE_ID": kind}, {"LAST_OPERATE": "D"}):
        case.answers("0", SAVE_TYPE, type_row(group, "类型", **values))
    case.answers("1", SAVE_TYPE, type_row(group, "采购成员", ORG_TYPE_ID=kind, LAST_OPERATE="D"))
    case.answers("0", SAVE_TYPE, type_row(group, "另一名称", ORG_TYPE_ID=kind))


@check(SAVE + "1", METHODS, "An organisation is added, gets another type, leaves and comes back into its"
       " old record; the log has 1, 2, 5 and 1", writes=True)
def members(case):
    group, organisation = case.site.new_group(case), case.site.members(1)[0]
    kind, other = new_type(case, group), new_type(case, group, "配送成员", "SENDER_FLAG")
    member = add(case, group, organisation, kind)
    case.equal(kinds_of_members(case, group), {organisation: kind}, "members and their types")
    case.answers("1", SAVE_MEMBER, {**member, "ORG_TYPE_ID": other, "LAST_USER": ""})
    case.equal(kinds_of_members(case, group), {organisation: other}, "members and their types")
    case.answers("1", DELETE_MEMBER, member)
    case.equal(kinds_of_members(case, group), {}, "members and their types")
    case.answers("1", SAVE_MEMBER, {**member, "ORG_TYPE_ID": kind})
    case.equal(case.log("UNI_ORG", group, organisation), ["1", "2", "5", "1"], "changes in the log")
    case.equal(case.count(f"UNI_ORG WHERE UNION_ID = '{group}'"), 1, "records, marked ones too")


@check(SAVE + "-1", METHODS, "-1: the organisation to add is a member, whose type stays", writes=True)
def is_member(case):
    group, (organisation, another) = case.site.new_group(case), case.site.members(2)
    kind, other = new_type(case, group), new_type(case, group, "配送成员", "SENDER_FLAG")
    member = add(case, group, organisation, kind)
    case.answers("-1", SAVE_MEMBER, {**member, "ORG_TYPE_ID": other})
    case.answers("-1", SAVE_MEMBER, {"UNION_ID": group, "ORG_ID": another, "ORG_TYPE_ID": kind},
                 {**member, "ORG_TYPE_ID": other})
    case.equal(kinds_of_members(case, group), {organisation: kind}, "members and their types")


@check(SAVE + "0", METHODS, "0: no such type in the group, a change of what is no member, an organisation"
       " that is not in use", writes=True)
def no_member(case):
    group, other_group = case.site.new_group(case), case.site.new_group(case)
    organisation = case.site.members(1)[0]
    kind, foreign = new_type(case, group), new_type(case, other_group)
    row = {"UNION_ID": group, "ORG_ID": organisation, "ORG_TYPE_ID": kind}
    for values in ({"ORG_TYPE_ID": foreign}, {"ORG_TYPE_ID": ""}, {"ORG_TYPE_ID": "no-such"},
                   {"ORG_ID": "no-such"}, {"UNION_ID": "no-such"}, {"LAST_USER": ""}):
        case.answers("0", SAVE_MEMBER, {**row, **values})
    out_of_use = case.column("SELECT ORG_ID FROM BAS_ORG WHERE ENABLE_FLAG <> '1' OR LAST_OPERATE = 'D'",
                             1, 1)
    for one in out_of_use:
        case.answers("0", SAVE_MEMBER, {**row, "ORG_ID": one})
    case.equal(kinds_of_members(case, group), {}, "members")


@check(SAVE + "unchanged", METHODS, "A change to the type that the member has writes nothing", writes=True)
def unchanged(case):
    group, organisation = case.site.new_group(case), case.site.members(1)[0]
    kind = new_type(case, group)
    member = add(case, group, organisation, kind)
    case.answers("1", SAVE_MEMBER, {**member, "ORG_TYPE_ID": kind, "LAST_USER": ""})
    case.equal(case.log("UNI_ORG", group, organisation), ["1"], "changes in the log")


@check(SAVE + "many", METHODS, "Several organisations are added by one post", writes=True)
def many(case):
    group, organisations = case.site.new_group(case), case.site.members(5)
    kind = new_type(case, group)
    rows = [{"UNION_ID": group, "ORG_ID": one, "ORG_TYPE_ID": kind} for one in organisations]
    case.answers("1", SAVE_MEMBER, *rows)
    case.equal(kinds_of_members(case, group), dict.fromkeys(organisations, kind), "members and types")
    case.answers("1", DELETE_MEMBER, *({"UNION_ID": group, "ORG_ID": one} for one in organisations))
    case.equal(kinds_of_members(case, group), {}, "members")


@check(DELETE + "0", METHODS, "0: what is no member; a list with one is left as it is", writes=True)
def delete_none(case):
    group, (organisation, another) = case.site.new_group(case), case.site.members(2)
    member = add(case, group, organisation, new_type(case, group))
    case.answers("0", DELETE_MEMBER, {**member, "ORG_ID": another})
    case.answers("0", DELETE_MEMBER, member, {**member, "ORG_ID": another})
    case.equal(list(kinds_of_members(case, group)), [organisation], "members")
    case.answers("1", DELETE_MEMBER, member)
    case.answers("0", DELETE_MEMBER, member)
