"""Pages, totals and fields of queries."""

from ..registry import BOTH, check
from ..tables import tables

QUERY = "Query"


def statement(case):
    """A statement whose ORDER BY leaves ties, with at least 20 rows."""
    case.site.members(20)
    return "SELECT ORG_ID, ORG_TYPE FROM BAS_ORG WHERE LAST_OPERATE <> 'D' ORDER BY ORG_TYPE"


@check("query.all-rows", QUERY, "A query without a page gives every row, and total is their number", media=BOTH)
def all_rows(case):
    table = case.peer.query(statement(case))
    case.equal(table.names, ["ORG_ID", "ORG_TYPE"], "fields")
    case.equal(len(set(table.column("ORG_ID"))), table.total, "different keys")
    case.equal(table.total, case.peer.query(statement(case), 1, 1).total, "total of a page")


@check("query.pages", QUERY, "Pages neither overlap nor leave out rows, and each has the total of all", media=BOTH)
def pages(case):
    whole = case.peer.query(statement(case))
    size = max(7, -(-whole.total // 6))
    seen = []
    for page in range(1, -(-whole.total // size) + 1):
        table = case.peer.query(statement(case), page, size)
        case.equal(table.total, whole.total, f"total of page {page}")
        seen += table.rows
    case.equal(len(seen), whole.total, "rows of all pages")
    case.equal(sorted(map(repr, seen)), sorted(map(repr, whole.rows)), "the rows of all pages")


@check("query.pages-again", QUERY, "A page that is asked for again is the same", media=BOTH)
def pages_again(case):
    for page in (1, 2):
        case.equal(case.peer.query(statement(case), page, 7).rows,
                   case.peer.query(statement(case), page, 7).rows, f"page {page}")


@check("query.page-sizes", QUERY, "Pages of different sizes are cut from one sequence of rows", media=BOTH)
def page_sizes(case):
    for sql in (statement(case), "SELECT ORG_TYPE FROM BAS_ORG", "SELECT DISTINCT ORG_TYPE FROM BAS_ORG"):
        large = case.peer.query(sql, 1, 12).rows
        small = [row for page in (1, 2, 3, 4) for row in case.peer.query(sql, page, 3).rows]
        case.equal(small, large, f"four pages of 3 rows of {sql}")


@check("query.page-behind-the-last", QUERY, "A page behind the last row has fields and total, and no rows", media=BOTH)
def behind(case):
    table = case.peer.query(statement(case), 1_000_000, 50)
    case.equal((table.rows, table.names), ([], ["ORG_ID", "ORG_TYPE"]), "rows and fields")
    case.equal(table.total, case.peer.query(statement(case), 1, 1).total, "total")


@check("query.no-rows", QUERY, "A statement that selects nothing gives fields and no rows", media=BOTH)
def no_rows(case):
    sql = "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = 'no-such'"
    for table in (case.peer.query(sql), case.peer.query(sql, 1, 5)):
        case.equal((table.total, table.rows, table.names), (0, [], ["ORG_ID"]), "total, rows, fields")


@check("query.type-is-a-hint", QUERY, "The query type changes nothing of the answer", media=BOTH)
def query_type(case):
    case.equal(case.peer.query(statement(case), 1, 5, 2), case.peer.query(statement(case), 1, 5, 1),
               "the answer")


@check("query.null-and-empty", "Table of rows, as JSON", "An empty text reads as NULL, never as ''", media=BOTH)
def null_and_empty(case):
    for table, columns in tables().items():
        texts = [name for name, kind, _ in columns if kind == "text"]
        found = case.peer.query(f"SELECT * FROM {table}", 1, 60)
        for name in texts:
            case.that("" not in found.column(name), f"no empty text in {table}.{name}")


@check("query.nothing-is-changed", "Requests", "A statement that would change something is refused", media=BOTH)
def nothing_is_changed(case):
    before = case.count("UNI_UNION")
    for sql in ("DELETE FROM UNI_UNION", "UPDATE UNI_UNION SET REMARK = 'x'", "DROP TABLE UNI_UNION",
                "INSERT INTO UNI_UNION (UNION_ID) VALUES ('1')", "COMMIT", "BEGIN NULL; END;",
                "SELECT 1 FROM UNI_UNION; DELETE FROM UNI_UNION"):
        case.refused(400, "sql.not_select", case.peer.query, sql)
    case.equal(case.count("UNI_UNION"), before, "groups")
