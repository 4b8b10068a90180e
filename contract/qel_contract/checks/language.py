"""The query language where it is peculiar; values are asked for on one row of the organisations."""

from .. import registry
from ..case import quoted
from ..registry import BOTH, check

LANGUAGE = "Query language"

# Id, sentence, and expressions with their value (None: NULL).
VALUES = (
    ("empty-text", "An empty text is NULL, also where a function makes it", (
        ("''", None), ("NVL('','x')", "x"), ("CAST('' AS VARCHAR2(100))", None), ("TRIM('  ')", None),
        ("SUBSTR('abc',9)", None), ("NVL2('',1,2)", "2"), ("LENGTH('')", None), ("UPPER('')", None),
        ("DECODE('',NULL,'null','other')", "null"))),
    ("texts", "Texts are made of characters, beyond ASCII too", (
        ("UPPER('aäß中')", "AÄß中"), ("LOWER('AÄ中')", "aä中"), ("LENGTH('集团𠀀')", "3"),
        ("SUBSTR('集团管理',2,2)", "团管"), ("SUBSTR('abc',-2)", "bc"), ("SUBSTR('abc',0,2)", "ab"),
        ("TRIM(' a b ')", "a b"), ("'a'||'b'||'中'", "ab中"), ("'it''s'", "it's"), ("'a\\b%_'", "a\\b%_"))),
    ("concatenation", "A concatenation with NULL keeps the rest", (
        ("'a'||NULL||'b'", "ab"), ("'a'||''", "a"), ("1||'x'", "1x"))),
    ("nvl", "NVL and NVL2 replace NULL; NVL has the type of its first argument", (
        ("NVL(NULL,'x')", "x"), ("NVL('a','x')", "a"), ("NVL(1,'2')", "1"), ("NVL(NULL,2)", "2"),
        ("NVL2('a','yes','no')", "yes"), ("NVL2(NULL,'yes','no')", "no"))),
    ("decode", "DECODE compares in turn, and NULL equals NULL there", (
        ("DECODE('4','1','one','4','four','else')", "four"), ("DECODE('9','1','one','else')", "else"),
        ("DECODE('9','1','one')", None), ("DECODE(NULL,NULL,'0','1')", "0"),
        ("DECODE('1',NULL,'0','1')", "1"))),
    ("numbers", "Numbers are exact where they are whole, and division is not cut", (
        ("1+1", "2"), ("7/2", "3.5"), ("6/2", "3"), ("2*3-10", "-4"), ("-(1)", "-1"), ("0.1*10", "1"),
        ("'7'+1", "8"), ("TO_NUMBER('0012')", "12"), ("TRUNC(3.78)", "3"), ("TRUNC(3.78,1)", "3.7"),
        ("1+NULL", None))),
    ("dates", "Dates are read and written in the formats that the clients use", (
        ("to_date('2024-03-05 13:07:00','yyyy-mm-dd HH24:MI:SS')", "2024-03-05 13:07:00"),
        ("to_date('2024-03-05','yyyy-mm-dd')", "2024-03-05 00:00:00"),
        ("TO_CHAR(to_date('2024-03-05 13:07:09','yyyy-mm-dd hh24:mi:ss'),'yyyy-mm-dd')", "2024-03-05"),
        ("TO_CHAR(to_date('2024-03-05 13:07:09','yyyy-mm-dd hh24:mi:ss'),'hh24:mi:ss')", "13:07:09"),
        ("TRUNC(to_date('2024-03-05 13:07:00','yyyy-mm-dd hh24:mi:ss'))", "2024-03-05 00:00:00"),
        ("to_date('2024-02-28','yyyy-mm-dd')+2", "2024-03-01 00:00:00"),
        ("to_date('2024-03-05','yyyy-mm-dd')-to_date('2024-03-01','yyyy-mm-dd')", "4"))),
    ("casts", "CAST cuts nothing that fits; CHAR fills up with blanks", (
        ("CAST(' ' AS VARCHAR2(100))", " "), ("LENGTH(CAST('a' AS CHAR(10)))", "10"),
        ("CAST('' AS CHAR(10))", None), ("CAST('abc' AS VARCHAR2(100))", "abc"))),
)

