"""A qel-server on a database of its own, for as long as a with statement lasts."""

import os
import sqlite3
import subprocess
import tempfile
from pathlib import Path
from urllib.parse import parse_qs, urlsplit

import small_site


class OnSqlite:
    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="qel-contract-")
        self._file = f"{self._folder.name}/site.sqlite"
        self.url = f"sqlite:{self._file}"

    def run(self, sql):
        connection = sqlite3.connect(self._file)
        # Only the server knows how to keep the indexes for parts of texts: it makes them anew.
        connection.create_function("QEL_GRAMS", -1, lambda *texts: None)
        connection.executescript(f"BEGIN; {sql} COMMIT;")
        connection.close()

    def drop(self):
        self._folder.cleanup()


class OnPostgres:
    """A new database of the tests' cluster."""

    def __init__(self, cluster):
        self._cluster = urlsplit(cluster)
        self._name = f"contract_{os.getpid()}"
        self._psql("postgres", f"CREATE DATABASE {self._name}")
        self.url = cluster.replace("/postgres?", f"/{self._name}?")

    def _psql(self, database, sql):
        programs = sorted(Path("/usr/lib/postgresql").glob("*/bin/psql"))
        subprocess.run([programs[-1] if programs else "psql", "-qX", "-v", "ON_ERROR_STOP=1", "-h",
                        parse_qs(self._cluster.query)["host"][0], "-U", self._cluster.username, "-d",
                        database], input=sql, text=True, check=True)

    def run(self, sql):
        self._psql(self._name, f"BEGIN; {sql} COMMIT;")

    def drop(self):
        self._psql("postgres", f"DROP DATABASE {self._name} WITH (FORCE)")


def new_database():
    """On PostgreSQL where CTest has started a cluster for this test."""
    file = os.environ.get("QEL_TEST_POSTGRES")
    return OnPostgres(Path(file).read_text().strip()) if file else OnSqlite()


class Served:
    """With the data of small_site.py, or with the sample data of qel-server."""

    USER = "admin"

    def __init__(self, program, sample_data=False):
        self._program, self._sample_data = program, sample_data
        self._database = new_database()
        self._environment = {**os.environ, "QEL_DATABASE": self._database.url, "TZ": "Asia/Shanghai"}

    def __enter__(self):
        self._process = subprocess.Popen(
            [self._program, "--listen", "127.0.0.1:0", "--base-path", "/platform", "--exit-with-parent",
             *(["--demo"] if self._sample_data else [])],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
            env=self._environment)
        line = self._process.stdout.readline()
        prefix = "listening on "
        if not line.startswith(prefix):
            raise SystemExit(f"the server did not start: {line!r}, status {self._process.wait()}")
        self.url = line.removeprefix(prefix).strip()
        if not self._sample_data:
            self._database.run("\n".join(small_site.statements()))
            subprocess.run([self._program, "reindex"], check=True, env=self._environment)
        self.token = self.token_for(self.USER)
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        try:
            self._process.wait(30)
        finally:
            self._database.drop()

    def token_for(self, code, *options):
        made = subprocess.run([self._program, "user", "add", code, *options], check=True, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=self._environment)
        return made.stdout.strip()
