"""How messages are read: strictly, in both media types."""

from .. import cbor
from ..peer import CBOR, JSON, POST, QUERY
from ..registry import BOTH, check
from .http import SQL

ENCODINGS = "Encodings"
POST_MESSAGE = {"manager": "com.business.admin.UniUnion", "method": "delete_UniUnion",
                "rows": [[["UNION_ID", "no-such"]]]}
QUERY_MESSAGE = {"sql": SQL, "page": 1, "pageSize": 3, "queryType": 1}


def bad(case, path, body):
    error = case.refused(400, "http.bad_request", case.peer.call, "POST", path, body)
    case.that(any(ord(c) > 127 for c in error.message), "a message in Chinese", error.message)


def without(message, key):
    return {name: value for name, value in message.items() if name != key}


@check("message.order-of-keys", ENCODINGS, "Keys come in any order", media=BOTH)
def order_of_keys(case):
    backwards = dict(reversed(QUERY_MESSAGE.items()))
    case.equal(case.peer.call("POST", QUERY, case.peer.encode(backwards)),
               case.peer.call("POST", QUERY, case.peer.encode(QUERY_MESSAGE)), "the answer")


@check("message.unknown-key", ENCODINGS, "An unknown key is 400 http.bad_request", media=BOTH)
def unknown_key(case):
    bad(case, QUERY, case.peer.encode({**QUERY_MESSAGE, "extra": 1}))
    bad(case, POST, case.peer.encode({**POST_MESSAGE, "extra": 1}))


@check("message.missing-key", ENCODINGS, "A missing key is 400 http.bad_request", media=BOTH)
def missing_key(case):
    for path, message in ((QUERY, QUERY_MESSAGE), (POST, POST_MESSAGE)):
        for key in message:
            bad(case, path, case.peer.encode(without(message, key)))


@check("message.item-of-another-type", ENCODINGS, "An item of another type is 400 http.bad_request", media=BOTH)
def other_type(case):
    for path, message in (
            (QUERY, {**QUERY_MESSAGE, "sql": None}), (QUERY, {**QUERY_MESSAGE, "sql": 1}),
            (QUERY, {**QUERY_MESSAGE, "page": "1"}), (QUERY, {**QUERY_MESSAGE, "page": None}),
            (QUERY, {**QUERY_MESSAGE, "pageSize": [3]}), (QUERY, []), (QUERY, "text"), (QUERY, 1),
            (POST, {**POST_MESSAGE, "manager": None}), (POST, {**POST_MESSAGE, "rows": {}}),
            (POST, {**POST_MESSAGE, "rows": [{"UNION_ID": "no-such"}]}),
            (POST, {**POST_MESSAGE, "rows": [[["UNION_ID", 1]]]}),
            (POST, {**POST_MESSAGE, "rows": [[["UNION_ID", None]]]}),
            (POST, {**POST_MESSAGE, "rows": [[["UNION_ID"]]]}),
            (POST, {**POST_MESSAGE, "rows": [[["UNION_ID", "1", "2"]]]}),
            (POST, {**POST_MESSAGE, "rows": [["UNION_ID", "1"]]})):
        bad(case, path, case.peer.encode(message))


@check("message.number-out-of-bounds", "Query", "A number out of its bounds is 400 http.bad_request", media=BOTH)
def bounds(case):
    for change in ({"page": -1}, {"page": 1_000_000_001}, {"pageSize": 1_000_001}, {"pageSize": -1},
                   {"page": 0}, {"pageSize": 0}, {"queryType": 0}, {"queryType": 3},
                   {"page": 2**32 + 1}, {"page": 2**63}, {"page": 2**64 - 1}):
        bad(case, QUERY, case.peer.encode({**QUERY_MESSAGE, **change}))
    case.peer.call("POST", QUERY, case.peer.encode(
        {**QUERY_MESSAGE, "page": 1_000_000_000, "pageSize": 1_000_000}))


@check("message.not-whole", ENCODINGS, "Bytes after the end, a message cut short and none at all are"
       " 400 http.bad_request", media=BOTH)
def not_whole(case):
    for path, message in ((QUERY, QUERY_MESSAGE), (POST, POST_MESSAGE)):
        whole = case.peer.encode(message)
        for body in (b"", whole + b"\x00", whole + whole, whole[:-1], whole[:len(whole) // 2], whole[1:],
                     b"\xff", b"\x00\x01\x02"):
            bad(case, path, body)


@check("message.one-item-of-cbor", ENCODINGS, "A CBOR message has no repeated key and no float as a number",
       media=(CBOR,))
def cbor_items(case):
    pairs = [cbor.encode(key) + cbor.encode(value) for key, value in QUERY_MESSAGE.items()]
    bad(case, QUERY, b"\xa5" + b"".join(pairs) + pairs[1])
    as_float = b"".join(pairs[:1] + [cbor.encode("page") + b"\xfb\x3f\xf0" + bytes(6)] + pairs[2:])
    bad(case, QUERY, b"\xa4" + as_float)
    bad(case, QUERY, b"\xbb" + b"\xff" * 8)  # a map of 2**64 - 1
    bad(case, QUERY, b"\x81" * 5000)
    not_utf8 = b"".join([cbor.encode("sql") + b"\x62\xff\xfe"] + pairs[1:])
    bad(case, QUERY, b"\xa4" + not_utf8)


@check("message.one-item-of-json", ENCODINGS, "A JSON message is UTF-8 and JSON to the letter",
       media=(JSON,))
def json_items(case):
    whole = case.peer.encode(QUERY_MESSAGE)
    for body in (whole.replace(b'"page": 1', b'"page": 1.5'), whole.replace(b'"', b"'"),
                 whole.replace(b"}", b",}"), b"[" * 5000, b"/**/" + whole,
                 whole.replace(b"ORG_ID", b"\xff\xfe"), whole.replace(b'"page": 1', b'"page": NaN')):
        bad(case, QUERY, body)


@check("message.names-of-a-row", "Post", "Names are not empty and differ within a row without regard to case", media=BOTH)
def names_of_a_row(case):
    for row in ([["UNION_ID", "1"], ["UNION_ID", "2"]], [["UNION_ID", "1"], ["union_id", "2"]],
                [["", "1"]]):
        bad(case, POST, case.peer.encode({**POST_MESSAGE, "rows": [row]}))


@check("message.same-answer", ENCODINGS, "Both media types tell the same", media=BOTH)
def same_answer(case):
    for sql in ("SELECT * FROM BAS_ORG ORDER BY ORG_ID", "SELECT * FROM BAS_PRODUCT ORDER BY PRODUCT_ID",
                "SELECT * FROM UNI_UNION ORDER BY UNION_ID", "SELECT ORG_ID FROM BAS_ORG WHERE 1 = 2"):
        case.equal(case.other.query(sql, 1, 40), case.peer.query(sql, 1, 40), f"the answer to {sql}")


@check("message.reference", "Errors", "Each error has a reference of its own", media=BOTH)
def reference(case):
    seen = {case.refused(404, "http.not_found", case.peer.call, "GET", "/nowhere").reference
            for _ in range(3)}
    case.equal(len(seen), 3, "references of three errors")
