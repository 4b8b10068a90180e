"""A client of the wire protocol. Every answer is read strictly: what breaks a rule is Malformed."""

import base64
import json
import struct
from dataclasses import dataclass

from . import cbor
from .transport import Connection

CBOR = "application/cbor"
JSON = "application/json"
QUERY = "/NorvaneSelectServlet"
POST = "/NorvaneServlet"
POSITION = "QEL-Position"

STATUS_OF = {
    "http.bad_request": 400, "sql.syntax": 400, "sql.not_select": 400, "sql.unknown_table": 400,
    "sql.unknown_column": 400, "sql.ambiguous": 400, "sql.function": 400, "sql.value": 400,
    "sql.limit": 400, "post.bad_row": 400, "auth.required": 401, "auth.refused": 401,
    "post.operator": 403, "http.not_found": 404, "post.unknown_method": 404, "http.method": 405,
    "post.key_reused": 409, "http.too_large": 413, "http.type": 415, "query.too_large": 422,
    "post.scope": 403, "sql.scope": 403, "auth.too_many": 429, "http.header_too_large": 431,
    "post.unknown": 500, "server.failure": 500, "post.not_done": 503, "server.busy": 503,
    "server.stopping": 503, "sql.timeout": 504,
}


class Malformed(Exception):
    """An answer that breaks a rule of the page."""

    def __init__(self, rule, found):
        super().__init__(f"{rule}; found {found}")
        self.rule = rule
        self.found = found


def demand(condition, rule, found=""):
    if not condition:
        raise Malformed(rule, str(found)[:500])


class Refused(Exception):
    """Any status but 200, with the three texts of an error."""

    def __init__(self, answer, item):
        demand(isinstance(item, dict) and set(item) == {"code", "message", "reference"}
               and all(isinstance(text, str) and text for text in item.values()),
               "an error is a map of the texts code, message and reference, none of them empty",
               f"status {answer.status}: {item!r}")
        self.status, self.code, self.answer = answer.status, item["code"], answer
        self.message, self.reference = item["message"], item["reference"]
        super().__init__(f"{self.status} {self.code}: {self.message}")
        demand(STATUS_OF.get(self.code, self.status) == self.status,
               f"{self.code} comes with status {STATUS_OF.get(self.code)}", self.status)
        demand(self.status != 429 or answer.header("retry-after").isdigit(),
               "429 has a header Retry-After in seconds", answer.headers)


@dataclass(frozen=True)
class Field:
    name: str
    size: int
    type: str

    TYPES = ("text", "widetext", "integer", "real", "datetime", "autoincrement")

    @classmethod
    def read(cls, item):
        demand(isinstance(item, dict) and set(item) == {"name", "size", "type"},
               "a field is name, size and type", item)
        field = cls(**item)
        demand(isinstance(field.name, str) and field.name, "a field has a name", item)
        demand(type(field.size) is int and 0 <= field.size <= 2**31 - 1, "size is in bounds", item)
        demand(field.type in cls.TYPES, "type is one of " + ", ".join(cls.TYPES), item)
        demand(field.type in ("text", "widetext") or field.size == 0,
               "size is 0 for all types but texts", item)
        return field


@dataclass(frozen=True)
class Table:
    """The rows of one page: a list of texts and Nones a row, from left to right."""

    total: int
    fields: list
    rows: list

    @property
    def names(self):
        return [field.name for field in self.fields]

    def column(self, name):
        demand(name in self.names, f"a column {name}", self.names)
        at = self.names.index(name)
        return [row[at] for row in self.rows]

    def maps(self):
        """A map a row; of columns with one name the first."""
        names = self.names
        return [dict(reversed(list(zip(names, row)))) for row in self.rows]


