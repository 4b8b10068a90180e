"""pack.py OUTPUT VERSION FILE=NAME...: the kit as one file that runs wherever there is Python 3.

The same sources make the same bytes.
"""

import sys
import zipfile
from pathlib import Path


def add(archive, name, data):
    entry = zipfile.ZipInfo(name)  # of 1980, which is as early as archives go
    entry.compress_type = zipfile.ZIP_DEFLATED
    archive.writestr(entry, data)


def pack(output, version, files):
    with open(output, "wb") as made:
        made.write(b"#!/usr/bin/env python3\n")
        with zipfile.ZipFile(made, "w") as archive:
            for name in sorted(files):
                add(archive, name, Path(files[name]).read_bytes())
            add(archive, "qel_contract/version.py", f'VERSION = "{version}"\n')
    Path(output).chmod(0o755)


if __name__ == "__main__":
    pack(sys.argv[1], sys.argv[2], {name: file for file, _, name in
                                    (word.rpartition("=") for word in sys.argv[3:])})
