"""BusDataRollBack: orders, returns and receipts. They are the server's own: what changes them for good
is run with --roll-back only."""

from ..case import Missing
from ..methods import BACK_ORDER, BACK_RECEIPT, BACK_RETURN
from ..registry import check

METHODS = "Methods"
MANAGER = "method.BusDataRollBack."
LINES = ("SELECT A.ORD_ID, B.ORD_ITEM_ID FROM TRA_ORDER A, TRA_ORDER_ITEM B WHERE A.ORD_ID = B.ORD_ID AND"
         " A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D' AND %s ORDER BY B.ORD_ITEM_ID")
ENTERED = "(SELECT ORD_ITEM_ID FROM TRA_SEND WHERE LAST_OPERATE <> 'D' AND ORD_ITEM_ID IS NOT NULL)"
RETURNS = ("SELECT A.RETURN_ID, A.SEND_ID FROM TRA_RETURN A, TRA_SEND B WHERE A.SEND_ID = B.SEND_ID AND"
           " A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D' AND B.RECEIVE_FLAG = '1' AND %s")
RECEIPTS = ("SELECT SEND_ID FROM TRA_SEND WHERE SEND_FLAG = '1' AND RECEIVE_FLAG = '1' AND LAST_OPERATE <> 'D'"
            " AND %s")


def order(line, whole):
    return {"ORD_ITEM_ID": line, "ALL_FLAG": whole}


def lines_of(case, order_id):
    return case.column("SELECT ORD_ITEM_ID FROM TRA_ORDER_ITEM WHERE LAST_OPERATE <> 'D' AND ORD_ID ="
                       f" '{order_id}' ORDER BY ORD_ITEM_ID")


@check(MANAGER + "DataRollBack.-1", METHODS, "-1: the line, or one of the order's, is delivered", writes=True)
def delivered(case):
    order_id, line = case.one(LINES % "B.STATE = '1'", "a delivered line of an order")
    lines = lines_of(case, order_id)
    for flag in "01":
        case.answers("-1", BACK_ORDER, order(line, flag))
    for one in lines[:3]:
        case.answers("-1", BACK_ORDER, order(one, "1"))
    case.equal(lines_of(case, order_id), lines, "lines of the order")


@check(MANAGER + "DataRollBack.entered", METHODS, "-1: a delivery that is entered and not yet sent counts",
       writes=True)
def entered(case):
    _, line = case.one(LINES % f"B.STATE <> '1' AND B.ORD_ITEM_ID IN {ENTERED}",
                       "a line that is not delivered and has a delivery that is entered")
    case.answers("-1", BACK_ORDER, order(line, "0"))


@check(MANAGER + "DataRollBack.gone", METHODS, "0: a line that was taken back before", writes=True)
def gone(case):
    line = case.one("SELECT ORD_ITEM_ID FROM TRA_ORDER_ITEM WHERE LAST_OPERATE = 'D'",
                    "a line that was taken back")[0]
    for flag in "01":
        case.answers("0", BACK_ORDER, order(line, flag))


@check(MANAGER + "ReturnRollBack.-1", METHODS, "-1: the seller has invoiced the return; before -2 where both"
       " hold", writes=True)
def invoiced(case):
    case.answers("-1", BACK_RETURN, {"RETURN_ID": case.one(
        RETURNS % "A.INVOICE_FLAG = '1'", "a return that the seller has invoiced")[0]})


@check(MANAGER + "ReturnRollBack.-2", METHODS, "-2: the seller has confirmed the return", writes=True)
def confirmed(case):
    case.answers("-2", BACK_RETURN, {"RETURN_ID": case.one(
        RETURNS % "A.CONFIRM_FLAG = '1' AND A.INVOICE_FLAG <> '1'",
        "a return that the seller has confirmed and not invoiced")[0]})


