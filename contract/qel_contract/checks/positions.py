"""QEL-Position: reading what was written, whichever copy of the database answers."""

from ..methods import SAVE_GROUP, nothing
from ..peer import POSITION, POST, QUERY
from ..registry import check

COPIES = "Copies of the database"


def query_with(case, position, sql="SELECT ORG_ID FROM BAS_ORG"):
    body = case.peer.encode({"sql": sql, "page": 1, "pageSize": 1, "queryType": 1})
    answer = case.peer.request("POST", QUERY, body, {POSITION: position})
    case.equal(answer.status, 200, f"status of a query with {POSITION}: {position}")
    return answer


@check("position.any-is-taken", COPIES, "A query with any position is answered, one that cannot be read too")
def any_is_taken(case):
    for position in ("latest", "0/0", "no-such-position", "x" * 64, "FFFFFFFF/FFFFFFFF"):
        query_with(case, position)


@check("position.form", COPIES, "The position of a post, if there is one, has up to 64 visible ASCII characters"
       " and is taken back", writes=True)
def form(case):
    body = case.peer.encode({"manager": SAVE_GROUP[0], "method": SAVE_GROUP[1],
                             "rows": [[list(pair) for pair in nothing(SAVE_GROUP).items()]]})
    position = case.peer.request("POST", POST, body).header(POSITION)
    case.that(len(position) <= 64 and all("!" <= c <= "~" for c in position), "its form", position)
    if position:
        query_with(case, position)


@check("position.own-writing", COPIES, "Who sends the position of his last post reads what it stored",
       writes=True)
def own_writing(case):
    group = case.site.new_group(case)  # queries of the kit carry the last position, as the library's do
    for remark in ("一", "二", "三", "四", "五"):
        row = case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").maps()[0]
        case.answers("1", SAVE_GROUP, {name: row[name] or "" for name in nothing(SAVE_GROUP)}
                     | {"REMARK": remark})
        case.equal(case.column(f"SELECT REMARK FROM UNI_UNION WHERE UNION_ID = '{group}'"), [remark],
                   "the remark")
