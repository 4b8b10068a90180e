"""HTTP itself: addresses, methods, media types, connections."""

import json

from ..peer import CBOR, JSON, POST, QUERY, decode, demand
from ..registry import BOTH, EITHER, check
from ..transport import Connection, NoAnswer

EVERY_REQUEST = "Requests"
HEADERS = "Headers"
SQL = "SELECT ORG_ID FROM BAS_ORG ORDER BY ORG_ID"


def query_body(peer, sql=SQL, page=1, size=3):
    return peer.encode({"sql": sql, "page": page, "pageSize": size, "queryType": 1})


def error_of(case, answer, status, code):
    """The answer is this error, in a form that the page describes."""
    item = decode(answer)
    case.equal((answer.status, item.get("code") if isinstance(item, dict) else item), (status, code),
               "status and code")
    demand(set(item) == {"code", "message", "reference"}, "code, message and reference", item)


@check("http.health", EVERY_REQUEST, "The health check answers ok in plain text, without a credential",
       media=EITHER)
def health(case):
    answer = case.peer.request("GET", "/healthz", headers={"Authorization": None})
    case.equal((answer.status, answer.media, answer.body), (200, "text/plain", b"ok\n"), "the answer")


@check("http.unknown-address", "Errors", "An address that there is not is 404 http.not_found", media=BOTH)
def unknown_address(case):
    for path in ("/nowhere", QUERY + "/more", QUERY.lower(), "/session/"):
        case.refused(404, "http.not_found", case.peer.call, "GET", path)


@check("http.wrong-method", "Errors", "A method that an address does not take is 405 http.method", media=BOTH)
def wrong_method(case):
    for method, path in (("GET", QUERY), ("GET", POST), ("PUT", QUERY), ("DELETE", POST),
                         ("POST", "/session"), ("POST", "/healthz"), ("OPTIONS", QUERY)):
        body = b"" if method in ("POST", "PUT") else None
        error_of(case, case.peer.request(method, path, body), 405, "http.method")


@check("http.head", EVERY_REQUEST, "HEAD is answered without a body, and the connection stays usable",
       media=EITHER)
def head(case):
    peer = case.also(case.peer.speaking(case.peer.media))
    for path in ("/session", QUERY, "/nowhere"):
        answer = peer.request("HEAD", path)
        case.that(answer.status in (200, 404, 405), f"the status of HEAD {path} is 200, 404 or 405",
                  answer.status)
    peer.session()
    case.equal(peer.connection.opened, 1, "connections used")


@check("http.media-of-request", HEADERS, "A request of another media type is 415 http.type", media=BOTH)
def media_of_request(case):
    for media in ("text/plain", "application/xml", "application/x-www-form-urlencoded"):
        for path in (QUERY, POST):
            error_of(case, case.peer.request("POST", path, query_body(case.peer),
                                             {"Content-Type": media}), 415, "http.type")
    error_of(case, case.peer.request("POST", QUERY, query_body(case.peer), {"Content-Type": None}),
             415, "http.type")


@check("http.media-parameters", HEADERS,
       "Parameters of a media type are ignored, and so is the case of its letters", media=BOTH)
def media_parameters(case):
    for media in (case.peer.media + "; charset=utf-8", case.peer.media + ";charset=utf-8",
                  case.peer.media.upper()):
        case.peer.call("POST", QUERY, query_body(case.peer), {"Content-Type": media})


@check("http.accept", HEADERS, "The answer has the first media type of Accept that the server knows", media=BOTH)
def accept(case):
    own = case.peer.media
    for asked, media in ((JSON, JSON), (CBOR, CBOR), ("text/html, " + CBOR, CBOR),
                         (JSON + ", " + CBOR, JSON), (CBOR + ", " + JSON, CBOR), (None, own)):
        answer = case.peer.request("POST", QUERY, query_body(case.peer), {"Accept": asked})
        case.equal((answer.status, answer.media), (200, media), f"status and media type for {asked}")
        decode(answer)
    # A request without a body has no media type.
    answer = case.peer.request("GET", "/session", headers={"Accept": None})
    case.equal((answer.status, answer.media), (200, JSON), "status and media type of a bare session")


@check("http.errors-have-the-media-type", "Errors", "An error has the media type that its answer had", media=BOTH)
def media_of_errors(case):
    for media in (CBOR, JSON):
        answer = case.peer.request("POST", QUERY, query_body(case.peer, "SELECT"), {"Accept": media})
        case.equal(answer.media, media, "media type of an error")
        error_of(case, answer, 400, "sql.syntax")


