#!/usr/bin/env python3
"""What docs/wire-protocol.md promises, asked of a running server in both media types.

contract_test.py --server PROGRAM   starts qel-server with the sample data and stops it
contract_test.py --url URL --user CODE --token TOKEN   asks a server that runs; leaves no group behind
"""

import argparse
import http.client
import os
import secrets
import subprocess
import unittest
import uuid
from pathlib import Path
from urllib.parse import urlsplit

import cbor
import peer
from methods import Methods
from peer import Peer, Refused

MANAGER = "com.business.admin.UniUnion"
TARGET = argparse.Namespace(started=False, url=None, user="admin", token=secrets.token_hex(16))
PAGE = Path(__file__).resolve().parents[2] / "docs" / "wire-protocol.md"


def start_server(program):
    """Starts the server on a free port; it stops when its standard input is closed."""
    process = subprocess.Popen(
        [program, "--demo", "--listen", "127.0.0.1:0", "--operator", TARGET.user,
         "--exit-with-parent"],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
        env={**os.environ, "QEL_OPERATOR_TOKEN": TARGET.token})
    line = process.stdout.readline()
    prefix = "listening on "
    if not line.startswith(prefix):
        raise SystemExit(f"the server did not start: {line!r}, status {process.wait()}")
    TARGET.started, TARGET.url = True, line.removeprefix(prefix).strip()
    return process


class ByteExample(unittest.TestCase):
    """The example of the page, byte by byte, against its JSON form."""

    def test_both_forms_are_the_same_table(self):
        block = PAGE.read_text().split("```row-block\n")[1].split("```")[0]
        data = bytes.fromhex("".join(line.split()[0] for line in block.splitlines()))
        table = peer.read_block(cbor.decode(data))
        self.assertEqual(table.total, 7)
        self.assertEqual(table.fields, [peer.Field("ID", 0, "integer"), peer.Field("NAME", 20, "text")])
        self.assertEqual(table.rows, [["1", "集团"], [None, ""]])


class WithServer(unittest.TestCase):
    media = None

    def setUp(self):
        self.peer = self.connect()

    def connect(self, user=None, token=None, media=None):
        made = Peer(TARGET.url, user or TARGET.user, token or TARGET.token, media or self.media)
        self.addCleanup(made.close)
        return made

    def only_on_sample_data(self):
        """For what cannot be undone."""
        if not TARGET.started:
            self.skipTest("would change the records of a server that was not started here")

    def refusal(self, status, code, call, *arguments):
        with self.assertRaises(Refused) as caught:
            call(*arguments)
        error = caught.exception
        self.assertEqual((error.status, error.code), (status, code), error)
        self.assertTrue(error.message and error.reference)
        return error


