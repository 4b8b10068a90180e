"""The tables that clients may read, one check a table."""

from .. import registry
from ..tables import tables


def _columns_are(name):
    def run(case):
        table = case.peer.query(f"SELECT * FROM {name}", 1, 20)
        case.equal([(field.name, field.type, field.size) for field in table.fields], tables()[name],
                   f"name, type and size of the columns of {name}")
        for column in ("LAST_OPERATE", "ENABLE_FLAG"):
            if column in table.names:
                case.that(None not in table.column(column), f"no NULL in {name}.{column}")
    return run


for table_name in tables():
    registry.add(f"table.{table_name}", "Tables",
                 f"{table_name} has the columns of docs/tables.md in their order", _columns_are(table_name))
