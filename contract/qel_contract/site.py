"""The data that checks work with: found by queries, or made by posts and taken away again.

Nothing live is left behind; marked rows and entries of the change log are.
"""

import functools
import uuid

from .case import Missing, quoted
from .methods import (ADD_USER, DELETE_GROUP, DELETE_MEMBER, MOVE_IN, MOVE_OUT, REMOVE_USER, SAVE_GROUP,
                      SAVE_MEMBER, SAVE_NOTICE, SAVE_PRICE, SAVE_PRICE_BUYER, SAVE_PRICE_TYPE,
                      SAVE_STORE, SAVE_STORE_USERS, SAVE_TYPE, DELETE_NOTICE, DELETE_STORE)

LIVE = "LAST_OPERATE <> 'D'"
IN_USE = f"ENABLE_FLAG = '1' AND {LIVE}"


def group_row(**values):
    return {"UNION_ID": "", "PARENT_ID": "", "UNION_CODE": "", "UNION_NAME": "契约检查集团",
            "UNION_TYPE": "", "REGION_ID": "", "MASTER_ORGID": "", "REMARK": "", **values}


def type_row(group, name, flag=None, **values):
    flags = ("BUYER_FLAG", "SALER_FLAG", "SENDER_FLAG", "ADMIN_FLAG")
    return {"ORG_TYPE_ID": "", "ORG_TYPE_NAME": name, "UNION_ID": group, "REMARK": "",
            "LAST_OPERATE": "1", **{one: "1" if one == flag else "0" for one in flags}, **values}


def price_row(group, seller, product, price="", **values):
    row = {"PRICE_ID": "", "UNION_ID": group, "SALE_ORGID": seller, "SEND_ORGID": seller,
           "PRODUCT_ID": product, "COST_PRICE": price, "LAST_OPERATE": "1"}
    return {**row, **{f"PRICE_0{slot}": price for slot in range(1, 10)}, **values}


def price_type_row(group, seller, slot, name, **values):
    return {"PRICE_TYPE_ID": "", "UNION_ID": group, "SALE_ORGID": seller, "PRICE_NAME": name,
            "PRICE_FIELD": slot, "ENABLE_FLAG": "1", "LAST_OPERATE": "1", **values}


def notice_row(group, **values):
    return {"ID": "", "START_DATE": "2024-03-05", "END_DATE": "", "AFFICHE_TYPE": "1",
            "AFFICHE_TITLE": "停业通知", "AFFICHE_CONTENT": "春节停业。", "UNION_ID": group,
            "PUBLIC_FLAG": "1", "SALER_FLAG": "0", "BUYER_FLAG": "1", "ENABLE_FLAG": "0", **values}


def store_row(organisation, name, key=""):
    return {"CATALOG_ID": key, "CATALOG_NAME": name, "BUY_ORGID": organisation}


def new_name():
    return uuid.uuid4().hex[:10]


