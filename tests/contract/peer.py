"""A client of the wire protocol, written from docs/wire-protocol.md alone.

It shares nothing with the programs of this tree, so that the page is what both sides agree on.
"""

import base64
import http.client
import json
import struct
from dataclasses import dataclass
from urllib.parse import urlsplit

import cbor

CBOR = "application/cbor"
JSON = "application/json"


class Refused(Exception):
    """Any status but 200."""

    def __init__(self, status, body, headers):
        super().__init__(f"{status}: {body}")
        self.status = status
        self.headers = headers
        demand(set(body) == {"code", "message", "reference"}, f"keys of an error: {body}")
        self.code = body["code"]
        self.message = body["message"]
        self.reference = body["reference"]


class Malformed(Exception):
    """An answer that breaks a rule of the page."""


def demand(condition, rule):
    if not condition:
        raise Malformed(rule)


@dataclass(frozen=True)
class Field:
    name: str
    size: int
    type: str

    TYPES = ("text", "widetext", "integer", "real", "datetime", "autoincrement")

    @classmethod
    def read(cls, item):
        demand(set(item) == {"name", "size", "type"}, f"a field is name, size and type: {item}")
        field = cls(**item)
        demand(isinstance(field.name, str) and field.name, "a field has a name")
        demand(isinstance(field.size, int) and 0 <= field.size <= 2**31 - 1, "size is in bounds")
        demand(field.type in cls.TYPES, f"unknown type {field.type!r}")
        return field


@dataclass(frozen=True)
class Table:
    """The rows of one page: a list of texts and Nones a row, from left to right."""

    total: int
    fields: list
    rows: list

    def column(self, name):
        at = [field.name for field in self.fields].index(name)
        return [row[at] for row in self.rows]


def read_column(item, rows):
    """The values of one column of a row block."""
    demand({"bytes", "offsets"} <= set(item) <= {"bytes", "offsets", "nulls"}, "keys of a column")
    content, raw = item["bytes"], item["offsets"]
    demand(len(raw) == 4 * (rows + 1), "one offset a row and one more")
    offsets = struct.unpack(f"<{rows + 1}I", raw)
    demand(offsets[0] == 0 and offsets[-1] == len(content), "offsets span the bytes")
    demand(all(a <= b for a, b in zip(offsets, offsets[1:])), "offsets never go backwards")
    nulls = item.get("nulls", bytes((rows + 7) // 8))
    demand(len(nulls) == (rows + 7) // 8, "one null bit a row")
    demand("nulls" not in item or any(nulls), "nulls are left out when there are none")
    bits = int.from_bytes(nulls, "little")
    demand(bits >> rows == 0, "unused null bits are 0")
    values = []
    for row, (begin, end) in enumerate(zip(offsets, offsets[1:])):
        null = bits >> row & 1
        demand(not null or begin == end, "a null has length 0")
        values.append(None if null else content[begin:end].decode())
    return values


def read_block(item):
    """A table of rows as CBOR."""
    demand({"rows", "fields", "columns"} <= set(item) <= {"rows", "total", "fields", "columns"},
           "keys of a row block")
    rows, fields = item["rows"], [Field.read(field) for field in item["fields"]]
    total = item.get("total", rows)
    demand(0 <= rows <= total and rows <= 2_147_483_646, "rows and total are in bounds")
    demand(len(item["columns"]) == len(fields), "one column a field")
    demand(fields or rows == 0, "a table without columns has no rows")
    columns = [read_column(column, rows) for column in item["columns"]]
    return Table(total, fields, [list(row) for row in zip(*columns)])


def read_json_table(item):
    demand(set(item) == {"total", "fields", "rows"}, "keys of a table")
    fields = [Field.read(field) for field in item["fields"]]
    demand(item["total"] >= len(item["rows"]), "total is at least the rows given")
    for row in item["rows"]:
        demand(len(row) == len(fields), "an item a column")
        demand(all(value is None or isinstance(value, str) for value in row), "text or null")
    return Table(item["total"], fields, item["rows"])


class Peer:
    """One kept-alive connection that speaks one of the two media types."""

    def __init__(self, url, user, token, media=CBOR):
        parts = urlsplit(url)
        self._base = parts.path.rstrip("/")
        self._media = media
        self._credential = base64.b64encode(f"{user}:{token}".encode()).decode()
        self._connection = http.client.HTTPConnection(parts.hostname, parts.port, timeout=60)

    def close(self):
        self._connection.close()

    def encode(self, item):
        return cbor.encode(item) if self._media == CBOR else json.dumps(item).encode()

    def request(self, method, path, body=b"", headers=None):
        """Status, headers and decoded body of one exchange with raw bytes."""
        sent = {"Accept": self._media, "Authorization": f"Basic {self._credential}"}
        if method == "POST":
            sent["Content-Type"] = self._media
        sent.update(headers or {})
        self._connection.request(method, self._base + path, body or None, sent)
        response = self._connection.getresponse()
        content = response.read()
        media = (response.headers["Content-Type"] or "").partition(";")[0].strip()
        decode = {CBOR: cbor.decode, JSON: json.loads}
        return response.status, response.headers, decode[media](content)

    def call(self, method, path, body=b"", headers=None):
        status, answered, item = self.request(method, path, body, headers)
        if status != 200:
            raise Refused(status, item, answered)
        return item

    def session(self):
        return self.call("GET", "/session")

    def query(self, sql, page=0, page_size=0, query_type=1):
        query = {"sql": sql, "page": page, "pageSize": page_size, "queryType": query_type}
        item = self.call("POST", "/NorvaneSelectServlet", self.encode(query))
        return read_block(item) if self._media == CBOR else read_json_table(item)

    def post(self, manager, method, rows, key=None):
        """Code and values, both as the server gave them, of each posted row (a dict); one of them
        for a post without rows."""
        post = {"manager": manager, "method": method,
                "rows": [[list(pair) for pair in row.items()] for row in rows]}
        headers = {"Idempotency-Key": key} if key else {}
        item = self.call("POST", "/NorvaneServlet", self.encode(post), headers)
        demand(set(item) == {"rows"} and len(item["rows"]) == max(len(rows), 1), "one result a row")
        for row in item["rows"]:
            demand(set(row) == {"code", "values"}, "a result is code and values")
        return [(row["code"], dict(row["values"])) for row in item["rows"]]
