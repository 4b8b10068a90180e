"""UniUnion: groups."""

from ..methods import DELETE_GROUP, SAVE_GROUP
from ..registry import check
from ..site import group_row
from .members import add, new_type

METHODS = "Methods"
SAVE, DELETE = "method.UniUnion.insert_update_UniUnion.", "method.UniUnion.delete_UniUnion."


def fresh(case, **values):
    return group_row(**{"UNION_CODE": case.site.codes(1)[0], "MASTER_ORGID": case.site.leaders(1)[0],
                        **values})


def code_of(case, group):
    return case.column(f"SELECT UNION_CODE FROM UNI_UNION WHERE UNION_ID = '{group}'")[0]


def row_of(case, group, **values):
    """The group as it would be posted again."""
    found = case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").maps()[0]
    return {name: found[name] or "" for name in group_row()} | values


def new_below(case, parent, number="01"):
    return case.site.new_group(case, PARENT_ID=parent, UNION_CODE=code_of(case, parent) + number)


@check(SAVE + "new", METHODS, "A new group is stored, answers its key and is in the log as 1", writes=True)
def new(case):
    row = fresh(case, UNION_TYPE="3", REMARK="备注")
    group = case.site.new_group(case, UNION_TYPE="3", REMARK="备注")
    found = case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").maps()
    case.equal(len(found), 1, "groups with the key")
    for name in ("UNION_CODE", "UNION_NAME", "UNION_TYPE", "MASTER_ORGID", "REMARK"):
        case.equal(found[0][name], row[name], name)
    case.equal((found[0]["ENABLE_FLAG"], found[0]["LAST_OPERATE"]), ("1", "1"), "marks of a live group")
    case.equal(case.log("UNI_UNION", group), ["1"], "changes in the log")


@check(SAVE + "change", METHODS, "A group is changed under its key, which is in the log as 2", writes=True)
def change(case):
    group = case.site.new_group(case)
    values = case.stored(SAVE_GROUP, row_of(case, group, UNION_NAME="新名称"))
    case.equal(values, [{"UNION_ID": group}], "values")
    case.equal(row_of(case, group)["UNION_NAME"], "新名称", "the name")
    case.equal(case.log("UNI_UNION", group), ["1", "2"], "changes in the log")


@check(SAVE + "-2", METHODS, "-2: the organisation leads another group; before -1 where both hold",
       writes=True)
def leads_another(case):
    first = case.site.new_group(case)
    leader, code = row_of(case, first)["MASTER_ORGID"], code_of(case, first)
    case.answers("-2", SAVE_GROUP, fresh(case, MASTER_ORGID=leader))
    case.answers("-2", SAVE_GROUP, fresh(case, MASTER_ORGID=leader, UNION_CODE=code))
    second = case.site.new_group(case)
    case.answers("-2", SAVE_GROUP, row_of(case, second, MASTER_ORGID=leader))
    case.answers("1", SAVE_GROUP, row_of(case, first))


@check(SAVE + "-1", METHODS, "-1: the code is taken", writes=True)
def code_taken(case):
    first = case.site.new_group(case)
    case.answers("-1", SAVE_GROUP, fresh(case, UNION_CODE=code_of(case, first)))
    second = case.site.new_group(case)
    case.answers("-1", SAVE_GROUP, row_of(case, second, UNION_CODE=code_of(case, first)))


@check(SAVE + "0", METHODS, "0: ids that name nothing, a blank name, values that make no sense", writes=True)
def makes_no_sense(case):
    group = case.site.new_group(case)
    code = code_of(case, group)
    for values in ({"UNION_ID": "no-such"}, {"UNION_NAME": ""}, {"UNION_TYPE": "9"}, {"UNION_CODE": ""},
                   {"UNION_CODE": "123"}, {"UNION_CODE": "12a4"}, {"UNION_CODE": "123456"},
                   {"MASTER_ORGID": "no-such"}, {"REGION_ID": "no-such"},
                   {"PARENT_ID": "no-such", "UNION_CODE": code + "01"},
                   {"PARENT_ID": group, "UNION_CODE": code + "001"},
                   {"PARENT_ID": group}):
        case.answers("0", SAVE_GROUP, fresh(case, **values))