@check(MANAGER + "ReceiveRollBack.-1", METHODS, "-1: the buyer has accepted the invoice", writes=True)
def accepted(case):
    case.answers("-1", BACK_RECEIPT, {"SEND_ID": case.one(
        RECEIPTS % "INVOICE_FLAG = '1'", "a received delivery whose invoice the buyer has accepted")[0]})


@check(MANAGER + "ReceiveRollBack.0", METHODS, "0: goods of the delivery are returned, or it is not received",
       writes=True)
def returned(case):
    case.answers("0", BACK_RECEIPT, {"SEND_ID": case.one(
        RETURNS % "B.INVOICE_FLAG <> '1' AND B.SEND_FLAG = '1'",
        "a received delivery with a return, whose invoice is not accepted")[1]})
    for delivery in case.column("SELECT SEND_ID FROM TRA_SEND WHERE RECEIVE_FLAG <> '1' AND LAST_OPERATE <> 'D'",
                                1, 1):
        case.answers("0", BACK_RECEIPT, {"SEND_ID": delivery})


@check(MANAGER + "DataRollBack.1", METHODS, "A line is taken back alone, then the rest of its order with it",
       writes=True, rolls_back=True)
def take_back(case):
    open_lines = case.peer.query(
        LINES % f"B.STATE <> '1' AND B.ORD_ITEM_ID NOT IN {ENTERED}", 1, 300).rows
    of_order = {}
    for order_id, line in open_lines:
        of_order.setdefault(order_id, []).append(line)
    for order_id, lines in of_order.items():
        if len(lines) > 1 and lines_of(case, order_id) == lines:
            break
    else:
        raise Missing("an order of several lines, none of them delivered")
    before = case.log("TRA_ORDER_ITEM", lines[0])
    case.equal([case.codes(BACK_ORDER, order(lines[0], flag)) for flag in "001"], [["1"], ["0"], ["0"]], "codes")
    state = f"SELECT ITEM_COUNT, LAST_OPERATE FROM TRA_ORDER WHERE ORD_ID = '{order_id}'"
    case.equal(case.peer.query(state).rows, [[str(len(lines) - 1), "1"]], "lines that the order counts")
    case.answers("1", BACK_ORDER, order(lines[1], "1"))
    case.equal((lines_of(case, order_id), case.peer.query(state).rows[0][1]), ([], "D"), "the order")
    case.equal(case.log("TRA_ORDER_ITEM", lines[0])[len(before):], ["5"], "changes in the log")


@check(MANAGER + "ReturnRollBack.1", METHODS, "A return is taken back, then the receipt of its delivery",
       writes=True, rolls_back=True)
def take_back_return(case):
    rows = case.peer.query(RETURNS % "A.CONFIRM_FLAG <> '1' AND A.INVOICE_FLAG <> '1' AND B.INVOICE_FLAG <> '1'"
                           " AND B.SEND_FLAG = '1'", 1, 50).rows
    for key, delivery in rows:
        if case.count(f"TRA_RETURN WHERE LAST_OPERATE <> 'D' AND SEND_ID = '{delivery}'") == 1:
            break
    else:
        raise Missing("a received delivery with one return, neither confirmed nor invoiced")
    case.equal([case.codes(BACK_RECEIPT, {"SEND_ID": delivery}), case.codes(BACK_RETURN, {"RETURN_ID": key}),
                case.codes(BACK_RETURN, {"RETURN_ID": key}), case.codes(BACK_RECEIPT, {"SEND_ID": delivery}),
                case.codes(BACK_RECEIPT, {"SEND_ID": delivery})],
               [["0"], ["1"], ["0"], ["1"], ["0"]], "codes of receipt, return, return, receipt, receipt")
    case.equal(case.peer.query("SELECT RECEIVE_FLAG, SEND_FLAG, LAST_OPERATE FROM TRA_SEND WHERE SEND_ID ="
                               f" '{delivery}'").rows, [["0", "1", "1"]], "the delivery")
    case.equal((case.log("TRA_RETURN", key)[-1:], case.log("TRA_SEND", delivery)[-1:]), (["5"], ["2"]),
               "last changes in the log")
