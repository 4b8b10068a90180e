"""Idempotency keys."""

import uuid

from ..methods import DELETE_GROUP, MOVE_IN, SAVE_GROUP, nothing
from ..peer import POST
from ..registry import BOTH, check
from ..site import group_row

REPEATING = "Repeating requests"


def new_row(case):
    return group_row(UNION_CODE=case.site.codes(1)[0], MASTER_ORGID=case.site.leaders(1)[0])


def save(case, row, key):
    results = case.post(SAVE_GROUP, row, key=key)
    if results[0][0] == "1":
        group = results[0][1]["UNION_ID"]
        case.later(lambda: case.codes(DELETE_GROUP, {"UNION_ID": group}))
    return results


def groups(case, row):
    return case.count(f"UNI_UNION WHERE LAST_OPERATE <> 'D' AND UNION_CODE = '{row['UNION_CODE']}'")


@check("key.once", REPEATING, "Posts with one key and body take effect once and have one answer",
       writes=True, media=BOTH)
def once(case):
    row, key = new_row(case), str(uuid.uuid4())
    first = save(case, row, key)
    case.equal([code for code, _ in first], ["1"], "codes")
    for _ in range(2):
        case.equal(case.post(SAVE_GROUP, row, key=key), first, "the answer to a repetition")
    case.equal(groups(case, row), 1, "groups")
    case.equal(case.log("UNI_UNION", first[0][1]["UNION_ID"]), ["1"], "changes in the log")


@check("key.answer-outlives-the-row", REPEATING, "A repetition has the first answer, also when the data"
       " changed since", writes=True, media=BOTH)
def outlives(case):
    row, key = new_row(case), str(uuid.uuid4())
    first = save(case, row, key)
    case.answers("1", DELETE_GROUP, first[0][1])
    case.equal(case.post(SAVE_GROUP, row, key=key), first, "the answer to a repetition")
    case.equal(groups(case, row), 0, "groups")


@check("key.refusals-too", REPEATING, "A refusal is an answer that is kept, too", writes=True, media=BOTH)
def refusals(case):
    key, rows = str(uuid.uuid4()), [nothing(MOVE_IN)]
    first = case.post(MOVE_IN, *rows, key=key)
    case.equal(case.post(MOVE_IN, *rows, key=key), first, "the answer to a repetition")


@check("key.other-body", REPEATING, "A key with another body is 409 post.key_reused", writes=True, media=BOTH)
def other_body(case):
    row, key = new_row(case), str(uuid.uuid4())
    save(case, row, key)
    for other in ({**row, "UNION_NAME": "另一个集团"}, {**row, "REMARK": " "}):
        case.refused(409, "post.key_reused", save, case, other, key)
    case.refused(409, "post.key_reused", lambda: case.post(DELETE_GROUP, nothing(DELETE_GROUP), key=key))
    case.equal(groups(case, row), 1, "groups")


@check("key.other-user", REPEATING, "A key of another user is 409 post.key_reused", writes=True,
       second=True, media=BOTH)
def other_user(case):
    key, rows = str(uuid.uuid4()), [nothing(MOVE_IN)]
    case.post(MOVE_IN, *rows, key=key)
    case.refused(409, "post.key_reused", case.second.post, *MOVE_IN, rows, key)


@check("key.errors-are-not-kept", REPEATING, "An error is no answer: its key may be used", writes=True, media=BOTH)
def errors(case):
    row, key = new_row(case), str(uuid.uuid4())
    bad = {name: value for name, value in row.items() if name != "REMARK"}
    case.refused(400, "post.bad_row", save, case, bad, key)
    case.equal(save(case, row, key)[0][0], "1", "the code")


@check("key.without", REPEATING, "A post without a key runs each time it comes", writes=True, media=BOTH)
def without(case):
    row = new_row(case)
    case.equal(save(case, row, None)[0][0], "1", "the code")
    case.equal(save(case, row, None)[0][0], "-2", "the code of the same post again")


@check("key.form", REPEATING, "A key has up to 64 visible ASCII characters; others are 400"
       " http.bad_request", writes=True, media=BOTH)
def form(case):
    message = {"manager": MOVE_IN[0], "method": MOVE_IN[1],
               "rows": [[list(pair) for pair in nothing(MOVE_IN).items()]]}
    body = case.peer.encode(message)
    for key in ("x" * 65, "a b", "schlüssel"):
        case.refused(400, "http.bad_request", case.peer.call, "POST", POST, body, {"Idempotency-Key": key})
    unique = uuid.uuid4().hex
    for key in (unique + "!#~" + unique[:29], unique):
        case.peer.call("POST", POST, body, {"Idempotency-Key": key})
