"""Posts in general: results, unknown methods, operators."""

from ..methods import DELETE_GROUP, MOVE_IN, SAVE_GROUP, SAVE_MEMBER, SAVE_TYPE, METHODS, nothing
from ..peer import POST, read_results
from ..registry import check
from ..site import group_row

POSTS = "Post"
METHODS_PARAGRAPH = "Methods"


@check("post.unknown-method", "Errors", "A manager or method that there is not is 404 post.unknown_method",
       writes=True)
def unknown_method(case):
    for method in ((SAVE_GROUP[0], "drop_everything"), ("com.nowhere", SAVE_GROUP[1]), ("", ""),
                   (SAVE_GROUP[0].lower(), SAVE_GROUP[1]), (SAVE_GROUP[0], SAVE_GROUP[1].upper())):
        case.refused(404, "post.unknown_method", case.post, method, {"UNION_ID": "1"})


@check("post.order-of-parameters", METHODS_PARAGRAPH, "Parameters come in any order", writes=True)
def order_of_parameters(case):
    row = dict(reversed(nothing(SAVE_GROUP).items()))
    case.answers("0", SAVE_GROUP, row)


@check("post.results", "Result rows", "There is one result a row, in the order of the rows", writes=True)
def results(case):
    rows = [nothing(MOVE_IN, PRODUCT_ID=f"no-such-{number}") for number in range(60)]
    found = case.post(MOVE_IN, *rows)
    case.equal(found, [("0", {"PRODUCT_ID": row["PRODUCT_ID"]}) for row in rows], "results")


@check("post.no-rows", METHODS_PARAGRAPH, "A post without rows is taken by the one method that says so,"
       " and has one result", writes=True)
def no_rows(case):
    case.equal(case.post(SAVE_TYPE), [("1", {})], "results")
    for method in METHODS:
        if method != SAVE_TYPE:
            case.refused(400, "post.bad_row", case.post, method)


@check("post.all-or-nothing", "Result rows", "A method that stores all rows or none gives every row the"
       " code of the refusal, and stores nothing", writes=True)
def all_or_nothing(case):
    codes, leaders = case.site.codes(2), case.site.leaders(2)
    rows = [group_row(UNION_CODE=code, MASTER_ORGID=org) for code, org in zip(codes, leaders)]
    bad = group_row(UNION_ID="no-such", UNION_CODE=codes[0], MASTER_ORGID=leaders[0])
    for posted in ([*rows, bad], [bad, *rows], [rows[0], bad, rows[1]]):
        case.answers("0", SAVE_GROUP, *posted)
        for code in codes:
            case.equal(case.count(f"UNI_UNION WHERE UNION_CODE = '{code}'"), 0, f"groups {code}")


@check("post.operator", METHODS_PARAGRAPH, "The operator's columns are empty or the credential's; others"
       " are 403 post.operator", writes=True)
def operator(case):
    session = case.peer.session()
    row = nothing(DELETE_GROUP)
    own = {"LOG_USER_ID": session["UserId"], "LAST_USER_ID": session["UserId"],
           "LOG_USER_NAME": session["UserName"], "CREATE_USER": session["UserName"],
           "CHECK_USER": session["UserName"], "LAST_USER": session["UserName"]}
    case.answers("0", DELETE_GROUP, {**row, **own})
    for text in (session["UserCode"], session["OrgName"], ""):
        case.answers("0", DELETE_GROUP, {**row, "LAST_USER": text})
    for name in own:
        case.answers("0", DELETE_GROUP, {**row, name: ""})
        error = case.refused(403, "post.operator", case.post, DELETE_GROUP, {**row, name: "no-such-user"})
        case.that(name in error.message, "the message names the column", error.message)


@check("post.last-user", METHODS_PARAGRAPH, "LAST_USER and LAST_USER_ID of a stored row are the"
       " credential's, whatever the row left empty", writes=True)
def last_user(case):
    session = case.peer.session()
    group = case.site.new_group(case)
    stored = "SELECT LAST_USER, LAST_USER_ID FROM UNI_UNION WHERE UNION_ID = '%s'" % group
    case.equal(case.peer.query(stored).rows, [[session["UserName"], session["UserId"]]], "who stored it")


@check("post.empty-is-null", METHODS_PARAGRAPH, "A stored empty text reads as NULL", writes=True)
def empty_is_null(case):
    group = case.site.new_group(case)
    case.equal(case.peer.query(f"SELECT PARENT_ID, REMARK, UNION_TYPE FROM UNI_UNION WHERE UNION_ID ="
                               f" '{group}'").rows, [[None, None, None]], "what was left empty")


@check("post.texts", METHODS_PARAGRAPH, "Stored texts come back to the letter", writes=True)
def texts(case):
    for remark in ("it's", "a\\b%_", " blanks  kept ", "换行\n制表\t", "𠀀𡃁 Ωß", '<"&>', "''; DROP"):
        group = case.site.new_group(case, REMARK=remark)
        case.equal(case.column(f"SELECT REMARK FROM UNI_UNION WHERE UNION_ID = '{group}'"), [remark],
                   "the remark")
        case.end()


@check("post.media", "Encodings", "What one media type stored the other changes", writes=True)
def media(case):
    group = case.site.new_group(case)
    row = case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").maps()[0]
    changed = {name: row[name] or "" for name in METHODS[SAVE_GROUP][1]} | {"REMARK": "另一种编码"}
    other = case.other
    answer = read_results(other.call("POST", POST, other.encode(
        {"manager": SAVE_GROUP[0], "method": SAVE_GROUP[1],
         "rows": [[list(pair) for pair in changed.items()]]})), 1)
    case.equal(answer, [("1", {"UNION_ID": group})], "results")
    case.equal(case.column(f"SELECT REMARK FROM UNI_UNION WHERE UNION_ID = '{group}'"), ["另一种编码"],
               "the remark")


@check("post.many-rows", "Post", "A list of 500 rows is one post", writes=True)
def many_rows(case):
    rows = [nothing(SAVE_MEMBER, ORG_ID=f"no-such-{number}") for number in range(500)]
    case.answers("0", SAVE_MEMBER, *rows)
