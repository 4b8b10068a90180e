"""UniPrice: prices, price types, price types of buyers."""

from ..methods import MOVE_IN, MOVE_OUT, SAVE_PRICE, SAVE_PRICE_BUYER, SAVE_PRICE_TYPE
from ..registry import check
from ..site import price_row, price_type_row
from .members import add, new_type

METHODS = "Methods"
PRICE = "method.UniPrice.insertUpdatePrcUniPriceProduct."
TYPE = "method.UniPrice.insertUpdatePrcUniPriceType."
BUYER = "method.UniPrice.insertUpdatePrcUniPriceOrg."


def quotation(case):
    """A group, its seller, its buyer, and two products of its catalogue."""
    group, (seller, buyer) = case.site.new_group(case), case.site.members(2)
    add(case, group, seller, new_type(case, group, "卖方", "SALER_FLAG"))
    add(case, group, buyer, new_type(case, group, "买方", "BUYER_FLAG"))
    products = case.site.products(2)
    rows = [{"UNION_ID": group, "PRODUCT_ID": product} for product in products]
    case.stored(MOVE_IN, *rows)
    case.later(lambda: case.codes(MOVE_OUT, *rows))
    return group, seller, buyer, products


def save(case, *rows):
    values = case.stored(SAVE_PRICE, *rows)
    case.later(lambda: case.codes(SAVE_PRICE, *(
        {**row, **one, "LAST_OPERATE": "D"} for row, one in zip(rows, values))))
    return [one["PRICE_ID"] for one in values]


@check(PRICE + "1", METHODS, "Prices are stored to their last digit, answer product and key, and are changed"
       " and deleted; the log has 1, 2 and 5", writes=True)
def prices(case):
    group, seller, _, (first, second) = quotation(case)
    rows = [price_row(group, seller, first, "12.345"), price_row(group, seller, second, "")]
    results = case.post(SAVE_PRICE, *rows)
    case.equal([(code, set(values), values["PRODUCT_ID"]) for code, values in results],
               [("1", {"PRODUCT_ID", "PRICE_ID"}, product) for product in (first, second)], "results")
    keys = [values["PRICE_ID"] for _, values in results]
    case.later(lambda: case.codes(SAVE_PRICE, {**rows[1], "PRICE_ID": keys[1], "LAST_OPERATE": "D"}))
    for key, price in zip(keys, ("12.345", None)):
        case.equal(case.peer.query("SELECT COST_PRICE, PRICE_01, PRICE_09 FROM PRC_UNI_PRICE_PRODUCT WHERE"
                                   f" PRICE_ID = '{key}'").rows, [[price] * 3], "stored prices")
    for known, price in (("", "9"), (keys[0], "10.5")):
        case.equal(save(case, price_row(group, seller, first, price, PRICE_ID=known)), keys[:1], "the key")
    deletion = price_row(group, seller, first, "", PRICE_ID=keys[0], LAST_OPERATE="D")
    case.answers("1", SAVE_PRICE, deletion)
    case.equal(case.log("PRC_UNI_PRICE_PRODUCT", keys[0]), ["1", "2", "2", "5"], "changes in the log")
    case.answers("1", SAVE_PRICE, deletion)
    case.equal(save(case, price_row(group, seller, first, "1")), keys[:1], "the key of the old record")


@check(PRICE + "unchanged", METHODS, "Prices that are what they were write nothing, however they are written",
       writes=True)
def unchanged(case):
    group, seller, _, (product, _) = quotation(case)
    key = save(case, price_row(group, seller, product, "12.5"))[0]
    for price in ("12.5", "12.50", "012.5"):
        case.answers("1", SAVE_PRICE, price_row(group, seller, product, price, PRICE_ID=key))
    case.equal(case.log("PRC_UNI_PRICE_PRODUCT", key), ["1"], "changes in the log")


@check(PRICE + "0", METHODS, "0: a price below 0, above 99999999 or none at all; a product that is not in the"
       " catalogue; who does not sell there. Nothing of the list is stored", writes=True)
def wrong_prices(case):
    group, seller, buyer, (good, other) = quotation(case)
    outside = next(one for one in case.site.products(3) if one not in (good, other))
    for bad in (price_row(group, seller, other, "-1"), price_row(group, seller, other, "100000000"),
                price_row(group, seller, other, "x"), price_row(group, seller, other, "1", PRICE_05="1,5"),
                price_row(group, seller, "no-such", "1"), price_row(group, seller, outside, "1"),
                price_row(group, buyer, other, "1"), price_row(group, seller, other, "1", PRICE_ID="no-such"),
                price_row(group, seller, other, "1", LAST_OPERATE="D")):
        case.answers("0", SAVE_PRICE, price_row(group, seller, good, "1"), bad)
    case.equal(case.count(f"PRC_UNI_PRICE_PRODUCT WHERE UNION_ID = '{group}'"), 0, "prices")
    save(case, price_row(group, seller, good, "99999999"), price_row(group, seller, other, "0"))


def save_type(case, *rows):
    values = case.stored(SAVE_PRICE_TYPE, *rows)
    case.later(lambda: case.codes(SAVE_PRICE_TYPE, *(
        {**row, **one, "LAST_OPERATE": "D"} for row, one in zip(rows, values))))
    return [one["PRICE_TYPE_ID"] for one in values]