class Contract:
    """Each promise of the page; run once per media type."""

    ORGANISATIONS = "SELECT ORG_ID, ORG_NAME FROM BAS_ORG WHERE LAST_OPERATE <> 'D' ORDER BY ORG_TYPE"

    # Session and credentials

    def test_session_names_the_operator(self):
        session = self.peer.session()
        self.assertEqual(set(session), {"UserId", "UserCode", "UserName", "OrgId", "OrgAbbr",
                                        "OrgName", "ServerName"})
        self.assertEqual(session["UserCode"], TARGET.user)
        self.assertTrue(all(isinstance(text, str) for text in session.values()))

    def test_a_wrong_token_and_an_unknown_user_are_refused_alike(self):
        wrong = self.refusal(401, "auth.refused", self.connect(token="0" * 32).session)
        nobody = self.refusal(401, "auth.refused", self.connect(user="no-such-user").session)
        self.assertEqual(wrong.message, nobody.message)

    def test_every_address_but_the_health_check_wants_a_credential(self):
        for method, path in (("GET", "/session"), ("POST", "/NorvaneSelectServlet"),
                             ("POST", "/NorvaneServlet")):
            with self.subTest(path=path):
                status, _, body = self.peer.request(method, path, self.peer.encode({}),
                                                    {"Authorization": ""})
                self.assertEqual((status, body["code"]), (401, "auth.required"))

    # Queries

    def test_an_unpaged_query_gives_all_rows(self):
        table = self.peer.query(self.ORGANISATIONS)
        self.assertEqual([field.name for field in table.fields], ["ORG_ID", "ORG_NAME"])
        self.assertEqual(len(table.rows), table.total)
        self.assertGreater(table.total, 1000)
        self.assertEqual(len(set(table.column("ORG_ID"))), table.total)

    def test_pages_neither_overlap_nor_leave_out_rows(self):
        size = 250
        whole = self.peer.query(self.ORGANISATIONS)
        seen = []
        for page in range(1, -(-whole.total // size) + 1):
            table = self.peer.query(self.ORGANISATIONS, page, size)
            self.assertEqual(table.total, whole.total)
            seen += table.column("ORG_ID")
        self.assertEqual(len(seen), whole.total)
        self.assertEqual(set(seen), set(whole.column("ORG_ID")))

    def test_a_page_behind_the_last_row_is_empty(self):
        table = self.peer.query(self.ORGANISATIONS, 1_000_000, 50)
        self.assertEqual(table.rows, [])
        self.assertEqual(len(table.fields), 2)
        self.assertGreater(table.total, 1000)

    def test_page_and_size_are_both_zero_or_both_above(self):
        self.refusal(400, "http.bad_request", self.peer.query, self.ORGANISATIONS, 1, 0)
        self.refusal(400, "http.bad_request", self.peer.query, self.ORGANISATIONS, 0, 50)
        self.refusal(400, "http.bad_request", self.peer.query, self.ORGANISATIONS, 1, 1_000_001)

    def test_the_query_type_is_a_hint_of_two_values(self):
        self.assertEqual(self.peer.query(self.ORGANISATIONS, 1, 5, 1),
                         self.peer.query(self.ORGANISATIONS, 1, 5, 2))
        self.refusal(400, "http.bad_request", self.peer.query, self.ORGANISATIONS, 1, 5, 3)

    def test_values_have_the_form_of_their_type(self):
        table = self.peer.query(
            "SELECT 7 AS I, to_date('2024-03-05 13:07:00', 'yyyy-mm-dd hh24:mi:ss') AS D,"
            " '集团' AS T, 0.5 AS R, NULL AS N FROM BAS_ORG WHERE ORG_ID ="
            f" '{self.peer.session()['OrgId']}'")
        types = dict(zip("IDTRN", (field.type for field in table.fields)))
        values = dict(zip("IDTRN", table.rows[0]))
        self.assertEqual((types["I"], values["I"]), ("integer", "7"))
        self.assertEqual((types["D"], values["D"]), ("datetime", "2024-03-05 13:07:00"))
        self.assertIn(types["T"], ("text", "widetext"))
        self.assertEqual(values["T"], "集团")
        self.assertEqual((types["R"], values["R"]), ("real", "0.5"))
        self.assertIsNone(values["N"])

    def test_null_is_not_the_empty_text(self):
        table = self.peer.query("SELECT UNION_ID, PARENT_ID, LAST_OPERATE FROM UNI_UNION"
                                " WHERE LAST_OPERATE <> 'D'")
        self.assertIn(None, table.column("PARENT_ID"))
        self.assertNotIn("", table.column("PARENT_ID"))
        self.assertNotIn(None, table.column("LAST_OPERATE"))

    def test_both_media_types_tell_the_same(self):
        other = self.connect(media=peer.JSON if self.media == peer.CBOR else peer.CBOR)
        sql = "SELECT * FROM UNI_UNION ORDER BY UNION_ID"
        self.assertEqual(self.peer.query(sql), other.query(sql))
        self.assertEqual(self.peer.session(), other.session())

    def test_wrong_statements_are_told_apart(self):
        for sql, code in (("SELECT FROM WHERE", "sql.syntax"),
                          ("DELETE FROM UNI_UNION", "sql.not_select"),
                          ("SELECT 1 FROM UNI_UNION; SELECT 1 FROM UNI_UNION", "sql.not_select"),
                          ("SELECT 1 FROM NO_SUCH_TABLE", "sql.unknown_table"),
                          ("SELECT NO_SUCH_COLUMN FROM UNI_UNION", "sql.unknown_column"),
                          ("SELECT UNION_ID FROM UNI_UNION A, UNI_ORG B", "sql.ambiguous"),
                          ("SELECT NO_SUCH_FUNCTION(1) FROM UNI_UNION", "sql.function"),
                          ("SELECT to_date('x', 'yyyy-mm-dd') FROM UNI_UNION", "sql.value"),
                          ("SELECT " + "(" * 100 + "1" + ")" * 100 + " FROM UNI_UNION", "sql.limit")):
            with self.subTest(sql=sql[:60]):
                self.refusal(400, code, self.peer.query, sql)

    # Messages

    def test_a_message_is_read_strictly(self):
        query = {"sql": self.ORGANISATIONS, "page": 1, "pageSize": 5, "queryType": 1}
        wrong = [{**query, "extra": 1}, {key: query[key] for key in ("sql", "page")},
                 {**query, "page": "1"}, {**query, "sql": None}, {**query, "page": -1}, []]
        bodies = [self.peer.encode(item) for item in wrong]
        bodies += [self.peer.encode(query) + b"\x00", b"", b"\xff"]
        for body in bodies:
            with self.subTest(body=body[:60]):
                self.refusal(400, "http.bad_request", self.peer.call, "POST",
                             "/NorvaneSelectServlet", body)

    def test_keys_come_in_any_order(self):
        query = {"queryType": 1, "pageSize": 5, "page": 1, "sql": self.ORGANISATIONS}
        self.peer.call("POST", "/NorvaneSelectServlet", self.peer.encode(query))

    def test_media_types_are_negotiated(self):
        query = self.peer.encode({"sql": self.ORGANISATIONS, "page": 1, "pageSize": 5, "queryType": 1})
        for accept, media in ((peer.JSON, peer.JSON), (peer.CBOR, peer.CBOR),
                              ("text/html, " + peer.CBOR, peer.CBOR), ("*/*", self.media)):
            with self.subTest(accept=accept):
                _, headers, _ = self.peer.request("POST", "/NorvaneSelectServlet", query,
                                                  {"Accept": accept})
                self.assertEqual(headers["Content-Type"].partition(";")[0], media)
        status, _, body = self.peer.request("POST", "/NorvaneSelectServlet", query,
                                            {"Content-Type": "text/plain"})
        self.assertEqual((status, body["code"]), (415, "http.type"))
        self.peer.call("POST", "/NorvaneSelectServlet", query,
                       {"Content-Type": self.media + "; charset=utf-8"})

    def test_unknown_addresses_and_methods(self):
        self.refusal(404, "http.not_found", self.peer.call, "GET", "/nowhere")
        self.refusal(405, "http.method", self.peer.call, "GET", "/NorvaneSelectServlet")

    def test_a_request_of_more_than_8_mib_is_refused(self):
        connection = self.connect()
        with self.assertRaises((Refused, ConnectionError)) as caught:
            connection.call("POST", "/NorvaneSelectServlet", b"x" * (8 * 2**20 + 1))
        # The server may hang up while the body is still on its way; then nothing was read.
        if isinstance(caught.exception, Refused):
            self.assertEqual((caught.exception.status, caught.exception.code),
                             (413, "http.too_large"))
        self.assertEqual(self.connect().session()["UserCode"], TARGET.user)

    # Posts

    def group(self):
        """A new top-level group that breaks no rule."""
        taken = set(self.peer.query("SELECT UNION_CODE FROM UNI_UNION").column("UNION_CODE"))
        leading = set(self.peer.query("SELECT MASTER_ORGID FROM UNI_UNION").column("MASTER_ORGID"))
        free = [org for org in self.peer.query(self.ORGANISATIONS).column("ORG_ID")
                if org not in leading]
        code = next(text for number in range(9999, 0, -1) if (text := f"{number:04}") not in taken)
        return {"UNION_ID": "", "PARENT_ID": "", "UNION_CODE": code, "UNION_NAME": "契约测试集团",
                "UNION_TYPE": "", "REGION_ID": "", "MASTER_ORGID": free[0], "REMARK": ""}

    def store(self, row, key=None):
        results = self.peer.post(MANAGER, "insert_update_UniUnion", [row], key)
        if results[0][0] == "1":
            self.addCleanup(self.peer.post, MANAGER, "delete_UniUnion",
                            [{"UNION_ID": results[0][1]["UNION_ID"]}])
        return results

    def count(self, row):
        return self.peer.query("SELECT UNION_ID FROM UNI_UNION WHERE LAST_OPERATE <> 'D'"
                               f" AND UNION_CODE = '{row['UNION_CODE']}'").total

    def test_a_post_with_the_same_key_takes_effect_once(self):
        row, key = self.group(), str(uuid.uuid4())
        first = self.store(row, key)
        self.assertEqual(first[0][0], "1")
        self.assertTrue(first[0][1]["UNION_ID"])
        again = self.peer.post(MANAGER, "insert_update_UniUnion", [row], key)
        self.assertEqual(again, first)
        self.assertEqual(self.count(row), 1)

    def test_a_key_is_not_reused_for_another_post(self):
        row, key = self.group(), str(uuid.uuid4())
        self.store(row, key)
        other = {**row, "UNION_NAME": "另一个集团"}
        self.refusal(409, "post.key_reused", self.peer.post, MANAGER, "insert_update_UniUnion",
                     [other], key)

    def test_a_post_without_a_key_runs_each_time(self):
        row = self.group()
        self.assertEqual(self.store(row)[0][0], "1")
        self.assertNotEqual(self.store(row)[0][0], "1")

    def test_a_refusal_by_a_rule_is_a_result(self):
        row = self.group()
        row["UNION_CODE"] = self.peer.query(
            "SELECT UNION_CODE FROM UNI_UNION WHERE LAST_OPERATE <> 'D' AND PARENT_ID IS NULL"
        ).column("UNION_CODE")[0]
        self.assertEqual(self.store(row)[0][0], "-1")

    def test_a_stored_empty_text_reads_as_the_server_keeps_it(self):
        row = self.group()
        key = self.store(row)[0][1]["UNION_ID"]
        table = self.peer.query(f"SELECT PARENT_ID, REMARK FROM UNI_UNION WHERE UNION_ID = '{key}'")
        self.assertEqual(table.rows, [[None, None]])

    def test_a_row_names_no_other_operator(self):
        row = {**self.group(), "LOG_USER_ID": "nobody"}
        self.refusal(403, "post.operator", self.peer.post, MANAGER, "insert_update_UniUnion", [row])

    def test_unknown_methods_are_refused(self):
        self.refusal(404, "post.unknown_method", self.peer.post, MANAGER, "drop_everything", [{}])
        self.refusal(404, "post.unknown_method", self.peer.post, "com.nowhere", "x", [{}])

    def test_names_differ_within_a_row(self):
        body = self.peer.encode({"manager": MANAGER, "method": "delete_UniUnion",
                                 "rows": [[["UNION_ID", "1"], ["union_id", "2"]]]})
        self.refusal(400, "http.bad_request", self.peer.call, "POST", "/NorvaneServlet", body)

    def test_a_row_has_every_parameter_of_its_method(self):
        self.refusal(400, "post.bad_row", self.peer.post, MANAGER, "delete_UniUnion", [{}])
        row = self.group()
        del row["REMARK"]
        self.refusal(400, "post.bad_row", self.peer.post, MANAGER, "insert_update_UniUnion", [row])

    def test_a_record_is_named_once_in_a_list(self):
        rows = [{"UNION_ID": "1"}, {"UNION_ID": "1"}]
        self.refusal(400, "post.bad_row", self.peer.post, MANAGER, "delete_UniUnion", rows)

    def test_a_post_without_rows_is_taken_by_one_method(self):
        self.assertEqual(self.peer.post(MANAGER, "insert_update_UniOrgType", []), [("1", {})])
        self.refusal(400, "post.bad_row", self.peer.post, MANAGER, "delete_UniUnion", [])


class OverCbor(Contract, Methods, WithServer):
    media = peer.CBOR


class OverJson(Contract, Methods, WithServer):
    media = peer.JSON


class Health(unittest.TestCase):
    def test_it_answers_without_a_credential(self):
        parts = urlsplit(TARGET.url)
        connection = http.client.HTTPConnection(parts.hostname, parts.port, timeout=30)
        self.addCleanup(connection.close)
        connection.request("GET", parts.path.rstrip("/") + "/healthz")
        response = connection.getresponse()
        self.assertEqual((response.status, response.read()), (200, b"ok\n"))
        self.assertEqual(response.headers.get_content_type(), "text/plain")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    target = parser.add_mutually_exclusive_group(required=True)
    target.add_argument("--server")
    target.add_argument("--url")
    parser.add_argument("--user")
    parser.add_argument("--token")
    options, rest = parser.parse_known_args()
    TARGET.url, TARGET.user = options.url, options.user or TARGET.user
    TARGET.token = options.token or TARGET.token
    process = start_server(options.server) if options.server else None
    try:
        unittest.main(argv=[__file__, *rest])
    finally:
        if process:
            process.stdin.close()
            process.wait(30)


if __name__ == "__main__":
    main()