class Site:
    def __init__(self, peer, read_only):
        self.peer, self.read_only = peer, read_only
        self._endings = []
        self._answers = {}

    def remembered(self, sql, page, size):
        """The answer of the first time; for statements whose tables the checks at hand leave alone."""
        if (sql, page, size) not in self._answers:
            self._answers[sql, page, size] = self.peer.query(sql, page, size)
        return self._answers[sql, page, size]

    def close(self):
        """Takes away what was made for all checks; returns what could not be."""
        failures = []
        while self._endings:
            method, row = self._endings.pop()
            try:
                code = self.peer.post(*method, [row])[0][0]
                if code != "1":
                    failures.append(f"{method[1]} {row}: code {code}")
            except Exception as error:  # pylint: disable=broad-except
                failures.append(f"{method[1]} {row}: {error}")
        return failures

    def _column(self, sql, size=0):
        return [row[0] for row in self.peer.query(sql, 1 if size else 0, size).rows]

    def _store(self, method, row, ending=None):
        code, values = self.peer.post(*method, [row])[0]
        if code != "1":
            raise Missing(f"what other checks prove: {method[1]} answers {code} to {row}")
        if ending:
            self._endings.append(ending(values))
        return values

    # Found

    @functools.cached_property
    def session(self):
        return self.peer.session()

    @functools.cached_property
    def organisations(self):
        """In use; the first 300."""
        return self._column(f"SELECT ORG_ID FROM BAS_ORG WHERE {IN_USE} ORDER BY ORG_ID", 300)

    @functools.cached_property
    def _leaders(self):
        leading = set(self._column(f"SELECT MASTER_ORGID FROM UNI_UNION WHERE {LIVE}"))
        return [one for one in self.organisations if one not in leading]

    @functools.cached_property
    def _codes(self):
        taken = set(self._column("SELECT UNION_CODE FROM UNI_UNION"))
        return [code for number in range(9998, 0, -1) if (code := f"{number:04}") not in taken]

    @functools.cached_property
    def _places(self):
        rows = self.peer.query("SELECT ORG_ID, TREE_CODE FROM BAS_ORG_AFFILIATION"
                               " WHERE ENABLE_FLAG <> 'D'").rows
        inside, taken = {org for org, _ in rows}, {code for _, code in rows}
        return ([org for org in self.organisations if org not in inside],
                [code for number in range(9998, 0, -1) if (code := f"{number:04}") not in taken])

    def members(self, count):
        return self._some(self.organisations, count, "organisations in use")

    def leaders(self, count):
        """Organisations that lead no group, for the time of one check."""
        return self._some(self._leaders, count, "organisations in use that lead no group")

    def codes(self, count):
        return self._some(self._codes, count, "free codes of top-level groups")

    def homeless(self, count):
        return self._some(self._places[0], count, "organisations in use outside the affiliation")

    def tree_codes(self, count):
        return self._some(self._places[1], count, "free codes at the top of the affiliation")

    @staticmethod
    def _some(these, count, what):
        if len(these) < count:
            raise Missing(f"{count} {what}; there are {len(these)}")
        return these[:count]

    @functools.cached_property
    def region(self):
        """Of an organisation in use."""
        found = self._column(f"SELECT REGION_ID FROM BAS_ORG WHERE {IN_USE} AND REGION_ID IS NOT NULL"
                             " ORDER BY ORG_ID DESC", 1)
        return self._some(found, 1, "organisation in use with a region")[0]

    @functools.cached_property
    def _products(self):
        return self._column(f"SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE {IN_USE} ORDER BY PRODUCT_ID", 40)

    def products(self, count):
        return self._some(self._products, count, "products in use")

    @functools.cached_property
    def _users(self):
        return self._column(
            "SELECT A.USER_ID FROM USR_USER A, BAS_ORG B WHERE A.ORG_ID = B.ORG_ID AND A.ENABLE_FLAG ="
            " '1' AND A.LAST_OPERATE <> 'D' AND B.ENABLE_FLAG = '1' AND B.LAST_OPERATE <> 'D'"
            " ORDER BY A.USER_ID", 20)

    def users(self, count):
        return self._some(self._users, count, "users in use of organisations in use")

    @functools.cached_property
    def hospital(self):
        """A hospital or pharmacy and two of its users."""
        rows = self.peer.query(
            "SELECT A.ORG_ID, B.USER_ID FROM BAS_ORG A, USR_USER B WHERE A.ORG_ID = B.ORG_ID AND"
            " (A.ORG_TYPE = '4' OR A.ORG_TYPE = '5') AND A.LAST_OPERATE <> 'D' AND A.ENABLE_FLAG = '1'"
            " AND B.ENABLE_FLAG = '1' AND B.LAST_OPERATE <> 'D' ORDER BY A.ORG_ID, B.USER_ID", 1, 200).rows
        users = {}
        for organisation, user in rows:
            users.setdefault(organisation, []).append(user)
            if len(users[organisation]) == 2:
                return organisation, users[organisation]
        raise Missing("a hospital or pharmacy with two users in use")

    # Made for one check

    def new_group(self, case, **values):
        """A top-level group, or with PARENT_ID and UNION_CODE one below; it goes with the check."""
        row = group_row(**{"UNION_CODE": self.codes(1)[0], "MASTER_ORGID": self.leaders(1)[0], **values})
        group = case.stored(SAVE_GROUP, row)[0]["UNION_ID"]
        self._codes[:] = [code for code in self._codes if code != row["UNION_CODE"]]
        self._leaders[:] = [org for org in self._leaders if org != row["MASTER_ORGID"]]

        def give_back():
            case.codes(DELETE_GROUP, {"UNION_ID": group})
            self._leaders.insert(0, row["MASTER_ORGID"])
        case.later(give_back)
        return group

    # Made for all checks, or found by those that only read

    @functools.cached_property
    def group(self):
        if self.read_only:
            return self._first("UNI_ORG", "UNION_ID", "a group with members")
        values = self._store(
            SAVE_GROUP, group_row(UNION_CODE=self.codes(1)[0], MASTER_ORGID=self.leaders(1)[0]),
            lambda values: (DELETE_GROUP, {"UNION_ID": values["UNION_ID"]}))
        self._codes.pop(0)
        self._leaders.pop(0)
        return values["UNION_ID"]

    def _first(self, table, column, needs, condition=LIVE):
        found = self._column(f"SELECT {column} FROM {table} WHERE {condition} ORDER BY {column}", 1)
        if not found:
            raise Missing(needs)
        return found[0]

    @functools.cached_property
    def trade(self):
        """Seller, buyers, products and price type of the group."""
        if self.read_only:
            rows = self.peer.query("SELECT SALE_ORGID, PRODUCT_ID FROM PRC_UNI_PRICE_PRODUCT WHERE"
                                   f" UNION_ID = {quoted(self.group)} AND {LIVE}", 1, 1).rows
            seller, product = rows[0] if rows else (self.members(1)[0], self.products(1)[0])
            return {"seller": seller, "product": product}
        group, organisations = self.group, self.members(4)
        for organisation, flag, name in zip(organisations,
                                            ("SALER_FLAG", "BUYER_FLAG", "BUYER_FLAG"),
                                            ("卖方", "买方", "另一类买方")):
            row = type_row(group, name, flag)
            kind = self._store(SAVE_TYPE, row, lambda values, row=row: (
                SAVE_TYPE, {**row, **values, "LAST_OPERATE": "D"}))["ORG_TYPE_ID"]
            member = {"UNION_ID": group, "ORG_ID": organisation}
            self._store(SAVE_MEMBER, {**member, "ORG_TYPE_ID": kind},
                        lambda _, row=member: (DELETE_MEMBER, row))
        seller, buyer, other_buyer, _ = organisations
        products = self.products(8)
        for product in products:
            entry = {"UNION_ID": group, "PRODUCT_ID": product}
            self._store(MOVE_IN, entry, lambda _, row=entry: (MOVE_OUT, row))
        for number, product in enumerate(products[:4]):
            price = price_row(group, seller, product, f"{number + 1}.25")
            self._store(SAVE_PRICE, price, lambda values, row=price: (
                SAVE_PRICE, {**row, "PRICE_ID": values["PRICE_ID"], "LAST_OPERATE": "D"}))
        kinds = []
        for slot, name in (("01", "一级价"), ("02", "二级价")):
            row = price_type_row(group, seller, slot, name)
            kinds.append(self._store(SAVE_PRICE_TYPE, row, lambda values, row=row: (
                SAVE_PRICE_TYPE, {**row, **values, "LAST_OPERATE": "D"}))["PRICE_TYPE_ID"])
        assignment = {"BUY_ORGID": buyer, "SALE_ORGID": seller, "UNION_ID": group}
        self._store(SAVE_PRICE_BUYER, {**assignment, "PRICE_TYPE_ID": kinds[0]},
                    lambda _: (SAVE_PRICE_BUYER, {**assignment, "PRICE_TYPE_ID": ""}))
        return {"seller": seller, "buyer": buyer, "other_buyer": other_buyer, "product": products[0],
                "products": products, "kinds": kinds}

    @functools.cached_property
    def user(self):
        """This user, who is assigned to the group, or to any that there is."""
        user = self.session["UserId"]
        if not self.read_only:
            row = {"USER_ID": user, "UNION_ID": self.group}
            self._store(ADD_USER, row, lambda _: (REMOVE_USER, row))
        return user

    @functools.cached_property
    def notice(self):
        if self.read_only:
            return self._first("SYS_AFFICHE", "ID", "an announcement", "ID IS NOT NULL")
        assert self.user
        keys = [self._store(SAVE_NOTICE, notice_row(self.group, AFFICHE_TITLE=title, **values),
                            lambda values: (DELETE_NOTICE, values))["ID"]
                for title, values in (("停业通知", {}), ("Price list", {"SALER_FLAG": "1"}),
                                      ("价格调整", {"PUBLIC_FLAG": "0"}))]
        return keys[0]

    @functools.cached_property
    def store(self):
        """A drug store of the hospital."""
        if self.read_only:
            return self._first("TRA_BUY_CATALOG", "CATALOG_ID", "a drug store")
        hospital, users = self.hospital
        key = self._store(SAVE_STORE, store_row(hospital, new_name()),
                          lambda values: (DELETE_STORE, {**values, "BUY_ORGID": hospital}))["CATALOG_ID"]
        self._store(SAVE_STORE_USERS, {"USER_ID": users[0], "CATALOG_ID": key, "BUY_ORGID": hospital,
                                       "RELATION_FLAG": "1"})
        return key

    @functools.cached_property
    def store_owner(self):
        if self.read_only:
            return self._first("TRA_BUY_CATALOG", "BUY_ORGID", "a drug store",
                               f"CATALOG_ID = {quoted(self.store)}")
        assert self.store
        return self.hospital[0]