@check(SAVE + "below-itself", METHODS, "0: a group that would stand below itself", writes=True)
def below_itself(case):
    top = case.site.new_group(case)
    below = new_below(case, top)
    code = code_of(case, below)
    case.answers("0", SAVE_GROUP, row_of(case, top, PARENT_ID=below, UNION_CODE=code + "01"))
    case.answers("0", SAVE_GROUP, row_of(case, top, PARENT_ID=top, UNION_CODE=code_of(case, top) + "02"))


@check(SAVE + "codes-below-follow", METHODS, "Codes of the groups below follow a group's new code",
       writes=True)
def codes_follow(case):
    top = case.site.new_group(case)
    below = new_below(case, top)
    lowest = new_below(case, below, "07")
    other = case.site.codes(1)[0]
    case.answers("1", SAVE_GROUP, row_of(case, top, UNION_CODE=other))
    case.equal([code_of(case, group) for group in (top, below, lowest)],
               [other, other + "01", other + "0107"], "codes")
    case.equal(case.log("UNI_UNION", lowest), ["1", "2"], "changes of the lowest group in the log")


@check(SAVE + "next-code", METHODS, "The codes that the screen proposes are taken", writes=True)
def next_code(case):
    top = case.site.new_group(case)
    proposal = ("SELECT nvl(Max(Union_CODE)+1,'01') AS CODE  FROM Uni_Union  WHERE PARENT_ID='%s'"
                "   AND ENABLE_FLAG <> 'D'")
    case.equal(case.column(proposal % top), ["1"], "the first number below a group")
    below = new_below(case, top, "05")
    expected = str(int(code_of(case, below)) + 1)
    case.equal(case.column(proposal % top), [expected], "the next code")


@check(DELETE + "1", METHODS, "A deleted group is marked, and in the log as 5", writes=True)
def delete(case):
    group = case.site.new_group(case)
    case.answers("1", DELETE_GROUP, {"UNION_ID": group})
    case.equal(case.peer.query(f"SELECT LAST_OPERATE, ENABLE_FLAG FROM UNI_UNION WHERE UNION_ID ="
                               f" '{group}'").rows, [["D", "D"]], "marks of a deleted group")
    case.equal(case.log("UNI_UNION", group), ["1", "5"], "changes in the log")
    case.answers("0", DELETE_GROUP, {"UNION_ID": group})
    case.answers("0", SAVE_GROUP, row_of(case, group))


@check(DELETE + "free-again", METHODS, "Code and organisation of a deleted group are free again", writes=True)
def free_again(case):
    group = case.site.new_group(case)
    row = row_of(case, group)
    case.answers("1", DELETE_GROUP, {"UNION_ID": group})
    again = case.stored(SAVE_GROUP, {**row, "UNION_ID": ""})[0]["UNION_ID"]
    case.later(lambda: case.codes(DELETE_GROUP, {"UNION_ID": again}))
    case.that(again != group, "another key", again)


@check(DELETE + "-1", METHODS, "-1: it has sub-groups", writes=True)
def has_groups(case):
    top = case.site.new_group(case)
    new_below(case, top)
    case.answers("-1", DELETE_GROUP, {"UNION_ID": top})


@check(DELETE + "-2", METHODS, "-2: it has members; before -1 where both hold", writes=True)
def has_members(case):
    top = case.site.new_group(case)
    add(case, top, case.site.members(1)[0], new_type(case, top))
    case.answers("-2", DELETE_GROUP, {"UNION_ID": top})
    below = new_below(case, top)
    case.answers("-2", DELETE_GROUP, {"UNION_ID": top})
    case.answers("1", DELETE_GROUP, {"UNION_ID": below})


@check(SAVE + "regions", METHODS, "A group has a region of the table of regions", writes=True)
def regions(case):
    region = case.one("SELECT REGION_ID FROM BAS_REGION ORDER BY REGION_ID", "a region")[0]
    group = case.site.new_group(case, REGION_ID=region)
    case.equal(row_of(case, group)["REGION_ID"], region, "the region")
