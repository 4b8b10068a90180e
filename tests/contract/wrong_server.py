#!/usr/bin/env python3
"""wrong_server.py KIT SERVER: the kit finds what is wrong with a server.

Between the kit and our own server stands a proxy that makes one mistake at a time; the check that is
made for it must say so, and the same check finds nothing when the proxy makes none.
"""

import http.client
import json
import re
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import urlsplit

from served import Served

sys.path.insert(0, sys.argv[1])

from qel_contract import cbor  # noqa: E402
from qel_contract.peer import CBOR, JSON, Peer  # noqa: E402
from qel_contract.registry import all_checks  # noqa: E402
from qel_contract.runner import DIFFERS, PASSED, Mode, run  # noqa: E402
from qel_contract.site import Site  # noqa: E402
from qel_contract.transport import Address  # noqa: E402

READ = {CBOR: cbor.decode, JSON: json.loads}
WRITE = {CBOR: cbor.encode, JSON: lambda item: json.dumps(item).encode()}


class Exchange:
    """A request on its way to the server and the answer on its way back."""

    def __init__(self, method, path, headers, body):
        self.method, self.path, self.headers, self.body = method, path, headers, body
        self.status, self.answer_headers, self.answer = None, {}, b""

    @staticmethod
    def _item(headers, body):
        media = {name.lower(): value for name, value in headers.items()}.get("content-type", "")
        try:
            return READ[media.partition(";")[0]](body)
        except (KeyError, ValueError):
            return None

    @property
    def asked(self):
        return self._item(self.headers, self.body)

    @asked.setter
    def asked(self, item):
        self.body = WRITE[self.headers["Content-Type"].partition(";")[0]](item)

    @property
    def told(self):
        return self._item(self.answer_headers, self.answer)

    @told.setter
    def told(self, item):
        self.answer = WRITE[self.answer_headers["Content-Type"]](item)


class Proxy:
    """Hands requests on to the server; `mistake` is two functions of an Exchange, on its way there and
    back. The first may return True: then it has answered itself."""

    def __init__(self, url):
        self._target = urlsplit(url)
        self.credential = ""
        self.mistake = (None, None)
        proxy = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def handle_request(self):
                body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
                exchange = Exchange(self.command, self.path, dict(self.headers), body)
                proxy.pass_on(exchange)
                self.send_response(exchange.status)
                for name, value in exchange.answer_headers.items():
                    self.send_header(name, value)
                self.send_header("Content-Length", str(len(exchange.answer)))
                self.end_headers()
                if self.command != "HEAD":
                    self.wfile.write(exchange.answer)

            do_GET = do_POST = do_PUT = do_DELETE = do_HEAD = do_OPTIONS = handle_request

            def log_message(self, *_):
                pass

            def end_headers(self):
                super().end_headers()
                self.wfile.flush()

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self._server.server_port}{self._target.path}"
        threading.Thread(target=self._server.serve_forever, args=(0.05,), daemon=True).start()

    def pass_on(self, exchange):
        there, back = self.mistake
        if not (there and there(exchange)):
            self.ask(exchange)
        if back:
            back(exchange)

    def ask(self, exchange):
        connection = http.client.HTTPConnection(self._target.hostname, self._target.port, timeout=60)
        headers = {name: value for name, value in exchange.headers.items() if name.lower() in (
            "authorization", "content-type", "accept", "idempotency-key")}
        connection.request(exchange.method, exchange.path, exchange.body or None, headers)
        answer = connection.getresponse()
        exchange.status, exchange.answer = answer.status, answer.read()
        exchange.answer_headers = {name: value for name, value in answer.headers.items()
                                   if name.lower() in ("content-type",)}
        connection.close()

    def close(self):
        self._server.shutdown()
        self._server.server_close()


# Mistakes on the way back

def results(change):
    """Changes each result of a post."""
    def back(exchange):
        told = exchange.told
        if exchange.path.endswith("/NorvaneServlet") and exchange.status == 200:
            told["rows"] = [change(dict(row)) for row in told["rows"]]
            exchange.told = told
    return None, back


def code(wrong, right):
    return results(lambda row: {**row, "code": wrong if row["code"] == right else row["code"]})


def table(change):
    """Changes an answer to a query in JSON: change(asked, told)."""
    def back(exchange):
        told = exchange.told
        if isinstance(told, dict) and "fields" in told and isinstance(told["rows"], list):
            change(exchange.asked, told)
            exchange.told = told
    return None, back


def error(change):
    def back(exchange):
        told = exchange.told
        if exchange.status != 200 and isinstance(told, dict):
            change(exchange, told)
            exchange.told = told
    return None, back


def cells(change):
    def each(_, told):
        told["rows"] = [[change(value) for value in row] for row in told["rows"]]
    return table(each)


