"""Uni_Product: catalogues of groups. UniUser: users of groups. Both answer row by row."""

import uuid

from ..methods import ADD_USER, MOVE_IN, MOVE_OUT, REMOVE_USER
from ..registry import check

METHODS = "Methods"
IN, OUT = "method.Uni_Product.move_in_Uni_Product.", "method.Uni_Product.move_out_Uni_Product."
ADD, REMOVE = "method.UniUser.insertUniUser.", "method.UniUser.deleteUniUser."


def move(case, method, group, *products, key=None):
    rows = [{"UNION_ID": group, "PRODUCT_ID": product} for product in products]
    results = case.post(method, *rows, key=key)
    if method == MOVE_IN:
        case.later(lambda: case.codes(MOVE_OUT, *rows))
    case.equal([values for _, values in results], [{"PRODUCT_ID": product} for product in products],
               "the values of the results")
    return [code for code, _ in results]


def inside(case, group):
    return sorted(case.column("SELECT PRODUCT_ID FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D'"
                              f" AND UNION_ID = '{group}' AND ENABLE_FLAG = '1'"))


@check(IN + "1", METHODS, "Products are moved in, enabled, out, and in again into their old records; the log"
       " has 1, 5 and 1", writes=True)
def moves(case):
    group, products = case.site.new_group(case), case.site.products(3)
    case.equal(move(case, MOVE_IN, group, *products), ["1", "1", "1"], "codes")
    case.equal(inside(case, group), sorted(products), "the catalogue")
    case.equal(move(case, MOVE_OUT, group, *products[:2]), ["1", "1"], "codes")
    case.equal(inside(case, group), products[2:], "the catalogue")
    case.equal(move(case, MOVE_IN, group, products[0]), ["1"], "codes")
    case.equal(case.log("UNI_PRODUCT", group, products[0]), ["1", "5", "1"], "changes in the log")
    case.equal(case.count(f"UNI_PRODUCT WHERE UNION_ID = '{group}'"), 3, "records, marked ones too")


@check(IN + "row-by-row", METHODS, "-1: the product is in the catalogue; refused rows undo no others",
       writes=True)
def row_by_row(case):
    group, (first, second, third) = case.site.new_group(case), case.site.products(3)
    case.equal(move(case, MOVE_IN, group, second), ["1"], "codes")
    case.equal(move(case, MOVE_IN, group, first, second, "no-such", third), ["1", "-1", "0", "1"], "codes")
    case.equal(inside(case, group), sorted([first, second, third]), "the catalogue")
    case.equal(case.log("UNI_PRODUCT", group, second), ["1"], "changes of the refused one in the log")


@check(IN + "0", METHODS, "0: a product that is not in use, a group that is gone", writes=True)
def move_in_nothing(case):
    group, products = case.site.new_group(case), case.site.products(1)
    gone = case.column("SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE ENABLE_FLAG <> '1' OR LAST_OPERATE = 'D'",
                       1, 1)
    case.equal(move(case, MOVE_IN, group, "no-such", *gone), ["0"] * (1 + len(gone)), "codes")
    case.equal(move(case, MOVE_IN, "no-such", *products), ["0"], "codes")
    case.equal(inside(case, group), [], "the catalogue")


@check(IN + "key", METHODS, "Row-by-row posts with one key take effect once", writes=True)
def with_key(case):
    group, products, key = case.site.new_group(case), case.site.products(2), str(uuid.uuid4())
    case.equal(move(case, MOVE_IN, group, *products, key=key), ["1", "1"], "codes")
    case.equal(move(case, MOVE_IN, group, *products, key=key), ["1", "1"], "codes of the repetition")
    case.equal(move(case, MOVE_IN, group, *products), ["-1", "-1"], "codes without the key")


@check(OUT + "again", METHODS, "1 without a trace: a product that was moved out before; 0: one that never"
       " was in", writes=True)
def out_again(case):
    group, (first, second) = case.site.new_group(case), case.site.products(2)
    move(case, MOVE_IN, group, first)
    for _ in range(2):
        case.equal(move(case, MOVE_OUT, group, first), ["1"], "codes")
    case.equal(case.log("UNI_PRODUCT", group, first), ["1", "5"], "changes in the log")
    case.equal(move(case, MOVE_OUT, group, second, first), ["0", "1"], "codes")


def users_of(case, group):
    return sorted(case.column("SELECT USER_ID FROM UNI_USER_UNION WHERE LAST_OPERATE <> 'D'"
                              f" AND UNION_ID = '{group}'"))


@check(ADD + "1", METHODS, "Users are assigned and taken out, row by row; 1 without a trace for what stands"
       " already", writes=True)
def users(case):
    group, users_in_use = case.site.new_group(case), case.site.users(2)
    first, second = users_in_use
    rows = [{"USER_ID": user, "UNION_ID": group} for user in (first, "no-such", second)]
    case.later(lambda: case.codes(REMOVE_USER, *rows))
    for method, left in ((ADD_USER, sorted(users_in_use)), (REMOVE_USER, [])):
        for _ in range(2):
            case.equal(case.post(method, *rows),
                       [(code, {"USER_ID": row["USER_ID"]}) for code, row in zip(("1", "0", "1"), rows)],
                       f"results of {method[1]}")
            case.equal(users_of(case, group), left, "users of the group")
    case.equal(case.log("UNI_USER_UNION", first, group), ["1", "5"], "changes in the log")
    case.equal(case.codes(ADD_USER, rows[0]), ["1"], "codes")
    case.equal(case.count(f"UNI_USER_UNION WHERE UNION_ID = '{group}'"), 2, "records, marked ones too")


@check(ADD + "0", METHODS, "0: a user who may not log in, a group that is gone", writes=True)
def add_nobody(case):
    group = case.site.new_group(case)
    barred = case.column("SELECT USER_ID FROM USR_USER WHERE ENABLE_FLAG <> '1'", 1, 1)
    for user in ["no-such", *barred]:
        case.equal(case.codes(ADD_USER, {"USER_ID": user, "UNION_ID": group}), ["0"], "codes")
    case.equal(case.codes(ADD_USER, {"USER_ID": case.site.users(1)[0], "UNION_ID": "no-such"}), ["0"], "codes")
    case.equal(users_of(case, group), [], "users of the group")


@check(REMOVE + "0", METHODS, "0: a user who never was in the group", writes=True)
def remove_nobody(case):
    group = case.site.new_group(case)
    case.equal(case.codes(REMOVE_USER, {"USER_ID": case.site.users(1)[0], "UNION_ID": group}), ["0"], "codes")
