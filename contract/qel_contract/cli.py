"""The program: options, credentials, order of work, exit status."""

import argparse
import fnmatch
import os
import sys
import time

from . import report
from .peer import CBOR, JSON, Malformed, Peer, Refused
from .registry import all_checks
from .runner import DIFFERS, SKIPPED, Mode, default_media, run
from .site import Site
from .transport import Address, NoAnswer
from .version import VERSION

TOKEN = "QEL_CONTRACT_TOKEN"
SECOND_TOKEN = "QEL_CONTRACT_SECOND_TOKEN"
LIMITED_TOKEN = "QEL_CONTRACT_LIMITED_TOKEN"
MEDIA = {"cbor": [CBOR], "json": [JSON], "mixed": [CBOR, JSON], "both": [CBOR, JSON]}


class CannotRun(Exception):
    """Nothing was checked; ends with status 2."""


def parser():
    made = argparse.ArgumentParser(
        prog="qel-contract", allow_abbrev=False,
        description="Asks an application server what the wire protocol promises and prints what"
                    " differs. Run it against a test system: it makes groups, members, prices and"
                    " more, and takes them away again. Status 0: nothing differs; 1: something does;"
                    " 2: it could not run.",
        epilog=f"Tokens are read from {TOKEN}, {SECOND_TOKEN} and {LIMITED_TOKEN} in the environment, or from"
               " files; never from the command line.")
    made.add_argument("--version", action="version", version=f"qel-contract {VERSION}")
    made.add_argument("--server", metavar="URL", help="address of the server: http://HOST:PORT/PATH")
    made.add_argument("--user", metavar="CODE", help="code of the user that asks")
    made.add_argument("--token-file", metavar="FILE", help="file with the user's token in its first line")
    made.add_argument("--second-user", metavar="CODE", help="code of another user, for two checks")
    made.add_argument("--second-token-file", metavar="FILE", help="file with that user's token")
    made.add_argument("--limited-user", metavar="CODE",
                      help="code of a user with a token that is limited to some groups, for three checks")
    made.add_argument("--limited-token-file", metavar="FILE", help="file with that token")
    made.add_argument("--ca-file", metavar="FILE",
                      help="certificates to trust beside the system's, for https")
    made.add_argument("--only", metavar="PATTERN", action="append",
                      help="only checks whose id matches, as in 'method.*'; may be repeated")
    made.add_argument("--media", choices=sorted(MEDIA), default="mixed",
                      help="encoding to speak; mixed: both for what is about encodings and one in turn for the"
                           " rest; both: both for all")
    made.add_argument("--read-only", action="store_true", help="post nothing; for a server in use")
    made.add_argument("--roll-back", action="store_true",
                      help="also take back an order, a return and a receipt of the server's data, for good")
    made.add_argument("--heavy", action="store_true", help="also send and ask for megabytes")
    made.add_argument("--list", action="store_true", help="print the checks, and run none")
    made.add_argument("--verbose", action="store_true", help="print every check as it is run")
    made.add_argument("--skipped", action="store_true",
                      help="print what was skipped, and what the server would need")
    made.add_argument("--json", metavar="FILE", help="write the results as JSON; '-' for standard output")
    made.add_argument("--junit", metavar="FILE", help="write the results as JUnit XML; '-' likewise")
    return made


def token(variable, file):
    if file:
        try:
            with open(file, encoding="utf-8") as opened:
                return opened.readline().rstrip("\r\n")
        except (OSError, UnicodeDecodeError) as error:
            raise CannotRun(f"cannot read the token: {error}") from error
    if not os.environ.get(variable):
        raise CannotRun(f"no token: set {variable} or name a file")
    return os.environ[variable]


def write(text, file):
    if file == "-":
        sys.stdout.write(text)
    else:
        with open(file, "w", encoding="utf-8") as opened:
            opened.write(text)


def selected(patterns):
    checks = [check for check in all_checks()
              if not patterns or any(fnmatch.fnmatchcase(check.id, one) for one in patterns)]
    if not checks:
        raise CannotRun("no check matches; --list prints them")
    return checks


def peers(address, user, secret, options):
    first, *others = MEDIA[options.media]
    peer = Peer(address, user, secret, first, options.ca_file)
    return {first: peer, **{media: peer.speaking(media) for media in others}}


def check_server(options, checks, out):
    if not options.server or not options.user:
        raise CannotRun("--server and --user are needed; --help explains")
    if ":" in options.user:
        raise CannotRun("a user code holds no colon, and the token is never on the command line")
    try:
        address = Address(options.server)
    except ValueError as error:
        raise CannotRun(str(error)) from error
    ours = peers(address, options.user, token(TOKEN, options.token_file), options)
    seconds = peers(address, options.second_user, token(SECOND_TOKEN, options.second_token_file),
                    options) if options.second_user else {}
    limited = peers(address, options.limited_user, token(LIMITED_TOKEN, options.limited_token_file),
                    options) if options.limited_user else {}
    try:
        for peer in [*ours.values(), *seconds.values(), *limited.values()]:
            peer.session()
    except NoAnswer as error:
        raise CannotRun(str(error)) from error
    except Refused as error:
        if error.status == 401:
            raise CannotRun(f"the server does not know the user or the token: {error}") from error
    except Malformed:
        pass  # the checks will say so

    def tell(result):
        if options.verbose or result.outcome == DIFFERS or (options.skipped and
                                                            result.outcome == SKIPPED):
            out.write(report.line(result) if result.what else
                      f"{result.outcome}   {result.name}: {result.check.sentence}\n")
            out.flush()

    begin = time.monotonic()
    site = Site(ours[default_media(ours)], options.read_only)
    mode = Mode(options.read_only, options.heavy, options.roll_back)
    left_behind = []
    try:
        results = run(checks, ours, site, mode, seconds, limited, tell, options.media == "both")
    finally:
        left_behind = site.close()
    out.write(report.summary(results, left_behind, time.monotonic() - begin) + "\n")
    if options.json:
        write(report.as_json(results, left_behind), options.json)
    if options.junit:
        write(report.as_junit(results), options.junit)
    return int(bool(left_behind) or any(result.outcome == DIFFERS for result in results))


def main(arguments=None):
    options = parser().parse_args(arguments)
    machine = "-" in (options.json, options.junit)
    try:
        checks = selected(options.only)
        if options.list:
            for check in checks:
                print(f"{check.id}\n    {check.sentence}\n    paragraph \"{check.paragraph}\"")
            return 0
        return check_server(options, checks, sys.stderr if machine else sys.stdout)
    except (CannotRun, OSError) as error:
        print(f"qel-contract: {error}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print("qel-contract: interrupted", file=sys.stderr)
        return 2