def cut_a_row(asked, told):
    if asked["pageSize"] == 0 and told["rows"]:
        told["rows"].pop()
        told["total"] -= 1


def overlap(asked, told):
    if asked["page"] > 1 and len(told["rows"]) > 1:
        told["rows"][0] = told["rows"][1]


def other_total(asked, told):
    told["total"] += asked["page"] if asked["pageSize"] else 0


def types_are_texts(_, told):
    told["fields"] = [{**field, "type": "text"} for field in told["fields"]]


def sizes_are_smaller(_, told):
    told["fields"] = [{**field, "size": max(0, field["size"] - 1)} for field in told["fields"]]


def reversed_rows(_, told):
    told["rows"].reverse()


def lower_names(_, told):
    told["fields"] = [{**field, "name": field["name"].lower()} for field in told["fields"]]


def log_is(change):
    def each(asked, told):
        if "FROM SYS_UPDATE_LOG" in asked["sql"]:
            told["rows"] = change(told["rows"])
            told["total"] = len(told["rows"])
    return table(each)


def without_media_type(exchange):
    exchange.answer_headers = {}


def closes(exchange):
    exchange.answer_headers["Connection"] = "close"


def with_status(status, code_of_it):
    def change(exchange, told):
        if told["code"] == code_of_it:
            exchange.status = status
    return error(change)


def other_code(wrong, right):
    return error(lambda exchange, told: told.update(code=wrong if told["code"] == right else told["code"]))


def other_user(exchange):
    told = exchange.told
    if exchange.path.endswith("/session") and exchange.status == 200:
        exchange.told = {**told, "UserName": "别人"}


def reordered_results(exchange):
    told = exchange.told
    if exchange.path.endswith("/NorvaneServlet") and exchange.status == 200:
        exchange.told = {"rows": told["rows"][::-1]}


def one_more_byte(exchange):
    exchange.answer += b"\0" if exchange.answer_headers["Content-Type"] == CBOR else b""


def big_endian(exchange):
    told = exchange.told
    if isinstance(told, dict) and "columns" in told:
        for column in told["columns"]:
            raw = column["offsets"]
            column["offsets"] = b"".join(raw[at:at + 4][::-1] for at in range(0, len(raw), 4))
        exchange.told = told


# Mistakes on the way there

def sql(change):
    def there(exchange):
        asked = exchange.asked
        if isinstance(asked, dict) and isinstance(asked.get("sql"), str):
            exchange.asked = {**asked, "sql": change(asked["sql"])}
    return there, None


def posted(change):
    def there(exchange):
        asked = exchange.asked
        if isinstance(asked, dict) and "rows" in asked:
            exchange.asked = {**asked, "rows": change(asked["rows"])}
    return there, None


def without_operator(rows):
    return [[pair for pair in row if not pair[0].startswith(("LOG_", "LAST_USER", "CREATE_USER", "CHECK_USER"))]
            for row in rows]


def shortened(rows):
    return [[[name, value[:5]] if name == "REMARK" else [name, value] for name, value in row] for row in rows]


def without_key(exchange):
    exchange.headers.pop("Idempotency-Key", None)


def known_media_type(exchange):
    if exchange.headers.get("Content-Type") not in (CBOR, JSON):
        exchange.headers["Content-Type"] = JSON


def lenient(exchange):
    asked = exchange.asked
    if isinstance(asked, dict):
        asked.pop("extra", None)
        exchange.asked = asked


