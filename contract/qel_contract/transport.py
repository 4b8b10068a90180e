"""HTTP/1.1 over a socket, strict about what comes back: a connection sends any bytes and reads one
answer after the other."""

import select
import socket
import ssl
from dataclasses import dataclass
from urllib.parse import urlsplit


class NoAnswer(Exception):
    """The connection could not be made, broke, or gave no HTTP answer."""


@dataclass(frozen=True)
class Answer:
    status: int
    headers: tuple  # of pairs; names in lower case
    body: bytes

    def header(self, name):
        """Empty if there is none; several are joined by commas."""
        return ", ".join(value for one, value in self.headers if one == name.lower())

    @property
    def media(self):
        return self.header("content-type").partition(";")[0].strip().lower()


class Address:
    """Where a server is: what stands in its URL, which holds no credential."""

    def __init__(self, url):
        parts = urlsplit(url)
        if parts.scheme not in ("http", "https") or not parts.hostname:
            raise ValueError(f"{url!r} is no http or https address of a server")
        if parts.username is not None or parts.query or parts.fragment:
            raise ValueError("the server's address holds a host, a port and a path, nothing else")
        self.tls = parts.scheme == "https"
        self.host = parts.hostname
        self.port = parts.port or (443 if self.tls else 80)
        self.base = parts.path.rstrip("/")
        self.name = parts.netloc


class Connection:
    """Opened when it is needed and kept; a kept connection that the server closed while nothing was
    on its way is opened anew."""

    def __init__(self, address, timeout=60, ca_file=None):
        self.address = address
        self.opened = 0  # how many times
        self._timeout = timeout
        self._ca_file = ca_file
        self._socket = None
        self._buffer = b""

    def close(self):
        if self._socket:
            self._socket.close()
        self._socket, self._buffer = None, b""

    def _open(self):
        if self._socket and (self._buffer or select.select([self._socket], [], [], 0)[0]):
            self.close()
        if self._socket:
            return
        try:
            made = socket.create_connection((self.address.host, self.address.port), self._timeout)
            made.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            if self.address.tls:
                context = ssl.create_default_context(cafile=self._ca_file)
                made = context.wrap_socket(made, server_hostname=self.address.host)
        except OSError as error:
            raise NoAnswer(f"no connection to {self.address.name}: {error}") from error
        self._socket = made
        self.opened += 1

    def send(self, data):
        self._open()
        try:
            self._socket.sendall(data)
        except OSError as error:
            if not select.select([self._socket], [], [], 1)[0]:  # it may have answered before
                self.close()
                raise NoAnswer(f"the connection broke: {error}") from error

    def _more(self):
        try:
            data = self._socket.recv(1 << 18)
        except OSError as error:
            self.close()
            raise NoAnswer(f"no answer: {error}") from error
        if not data:
            self.close()
            raise NoAnswer("the connection was closed in the middle of an answer")
        self._buffer += data

    def _line(self):
        while b"\r\n" not in self._buffer:
            self._more()
        line, _, self._buffer = self._buffer.partition(b"\r\n")
        return line.decode("latin-1")

    def _exactly(self, size):
        parts, missing = [], size
        while missing:
            if not self._buffer:
                self._more()
            parts.append(self._buffer[:missing])
            self._buffer = self._buffer[missing:]
            missing -= len(parts[-1])
        return b"".join(parts)

    def _chunks(self):
        parts = []
        while True:
            size = int(self._line().partition(";")[0], 16)
            if size == 0:
                break
            parts.append(self._exactly(size))
            if self._line():
                raise NoAnswer("a chunk is longer than it says")
        while self._line():
            pass
        return b"".join(parts)

    def _until_closed(self):
        try:
            while True:
                self._more()
        except NoAnswer:
            return b""

    def receive(self, to_head=False):
        """The next answer; `to_head` if it answers HEAD, and so has no body."""
        try:
            version, _, rest = self._line().partition(" ")
            status = int(rest.split(" ")[0])
            headers = []
            while line := self._line():
                name, colon, value = line.partition(":")
                if not colon or name != name.strip() or not name:
                    raise NoAnswer(f"a header that is none: {line!r}")
                headers.append((name.lower(), value.strip()))
        except (ValueError, IndexError) as error:
            self.close()
            raise NoAnswer("the answer does not begin as HTTP does") from error
        if version not in ("HTTP/1.1", "HTTP/1.0"):
            raise NoAnswer(f"the answer begins with {version!r}")
        if 100 <= status < 200:
            return self.receive(to_head)
        answer = Answer(status, tuple(headers), b"")
        length, coding = answer.header("content-length"), answer.header("transfer-encoding")
        if to_head or status in (204, 304):
            body = b""
        elif coding:
            body = self._chunks()
        elif length:
            body = self._exactly(int(length))
        else:
            body = self._until_closed()
        if "close" in answer.header("connection").lower() or (not length and not coding):
            self.close()
        return Answer(status, tuple(headers), body)

    @property
    def is_open(self):
        return self._socket is not None

    def closes_within(self, seconds):
        """Whether the server ends the connection in that time."""
        if not self._socket:
            return True
        if not select.select([self._socket], [], [], seconds)[0]:
            return False
        try:
            return self._socket.recv(1) == b""
        except OSError:
            return True

    def request(self, method, path, headers=(), body=None):
        """One exchange; `path` stands below the server's own. Names of `headers` in any case."""
        lines = [f"{method} {self.address.base}{path} HTTP/1.1", f"Host: {self.address.name}"]
        lines += [f"{name}: {value}" for name, value in dict(headers).items()]
        if body is not None:
            lines.append(f"Content-Length: {len(body)}")
        self.send("\r\n".join(lines + ["", ""]).encode("latin-1") + (body or b""))
        return self.receive(to_head=method == "HEAD")
