"""The statements of the screens: data/statements.txt, which explains itself."""

import functools
import pkgutil
import re
from dataclasses import dataclass, field

from .tables import column, tables


@dataclass
class Shape:
    name: str
    aliases: dict = field(default_factory=dict)  # alias: table
    fields: list = field(default_factory=list)  # (label, type, size or None, alias, column)
    order: list = field(default_factory=list)  # (label, backwards)
    never: dict = field(default_factory=dict)
    always: dict = field(default_factory=dict)
    bind: dict = field(default_factory=dict)  # column: what of the site
    probe: list = field(default_factory=list)
    loose: set = field(default_factory=set)
    has_rows: bool = False
    texts: dict = field(default_factory=dict)

    @property
    def base(self):
        return next(iter(self.texts.values()))

    def label_of(self, alias, name):
        """The label of a column; None if it is not selected."""
        for label, _, _, of, one in self.fields:
            if one == name and (not alias or of == alias):
                return label
        return None


def _pairs(words):
    return dict(word.split("=") for word in words)


def _fields(shape, words):
    for word in words:
        source, _, label = word.partition(">")
        source, _, table = source.partition("@")
        alias, dot, name = source.partition(".")
        if not dot:
            yield label, source, None, "", ""
        elif name == "*":
            for one, kind, size in tables()[shape.aliases[alias]]:
                yield one, kind, size, alias, one
        else:
            _, kind, size = column(table or shape.aliases[alias], name)
            yield label or name, kind, size, alias, name


@functools.cache
def shapes():
    found = []
    for line in pkgutil.get_data(__package__, "data/statements.txt").decode().splitlines():
        word, _, rest = line.partition(" ")
        if not word or word.startswith("#"):
            continue
        if word == "shape":
            found.append(Shape(rest))
            continue
        shape, words = found[-1], rest.split()
        if word == "text":
            name, _, text = rest.partition(' "')
            shape.texts[name] = text[:-1]
        elif word == "tables":
            shape.aliases = _pairs(words)
        elif word == "fields":
            shape.fields = list(_fields(shape, words))
        elif word == "order":
            shape.order = [(one.rstrip("-"), one.endswith("-")) for one in words]
        elif word == "rows":
            shape.has_rows = True
        elif word in ("never", "always", "bind"):
            setattr(shape, word, _pairs(words))
        elif word == "probe":
            shape.probe = words
        elif word == "loose":
            shape.loose = set(words)
        else:
            raise ValueError(f"statements.txt: {line}")
    return found


_TEXT = r"'((?:[^']|'')*)'"


def _quoted(text):
    return "'" + text.replace("'", "''") + "'"


def bound(text, values):
    """The statement with other constants: `values` by column."""
    for name, value in values.items():
        text = re.sub(rf"(\b{name}\s*(?:=|<>)\s*){_TEXT}", lambda found: found[1] + _quoted(value), text,
                      flags=re.IGNORECASE)
        text = re.sub(rf"(\b{name}\s+IN\s*)\([^()]*\)", lambda found: f"{found[1]}({_quoted(value)})", text,
                      flags=re.IGNORECASE)
    return text


_LIKE = re.compile(rf"(UPPER\()?(?:(\w+)\.)?(\w+)\)?\s+like\s+'%((?:[^']|'')*)%'", re.IGNORECASE)
_BETWEEN_LIKES = re.compile(r"^\)?\s*or\s*\(?$", re.IGNORECASE)
_DATE = re.compile(r"(?:(\w+)\.)?(\w+)\s*(>=|<=|between)\s*to_date\('([^']*)'[^)]*\)"
                   r"(?:\s+and\s+to_date\('([^']*)'[^)]*\))?", re.IGNORECASE)


def _word(value):
    """Two to four characters of a value, from its middle if they are no wildcards there, or None. The
    more of them the fewer other rows have them."""
    length = len(value or "")
    size = 2 + (length >= 5) + (length >= 8)
    last = length - size
    for at in sorted(range(last + 1), key=lambda at: abs(2 * at - last)):
        if not set(value[at:at + size]) & set("%_'\\ "):
            return value[at:at + size]
    return None


def _like_groups(text):
    groups, end = [], None
    for found in _LIKE.finditer(text):
        if end is not None and _BETWEEN_LIKES.match(text[end:found.start()]):
            groups[-1].append(found)
        else:
            groups.append([found])
        end = found.end()
    return groups


def searched(shape, text):
    """How many columns the widest search of the statement looks at that are selected."""
    return max((sum(shape.label_of((found[2] or "").upper(), found[3].upper()) is not None
                    for found in group) for group in _like_groups(text)), default=1)


def narrowed(shape, text, row, turn=0):
    """The statement with filters that `row` (values by label) passes, and a function that tells of any
    row whether it passes: True, False, or None where columns are not selected. Each search is for a
    word of another of its columns with each `turn`."""
    tests, changes = [], []
    for group in _like_groups(text):
        labels = [shape.label_of((found[2] or "").upper(), found[3].upper()) for found in group]
        words = [made for label in labels if label and (made := _word(row[label]))]
        word = words[turn % len(words)] if words else None
        if word is None:
            return None, None
        columns = []
        for found, label in zip(group, labels):
            old = found[4]
            new = word.upper() if old == old.upper() else word
            changes.append((found.start(4), found.end(4), new))
            columns.append((label, bool(found[1]), new))
        tests.append(functools.partial(_any_has, columns))
    for found in _DATE.finditer(text):
        label = shape.label_of((found[1] or "").upper(), found[2].upper())
        value = row.get(label) if label else None
        if value is None:
            return None, None
        day = value[:10]
        lower = day + " 00:00:00" if found[3] != "<=" else None
        upper = day + " 23:59:59" if found[3] != ">=" else None
        first, second = (lower, upper) if lower and upper else (lower or upper, None)
        changes.append((found.start(4), found.end(4), first))
        if second:
            changes.append((found.start(5), found.end(5), second))
        tests.append(functools.partial(_is_between, label, lower, upper))
    for begin, end, new in sorted(changes, reverse=True):
        text = text[:begin] + new + text[end:]
    for name in shape.probe:
        label = shape.label_of("", name)
        pattern = rf"(\b{name}\s*=\s*){_TEXT}"
        if re.search(pattern, text, re.IGNORECASE):
            if row[label] is None:
                return None, None
            text = re.sub(pattern, lambda found: found[1] + _quoted(row[label]), text, flags=re.IGNORECASE)
            tests.append(functools.partial(_is, label, row[label]))

    def passes(other):
        results = [test(other) for test in tests]
        return False if False in results else None if None in results else True
    return text, passes


def _any_has(columns, row):
    unknown = False
    for label, upper, word in columns:
        if label is None:
            unknown = True
            continue
        value = row[label] or ""
        if word in (value.upper() if upper else value):
            return True
    return None if unknown else False


def _is_between(label, lower, upper, row):
    value = row[label]
    return value is not None and (not lower or value >= lower) and (not upper or value <= upper)


def _is(label, value, row):
    return row[label] == value