def mistakes(proxy):
    def trusts_everybody(exchange):
        exchange.headers["Authorization"] = proxy.credential

    def deletes_nothing(exchange):
        if isinstance(exchange.asked, dict) and exchange.asked.get("method") == "delete_UniUnion":
            exchange.status, exchange.answer_headers = 200, {"Content-Type": JSON}
            exchange.told = {"rows": [{"code": "1", "values": []}]}
            return True
        return False

    def row_by_row(exchange):
        asked = exchange.asked
        if not isinstance(asked, dict) or len(asked.get("rows", [])) < 2:
            return False
        rows, answers = asked["rows"], []
        for row in rows:
            exchange.asked = {**asked, "rows": [row]}
            proxy.ask(exchange)
            answers += exchange.told["rows"]
        worst = next((row for row in answers if row["code"] != "1"), answers[0])
        exchange.told = {"rows": [{"code": worst["code"], "values": []}] * len(rows)}
        return True

    group, member, moved = "method.UniUnion.", "method.UniUnionOrg.", "method.Uni_Product."
    return (  # what it does wrong, the check that must find it, the mistake
        ("answers 0 for -1", group + "insert_update_UniUnion.-1", code("0", "-1")),
        ("answers -1 for -2", group + "delete_UniUnion.-2", code("-1", "-2")),
        ("answers 1 for 0", "method.RuleManager.insertUpdateOrgRule.0", code("1", "0")),
        ("stores what it refuses, by its code", moved + "move_in_Uni_Product.row-by-row", code("1", "-1")),
        ("answers no values", moved + "move_in_Uni_Product.1", results(lambda row: {**row, "values": []})),
        ("knows a code of its own", moved + "move_out_Uni_Product.again", code("7", "0")),
        ("reorders results", "post.results", (None, reordered_results)),
        ("deletes nothing", group + "delete_UniUnion.1", (deletes_nothing, None)),
        ("stores lists in part", "post.all-or-nothing", (row_by_row, None)),
        ("shortens texts", "post.texts", posted(shortened)),
        ("believes every operator", "post.operator", posted(without_operator)),
        ("forgets keys", "key.once", (without_key, None)),
        ("logs nothing", group + "insert_update_UniUnion.new", log_is(lambda rows: [])),
        ("logs twice", member + "insert_update_UniUnionOrg.unchanged", log_is(lambda rows: rows * 2)),
        ("cuts off the last row", "query.all-rows", table(cut_a_row)),
        ("gives a row on two pages", "query.pages", table(overlap)),
        ("gives each page a total of its own", "query.pages", table(other_total)),
        ("sorts the other way", "language.order", table(reversed_rows)),
        ("sorts a list the other way", "statement.groups.all", table(reversed_rows)),
        ("ignores a filter", "statement.orgs.text", sql(lambda text: re.sub("like '%[^']*%'", "like '%'", text))),
        ("filters too much", "statement.orgs.text", sql(lambda text: text.replace("UPPER(A.ORG_NAME)", "''"))),
        ("looks at the beginning of a column only", "statement.rollback.orders.code",
         sql(lambda text: re.sub("like '%(\\w+)%'", "like '\\1%'", text))),
        ("calls every field a text", "language.types", table(types_are_texts)),
        ("names fields in lower case", "statement.members", table(lower_names)),
        ("has shorter columns", "table.UNI_UNION", table(sizes_are_smaller)),
        ("gives empty texts for NULL", "query.null-and-empty", cells(lambda value: value or "")),
        ("writes dates its own way", "language.dates",
         cells(lambda value: value and re.sub(r"^(\d{4}-\d\d-\d\d) (\d\d:)", r"\1T\2", value))),
        ("knows no outer join", "language.outer-join", sql(lambda text: text.replace("(+)", ""))),
        ("compares NULL", "language.comparison-with-null", sql(lambda text: text.replace("<> ''", "<> 'x'"))),
        ("gives errors no reference", "http.unknown-address", error(lambda _, told: told.pop("reference"))),
        ("has another status", "language.error.syntax", with_status(500, "sql.syntax")),
        ("has another code", "language.error.unknown-table", other_code("sql.syntax", "sql.unknown_table")),
        ("confuses 404 and 405", "http.wrong-method", with_status(404, "http.method")),
        ("reads any media type", "http.media-of-request", (known_media_type, None)),
        ("reads unknown keys", "message.unknown-key", (lenient, None)),
        ("names no media type", "session.names", (None, without_media_type)),
        ("believes every credential", "credential.refused", (trusts_everybody, None)),
        ("names another user", "session.agrees-with-tables", (None, other_user)),
        ("closes every connection", "http.kept", (None, closes)),
        ("writes a byte too many", "query.no-rows", (None, one_more_byte)),
        ("writes offsets the other way round", "message.same-answer", (None, big_endian)),
    )


def main(server):
    checks = {check.id: check for check in all_checks()}
    failures = []
    with Served(server) as served:
        proxy = Proxy(served.url)
        address = Address(proxy.url)
        honest = Peer(Address(served.url), served.USER, served.token, JSON)
        proxy.credential = honest.credential

        def outcomes(identifier):
            peers = {media: Peer(address, served.USER, served.token, media) for media in (CBOR, JSON)}
            site = Site(honest, read_only=False)
            try:
                return run([checks[identifier]], peers, site, Mode(), each=True)
            finally:
                proxy.mistake = (None, None)
                site.close()
                for peer in peers.values():
                    peer.close()

        try:
            wrong = mistakes(proxy)
            for what, identifier, mistake in wrong:
                proxy.mistake = mistake
                found = outcomes(identifier)
                if not any(result.outcome == DIFFERS for result in found):
                    failures.append(f"a server that {what}: {identifier} is {[one.outcome for one in found]}")
            for identifier in dict.fromkeys(identifier for _, identifier, _ in wrong):
                for result in outcomes(identifier):
                    if result.outcome != PASSED:
                        failures.append(f"no mistake: {result.name}: {result.outcome}: {result.what}:"
                                        f" expected {result.expected}, found {result.found}")
        finally:
            proxy.close()
    print(f"{len(wrong)} mistakes, {len(failures)} failures")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[2]))
