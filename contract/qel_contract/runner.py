"""Runs checks one after the other and keeps what they found."""

import itertools
import time
from dataclasses import dataclass

from .case import Case, Differs, Missing, shown
from .peer import CBOR, Malformed, Refused
from .registry import Check
from .transport import NoAnswer

PASSED, DIFFERS, SKIPPED = "passed", "differs", "skipped"


@dataclass
class Result:
    check: Check
    media: str
    outcome: str
    seconds: float = 0.0
    what: str = ""  # that differs, or is missing
    expected: str = ""
    found: str = ""

    @property
    def name(self):
        return f"{self.check.id} ({self.media.partition('/')[2]})"


@dataclass(frozen=True)
class Mode:
    read_only: bool = False
    heavy: bool = False
    roll_back: bool = False

    def refuses(self, check, has_second, has_limited):
        """Why the check is not run; empty if it is."""
        if check.writes and self.read_only:
            return "it writes: run without --read-only"
        if check.heavy and not self.heavy:
            return "it sends megabytes: run with --heavy"
        if check.rolls_back and not self.roll_back:
            return "it takes back an order, a return or a receipt for good: run with --roll-back"
        if check.second and not has_second:
            return "it needs another user: run with --second-user"
        if check.limited and not has_limited:
            return "it needs a credential that is limited to some groups: run with --limited-user"
        return ""


def run_one(check, media, peer, site, mode, second=None, limited=None):
    begin = time.monotonic()

    def result(outcome, what="", expected="", found=""):
        return Result(check, media, outcome, time.monotonic() - begin, what, expected, found)

    reason = mode.refuses(check, second is not None, limited is not None)
    if reason:
        return result(SKIPPED, reason)
    case = Case(peer, site, second, limited)
    try:
        try:
            check.run(case)
        finally:
            case.end()
    except Differs as difference:
        return result(DIFFERS, difference.what, difference.expected, difference.found)
    except Missing as missing:
        return result(SKIPPED, f"the server has not: {missing}")
    except Malformed as broken:
        return result(DIFFERS, "the form of an answer", broken.rule, shown(broken.found))
    except Refused as refused:
        return result(DIFFERS, "an answer", "status 200", str(refused))
    except NoAnswer as nothing:
        return result(DIFFERS, "an answer", "one in HTTP", str(nothing))
    except Exception as error:  # pylint: disable=broad-except
        # A server may answer what no check thought of; that is a difference, not the end of the run.
        return result(DIFFERS, "what the check can make of the answers", "what the page describes",
                      f"{type(error).__name__}: {error}")
    return result(PASSED)


def run(checks, peers, site, mode, seconds=None, limited=None, tell=lambda result: None, each=False):
    """Peers are by media type: the user's, those of a second one, and of a credential that is limited to
    groups. With `each` a check that is content with either media type is run in each."""
    results, turn = [], itertools.cycle(peers)
    for check in checks:
        for media in check.media or (list(peers) if each else [next(turn)]):
            if media not in peers:
                continue
            results.append(run_one(check, media, peers[media], site, mode, (seconds or {}).get(media),
                                   (limited or {}).get(media)))
            tell(results[-1])
    return results


def default_media(peers):
    return CBOR if CBOR in peers else next(iter(peers))