_FORMS = {
    "integer": lambda text: text.lstrip("-").isdigit() and text.isascii() and text.count("-") < 2,
    "real": lambda text: (text.isascii() and text.lstrip("-").replace(".", "", 1).isdigit()
                          and text.count("-") < 2 and not text.endswith(".")
                          and not text.lstrip("-").startswith(".")),
    "datetime": lambda text: (len(text) == 19 and text.isascii()
                              and [text[at] for at in (4, 7, 10, 13, 16)] == list("-- ::")
                              and all(part.isdigit() for part in
                                      text.replace(" ", "-").replace(":", "-").split("-"))),
}
_FORMS["autoincrement"] = _FORMS["integer"]


def check_values(table):
    for at, field in enumerate(table.fields):
        form = _FORMS.get(field.type)
        for row in table.rows:
            value = row[at]
            if value is None:
                continue
            if form:
                demand(form(value), f"a value of {field.name} has the form of {field.type}", value)
            elif field.size:
                demand(len(value) <= field.size,
                       f"a value of {field.name} has at most {field.size} characters", value)
    return table


def read_column(item, rows):
    """The values of one column of a row block."""
    demand(isinstance(item, dict) and {"bytes", "offsets"} <= set(item) <= {"bytes", "offsets", "nulls"},
           "a column is bytes, offsets and perhaps nulls", item)
    demand(all(isinstance(value, bytes) for value in item.values()), "byte strings", item)
    content, raw = item["bytes"], item["offsets"]
    demand(len(raw) == 4 * (rows + 1), f"{rows + 1} offsets of four bytes", len(raw))
    offsets = struct.unpack(f"<{rows + 1}I", raw)
    demand(offsets[0] == 0 and offsets[-1] == len(content), "offsets span the bytes",
           f"{offsets[0]} to {offsets[-1]} of {len(content)}")
    demand(all(a <= b for a, b in zip(offsets, offsets[1:])), "offsets never go backwards", offsets)
    nulls = item.get("nulls", bytes((rows + 7) // 8))
    demand(len(nulls) == (rows + 7) // 8, "one null bit a row", len(nulls))
    demand("nulls" not in item or any(nulls), "nulls are left out when there are none", "all 0")
    bits = int.from_bytes(nulls, "little")
    demand(bits >> rows == 0, "unused null bits are 0", nulls.hex())
    values = []
    for row, (begin, end) in enumerate(zip(offsets, offsets[1:])):
        null = bits >> row & 1
        demand(not null or begin == end, "a null has length 0", end - begin)
        try:
            values.append(None if null else content[begin:end].decode())
        except UnicodeDecodeError:
            raise Malformed("every value is UTF-8 on its own", content[begin:end]) from None
    return values


def read_block(item):
    """A table of rows as CBOR."""
    demand(isinstance(item, dict)
           and {"rows", "fields", "columns"} <= set(item) <= {"rows", "total", "fields", "columns"},
           "a row block is rows, fields, columns and perhaps total", item)
    rows, fields = item["rows"], [Field.read(field) for field in item["fields"]]
    total = item.get("total", rows)
    demand(type(rows) is int and type(total) is int and 0 <= rows <= total and rows <= 2_147_483_646,
           "rows and total are in bounds", f"{rows} of {total}")
    demand(len(item["columns"]) == len(fields), "one column a field", len(item["columns"]))
    demand(fields or rows == 0, "a table without columns has no rows", rows)
    columns = [read_column(column, rows) for column in item["columns"]]
    return check_values(Table(total, fields, [list(row) for row in zip(*columns)]))


def read_json_table(item):
    demand(isinstance(item, dict) and set(item) == {"total", "fields", "rows"},
           "a table is total, fields and rows", item)
    fields = [Field.read(field) for field in item["fields"]]
    demand(type(item["total"]) is int and item["total"] >= len(item["rows"]),
           "total is at least the rows given", f"{item['total']} of {len(item['rows'])}")
    for row in item["rows"]:
        demand(isinstance(row, list) and len(row) == len(fields), "an item a column", row)
        demand(all(value is None or isinstance(value, str) for value in row), "text or null", row)
    return check_values(Table(item["total"], fields, item["rows"]))


def _unique(pairs):
    names = [name for name, _ in pairs]
    demand(len(names) == len(set(names)), "no key is repeated", names)
    return dict(pairs)


def decode(answer):
    """The item that the answer's body is, by its media type."""
    demand(answer.media in (CBOR, JSON), f"an answer is {CBOR} or {JSON}",
           f"status {answer.status}, {answer.header('content-type') or 'no media type'}")
    demand(not answer.header("content-encoding"), "answers are not compressed",
           answer.header("content-encoding"))
    try:
        return (cbor.decode(answer.body) if answer.media == CBOR else
                json.loads(answer.body.decode(), object_pairs_hook=_unique))
    except (cbor.Malformed, ValueError, RecursionError) as error:
        raise Malformed(f"the body is one item of {answer.media}", error) from error


class Peer:
    """One kept connection that speaks one of the two media types for one user."""

    def __init__(self, address, user, token, media=CBOR, ca_file=None):
        self.address, self.user, self.media, self.ca_file = address, user, media, ca_file
        self.connection = Connection(address, ca_file=ca_file)
        self.positions = {}  # what queries send back; may be shared
        self._token = token
        self.credential = "Basic " + base64.b64encode(f"{user}:{token}".encode()).decode()

    def close(self):
        self.connection.close()

    def speaking(self, media):
        made = Peer(self.address, self.user, self._token, media, self.ca_file)
        made.positions = self.positions
        return made

    def authorised(self, user, token):
        return Peer(self.address, user, token, self.media, self.ca_file)

    def encode(self, item):
        return cbor.encode(item) if self.media == CBOR else json.dumps(item).encode()

    def request(self, method, path, body=None, headers=None):
        """The bare answer. A header of None is left out."""
        sent = {"Accept": self.media, "Authorization": self.credential}
        if body is not None:
            sent["Content-Type"] = self.media
        if path == QUERY:
            sent.update(self.positions)
        sent.update(headers or {})
        answer = self.connection.request(
            method, path, {name: value for name, value in sent.items() if value is not None}, body)
        if path == POST and answer.header(POSITION):
            self.positions[POSITION] = answer.header(POSITION)
        return answer

    def call(self, method, path, body=None, headers=None):
        """The item of an answer with status 200; others raise Refused."""
        answer = self.request(method, path, body, headers)
        item = decode(answer)
        if answer.status != 200:
            raise Refused(answer, item)
        return item

    def session(self):
        return self.call("GET", "/session")

    def query(self, sql, page=0, page_size=0, query_type=1):
        message = {"sql": sql, "page": page, "pageSize": page_size, "queryType": query_type}
        item = self.call("POST", QUERY, self.encode(message))
        table = read_block(item) if self.media == CBOR else read_json_table(item)
        if page_size:
            demand(len(table.rows) <= page_size, f"at most {page_size} rows", len(table.rows))
        else:
            demand(len(table.rows) == table.total, "total is the number of rows",
                   f"{len(table.rows)} of {table.total}")
        return table

    def post(self, manager, method, rows, key=None):
        """Code and values of each posted row (a map); one of them for a post without rows."""
        message = {"manager": manager, "method": method,
                   "rows": [[list(pair) for pair in row.items()] for row in rows]}
        headers = {"Idempotency-Key": key} if key else {}
        return read_results(self.call("POST", POST, self.encode(message), headers), max(len(rows), 1))


def read_results(item, rows):
    demand(isinstance(item, dict) and set(item) == {"rows"} and len(item["rows"]) == rows,
           f"a map with the key rows and {rows} results", item)
    results = []
    for row in item["rows"]:
        demand(isinstance(row, dict) and set(row) == {"code", "values"},
               "a result is code and values", row)
        demand(row["code"] in ("1", "0", "-1", "-2"), "a code is 1, 0, -1 or -2", row["code"])
        demand(all(isinstance(pair, list) and len(pair) == 2 and
                   all(isinstance(text, str) for text in pair) for pair in row["values"]),
               "values are pairs of texts", row["values"])
        results.append((row["code"], dict(row["values"])))
    return results
