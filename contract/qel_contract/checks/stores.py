"""TraBuyCatalog: drug stores and who works with them."""

from ..case import quoted
from ..methods import DELETE_STORE, DELETE_STORE_USERS, SAVE_STORE, SAVE_STORE_USERS
from ..registry import check
from ..site import new_name, store_row

METHODS = "Methods"
SAVE, DELETE = "method.TraBuyCatalog.insertUpdateBuyCatalog.", "method.TraBuyCatalog.deleteBuyCatalog."
USERS = "method.TraBuyCatalog.insertUpdateTraUserBuyCatalog."
NO_USERS = "method.TraBuyCatalog.deleteTraUserBuyCatalog."


def new_store(case, name=None):
    hospital, users = case.site.hospital
    key = case.stored(SAVE_STORE, store_row(hospital, name or new_name()))[0]["CATALOG_ID"]
    store = {"CATALOG_ID": key, "BUY_ORGID": hospital}
    case.later(lambda: case.codes(DELETE_STORE, store))
    return store, hospital, users


def name_of(case, store):
    return case.column(f"SELECT CATALOG_NAME FROM TRA_BUY_CATALOG WHERE LAST_OPERATE <> 'D' AND CATALOG_ID ="
                       f" '{store['CATALOG_ID']}'")


def users_of(case, store):
    return case.peer.query("SELECT USER_ID, RELATION_FLAG FROM TRA_USER_BUY_CATALOG WHERE LAST_OPERATE <> 'D'"
                           f" AND CATALOG_ID = '{store['CATALOG_ID']}' ORDER BY USER_ID").rows


def assign(case, store, *pairs):
    return case.codes(SAVE_STORE_USERS, *({"USER_ID": user, "RELATION_FLAG": flag, **store}
                                          for user, flag in pairs))


@check(SAVE + "1", METHODS, "A drug store is added and renamed; the log has 1 and 2", writes=True)
def stores(case):
    name, other = new_name(), new_name()
    store, hospital, _ = new_store(case, f" {name} ")
    key = store["CATALOG_ID"]
    case.equal(name_of(case, store), [name], "the name, without blanks around it")
    case.equal(case.stored(SAVE_STORE, store_row(hospital, name, key)), [{"CATALOG_ID": key}], "values")
    case.equal(case.stored(SAVE_STORE, store_row(hospital, other, key)), [{"CATALOG_ID": key}], "values")
    case.equal(name_of(case, store), [other], "the name")
    case.equal(case.log("TRA_BUY_CATALOG", key), ["1", "2"], "changes in the log")


@check(SAVE + "-1", METHODS, "-1: another drug store of the organisation has the name", writes=True)
def name_taken(case):
    name = new_name()
    _, hospital, _ = new_store(case, name)
    other, _, _ = new_store(case)
    case.answers("-1", SAVE_STORE, store_row(hospital, name))
    case.answers("-1", SAVE_STORE, store_row(hospital, f" {name} "))
    case.answers("-1", SAVE_STORE, store_row(hospital, name, other["CATALOG_ID"]))


@check(SAVE + "0", METHODS, "0: a name that is blank or of more than ten characters, an organisation that is"
       " no hospital or pharmacy, a drug store that is gone or another's", writes=True)
def wrong_stores(case):
    store, hospital, _ = new_store(case)
    key = store["CATALOG_ID"]
    for row in (store_row(hospital, ""), store_row(hospital, "  "), store_row(hospital, "一二三四五六七八九十一"),
                store_row(hospital, new_name(), "no-such"), store_row("no-such", new_name())):
        case.answers("0", SAVE_STORE, row)
    for other in case.column("SELECT ORG_ID FROM BAS_ORG WHERE ORG_TYPE = '1' AND LAST_OPERATE <> 'D'", 1, 1):
        case.answers("0", SAVE_STORE, store_row(other, new_name()))
        case.answers("0", SAVE_STORE, store_row(other, new_name(), key))
    case.answers("1", SAVE_STORE, store_row(hospital, "一二三四五六七八九十", key))


@check(DELETE + "1", METHODS, "A drug store goes with its users, also twice; 0: one that the organisation"
       " never had. The log has 5", writes=True)
def delete(case):
    store, _, users = new_store(case)
    case.equal(assign(case, store, (users[0], "1")), ["1"], "codes")
    case.answers("0", DELETE_STORE, {**store, "BUY_ORGID": "no-such"})
    for _ in range(2):
        case.answers("1", DELETE_STORE, store)
    case.equal((name_of(case, store), users_of(case, store)), ([], []), "the drug store and its users")
    case.equal(case.log("TRA_BUY_CATALOG", store["CATALOG_ID"]), ["1", "5"], "changes in the log")
    case.equal(case.log("TRA_USER_BUY_CATALOG", store["CATALOG_ID"], users[0]), ["1", "5"],
               "changes of the user in the log")
    case.equal(assign(case, store, (users[0], "1")), ["0"], "codes")
    case.answers("0", SAVE_STORE, store_row(store["BUY_ORGID"], new_name(), store["CATALOG_ID"]))


@check(USERS + "1", METHODS, "The users of a list replace those of the drug store; the empty flag is 0",
       writes=True)
def replace(case):
    store, _, users = new_store(case)
    first, second = sorted(users)
    case.equal(assign(case, store, (first, "1"), (second, "")), ["1", "1"], "codes")
    case.equal(users_of(case, store), [[first, "1"], [second, "0"]], "users and flags")
    case.equal(assign(case, store, (second, "1")), ["1"], "codes")
    case.equal(users_of(case, store), [[second, "1"]], "users and flags")
    case.equal(assign(case, store, (second, "1")), ["1"], "codes")
    key = store["CATALOG_ID"]
    case.equal((case.log("TRA_USER_BUY_CATALOG", key, first), case.log("TRA_USER_BUY_CATALOG", key, second)),
               (["1", "5"], ["1", "2"]), "changes of both users in the log")


@check(USERS + "0", METHODS, "0: a user who is not of the organisation, a flag that is none; nothing of the"
       " list is stored", writes=True)
def wrong_users(case):
    store, hospital, users = new_store(case)
    stranger = case.one("SELECT USER_ID FROM USR_USER WHERE ENABLE_FLAG = '1' AND ORG_ID <> "
                        + quoted(hospital), "a user of another organisation")[0]
    barred = case.column("SELECT USER_ID FROM USR_USER WHERE ENABLE_FLAG <> '1' AND ORG_ID = "
                         + quoted(hospital), 1, 1)
    case.equal(assign(case, store, (users[0], "1")), ["1"], "codes")
    for user, flag in ((stranger, "0"), ("no-such", "0"), (users[1], "2"), *((one, "0") for one in barred)):
        case.equal(assign(case, store, (users[0], "0"), (user, flag)), ["0", "0"], "codes")
    case.equal(users_of(case, store), [[users[0], "1"]], "users and flags")


@check(NO_USERS + "1", METHODS, "All users of a drug store are removed, also twice; 0: one that the"
       " organisation never had", writes=True)
def nobody(case):
    store, _, users = new_store(case)
    assign(case, store, *((user, "0") for user in users))
    for _ in range(2):
        case.answers("1", DELETE_STORE_USERS, store)
        case.equal(users_of(case, store), [], "users")
    case.answers("0", DELETE_STORE_USERS, {**store, "BUY_ORGID": "no-such"})
    case.equal(len(name_of(case, store)), 1, "drug stores left")
