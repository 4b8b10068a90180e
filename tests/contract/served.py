"""A qel-server with the sample data, for as long as a with statement lasts."""

import os
import secrets
import subprocess
import tempfile
from pathlib import Path
from urllib.parse import parse_qs, urlsplit


class OnSqlite:
    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="qel-contract-")
        self.url = f"sqlite:{self._folder.name}/site.sqlite"

    def drop(self):
        self._folder.cleanup()


class OnPostgres:
    """A new database of the tests' cluster."""

    def __init__(self, cluster):
        self._cluster = urlsplit(cluster)
        self._name = f"contract_{os.getpid()}"
        self._run(f"CREATE DATABASE {self._name}")
        self.url = cluster.replace("/postgres?", f"/{self._name}?")

    def _run(self, sql):
        programs = sorted(Path("/usr/lib/postgresql").glob("*/bin/psql"))
        subprocess.run([programs[-1] if programs else "psql", "-qX", "-v", "ON_ERROR_STOP=1", "-h",
                        parse_qs(self._cluster.query)["host"][0], "-U", self._cluster.username, "-d",
                        "postgres", "-c", sql], check=True)

    def drop(self):
        self._run(f"DROP DATABASE {self._name} WITH (FORCE)")


def new_database():
    """On PostgreSQL where CTest has started a cluster for this test."""
    file = os.environ.get("QEL_TEST_POSTGRES")
    return OnPostgres(Path(file).read_text().strip()) if file else OnSqlite()


class Served:
    USER = "admin"

    def __init__(self, program):
        self._program = program
        self._made = new_database()
        self._database = self._made.url
        self.token = secrets.token_hex(16)

    def __enter__(self):
        self._process = subprocess.Popen(
            [self._program, "--demo", "--listen", "127.0.0.1:0", "--base-path", "/platform",
             "--operator", self.USER, "--exit-with-parent"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
            env={**os.environ, "QEL_OPERATOR_TOKEN": self.token, "QEL_DATABASE": self._database,
                 "TZ": "Asia/Shanghai"})
        line = self._process.stdout.readline()
        prefix = "listening on "
        if not line.startswith(prefix):
            raise SystemExit(f"the server did not start: {line!r}, status {self._process.wait()}")
        self.url = line.removeprefix(prefix).strip()
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        try:
            self._process.wait(30)
        finally:
            self._made.drop()

    def token_for(self, code):
        made = subprocess.run([self._program, "user", "add", code], check=True, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              env={**os.environ, "QEL_DATABASE": self._database})
        return made.stdout.strip()
