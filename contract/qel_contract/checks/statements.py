"""Every statement of the screens: as it is, and with ids and filters of the server's own data."""

from collections import Counter

from .. import registry
from ..case import Missing
from ..statements import bound, narrowed, searched, shapes

PARAGRAPH = "Statements of the screens"
WINDOW = 300  # rows that are looked at


def _kind(field):
    return "text" if field.type == "widetext" else field.type


def fields_are(case, shape, table):
    case.equal(table.names, [label for label, *_ in shape.fields], "names of the fields")
    for field, (label, kind, size, *_) in zip(table.fields, shape.fields):
        if kind == "number":
            case.that(_kind(field) in ("integer", "real"), f"{label} is a number", field)
        else:
            case.equal(_kind(field), kind, f"type of {label}")
        if size is not None:
            case.equal(field.size, size, f"size of {label}")


def sort_key(labels):
    def key(row):
        parts = []
        for label, backwards in labels:
            value = row[label]
            data = (value is None, (value or "").encode())
            parts.append((not data[0], bytes(255 - byte for byte in data[1]) + b"\xff") if backwards else data)
        return parts
    return key


def rows_are(case, shape, rows):
    for label, value in shape.never.items():
        case.that(all(row[label] != value for row in rows), f"no {label} is {value}")
    for label, value in shape.always.items():
        case.that(all(row[label] == value for row in rows), f"every {label} is {value}")
    if shape.order:
        keys = [[row[label] for label, _ in shape.order] for row in rows]
        ordered = [[row[label] for label, _ in shape.order]
                   for row in sorted(rows, key=sort_key(shape.order))]
        case.equal(keys, ordered, f"the order by {', '.join(label for label, _ in shape.order)}")


def pages_meet(case, text, window):
    size = max(5, min(100, -(-len(window.rows) // 3)))
    found = [row for page in (1, 2, 3) for row in case.peer.query(text, page, size).rows]
    case.equal(found, window.rows[:3 * size], f"three pages of {size} rows")


def counted(rows):
    return Counter(map(repr, rows))


def described(shape, ids):
    return shape.name + "".join(f", {name} {value}" for name, value in ids.items())


def ids_of(case, shape):
    site, ids = case.site, {}
    for name, what in shape.bind.items():
        if what in ("seller", "product") or shape.name in ("members", "products of a group"):
            assert site.trade
        ids[name] = site.trade[what] if what in ("seller", "product") else getattr(site, what)
    if shape.has_rows and "UNION_ID" in ids and not site.read_only:
        assert site.trade
    return ids


def _is_answered(shape, name):
    def run(case):
        text = shape.texts[name]
        fields_are(case, shape, case.peer.query(text, 1, 20))
        ids = ids_of(case, shape)
        base_text = bound(shape.base, ids)
        base = case.site.remembered(base_text, 1, WINDOW)
        rows = base.maps()
        if shape.has_rows and not case.site.read_only:
            case.that(rows, "at least one row", f"none for {base_text}")
        if text == shape.base or bound(text, ids) == base_text:
            rows_are(case, shape, rows)
            pages_meet(case, base_text, base)
            return
        if not rows:
            raise Missing(f"rows of {described(shape, ids)}")
        if name in shape.loose:
            is_part_of(case, shape, bound(text, ids), base)
            return
        # Every column of a search is tried in the first statement that has it; the others differ in
        # what else they filter by.
        first = next(one for one in shape.texts.values() if searched(shape, one) == searched(shape, text))
        for turn in range(searched(shape, text) if text == first else 1):
            narrows(case, shape, bound(text, ids), base, rows, turn)
    return run


def is_part_of(case, shape, text, base):
    table = case.peer.query(text, 1, WINDOW)
    fields_are(case, shape, table)
    rows_are(case, shape, table.maps())
    if base.total == len(base.rows):
        case.equal(list((counted(table.rows) - counted(base.rows)).elements()), [], f"rows beyond those of"
                   f" the statement without filters, for {text}")


def narrows(case, shape, text, base, rows, turn=0):
    """A filter gives the rows that pass it, and no others."""
    probes = [rows[len(rows) // 2], *rows]
    filtered, passes = next((made for row in probes if (made := narrowed(shape, text, row, turn))[0]),
                            (None, None))
    if filtered is None:
        raise Missing(f"a row of {shape.name} with values in the columns that it is searched by")
    table = case.peer.query(filtered, 1, 2 * WINDOW)
    fields_are(case, shape, table)
    found = table.maps()
    rows_are(case, shape, found)
    for row in found:
        case.that(passes(row) is not False, f"every row passes the filter of {filtered}", row)
    if table.total == len(table.rows):
        wanted = counted(values for values, row in zip(base.rows, rows) if passes(row))
        missing = wanted - counted(table.rows)
        case.equal(list(missing.elements())[:3], [], f"rows that pass the filter and are missing, for {filtered}")
    if base.total == len(base.rows):
        beyond = counted(table.rows) - counted(base.rows)
        case.equal(list(beyond.elements())[:3], [], f"rows beyond those without filters, for {filtered}")


for one in shapes():
    for statement in one.texts:
        registry.add(f"statement.{statement}", PARAGRAPH,
                     f"{statement} ({one.name}): fields, rows, order, pages and filters",
                     _is_answered(one, statement))
