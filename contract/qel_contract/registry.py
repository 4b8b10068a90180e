"""The list of checks: what each is called, promises, and may do to the server."""

import inspect
from dataclasses import dataclass
from typing import Callable

from .peer import CBOR, JSON

BOTH = (CBOR, JSON)
EITHER = ()  # one of those that are spoken, in turn


@dataclass(frozen=True)
class Check:
    id: str
    paragraph: str  # heading of docs/wire-protocol.md
    sentence: str
    run: Callable  # of a Case
    media: tuple = EITHER  # it is run once for each of them
    writes: bool = False
    heavy: bool = False  # sends or asks for megabytes
    rolls_back: bool = False  # changes what cannot be put back
    second: bool = False  # needs a second user
    limited: bool = False  # needs a credential that is limited to some groups


_checks = []


def check(identifier, paragraph, sentence, **more):
    """Registers the function below as a check."""
    def keep(function):
        _checks.append(Check(identifier, paragraph, sentence, function, **more))
        return function
    return keep


def add(*arguments, **more):
    _checks.append(Check(*arguments, **more))


def all_checks():
    from . import checks  # fills the list; in the order in which checks are run
    assert inspect.ismodule(checks)
    identifiers = [one.id for one in _checks]
    assert len(identifiers) == len(set(identifiers)), "two checks have one id"
    return list(_checks)