# Id, sentence, and conditions with whether the row is found.
CONDITIONS = (
    ("comparison-with-null", "A comparison with NULL or an empty text is never true", (
        ("'a' <> ''", False), ("'' = ''", False), ("NULL = NULL", False), ("'' IS NULL", True),
        ("'a' <> NULL", False), ("NOT ('a' = '')", False), ("'a' IN ('b', NULL)", False),
        ("'a' NOT IN ('b', NULL)", False), ("' ' IS NOT NULL", True))),
    ("text-and-number", "A text against a number compares as a number", (
        ("'0007' = 7", True), ("'10' > 9", True), ("'10' > '9'", False), ("7 = '7.0'", True))),
    ("like", "LIKE minds the case; % and _ are wildcards, and nothing escapes them", (
        ("'Abc' like '%b%'", True), ("'ABC' like '%b%'", False), ("UPPER('abc') like '%B%'", True),
        ("'a%b' like 'a_b'", True), ("'axb' like 'a%b'", True), ("'a\\c' like '%\\c'", True),
        ("'集团管理' like '_团%'", True), ("'it''s' like '%''s'", True), ("NULL like '%'", False),
        ("'ab' not like 'b%'", True))),
    ("dates-compare", "Dates compare as moments, BETWEEN includes both ends", (
        ("to_date('2024-03-05','yyyy-mm-dd') between to_date('2024-03-05 00:00:00','yyyy-mm-dd HH24:MI:SS')"
         " and to_date('2024-03-05 23:59:59','yyyy-mm-dd HH24:MI:SS')", True),
        ("to_date('2024-03-05','yyyy-mm-dd') > to_date('2024-02-28 23:59:59','yyyy-mm-dd HH24:MI:SS')", True),
        ("to_date('2024-03-05','yyyy-mm-dd') <= to_date('2024-03-04','yyyy-mm-dd')", False))),
    ("logic", "AND binds before OR, NOT before both", (
        ("1=1 or 1=2 and 1=2", True), ("(1=1 or 1=2) and 1=2", False), ("not 1=2 and 1=1", True),
        ("1=2 and NULL = 1 or 1=1", True))),
)

# Statement and the code that it is refused with.
ERRORS = (
    ("syntax", "A statement that is none is 400 sql.syntax", "sql.syntax", (
        "SELECT", "SELECT FROM WHERE", "SELECT ORG_ID FROM BAS_ORG WHERE",
        "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = 'x", "SELECT (1 FROM BAS_ORG",
        "SELECT/*a*/ORG_ID FROM BAS_ORG", "SELECT ORG_ID FROM BAS_ORG -- x",
        "SELECT ORG_ID BAS_ORG ORDER", "SELECT DISTINCT ORG_TYPE FROM BAS_ORG WHERE ROWNUM <= 2")),
    ("not-select", "Anything but exactly one SELECT is 400 sql.not_select", "sql.not_select", (
        "DELETE FROM UNI_UNION", "UPDATE BAS_ORG SET ORG_NAME = 'x'", "DROP TABLE BAS_ORG",
        "SELECT 1 FROM BAS_ORG; SELECT 1 FROM BAS_ORG", "")),
    ("unknown-table", "A table that clients may not read is 400 sql.unknown_table at every depth",
     "sql.unknown_table", (
         "SELECT 1 FROM NO_SUCH_TABLE", "SELECT * FROM sqlite_master", "SELECT * FROM pg_user",
         "SELECT * FROM (SELECT * FROM ALL_USERS)", "SELECT * FROM USER_TABLES",
         "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN (SELECT TABLE_NAME FROM DBA_TABLES)")),
    ("unknown-column", "A column that there is not is 400 sql.unknown_column", "sql.unknown_column", (
        "SELECT NO_SUCH FROM UNI_UNION", "SELECT A.NO_SUCH FROM UNI_UNION A",
        "SELECT UNION_ID FROM UNI_UNION WHERE NO_SUCH = '1'",
        "SELECT UNION_ID FROM UNI_UNION ORDER BY NO_SUCH",
        "SELECT B.UNION_ID FROM UNI_UNION A", "SELECT ROWID FROM UNI_UNION")),
    ("ambiguous", "A name that fits several columns is 400 sql.ambiguous", "sql.ambiguous", (
        "SELECT UNION_ID FROM UNI_UNION A, UNI_ORG B",
        "SELECT A.UNION_ID FROM UNI_UNION A, UNI_ORG B WHERE UNION_ID = '1'")),
    ("function", "A function that is not on the list, or with wrong arguments, is 400 sql.function",
     "sql.function", (
         "SELECT NO_SUCH_FUNCTION(1) FROM UNI_UNION", "SELECT LOAD_EXTENSION('x') FROM UNI_UNION",
         "SELECT PG_SLEEP(1) FROM UNI_UNION", "SELECT SET_CONFIG('a','b',false) FROM UNI_UNION",
         "SELECT NVL(1) FROM UNI_UNION", "SELECT UPPER('a','b') FROM UNI_UNION")),
    ("value", "A literal that is no date or number where one is needed is 400 sql.value", "sql.value", (
        "SELECT to_date('x','yyyy-mm-dd') AS D FROM BAS_ORG",
        "SELECT ORG_ID FROM BAS_ORG WHERE LAST_UPDATE >= to_date('2024-13-05','yyyy-mm-dd')",
        "SELECT TO_NUMBER('x') AS N FROM BAS_ORG", "SELECT 'x' + 1 AS N FROM BAS_ORG",
        "SELECT 1/0 AS N FROM BAS_ORG")),
)


