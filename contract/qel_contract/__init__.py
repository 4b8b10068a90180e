"""Asks an application server what docs/wire-protocol.md promises, and says what differs.

Shares nothing with the programs of this tree: HTTP, CBOR and the messages are read and written here,
from the page alone.
"""
