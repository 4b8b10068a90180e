"""The tables that clients may read: docs/tables.md."""

import functools
import pkgutil


@functools.cache
def tables():
    """By name, a list of (column, type, size) in order."""
    found, columns = {}, None
    for line in pkgutil.get_data(__package__, "data/tables.md").decode().splitlines():
        if line.startswith("## "):
            columns = found[line[3:].strip()] = []
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if columns is not None and len(cells) >= 5 and cells[0] != "Column" and cells[0].strip("-"):
            columns.append((cells[0], cells[1], int(cells[2] or 0)))
    return found


def column(table, name):
    return next(one for one in tables()[table] if one[0] == name)