def one_row(case):
    return f"FROM BAS_ORG WHERE ORG_ID = {quoted(case.site.members(1)[0])}"


def _values_are(expressions):
    def run(case):
        columns = ", ".join(f"{text} AS C{at}" for at, (text, _) in enumerate(expressions))
        row = case.peer.query(f"SELECT {columns} {one_row(case)}").rows[0]
        for (text, expected), found in zip(expressions, row):
            if text.startswith("0.1") and found is not None:
                case.equal(float(found), float(expected), f"the value of {text}")
            else:
                case.equal(found, expected, f"the value of {text}")
    return run


def _conditions_are(conditions):
    def run(case):
        for text, holds in conditions:
            rows = case.peer.query(f"SELECT 1 AS N {one_row(case)} AND ({text})").rows
            case.equal(rows, [["1"]] if holds else [], f"rows where {text}")
    return run


def _refused_with(code, statements):
    def run(case):
        for sql in statements:
            error = case.refused(400, code, case.peer.query, sql)
            case.that(any(ord(c) > 127 for c in error.message), "a message in Chinese", error.message)
    return run


for name, sentence, expressions in VALUES:
    registry.add("language." + name, LANGUAGE, sentence, _values_are(expressions), media=registry.BOTH)
for name, sentence, conditions in CONDITIONS:
    registry.add("language." + name, LANGUAGE, sentence, _conditions_are(conditions))
for name, sentence, code, statements in ERRORS:
    registry.add("language.error." + name, "Errors", sentence, _refused_with(code, statements))


@check("language.types", "Table of rows, as JSON", "Expressions have the type that their values have", media=BOTH)
def types(case):
    table = case.peer.query(
        "SELECT 7 AS I, 0.5 AS R, 'x' AS T, to_date('2024-03-05','yyyy-mm-dd') AS D, ROWNUM AS N,"
        f" COUNT_OF.N AS C FROM BAS_ORG, (SELECT COUNT(*) AS N FROM BAS_ORG) COUNT_OF WHERE ORG_ID ="
        f" {quoted(case.site.members(1)[0])}")
    kinds = ["text" if field.type == "widetext" else field.type for field in table.fields]
    case.equal(kinds, ["integer", "real", "text", "datetime", "integer", "integer"], "types")


@check("language.labels", LANGUAGE, "Labels are upper case and may repeat", media=BOTH)
def labels(case):
    table = case.peer.query(f"SELECT a.org_id, a.Org_Name AS MyName, b.org_id {one_row(case)}".replace(
        "FROM BAS_ORG WHERE ORG_ID", "from bas_org a, bas_org b where a.org_id = b.org_id and a.org_id"))
    case.equal(table.names, ["ORG_ID", "MYNAME", "ORG_ID"], "names")


@check("language.order", LANGUAGE, "Texts sort by their UTF-8 bytes, and NULL comes last; with DESC first", media=BOTH)
def order(case):
    for column in ("ORG_NAME", "REGION_ID", "ORG_NAME_PY", "ORG_CODE"):
        for direction in ("", " DESC"):
            found = case.column(f"SELECT {column} FROM BAS_ORG ORDER BY {column}{direction}", 1, 500)
            ordered = sorted(found, key=lambda text: (text is None, (text or "").encode()),
                             reverse=bool(direction))
            case.equal(found, ordered, f"the order by {column}{direction}")
    nulls = case.column("SELECT DECODE(ORG_TYPE,'4',NULL,ORG_TYPE) AS T FROM BAS_ORG"
                        " ORDER BY DECODE(ORG_TYPE,'4',NULL,ORG_TYPE) DESC", 1, 3)
    case.count("BAS_ORG WHERE ORG_TYPE = '4'") >= 3 and case.equal(nulls, [None] * 3, "NULLs first")