@check(TYPE + "1", METHODS, "Price types are added, changed and deleted; the log has 1, 2 and 5", writes=True)
def types(case):
    group, seller, _, _ = quotation(case)
    row = price_type_row(group, seller, "01", "一级价")
    key = save_type(case, row)[0]
    case.answers("1", SAVE_PRICE_TYPE, {**row, "PRICE_TYPE_ID": key, "PRICE_NAME": "医院价",
                                        "ENABLE_FLAG": "0"})
    case.equal(case.peer.query("SELECT PRICE_NAME, PRICE_FIELD, ENABLE_FLAG FROM PRC_UNI_PRICE_TYPE WHERE"
                               f" PRICE_TYPE_ID = '{key}'").rows, [["医院价", "01", "0"]], "the type")
    deletion = {**row, "PRICE_TYPE_ID": key, "LAST_OPERATE": "D"}
    case.answers("1", SAVE_PRICE_TYPE, deletion)
    case.equal(case.log("PRC_UNI_PRICE_TYPE", key), ["1", "2", "5"], "changes in the log")
    case.that(save_type(case, row)[0] != key, "a type of its own after the deletion")


@check(TYPE + "-1", METHODS, "-1: the slot has a type, or the type to delete is assigned to buyers",
       writes=True)
def slot_taken(case):
    group, seller, buyer, _ = quotation(case)
    row = price_type_row(group, seller, "01", "一级价")
    key = save_type(case, row)[0]
    case.answers("-1", SAVE_PRICE_TYPE, price_type_row(group, seller, "02", "二级价"),
                 price_type_row(group, seller, "01", "又一个"))
    case.equal(case.count(f"PRC_UNI_PRICE_TYPE WHERE UNION_ID = '{group}' AND LAST_OPERATE <> 'D'"), 1, "types")
    assignment = {"BUY_ORGID": buyer, "SALE_ORGID": seller, "UNION_ID": group}
    case.stored(SAVE_PRICE_BUYER, {**assignment, "PRICE_TYPE_ID": key})
    deletion = {**row, "PRICE_TYPE_ID": key, "LAST_OPERATE": "D"}
    case.answers("-1", SAVE_PRICE_TYPE, deletion)
    case.stored(SAVE_PRICE_BUYER, {**assignment, "PRICE_TYPE_ID": ""})
    case.answers("1", SAVE_PRICE_TYPE, deletion)


@check(TYPE + "0", METHODS, "0: a slot outside 01 to 09, a blank name, a flag that is none, who does not sell"
       " there", writes=True)
def wrong_types(case):
    group, seller, buyer, _ = quotation(case)
    for values in ({"PRICE_FIELD": "00"}, {"PRICE_FIELD": "10"}, {"PRICE_FIELD": "1"}, {"PRICE_FIELD": ""},
                   {"PRICE_NAME": ""}, {"PRICE_NAME": "  "}, {"ENABLE_FLAG": "2"}, {"ENABLE_FLAG": ""},
                   {"SALE_ORGID": buyer}, {"PRICE_TYPE_ID": "no-such"}, {"LAST_OPERATE": "D"}):
        case.answers("0", SAVE_PRICE_TYPE, price_type_row(group, seller, "01", "一级价") | values)


@check(BUYER + "1", METHODS, "A buyer gets a type, another one, and none; the log has 1, 2 and 2", writes=True)
def buyers(case):
    group, seller, buyer, _ = quotation(case)
    first, second = save_type(case, price_type_row(group, seller, "01", "一级价"),
                              price_type_row(group, seller, "02", "二级价"))
    row = {"BUY_ORGID": buyer, "SALE_ORGID": seller, "UNION_ID": group}
    stored = (f"SELECT PRICE_TYPE_ID FROM PRC_UNI_PRICE_ORG WHERE UNION_ID = '{group}' AND SALE_ORGID ="
              f" '{seller}' AND BUY_ORGID = '{buyer}' AND LAST_OPERATE <> 'D'")
    before = case.log("PRC_UNI_PRICE_ORG", seller, buyer)
    for kind, read in ((first, first), (first, first), (second, second), ("", None)):
        case.answers("1", SAVE_PRICE_BUYER, {**row, "PRICE_TYPE_ID": kind})
        case.equal(case.column(stored), [read], "the buyer's type")
    case.equal(case.log("PRC_UNI_PRICE_ORG", seller, buyer)[len(before):], ["1", "2", "2"],
               "changes in the log")


@check(BUYER + "0", METHODS, "0: a type that is gone, disabled or another's; who does not buy or sell there",
       writes=True)
def wrong_buyers(case):
    group, seller, buyer, _ = quotation(case)
    disabled = save_type(case, price_type_row(group, seller, "01", "停用", ENABLE_FLAG="0"))[0]
    gone = save_type(case, price_type_row(group, seller, "02", "删除"))[0]
    case.answers("1", SAVE_PRICE_TYPE, price_type_row(group, seller, "02", "删除", PRICE_TYPE_ID=gone,
                                                      LAST_OPERATE="D"))
    row = {"BUY_ORGID": buyer, "SALE_ORGID": seller, "UNION_ID": group, "PRICE_TYPE_ID": ""}
    for values in ({"PRICE_TYPE_ID": "no-such"}, {"PRICE_TYPE_ID": disabled}, {"PRICE_TYPE_ID": gone},
                   {"BUY_ORGID": seller}, {"SALE_ORGID": buyer}, {"BUY_ORGID": "no-such"}):
        case.answers("0", SAVE_PRICE_BUYER, {**row, **values})
