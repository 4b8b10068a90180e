#!/usr/bin/env python3
"""run_kit.py KIT SERVER: the kit finds nothing in our own server, twice in a row, and
leaves nothing live behind."""

import json
import os
import subprocess
import sys
import tempfile

from served import Served

LIVE = ("UNI_UNION", "UNI_ORG", "UNI_ORG_TYPE", "UNI_PRODUCT", "UNI_USER_UNION", "UNI_UNION_RULE",
        "UNI_ORG_RULE", "PRC_UNI_PRICE_PRODUCT", "PRC_UNI_PRICE_TYPE", "STK_ORG_SET", "TRA_BUY_CATALOG",
        "TRA_USER_BUY_CATALOG", "BAS_ORG_AFFILIATION", "SYS_AFFICHE")


class Kit:
    def __init__(self, program, served):
        self._program, self._served = program, served
        sys.path.insert(0, program)
        from qel_contract.peer import Peer
        from qel_contract.transport import Address
        self.peer = Peer(Address(served.url), served.USER, served.token)
        self._second = self.peer.query(
            "SELECT USER_CODE FROM USR_USER WHERE ENABLE_FLAG = '1' AND LAST_OPERATE <> 'D' AND USER_CODE"
            f" <> '{served.USER}' ORDER BY USER_CODE", 1, 1).rows[0][0]
        self._second_token = served.token_for(self._second)
        group = self.peer.query("SELECT UNION_ID FROM UNI_UNION WHERE LAST_OPERATE <> 'D' ORDER BY"
                                " UNION_ID", 1, 1).rows[0][0]
        self._limited_token = served.token_for(self._second, "--unions", group)

    def run(self, *options):
        """Status, printed text, and the results as the JSON file has them."""
        with tempfile.NamedTemporaryFile(suffix=".json") as file:
            done = subprocess.run(
                [sys.executable, self._program, "--server", self._served.url, "--user", self._served.USER,
                 "--second-user", self._second, "--limited-user", self._second, "--json", file.name, *options],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                env={**os.environ, "QEL_CONTRACT_TOKEN": self._served.token,
                     "QEL_CONTRACT_SECOND_TOKEN": self._second_token,
                     "QEL_CONTRACT_LIMITED_TOKEN": self._limited_token, "PYTHONDONTWRITEBYTECODE": "1"})
            try:
                results = json.load(file)["results"]
            except ValueError:
                results = []
            return done.returncode, done.stdout, results

    def live(self):
        return {table: self.peer.query(f"SELECT 1 AS N FROM {table} WHERE LAST_OPERATE <> 'D'", 1, 1).total
                for table in LIVE}


def expect(condition, text):
    if not condition:
        raise SystemExit(text)


def main(program, server):
    with Served(server) as served:
        kit = Kit(program, served)
        before = kit.live()
        status, text, results = kit.run("--skipped")
        print(text)
        expect(status == 0, f"status {status}")
        skipped = {result["what"].partition(":")[0] for result in results if result["outcome"] == "skipped"}
        expect(skipped <= {"it sends megabytes",
                           "it takes back an order, a return or a receipt for good"},
               f"the sample data lacks what a check needs: {skipped}")
        expect(kit.live() == before, f"left behind: {before} became {kit.live()}")

        status, text, results = kit.run("--read-only", "--only", "statement.p*", "--only", "post.*")
        print(text)
        expect(status == 0 and results, f"read only: status {status}")
        expect(all(result["outcome"] == "skipped" for result in results if result["id"].startswith("post.")),
               "a check posts with --read-only")

        # The second run, which also takes back orders and sends megabytes, finds the marked rows of the first.
        status, text, _ = kit.run("--only", "method.UniUnion.*", "--only", "method.BusDataRollBack.*", "--only",
                                  "method.OrgAffiliationManager.*", "--only", "key.*", "--only", "limit.*",
                                  "--only", "credential.*", "--roll-back", "--heavy", "--media", "json")
        print(text)
        expect(status == 0, f"the second run: status {status}")
        expect(kit.live() == before, f"left behind: {before} became {kit.live()}")


if __name__ == "__main__":
    main(*sys.argv[1:])
