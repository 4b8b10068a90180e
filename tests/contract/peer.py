"""A client of the wire protocol, written from docs/wire-protocol.md alone.

It shares nothing with the programs of this tree, so that the page is what both sides agree on.
"""

import base64
import http.client
import json
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
        self.code = body["code"]
        self.message = body["message"]
        self.reference = body["reference"]


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
