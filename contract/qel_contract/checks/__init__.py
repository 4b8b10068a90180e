"""Every check; the order here is the order in which they are run."""

from . import (  # noqa: F401
    http, session, messages, queries, language, tables, statements, posts, keys, positions, scopes, rows, groups, members,
    catalogues, prices, rules, stock, stores, announcements, affiliation, rollbacks, limits)
