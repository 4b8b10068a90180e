"""NoticManager: announcements."""

from ..methods import ADD_USER, DELETE_NOTICE, PUBLISH_NOTICE, REMOVE_USER, SAVE_NOTICE
from ..registry import check
from ..site import notice_row

METHODS = "Methods"
SAVE, DELETE = "method.NoticManager.insertUpdateNotic.", "method.NoticManager.deleteNotic."
PUBLISH = "method.NoticManager.confirmNotic."


def own_group(case):
    """A group that this user is assigned to."""
    group, user = case.site.new_group(case), case.site.session["UserId"]
    row = {"USER_ID": user, "UNION_ID": group}
    case.stored(ADD_USER, row)
    case.later(lambda: case.codes(REMOVE_USER, row))
    return group


def write(case, group, **values):
    answer = case.stored(SAVE_NOTICE, notice_row(group, **values))[0]
    case.equal(set(answer), {"ID"}, "names of the values")
    case.later(lambda: case.codes(DELETE_NOTICE, answer))
    return answer["ID"]


def stored(case, key, columns):
    return case.peer.query(f"SELECT {columns} FROM SYS_AFFICHE WHERE ID = '{key}'").rows


@check(SAVE + "1", METHODS, "An announcement is written unpublished, and a change unpublishes it; the log has"
       " 1, 3 and 2", writes=True)
def announcements(case):
    group, session = own_group(case), case.site.session
    key = write(case, group, END_DATE="2024-03-12")
    case.equal(stored(case, key, "AFFICHE_TITLE, AFFICHE_CONTENT, START_DATE, END_DATE, ENABLE_FLAG,"
                                 " CREATE_USER, CHECK_USER"),
               [["停业通知", "春节停业。", "2024-03-05 00:00:00", "2024-03-12 00:00:00", "0",
                 session["UserName"], None]], "the announcement")
    case.answers("1", PUBLISH_NOTICE, {"ID": key, "ENABLE_FLAG": "1"})
    case.equal(stored(case, key, "ENABLE_FLAG, CHECK_USER"), [["1", session["UserName"]]], "who published it")
    case.equal(case.stored(SAVE_NOTICE, notice_row(group, ID=key, START_DATE="2024-03-06 08:30:00")),
               [{"ID": key}], "values")
    case.equal(stored(case, key, "START_DATE, END_DATE, ENABLE_FLAG, CHECK_USER"),
               [["2024-03-06 08:30:00", None, "0", None]], "the changed announcement")
    case.equal(case.log("SYS_AFFICHE", key), ["1", "3", "2"], "changes in the log")


@check(SAVE + "0", METHODS, "0: a group that the user is not assigned to, an end before the start, a blank"
       " title, dates and flags that are none", writes=True)
def makes_no_sense(case):
    group, foreign = own_group(case), case.site.new_group(case)
    for values in ({"UNION_ID": foreign}, {"UNION_ID": "no-such"}, {"END_DATE": "2024-03-04"},
                   {"START_DATE": ""}, {"START_DATE": "2024-02-30"}, {"AFFICHE_TITLE": "  "},
                   {"AFFICHE_CONTENT": "\n"}, {"AFFICHE_TYPE": "2"}, {"ENABLE_FLAG": "1"},
                   {"PUBLIC_FLAG": ""}, {"BUYER_FLAG": "2"}, {"ID": "no-such"}):
        case.answers("0", SAVE_NOTICE, notice_row(group) | values)
    case.equal(case.count(f"SYS_AFFICHE WHERE UNION_ID = '{group}'"), 0, "announcements")
    write(case, group, END_DATE="2024-03-05")


@check(PUBLISH + "0", METHODS, "0: an announcement that is published or gone already", writes=True)
def publish(case):
    key = write(case, own_group(case))
    for value in ("0", ""):
        case.answers("0", PUBLISH_NOTICE, {"ID": key, "ENABLE_FLAG": value})
    for code in ("1", "0", "0"):
        case.answers(code, PUBLISH_NOTICE, {"ID": key, "ENABLE_FLAG": "1"})
    case.equal(case.log("SYS_AFFICHE", key), ["1", "3"], "changes in the log")


@check(DELETE + "1", METHODS, "An announcement is deleted for good, which is in the log as 6; 0: it is gone"
       " already", writes=True)
def delete(case):
    key = write(case, own_group(case))
    for code in ("1", "0"):
        case.answers(code, DELETE_NOTICE, {"ID": key})
        case.equal(stored(case, key, "ID"), [], "announcements with the key")
    case.answers("0", PUBLISH_NOTICE, {"ID": key, "ENABLE_FLAG": "1"})
    case.equal(case.log("SYS_AFFICHE", key), ["1", "6"], "changes in the log")


@check(SAVE + "others", METHODS, "0: an announcement for a group that the user is not assigned to any more",
       writes=True)
def of_others(case):
    group = own_group(case)
    key = write(case, group)
    membership = {"USER_ID": case.site.session["UserId"], "UNION_ID": group}
    case.answers("1", REMOVE_USER, membership)
    case.answers("0", SAVE_NOTICE, notice_row(group, ID=key))
    case.answers("0", PUBLISH_NOTICE, {"ID": key, "ENABLE_FLAG": "1"})
    case.answers("0", DELETE_NOTICE, {"ID": key})
    case.answers("1", ADD_USER, membership)
    case.answers("1", DELETE_NOTICE, {"ID": key})