@check("http.json-is-utf-8", HEADERS, "JSON is UTF-8, with characters as they are or escaped",
       media=(JSON,))
def json_is_utf8(case):
    text = "SELECT '集团𠀀' AS T FROM BAS_ORG"
    message = {"sql": text, "page": 1, "pageSize": 1, "queryType": 1}
    case.one("SELECT ORG_ID FROM BAS_ORG", "an organisation")
    for plain in (True, False):
        body = json.dumps(message, ensure_ascii=plain).encode()
        item = case.peer.call("POST", QUERY, body)
        case.equal(item["rows"], [["集团𠀀"]], "rows")


@check("http.kept", EVERY_REQUEST, "A connection is kept from one request to the next", media=EITHER)
def kept(case):
    peer = case.also(case.peer.speaking(case.peer.media))
    for _ in range(5):
        peer.session()
        peer.query(SQL, 1, 3)
    error_of(case, peer.request("GET", "/nowhere"), 404, "http.not_found")
    error_of(case, peer.request("POST", QUERY, b"nothing"), 400, "http.bad_request")
    peer.session()
    case.equal(peer.connection.opened, 1, "connections used")


@check("http.one-after-the-other", EVERY_REQUEST,
       "Two requests sent at once are answered in their order", media=EITHER)
def pipelined(case):
    address, credential = case.peer.address, case.peer.credential
    connection = case.also(Connection(address, ca_file=case.peer.ca_file))
    requests = [f"GET {address.base}{path} HTTP/1.1\r\nHost: {address.name}\r\n"
                f"Authorization: {credential}\r\nAccept: {JSON}\r\n\r\n"
                for path in ("/session", "/nowhere")]
    connection.send("".join(requests).encode())
    case.equal([connection.receive().status, connection.receive().status], [200, 404], "statuses")


@check("http.close", EVERY_REQUEST, "A request that asks for it ends the connection", media=EITHER)
def close(case):
    peer = case.also(case.peer.speaking(case.peer.media))
    answer = peer.request("GET", "/session", headers={"Connection": "close"})
    case.equal(answer.status, 200, "status")
    case.that(peer.connection.closes_within(10), "the server closes the connection within 10 s")


@check("http.chunked", HEADERS, "A request in chunks is read, or refused in order", media=EITHER)
def chunked(case):
    address, peer = case.peer.address, case.peer
    connection = case.also(Connection(address, ca_file=peer.ca_file))
    body = query_body(peer)
    head = (f"POST {address.base}{QUERY} HTTP/1.1\r\nHost: {address.name}\r\nAuthorization: "
            f"{peer.credential}\r\nContent-Type: {peer.media}\r\nTransfer-Encoding: chunked\r\n\r\n")
    chunks = b"".join(b"%x\r\n%b\r\n" % (len(part), part) for part in (body[:10], body[10:]))
    connection.send(head.encode() + chunks + b"0\r\n\r\n")
    answer = connection.receive()
    case.that(answer.status in (200, 400, 411, 501), "status 200, 400, 411 or 501", answer.status)
    if answer.status == 200:
        case.equal(answer.body, peer.request("POST", QUERY, body).body, "the answer")


@check("http.not-http", "Errors", "What is not HTTP is 400 http.bad_request or ends the connection",
       media=EITHER)
def not_http(case):
    for sent in (b"hello\r\n\r\n", b"GET\r\n\r\n", b"\x16\x03\x01\x00\x05hello\r\n\r\n",
                 b"POST / HTTP/1.1\r\nContent-Length: x\r\n\r\n"):
        connection = case.also(Connection(case.peer.address, 10, case.peer.ca_file))
        try:
            connection.send(sent)
            answer = connection.receive()
        except NoAnswer:
            case.that(connection.closes_within(10), "the connection ends", sent)
            continue
        case.equal(answer.status, 400, f"status for {sent!r}")
        if answer.media in (CBOR, JSON):
            error_of(case, answer, 400, "http.bad_request")


@check("http.case-of-headers", HEADERS, "Names of headers are read in any case", media=EITHER)
def case_of_headers(case):
    answer = case.peer.request("GET", "/session", headers={
        "Authorization": None, "aUTHORIZATION": case.peer.credential})
    case.equal(answer.status, 200, "status")
