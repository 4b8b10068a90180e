"""What a check works with: a peer, the site's data, and the ways to say what differs."""

from .peer import CBOR, JSON, Refused


class Differs(Exception):
    def __init__(self, what, expected, found):
        super().__init__(what)
        self.what, self.expected, self.found = what, expected, found


class Missing(Exception):
    """The server has not the data that the check needs; the text says which."""


def shown(value):
    text = value if isinstance(value, str) else repr(value)
    return text if len(text) <= 600 else text[:600] + " ..."


class Case:
    def __init__(self, peer, site, second=None, limited=None):
        self.peer, self.site, self.second, self.limited = peer, site, second, limited
        self._endings = []
        self._peers = []

    @property
    def other(self):
        """A peer of the other media type."""
        return self.also(self.peer.speaking(JSON if self.peer.media == CBOR else CBOR))

    def also(self, peer):
        self._peers.append(peer)
        return peer

    def later(self, function, *arguments):
        """Called when the check is over, the last first."""
        self._endings.append((function, arguments))

    def end(self):
        for peer in self._peers:
            peer.close()
        failure = None
        while self._endings:
            function, arguments = self._endings.pop()
            try:
                function(*arguments)
            except Exception as error:  # pylint: disable=broad-except
                failure = failure or error
        if failure:
            raise failure

    # What differs

    def equal(self, found, expected, what):
        if found != expected:
            raise Differs(what, shown(expected), shown(found))

    def that(self, condition, what, found=""):
        if not condition:
            raise Differs(what, "that it holds", shown(found))

    def refused(self, status, code, call, *arguments):
        """The error that the call must end with."""
        try:
            answer = call(*arguments)
        except Refused as error:
            self.equal((error.status, error.code), (status, code), f"the answer ({error.message})")
            return error
        raise Differs("the request is refused", f"{status} {code}", f"200 {shown(answer)}")

    # What the server has

    def column(self, sql, page=0, size=0):
        """The first column of the statement's rows."""
        return [row[0] for row in self.peer.query(sql, page, size).rows]

    def one(self, sql, needs):
        """The first row of the statement."""
        rows = self.peer.query(sql, 1, 1).rows
        if not rows:
            raise Missing(needs)
        return rows[0]

    def count(self, table_and_condition):
        return self.peer.query(f"SELECT 1 AS N FROM {table_and_condition}", 1, 1).total

    def log(self, table, key1, key2=None):
        """The changes that the log has of a record, in the order in which they were made."""
        second = f" AND KEY_ID2 = {quoted(key2)}" if key2 else ""
        rows = self.peer.query("SELECT LOG_ID, OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME ="
                               f" {quoted(table)} AND KEY_ID1 = {quoted(key1)}{second}").rows
        return [change for _, change in sorted(rows, key=lambda row: (len(row[0]), row[0]))]

    # Posts

    def post(self, method, *rows, key=None):
        manager, name = method
        return self.peer.post(manager, name, list(rows), key)

    def codes(self, method, *rows):
        return [code for code, _ in self.post(method, *rows)]

    def answers(self, code, method, *rows):
        """Every row of the post gets this code."""
        self.equal(self.codes(method, *rows), [code] * max(len(rows), 1),
                   f"the codes of {method[1]} for {shown(rows)}")

    def stored(self, method, *rows):
        """The values of the results of a post that is stored."""
        results = self.post(method, *rows)
        self.equal([code for code, _ in results], ["1"] * max(len(rows), 1),
                   f"the codes of {method[1]} for {shown(rows)}")
        return [values for _, values in results]


def quoted(text):
    return "'" + text.replace("'", "''") + "'"
