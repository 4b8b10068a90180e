"""Where a server's limits end there is an error, never an answer cut short."""

from ..peer import QUERY, Refused
from ..registry import check
from ..transport import NoAnswer

LIMITS = "Limits"


@check("limit.depth", LIMITS, "A statement that is too deep is 400 sql.limit")
def depth(case):
    for levels in (100, 1000):
        for sql in ("SELECT " + "(" * levels + "1" + ")" * levels + " AS N FROM BAS_ORG",
                    "SELECT " + "NVL(" * levels + "1" + ",1)" * levels + " AS N FROM BAS_ORG",
                    "SELECT ORG_ID FROM BAS_ORG WHERE " + "NOT " * levels + "1 = 1"):
            case.refused(400, "sql.limit", case.peer.query, sql, 1, 1)


@check("limit.tables", LIMITS, "A statement of too many tables is 400 sql.limit")
def number_of_tables(case):
    names = ", ".join(f"BAS_ORG T{number}" for number in range(200))
    case.refused(400, "sql.limit", case.peer.query, f"SELECT T1.ORG_ID FROM {names}", 1, 1)


@check("limit.length", LIMITS, "A statement of 100 KiB is taken, and one of more than 1 MiB is 400 sql.limit",
       heavy=True)
def length(case):
    def sql(size):
        text = "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = 'no-such'"
        return text + " " * (size - len(text))
    case.equal(case.peer.query(sql(100 << 10), 1, 1).rows, [], "rows")
    case.equal(case.peer.query(sql(1 << 20), 1, 1).rows, [], "rows")
    case.refused(400, "sql.limit", case.peer.query, sql((1 << 20) + 1), 1, 1)


@check("limit.literals", LIMITS, "A list of 10,000 literals is taken, and one of too many is 400 sql.limit",
       heavy=True)
def literals(case):
    def sql(count):
        return f"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN ({','.join(chr(39) + 'x' + chr(39) for _ in range(count))})"
    case.equal(case.peer.query(sql(10_000), 1, 1).rows, [], "rows")
    case.refused(400, "sql.limit", case.peer.query, sql(60_000), 1, 1)


@check("limit.body", LIMITS, "A request that is too large is 413 http.too_large, and the next one is answered",
       heavy=True)
def body(case):
    peer = case.also(case.peer.speaking(case.peer.media))
    try:
        peer.call("POST", QUERY, b"x" * (64 << 20))
        case.that(False, "a request of 64 MiB is refused")
    except Refused as error:
        case.equal((error.status, error.code), (413, "http.too_large"), "the answer")
    except NoAnswer:
        pass  # the server may hang up while the body is still on its way; then nothing was read
    peer.close()
    peer.session()


@check("limit.rows", LIMITS, "An answer of too many rows is 422 query.too_large, not a part of it", heavy=True)
def rows(case):
    products = case.count("BAS_PRODUCT")
    sql = "SELECT A.PRODUCT_ID FROM BAS_PRODUCT A, BAS_PRODUCT B"
    try:
        table = case.peer.query(sql)
    except Refused as error:
        case.equal((error.status, error.code), (422, "query.too_large"), "the answer")
    else:
        case.equal(table.total, products * products, "rows, if all are given")


@check("limit.header", LIMITS, "Headers of a megabyte end in an error or in the end of the connection",
       heavy=True)
def header(case):
    peer = case.also(case.peer.speaking(case.peer.media))
    try:
        answer = peer.request("GET", "/session", headers={"X-Filler": "x" * (1 << 20)})
        case.that(400 <= answer.status < 500, "a status from 400 to 499", answer.status)
    except NoAnswer:
        pass
    peer.close()
    peer.session()
