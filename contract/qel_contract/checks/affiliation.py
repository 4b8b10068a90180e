"""OrgAffiliationManager: which organisation stands below which."""

from ..methods import DELETE_PLACE, SAVE_PLACE
from ..registry import check

METHODS = "Methods"
SAVE = "method.OrgAffiliationManager.insertUpdateOrgAffiliation."
DELETE = "method.OrgAffiliationManager.deleteOrgAffiliation."
LIVE = "FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D'"


def place(organisation, parent, code, level, key=""):
    return {"ID": key, "ORG_ID": organisation, "PARENT_ORGID": parent, "TREE_CODE": code,
            "TREE_LEVEL": str(level)}


def put(case, *where):
    row = place(*where)
    key = case.stored(SAVE_PLACE, row)[0]["ID"]
    case.later(lambda: case.codes(DELETE_PLACE, deletion(row["ORG_ID"])))
    return key


def deletion(organisation):
    return {"ORG_ID": organisation, "ENABLE_FLAG": "D"}


def standing(case, organisation):
    return case.peer.query(f"SELECT PARENT_ORGID, TREE_CODE, TREE_LEVEL {LIVE} AND ORG_ID ="
                           f" '{organisation}'").rows


@check(SAVE + "1", METHODS, "Places are given at the top and below; the log has 1", writes=True)
def places(case):
    (one, below), top = case.site.homeless(2), case.site.tree_codes(1)[0]
    key = put(case, one, "", top, 1)
    put(case, below, one, top + "01", 2)
    case.equal((standing(case, one), standing(case, below)),
               ([[None, top, "1"]], [[one, top + "01", "2"]]), "superior, code, level of both")
    case.equal(case.log("BAS_ORG_AFFILIATION", key), ["1"], "changes in the log")
    case.answers("1", SAVE_PLACE, place(one, "", top, 1, key))
    case.equal(case.log("BAS_ORG_AFFILIATION", key), ["1"], "changes after a post that changes nothing")


@check(SAVE + "exchange", METHODS, "Those below follow an organisation that is exchanged; the log has 2",
       writes=True)
def exchange(case):
    (one, below, other), top = case.site.homeless(3), case.site.tree_codes(1)[0]
    key = put(case, one, "", top, 1)
    key_below = put(case, below, one, top + "01", 2)
    case.equal(case.stored(SAVE_PLACE, place(other, "", top, 1, key)), [{"ID": key}], "values")
    try:
        case.equal(standing(case, below), [[other, top + "01", "2"]], "the place below")
        case.equal(standing(case, one), [], "the place of the organisation that left")
        case.equal((case.log("BAS_ORG_AFFILIATION", key), case.log("BAS_ORG_AFFILIATION", key_below)),
                   (["1", "2"], ["1", "2"]), "changes of both places in the log")
    finally:
        case.codes(DELETE_PLACE, deletion(below))
        case.codes(DELETE_PLACE, deletion(other))


@check(SAVE + "-2", METHODS, "-2: the organisation stands in the tree; before -1 where both hold", writes=True)
def stands_already(case):
    (one, below), top = case.site.homeless(2), case.site.tree_codes(1)[0]
    put(case, one, "", top, 1)
    put(case, below, one, top + "01", 2)
    case.answers("-2", SAVE_PLACE, place(below, "", top, 1))
    case.answers("-2", SAVE_PLACE, place(below, "", case.site.tree_codes(2)[1], 1))


@check(SAVE + "-1", METHODS, "-1: the code is taken", writes=True)
def code_taken(case):
    (one, below, other), top = case.site.homeless(3), case.site.tree_codes(1)[0]
    put(case, one, "", top, 1)
    key = put(case, below, one, top + "01", 2)
    case.answers("-1", SAVE_PLACE, place(other, "", top, 1))
    case.answers("-1", SAVE_PLACE, place(other, one, top + "01", 2))
    put(case, other, one, top + "02", 2)
    case.answers("-1", SAVE_PLACE, place(below, one, top + "02", 2, key))


@check(SAVE + "0", METHODS, "0: ids that name nothing, a code that does not fit the superior, a level that"
       " does not fit the code, a superior below itself", writes=True)
def makes_no_sense(case):
    (one, below, other), top = case.site.homeless(3), case.site.tree_codes(1)[0]
    key = put(case, one, "", top, 1)
    put(case, below, one, top + "01", 2)
    free = case.site.tree_codes(2)[1]
    for row in (place("no-such", "", free, 1), place(other, "no-such", free + "01", 2),
                place(other, "", free + "01", 2), place(other, "", "12a4", 1), place(other, "", "", 1),
                place(other, one, free, 1), place(other, one, top + "002", 2), place(other, "", free, 2),
                place(other, "", free, ""), place(other, "", free, 1, "no-such"),
                place(one, below, top + "0101", 3, key), place(one, one, top + "02", 2, key)):
        case.answers("0", SAVE_PLACE, row)
    case.equal(standing(case, other), [], "the organisation that was refused")


@check(SAVE + "code-above-others", METHODS, "0: another code of a place that has others below it",
       writes=True)
def recoded(case):
    (one, below), (top, free) = case.site.homeless(2), case.site.tree_codes(2)
    key = put(case, one, "", top, 1)
    key_below = put(case, below, one, top + "01", 2)
    case.answers("0", SAVE_PLACE, place(one, "", free, 1, key))
    case.answers("1", SAVE_PLACE, place(below, one, top + "09", 2, key_below))
    case.equal(standing(case, below), [[one, top + "09", "2"]], "the place below")


@check(DELETE + "1", METHODS, "An organisation is taken out, also twice; -1: others stand below it; 0: it"
       " never was in the tree. The log has 5", writes=True)
def take_out(case):
    (one, below), top = case.site.homeless(2), case.site.tree_codes(1)[0]
    put(case, one, "", top, 1)
    key = put(case, below, one, top + "01", 2)
    case.answers("-1", DELETE_PLACE, deletion(one))
    case.answers("0", DELETE_PLACE, {"ORG_ID": below, "ENABLE_FLAG": "1"})
    for organisation in (below, below, one, one):
        case.answers("1", DELETE_PLACE, deletion(organisation))
        case.equal(standing(case, organisation), [], "the place")
    case.answers("0", DELETE_PLACE, deletion("no-such"))
    case.equal(case.log("BAS_ORG_AFFILIATION", key), ["1", "5"], "changes in the log")
