"""StockManager: who may see whose stock."""

from ..case import Missing
from ..methods import SAVE_STOCK
from ..registry import check
from .members import add, new_type

METHODS = "Methods"
SAVE = "method.StockManager.stockOrgManager."


def permission(owner, viewer, quantity="0", operation="1"):
    return {"OWNER_ORGID": owner, "ORG_ID": viewer, "SHOW_QTY": quantity, "LAST_OPERATE": operation}


def pair(case):
    """Two organisations of one group without a permission between them."""
    group, organisations = case.site.new_group(case), case.site.members(6)
    standing = set(map(tuple, case.peer.query(
        "SELECT OWNER_ORGID, ORG_ID FROM STK_ORG_SET WHERE LAST_OPERATE <> 'D'").rows))
    owner, viewer = next((one, two) for one in organisations for two in organisations
                         if one != two and (one, two) not in standing)
    kind = new_type(case, group)
    add(case, group, owner, kind)
    add(case, group, viewer, kind)
    case.later(lambda: case.codes(SAVE_STOCK, permission(owner, viewer, "0", "D")))
    return owner, viewer


def live(case, owner, viewer):
    return case.column("SELECT SHOW_QTY FROM STK_ORG_SET WHERE LAST_OPERATE <> 'D' AND OWNER_ORGID ="
                       f" '{owner}' AND ORG_ID = '{viewer}'")


@check(SAVE + "1", METHODS, "A permission is given, changed and taken, also twice; the log has 1, 2 and 5",
       writes=True)
def permissions(case):
    owner, viewer = pair(case)
    before = case.log("STK_ORG_SET", owner, viewer)
    for flag in ("0", "0", "1"):
        case.answers("1", SAVE_STOCK, permission(owner, viewer, flag))
        case.equal(live(case, owner, viewer), [flag], "the permission")
    for _ in range(2):
        case.answers("1", SAVE_STOCK, permission(owner, viewer, "1", "D"))
        case.equal(live(case, owner, viewer), [], "the permission")
    case.equal(case.log("STK_ORG_SET", owner, viewer)[len(before):], ["1", "2", "5"], "changes in the log")


@check(SAVE + "-1", METHODS, "-1: both are one organisation; the list is stored whole or not", writes=True)
def one_organisation(case):
    owner, viewer = pair(case)
    case.answers("-1", SAVE_STOCK, permission(owner, viewer), permission(owner, owner))
    case.equal(live(case, owner, viewer), [], "the permission")


@check(SAVE + "-2", METHODS, "-2: they share no group", writes=True)
def strangers(case):
    owner, viewer = pair(case)
    rows = case.column("SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D' AND ENABLE_FLAG = '1' AND ORG_ID"
                       " NOT IN (SELECT ORG_ID FROM UNI_ORG WHERE LAST_OPERATE <> 'D')", 1, 1)
    if not rows:
        raise Missing("an organisation in use that is in no group")
    case.answers("-2", SAVE_STOCK, permission(owner, viewer), permission(owner, rows[0]))
    case.equal(live(case, owner, viewer), [], "the permission")


@check(SAVE + "0", METHODS, "0: ids that name nothing, a flag that is none, a permission that never was",
       writes=True)
def nothing_there(case):
    owner, viewer = pair(case)
    for row in (permission(owner, "no-such"), permission("no-such", viewer), permission(owner, viewer, "2"),
                permission(owner, viewer, ""), permission(owner, "no-such", "0", "D")):
        case.answers("0", SAVE_STOCK, row)
    case.equal(live(case, owner, viewer), [], "the permission")