@check("language.outer-join", LANGUAGE, "(+) keeps rows without a partner, whose columns are NULL", media=BOTH)
def outer_join(case):
    total = case.count("BAS_ORG")
    table = case.peer.query("SELECT A.ORG_ID, B.ORG_ID AS OTHER FROM BAS_ORG A, (SELECT ORG_ID FROM"
                            " BAS_ORG WHERE ORG_ID = 'no-such') B WHERE A.ORG_ID = B.ORG_ID(+)", 1, 30)
    case.equal(table.total, total, "rows")
    case.equal(set(table.column("OTHER")), {None}, "columns of the missing partner")
    one = quoted(case.site.members(1)[0])
    for condition, found in (("B.ORG_ID IS NULL", total - 1), ("B.ORG_ID IS NOT NULL", 1)):
        case.equal(case.peer.query(
            f"SELECT A.ORG_ID FROM BAS_ORG A, (SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = {one}) B"
            f" WHERE A.ORG_ID = B.ORG_ID(+) AND {condition}", 1, 1).total, found, f"rows where {condition}")
    case.equal(case.peer.query(
        "SELECT A.ORG_ID FROM BAS_ORG A, BAS_ORG B WHERE A.ORG_ID = B.ORG_ID(+)"
        f" AND B.ORG_ID(+) = {one} AND B.ORG_ID IS NULL", 1, 1).total, total - 1,
        "rows where a marked condition finds no partner")


@check("language.rownum", LANGUAGE, "ROWNUM numbers the rows from 1 and cuts before they are sorted", media=BOTH)
def rownum(case):
    case.site.members(6)
    numbers = case.column("SELECT ROWNUM AS K, ORG_ID FROM BAS_ORG WHERE ROWNUM <= 6")
    case.equal(sorted(numbers, key=int), list("123456"), "numbers")
    first = case.column("SELECT ORG_ID FROM (SELECT ORG_ID FROM BAS_ORG ORDER BY ORG_ID) WHERE ROWNUM <= 3")
    case.equal(sorted(first), case.column("SELECT ORG_ID FROM BAS_ORG ORDER BY ORG_ID", 1, 3),
               "the first three of an ordered list")
    case.equal(case.peer.query("SELECT ORG_ID FROM BAS_ORG WHERE ROWNUM <= 5 ORDER BY ORG_ID", 2, 3).total,
               5, "total of a statement that is cut")


@check("language.aggregates", LANGUAGE, "COUNT, MAX, MIN, SUM and AVG leave NULL out; of no rows all but"
       " COUNT are NULL", media=BOTH)
def aggregates(case):
    row = case.peer.query("SELECT COUNT(*) AS A, COUNT(REGION_ID) AS B, MAX(ORG_ID) AS C, MIN(ORG_ID) AS D"
                          " FROM BAS_ORG").rows[0]
    keys = case.column("SELECT ORG_ID FROM BAS_ORG")
    case.equal((row[0], row[2:]), (str(len(keys)), [max(keys), min(keys)]), "number, largest, smallest")
    case.equal(row[1], str(case.count("BAS_ORG WHERE REGION_ID IS NOT NULL")), "rows that are not NULL")
    case.equal(case.peer.query("SELECT COUNT(*) AS A, MAX(ORG_ID) AS B, SUM(1) AS C, AVG(1) AS D FROM"
                               " BAS_ORG WHERE ORG_ID = 'no-such'").rows, [["0", None, None, None]],
               "aggregates of no rows")
    groups = case.peer.query("SELECT ORG_TYPE, COUNT(*) AS N FROM BAS_ORG GROUP BY ORG_TYPE").rows
    case.equal(sum(int(count) for _, count in groups), len(keys), "rows of all groups")


@check("language.sub-selects", LANGUAGE, "Sub-selects stand in FROM, IN and NOT IN, with stars around stars", media=BOTH)
def sub_selects(case):
    one = quoted(case.site.members(1)[0])
    inner = f"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = {one}"
    plain = case.peer.query(f"SELECT '0' AS SELECTED, A.* FROM BAS_ORG A WHERE A.ORG_ID = {one}")
    nested = case.peer.query(f"select * from (SELECT '0' AS SELECTED, A.* FROM (SELECT * FROM BAS_ORG) A)"
                             f" where ORG_ID = {one}")
    case.equal((nested.names, nested.rows), (plain.names, plain.rows), "names and rows")
    case.equal(case.count(f"BAS_ORG WHERE ORG_ID IN ({inner})"), 1, "rows of IN")
    case.equal(case.count(f"BAS_ORG WHERE ORG_ID NOT IN ({inner})"), case.count("BAS_ORG") - 1,
               "rows of NOT IN")
    case.equal(case.count(f"(SELECT DISTINCT ORG_TYPE FROM BAS_ORG)"),
               len(set(case.column("SELECT ORG_TYPE FROM BAS_ORG"))), "distinct rows")


@check("language.lists", LANGUAGE, "A list of a thousand literals is taken", media=BOTH)
def lists(case):
    keys = case.column("SELECT ORG_ID FROM BAS_ORG ORDER BY ORG_ID", 1, 30)
    literals = keys + [f"no-such-{number}" for number in range(1000)]
    found = case.column(f"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN ({', '.join(map(quoted, literals))})")
    case.equal(sorted(found), sorted(keys), "rows")
