"""Credentials and who they name."""

import base64

from ..case import Differs, quoted
from ..peer import POST, QUERY, Refused, decode
from ..registry import BOTH, check

SESSION = "Session"
HEADERS = "Headers"
NAMES = {"UserId", "UserCode", "UserName", "OrgId", "OrgAbbr", "OrgName", "ServerName"}


@check("session.names", SESSION, "The session is seven texts about the user of the credential", media=BOTH)
def names(case):
    session = case.peer.session()
    case.that(isinstance(session, dict) and set(session) == NAMES, f"the keys {sorted(NAMES)}", session)
    case.that(all(isinstance(text, str) for text in session.values()), "seven texts", session)
    case.equal(session["UserCode"], case.peer.user, "UserCode")


@check("session.agrees-with-tables", SESSION, "The session says what the tables say about the user", media=BOTH)
def agrees(case):
    session = case.peer.session()
    table = case.peer.query(
        "SELECT A.USER_ID, A.USER_CODE, A.USER_NAME, B.ORG_ID, B.ORG_ABBR, B.ORG_NAME FROM USR_USER A,"
        f" BAS_ORG B WHERE A.ORG_ID = B.ORG_ID AND A.USER_CODE = {quoted(case.peer.user)}")
    case.equal([[text or "" for text in row] for row in table.rows],
               [[session[name] for name in ("UserId", "UserCode", "UserName", "OrgId", "OrgAbbr",
                                            "OrgName")]], "the user's row")


@check("session.media", SESSION, "The session is the same in both media types", media=BOTH)
def media(case):
    case.equal(case.other.session(), case.peer.session(), "the session")


@check("credential.missing", HEADERS, "Every address but the health check wants a credential", media=BOTH)
def missing(case):
    for method, path, body in (("GET", "/session", None), ("POST", QUERY, b""), ("POST", POST, b"")):
        for sent in (None, "", "Bearer abc", "Basic", "Basic !!!"):
            answer = case.peer.request(method, path, body, {"Authorization": sent})
            case.equal((answer.status, decode(answer)["code"]), (401, "auth.required"),
                       f"status and code of {path} with Authorization {sent!r}")


def nobody(case, user, token):
    """The message to a credential that names nobody. A server may have counted too many before."""
    try:
        answer = case.also(case.peer.authorised(user, token)).session()
    except Refused as error:
        case.that((error.status, error.code) in ((401, "auth.refused"), (429, "auth.too_many")),
                  "401 auth.refused, or 429 auth.too_many", error)
        return error.message if error.status == 401 else None
    raise Differs("the credential is refused", "401 auth.refused", str(answer))


# Few, and in one media type: servers count them.
@check("credential.refused", HEADERS, "A wrong token and an unknown user are refused alike")
def refused(case):
    told = {nobody(case, case.peer.user, "0" * 32), nobody(case, "no-such-user-code", "0" * 32)} - {None}
    case.that(len(told) < 2, "the messages are the same", told)
    case.peer.session()


@check("credential.scheme", HEADERS, "The name of the scheme is read in any case", media=BOTH)
def scheme(case):
    value = case.peer.credential.partition(" ")[2]
    answer = case.peer.request("GET", "/session", headers={"Authorization": "basic " + value})
    case.equal(answer.status, 200, "status")


@check("credential.colon", HEADERS, "Everything behind the first colon is the token")
def colon(case):
    user, _, secret = base64.b64decode(case.peer.credential.partition(" ")[2]).decode().partition(":")
    nobody(case, user, secret + ":")
    nobody(case, user, ":" + secret)


@check("credential.too-many", "Errors", "Who tries many credentials is refused, and a good one goes on",
       heavy=True)
def too_many(case):
    for number in range(8):
        nobody(case, case.peer.user, f"guess {number}")
    case.peer.session()


@check("credential.second", SESSION, "Another credential names another user", second=True, media=BOTH)
def second(case):
    case.that(case.second.session()["UserId"] != case.peer.session()["UserId"], "two users")
