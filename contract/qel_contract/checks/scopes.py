"""A credential that is limited to some groups."""

from ..case import Missing
from ..methods import DELETE_GROUP, SAVE_GROUP, nothing
from ..registry import check
from ..tables import tables

REQUESTS = "Requests"
MASTER_DATA = ("BAS_REGION", "BAS_ORG", "CAT_ORG", "BAS_PRODUCT", "USR_USER")


def own_groups(case):
    own = {row[0] for row in case.limited.query("SELECT UNION_ID FROM UNI_UNION").rows}
    others = set(case.column("SELECT UNION_ID FROM UNI_UNION")) - own
    if not own or not others:
        raise Missing("groups that the limited credential may see, and others")
    return own, others


@check("scope.rows", REQUESTS, "Tables with a group have the rows of the credential's groups only", limited=True)
def rows(case):
    own, _ = own_groups(case)
    for table, columns in tables().items():
        if "UNION_ID" not in [name for name, *_ in columns]:
            continue
        for sql in (f"SELECT UNION_ID FROM {table}", f"SELECT A.UNION_ID FROM (SELECT * FROM {table}) A"):
            found = {row[0] for row in case.limited.query(sql).rows}
            case.that(found <= own, f"{table} has rows of {sorted(own)} only", sorted(map(str, found - own)))
        case.equal(case.limited.query(f"SELECT 1 AS N FROM {table}", 1, 1).total,
                   sum(case.count(f"{table} WHERE UNION_ID = '{group}'") for group in own), f"rows of {table}")


@check("scope.tables", REQUESTS, "Master data is whole, and other tables are 403 sql.scope", limited=True)
def other_tables(case):
    for table, columns in tables().items():
        sql = f"SELECT 1 AS N FROM {table}"
        if table in MASTER_DATA:
            case.equal(case.limited.query(sql, 1, 1).total, case.count(table), f"rows of {table}")
        elif "UNION_ID" not in [name for name, *_ in columns] and table != "SYS_UPDATE_LOG":
            case.refused(403, "sql.scope", case.limited.query, sql)


@check("scope.posts", REQUESTS, "A post about another group is 403 post.scope", limited=True, writes=True)
def posts(case):
    _, others = own_groups(case)
    group = sorted(others)[0]
    before = case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").rows
    for method, row in ((DELETE_GROUP, {"UNION_ID": group}), (SAVE_GROUP, nothing(SAVE_GROUP, UNION_ID=group))):
        case.refused(403, "post.scope", case.limited.post, *method, [row])
    case.equal(case.peer.query(f"SELECT * FROM UNI_UNION WHERE UNION_ID = '{group}'").rows, before, "the group")
