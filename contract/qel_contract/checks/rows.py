"""What every method refuses: rows that are not what it takes, and rows that name nothing."""

from .. import registry
from ..methods import METHODS, nothing
from ..tables import column

METHODS_PARAGRAPH = "Methods"


def _short(method):
    return f"{method[0].rpartition('.')[2]}.{method[1]}"


def _bad_row(case, method, *rows):
    error = case.refused(400, "post.bad_row", case.post, method, *rows)
    case.that(any(ord(c) > 127 for c in error.message), "a message in Chinese", error.message)


def _parameters(method):
    def run(case):
        row = nothing(method)
        for name in row:
            _bad_row(case, method, {one: value for one, value in row.items() if one != name})
        _bad_row(case, method, {**row, "NO_SUCH_PARAMETER": "1"})
        _bad_row(case, method, {})
        _bad_row(case, method, row, {**row, "NO_SUCH_PARAMETER": "1"})
    return run


def _sizes(method):
    def run(case):
        table, names = METHODS[method]
        row = nothing(method)
        for name in names:
            if name == "ALL_FLAG":
                for value in ("", "2", "01"):
                    _bad_row(case, method, {**row, name: value})
                continue
            _, kind, size = column(table, name)
            if kind == "text" and size:
                _bad_row(case, method, {**row, name: "集" * (size + 1)})
        _bad_row(case, method, {**row, names[0]: "\0"})
    return run


def _once(method):
    def run(case):
        row = {name: value or ("x" if name in KEYS else "") for name, value in nothing(method).items()}
        _bad_row(case, method, row, row)
    return run


def _names_nothing(method):
    def run(case):
        case.answers("0", method, nothing(method))
        keys = [value for value in nothing(method).values() if value == "no-such"]
        case.that(keys and case.log(METHODS[method][0], "no-such") == [],
                  "no entry in the change log")
    return run


KEYS = {"BUY_ORGID", "SALE_ORGID", "RULE_CODE"}

for one in METHODS:
    registry.add(f"row.{_short(one)}.parameters", METHODS_PARAGRAPH,
                 "A missing or unknown parameter is 400 post.bad_row", _parameters(one), writes=True)
    registry.add(f"row.{_short(one)}.sizes", METHODS_PARAGRAPH,
                 "A text longer than its column, in characters, is 400 post.bad_row", _sizes(one),
                 writes=True)
    registry.add(f"row.{_short(one)}.once", METHODS_PARAGRAPH,
                 "A record that an earlier row of the list names is 400 post.bad_row", _once(one),
                 writes=True)
    registry.add(f"method.{_short(one)}.nothing", METHODS_PARAGRAPH,
                 "A row whose ids name nothing gets 0 and writes nothing", _names_nothing(one), writes=True)
