"""What the page promises of single manager methods; a mix-in beside the general contract."""

import uuid

ADMIN = "com.business.admin."
ROLLBACK = "com.business.rollback.BusDataRollBack"
STOCK = "com.business.stock.StockManager"
NOTICE = "com.notic.NoticManager"
AFFILIATION = "com.business.basedata.OrgAffiliationManager"


class Methods:
    """Works in groups of its own; wants store(), group(), ORGANISATIONS and
    only_on_sample_data() of the contract."""

    # Helpers

    def codes(self, manager, method, rows):
        return [code for code, _ in self.peer.post(manager, method, rows)]

    def new_group(self):
        return self.store(self.group())[0][1]["UNION_ID"]

    def column(self, sql):
        """The one column of the statement's rows."""
        return [row[0] for row in self.peer.query(sql).rows]

    def member_type(self, group, name, flag):
        flags = {"BUYER_FLAG": "0", "SALER_FLAG": "0", "SENDER_FLAG": "0", "ADMIN_FLAG": "0"}
        result = self.peer.post(ADMIN + "UniUnion", "insert_update_UniOrgType", [
            {"ORG_TYPE_ID": "", "ORG_TYPE_NAME": name, "UNION_ID": group, "REMARK": "",
             "LAST_OPERATE": "1", **flags, flag: "1"}])
        self.assertEqual(result[0][0], "1")
        return result[0][1]["ORG_TYPE_ID"]

    def member(self, group, organisation, member_type):
        row = {"UNION_ID": group, "ORG_ID": organisation, "ORG_TYPE_ID": member_type}
        self.assertEqual(self.codes(ADMIN + "UniUnionOrg", "insert_update_UniUnionOrg", [row]), ["1"])
        del row["ORG_TYPE_ID"]
        self.addCleanup(self.peer.post, ADMIN + "UniUnionOrg", "delete_UniOrg", [row])

    def quotation(self):
        """A group with a seller, a buyer and two products in its catalogue: their ids."""
        group = self.new_group()
        seller, buyer = self.column("SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D'"
                                    " AND ENABLE_FLAG = '1' ORDER BY ORG_ID")[:2]
        self.member(group, seller, self.member_type(group, "卖方", "SALER_FLAG"))
        self.member(group, buyer, self.member_type(group, "买方", "BUYER_FLAG"))
        products = self.products(group, 2)
        self.move("move_in_Uni_Product", group, products)
        return group, seller, buyer, products

    def products(self, group, count):
        """Products that may be moved into the group's catalogue."""
        inside = set(self.peer.query("SELECT PRODUCT_ID FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D'"
                                     f" AND UNION_ID = '{group}'").column("PRODUCT_ID"))
        offered = self.peer.query("SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE LAST_OPERATE <> 'D'"
                                  " AND ENABLE_FLAG = '1' ORDER BY PRODUCT_ID").column("PRODUCT_ID")
        return [product for product in offered if product not in inside][:count]

    def move(self, method, group, products, key=None):
        return self.peer.post(ADMIN + "Uni_Product", method, [
            {"UNION_ID": group, "PRODUCT_ID": product} for product in products], key)

    # Catalogues of groups

    def test_each_move_has_its_own_code_and_product(self):
        group = self.new_group()
        first, second, third = self.products(group, 3)
        self.assertEqual(self.move("move_in_Uni_Product", group, [second]),
                         [("1", {"PRODUCT_ID": second})])
        self.assertEqual(
            self.move("move_in_Uni_Product", group, [first, second, "no-such-product", third]),
            [("1", {"PRODUCT_ID": first}), ("-1", {"PRODUCT_ID": second}),
             ("0", {"PRODUCT_ID": "no-such-product"}), ("1", {"PRODUCT_ID": third})])
        live = self.peer.query("SELECT PRODUCT_ID FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D'"
                               f" AND UNION_ID = '{group}' ORDER BY PRODUCT_ID")
        self.assertEqual(live.column("PRODUCT_ID"), [first, second, third])
        for _ in range(2):  # what is out already is out
            self.assertEqual(self.move("move_out_Uni_Product", group, [first, third]),
                             [("1", {"PRODUCT_ID": first}), ("1", {"PRODUCT_ID": third})])
        log = self.peer.query("SELECT OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME = 'UNI_PRODUCT'"
                              f" AND KEY_ID1 = '{group}' AND KEY_ID2 = '{first}' ORDER BY LOG_ID")
        self.assertEqual(sorted(log.column("OPTION_TYPE")), ["1", "5"])

    def test_moves_with_the_same_key_take_effect_once(self):
        group = self.new_group()
        products, key = self.products(group, 2), str(uuid.uuid4())
        first = self.move("move_in_Uni_Product", group, products, key)
        self.assertEqual(first, [("1", {"PRODUCT_ID": product}) for product in products])
        self.assertEqual(self.move("move_in_Uni_Product", group, products, key), first)
        self.assertEqual([code for code, _ in self.move("move_in_Uni_Product", group, products)],
                         ["-1", "-1"])

    # Users of groups

    def test_each_assignment_has_its_own_code_and_user(self):
        group = self.new_group()
        users = self.column("SELECT A.USER_ID FROM USR_USER A, BAS_ORG B WHERE A.ORG_ID = B.ORG_ID"
                            " AND A.ENABLE_FLAG = '1' AND A.LAST_OPERATE <> 'D'"
                            " AND B.ENABLE_FLAG = '1' AND B.LAST_OPERATE <> 'D'"
                            " ORDER BY A.USER_ID")[:2]
        rows = [{"USER_ID": user, "UNION_ID": group} for user in [users[0], "no-such", users[1]]]
        answer = [("1", {"USER_ID": users[0]}), ("0", {"USER_ID": "no-such"}),
                  ("1", {"USER_ID": users[1]})]
        live = ("SELECT USER_ID FROM UNI_USER_UNION WHERE LAST_OPERATE <> 'D'"
                f" AND UNION_ID = '{group}' ORDER BY USER_ID")
        for method, left in (("insertUniUser", users), ("deleteUniUser", [])):
            for _ in range(2):  # what is asked for and stands already is "1", too
                self.assertEqual(self.peer.post(ADMIN + "UniUser", method, rows), answer)
                self.assertEqual(self.column(live), left)

    # Prices

    def price(self, quotation, product, price, **more):
        group, seller = quotation[:2]
        row = {"PRICE_ID": "", "UNION_ID": group, "SALE_ORGID": seller, "SEND_ORGID": seller,
               "PRODUCT_ID": product, "COST_PRICE": price, "LAST_OPERATE": "1"}
        row.update({f"PRICE_0{slot}": price for slot in range(1, 10)})
        return {**row, **more}

    def test_every_price_answers_its_product_and_key(self):
        quotation = self.quotation()
        products = quotation[3]
        rows = [self.price(quotation, product, price)
                for product, price in zip(products, ("12.345", ""))]
        first = self.peer.post(ADMIN + "UniPrice", "insertUpdatePrcUniPriceProduct", rows)
        for (code, values), product in zip(first, products):
            self.assertEqual((code, set(values)), ("1", {"PRODUCT_ID", "PRICE_ID"}))
            self.assertEqual(values["PRODUCT_ID"], product)
            stored = self.peer.query("SELECT PRODUCT_ID, COST_PRICE, PRICE_09 FROM"
                                     " PRC_UNI_PRICE_PRODUCT WHERE LAST_OPERATE <> 'D'"
                                     f" AND PRICE_ID = '{values['PRICE_ID']}'")
            price = "12.345" if product == products[0] else None
            self.assertEqual(stored.rows, [[product, price, price]])
        # Whether the client knows the key or not, the record is the same.
        key = first[0][1]["PRICE_ID"]
        for known in ("", key):
            again = [self.price(quotation, products[0], "9", PRICE_ID=known)]
            self.assertEqual(self.peer.post(ADMIN + "UniPrice", "insertUpdatePrcUniPriceProduct",
                                            again), first[:1])
        deletion = [self.price(quotation, products[0], "", PRICE_ID=key, LAST_OPERATE="D")]
        self.assertEqual(self.codes(ADMIN + "UniPrice", "insertUpdatePrcUniPriceProduct", deletion),
                         ["1"])

    def test_prices_are_stored_together_or_not_at_all(self):
        quotation = self.quotation()
        good, other = quotation[3]
        for bad in (self.price(quotation, other, "-1"), self.price(quotation, other, "100000000"),
                    self.price(quotation, other, "x"), self.price(quotation, "no-such", "1"),
                    self.price(quotation, other, "1", SALE_ORGID=quotation[2])):
            self.assertEqual(self.codes(ADMIN + "UniPrice", "insertUpdatePrcUniPriceProduct",
                                        [self.price(quotation, good, "1"), bad]), ["0", "0"])
        self.assertEqual(self.column("SELECT PRICE_ID FROM PRC_UNI_PRICE_PRODUCT"
                                     f" WHERE UNION_ID = '{quotation[0]}'"), [])

    def price_type(self, quotation, slot, name, **more):
        return {"PRICE_TYPE_ID": "", "UNION_ID": quotation[0], "SALE_ORGID": quotation[1],
                "PRICE_NAME": name, "PRICE_FIELD": slot, "ENABLE_FLAG": "1", "LAST_OPERATE": "1",
                **more}

    def test_a_slot_has_one_type_and_an_assigned_type_is_not_deleted(self):
        quotation = self.quotation()
        group, seller, buyer, _ = quotation
        manager, save = ADMIN + "UniPrice", "insertUpdatePrcUniPriceType"
        stored = self.peer.post(manager, save, [self.price_type(quotation, "01", "一级"),
                                                self.price_type(quotation, "02", "二级")])
        self.assertEqual([code for code, _ in stored], ["1", "1"])
        first, second = [values["PRICE_TYPE_ID"] for _, values in stored]
        self.assertEqual(self.codes(manager, save, [self.price_type(quotation, "03", "三级"),
                                                    self.price_type(quotation, "01", "又")]),
                         ["-1", "-1"])
        self.assertEqual(self.codes(manager, save, [self.price_type(quotation, "10", "十级")]), ["0"])

        def assign(price_type):
            return self.codes(manager, "insertUpdatePrcUniPriceOrg", [
                {"BUY_ORGID": buyer, "SALE_ORGID": seller, "UNION_ID": group,
                 "PRICE_TYPE_ID": price_type}])

        def delete(price_type, slot):
            return self.codes(manager, save, [self.price_type(
                quotation, slot, "删除", PRICE_TYPE_ID=price_type, LAST_OPERATE="D")])

        self.assertEqual(assign("no-such"), ["0"])
        self.assertEqual(assign(first), ["1"])
        self.assertEqual(delete(first, "01"), ["-1"])
        self.assertEqual(delete(second, "02"), ["1"])
        self.assertEqual(assign(second), ["0"])
        self.assertEqual(assign(""), ["1"])
        self.assertEqual(delete(first, "01"), ["1"])

    # Rollbacks

    def test_what_is_not_there_is_not_rolled_back(self):
        for method, row in (("DataRollBack", {"ORD_ITEM_ID": "no-such", "ALL_FLAG": "0"}),
                            ("DataRollBack", {"ORD_ITEM_ID": "no-such", "ALL_FLAG": "1"}),
                            ("ReturnRollBack", {"RETURN_ID": "no-such"}),
                            ("ReceiveRollBack", {"SEND_ID": "no-such"})):
            with self.subTest(method=method, row=row):
                self.assertEqual(self.peer.post(ROLLBACK, method, [row]), [("0", {})])

    LATEST = "ORD_CODE >= 'DD00019600'"  # of the sample data's orders

    def roll_back(self, method, **row):
        self.only_on_sample_data()
        return self.codes(ROLLBACK, method, [row])[0]

    def test_an_order_is_rolled_back_by_line_and_whole(self):
        entered = set(self.column("SELECT ORD_ITEM_ID FROM TRA_SEND WHERE LAST_OPERATE <> 'D'"
                                  f" AND {self.LATEST}"))
        orders = {}  # the lines of each, and whether a line is delivered
        live = ("SELECT A.ORD_ID, B.ORD_ITEM_ID, B.STATE FROM TRA_ORDER A, TRA_ORDER_ITEM B"
                " WHERE A.ORD_ID = B.ORD_ID AND A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D'"
                f" AND {self.LATEST} ORDER BY B.ORD_ITEM_ID")
        for order, line, state in self.peer.query(live).rows:
            orders.setdefault(order, {})[line] = state == "1" or line in entered

        def roll_back(line, flag):
            return self.roll_back("DataRollBack", ORD_ITEM_ID=line, ALL_FLAG=flag)

        order, lines = next((order, list(lines)) for order, lines in orders.items()
                            if len(lines) > 2 and not any(lines.values()))
        self.assertEqual([roll_back(lines[0], flag) for flag in "001"], ["1", "0", "0"])
        kept = self.peer.query(f"SELECT ITEM_COUNT, LAST_OPERATE FROM TRA_ORDER WHERE ORD_ID = '{order}'")
        self.assertEqual(kept.rows, [[str(len(lines) - 1), "1"]])
        self.assertEqual([roll_back(line, "1") for line in lines[1:3]], ["1", "0"])
        kept = self.peer.query(f"SELECT LAST_OPERATE FROM TRA_ORDER WHERE ORD_ID = '{order}'")
        self.assertEqual(kept.rows, [["D"]])

        partly = next(lines for lines in orders.values() if len(set(lines.values())) == 2)
        for line, delivered in partly.items():
            self.assertEqual(roll_back(line, "1"), "-1")
            if delivered:
                self.assertEqual(roll_back(line, "0"), "-1")

    def test_a_return_and_a_receipt_are_rolled_back_in_this_order(self):
        returns = self.peer.query(
            "SELECT A.RETURN_ID, A.SEND_ID, A.CONFIRM_FLAG, A.INVOICE_FLAG, B.INVOICE_FLAG AS SENT"
            " FROM TRA_RETURN A, TRA_SEND B WHERE A.SEND_ID = B.SEND_ID AND A.LAST_OPERATE <> 'D'"
            f" AND B.LAST_OPERATE <> 'D' AND B.RECEIVE_FLAG = '1' AND {self.LATEST}").rows

        def first(**flags):
            wanted = [flags.get(name) for name in ("confirmed", "invoiced", "accepted")]
            return next((key, delivery) for key, delivery, *found in returns
                        if all(want in (None, have) for want, have in zip(wanted, found)))

        def give_back(key):
            return self.roll_back("ReturnRollBack", RETURN_ID=key)

        def receive(key):
            return self.roll_back("ReceiveRollBack", SEND_ID=key)

        self.assertEqual(give_back(first(invoiced="1")[0]), "-1")
        self.assertEqual(give_back(first(confirmed="1", invoiced="0")[0]), "-2")
        self.assertEqual(receive(first(accepted="1")[1]), "-1")
        key, delivery = first(confirmed="0", invoiced="0", accepted="0")
        self.assertEqual([receive(delivery), give_back(key), give_back(key)], ["0", "1", "0"])
        self.assertEqual([receive(delivery), receive(delivery)], ["1", "0"])
        left = self.peer.query("SELECT RECEIVE_FLAG, SEND_FLAG, LAST_OPERATE FROM TRA_SEND"
                               f" WHERE SEND_ID = '{delivery}'")
        self.assertEqual(left.rows, [["0", "1", "1"]])

    def test_an_order_is_rolled_back_whole_or_not(self):
        for row in ({"ORD_ITEM_ID": "1", "ALL_FLAG": "2"}, {"ORD_ITEM_ID": "1", "ALL_FLAG": ""},
                    {"ORD_ITEM_ID": "1"}):
            with self.subTest(row=row):
                self.refusal(400, "post.bad_row", self.peer.post, ROLLBACK, "DataRollBack", [row])

    # The affiliation

    def place(self, org, parent, code, level, key=""):
        return self.peer.post(AFFILIATION, "insertUpdateOrgAffiliation", [
            {"ID": key, "ORG_ID": org, "PARENT_ORGID": parent, "TREE_CODE": code,
             "TREE_LEVEL": level}])

    def take_out(self, org):
        return self.peer.post(AFFILIATION, "deleteOrgAffiliation",
                              [{"ORG_ID": org, "ENABLE_FLAG": "D"}])[0][0]

    def test_those_below_follow_an_exchanged_organisation(self):
        live = "FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D'"
        standing = self.peer.query(f"SELECT ORG_ID, TREE_CODE {live}")
        codes, inside = set(standing.column("TREE_CODE")), set(standing.column("ORG_ID"))
        top = next(text for number in range(9999, 0, -1) if (text := f"{number:04}") not in codes)
        one, below, other = [org for org in self.peer.query(self.ORGANISATIONS).column("ORG_ID")
                             if org not in inside][:3]
        code, answer = self.place(one, "", top, "1")[0]
        self.assertEqual(code, "1")
        self.assertEqual(self.place(below, one, top + "01", "2")[0][0], "1")
        self.assertEqual(self.place(below, "", top, "1")[0][0], "-2")
        self.assertEqual(self.place(other, one, top + "01", "2")[0][0], "-1")
        self.assertEqual(self.take_out(one), "-1")
        self.assertEqual(self.place(other, "", top, "1", answer["ID"]), [("1", answer)])
        table = self.peer.query(f"SELECT PARENT_ORGID {live} AND ORG_ID = '{below}'")
        self.assertEqual(table.rows, [[other]])
        self.assertEqual([self.take_out(below), self.take_out(other), self.take_out(other),
                          self.take_out("no-such-organisation")], ["1", "1", "1", "0"])

    # Stock

    def permission(self, owner, viewer, show_quantity="0", operation="1"):
        return {"OWNER_ORGID": owner, "ORG_ID": viewer, "SHOW_QTY": show_quantity,
                "LAST_OPERATE": operation}

    def test_stock_is_opened_within_a_group_and_not_to_itself(self):
        _, owner, viewer, _ = self.quotation()
        stranger = self.column("SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D' AND ORG_ID NOT IN"
                               " (SELECT ORG_ID FROM UNI_ORG WHERE LAST_OPERATE <> 'D')")[0]
        save = "stockOrgManager"
        live = ("SELECT SHOW_QTY FROM STK_ORG_SET WHERE LAST_OPERATE <> 'D'"
                f" AND OWNER_ORGID = '{owner}' AND ORG_ID = '{viewer}'")
        for flag in ("0", "0", "1"):  # what stands already is "1", too
            self.assertEqual(self.codes(STOCK, save, [self.permission(owner, viewer, flag)]), ["1"])
            self.assertEqual(self.column(live), [flag])
        for other, code in ((owner, "-1"), (stranger, "-2"), ("no-such", "0")):
            with self.subTest(code=code):
                self.assertEqual(self.codes(STOCK, save, [self.permission(owner, viewer, "0"),
                                                          self.permission(owner, other)]),
                                 [code, code])
        self.assertEqual(self.column(live), ["1"])
        for _ in range(2):
            self.assertEqual(self.codes(STOCK, save, [self.permission(owner, viewer, "1", "D")]),
                             ["1"])
        self.assertEqual(self.column(live), [])
        self.assertEqual(self.codes(STOCK, save, [self.permission(owner, stranger, "1", "D")]), ["0"])

    # Drug stores

    def save_drug_store(self, organisation, name, key=""):
        return self.peer.post(ADMIN + "TraBuyCatalog", "insertUpdateBuyCatalog", [
            {"CATALOG_ID": key, "CATALOG_NAME": name, "BUY_ORGID": organisation}])[0]

    def drug_store(self, organisation, name):
        code, values = self.save_drug_store(organisation, name)
        self.assertEqual(code, "1")
        key = {"CATALOG_ID": values["CATALOG_ID"], "BUY_ORGID": organisation}
        self.addCleanup(self.peer.post, ADMIN + "TraBuyCatalog", "deleteBuyCatalog", [key])
        return key

    def hospital_with_users(self):
        """A hospital and two of its users."""
        for organisation in self.column("SELECT ORG_ID FROM BAS_ORG WHERE ORG_TYPE = '4'"
                                        " AND LAST_OPERATE <> 'D' ORDER BY ORG_ID"):
            users = self.column("SELECT USER_ID FROM USR_USER WHERE ENABLE_FLAG = '1'"
                                f" AND ORG_ID = '{organisation}' ORDER BY USER_ID")
            if len(users) > 1:
                return organisation, users[:2]
        return self.skipTest("no hospital has two users")

    def test_a_drug_stores_name_is_its_organisations_only_one(self):
        organisation, _ = self.hospital_with_users()
        name = uuid.uuid4().hex[:10]
        key = self.drug_store(organisation, name)
        self.assertEqual(self.save_drug_store(organisation, f" {name} ")[0], "-1")
        self.assertEqual(self.save_drug_store(organisation, name, key["CATALOG_ID"])[0], "1")
        for wrong in ("", "   ", name + "1"):
            with self.subTest(name=wrong):
                self.assertEqual(self.save_drug_store(organisation, wrong)[0], "0")
        maker = self.column("SELECT ORG_ID FROM BAS_ORG WHERE ORG_TYPE = '1'")[0]
        self.assertEqual(self.save_drug_store(maker, name)[0], "0")
        self.assertEqual(self.save_drug_store(maker, name, key["CATALOG_ID"])[0], "0")

    def test_a_list_of_users_replaces_those_of_the_drug_store(self):
        self.only_on_sample_data()
        organisation, users = self.hospital_with_users()
        key = self.drug_store(organisation, uuid.uuid4().hex[:10])
        stored = ("SELECT USER_ID, RELATION_FLAG FROM TRA_USER_BUY_CATALOG WHERE LAST_OPERATE <> 'D'"
                  f" AND CATALOG_ID = '{key['CATALOG_ID']}' ORDER BY USER_ID")

        def assign(*pairs):
            return self.codes(ADMIN + "TraBuyCatalog", "insertUpdateTraUserBuyCatalog",
                              [{"USER_ID": user, "RELATION_FLAG": flag, **key}
                               for user, flag in pairs])

        self.assertEqual(assign((users[0], "1"), (users[1], "")), ["1", "1"])
        self.assertEqual(self.peer.query(stored).rows, [[users[0], "1"], [users[1], "0"]])
        stranger = self.column("SELECT USER_ID FROM USR_USER WHERE ENABLE_FLAG = '1'"
                               f" AND ORG_ID <> '{organisation}'")[0]
        self.assertEqual(assign((users[0], "0"), (stranger, "1")), ["0", "0"])
        self.assertEqual(assign((users[1], "1")), ["1"])
        self.assertEqual(self.peer.query(stored).rows, [[users[1], "1"]])
        for _ in range(2):
            self.assertEqual(self.codes(ADMIN + "TraBuyCatalog", "deleteTraUserBuyCatalog", [key]),
                             ["1"])
        self.assertEqual(self.peer.query(stored).rows, [])
        self.assertEqual(assign((users[0], "1")), ["1"])
        for _ in range(2):
            self.assertEqual(self.codes(ADMIN + "TraBuyCatalog", "deleteBuyCatalog", [key]), ["1"])
        self.assertEqual(self.peer.query(stored).rows, [])
        self.assertEqual(assign((users[0], "1")), ["0"])  # it is gone

    # Rules of organisations

    def test_a_superior_is_read_under_the_other_code(self):
        org, superior = self.column("SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE <> 'D' AND"
                                    " ENABLE_FLAG = '1' AND ORG_ID NOT IN (SELECT ORG_ID FROM"
                                    " UNI_ORG_RULE WHERE LAST_OPERATE <> 'D') ORDER BY ORG_ID")[:2]

        def save(code, value, value_type, operation="1"):
            return self.codes(ADMIN + "RuleManager", "insertUpdateOrgRule", [
                {"ORG_ID": org, "RULE_CODE": code, "RULE_NAME": "规则", "RULE_VALUE": value,
                 "VALUE_TYPE": value_type, "REMARK": "", "ENABLE_FLAG": "1",
                 "LAST_OPERATE": operation}])

        self.assertEqual(save("ORG_SJJGSH_ID", superior, "S"), ["1"])
        self.assertEqual(save("ORG_SJJGSH_ID", superior, "S"), ["1"])
        table = self.peer.query("SELECT RULE_CODE, RULE_VALUE FROM UNI_ORG_RULE"
                                f" WHERE LAST_OPERATE <> 'D' AND ORG_ID = '{org}'")
        self.assertEqual(table.rows, [["ORG_SJJGSH_ORGID", superior]])
        for code, value, value_type in (("ORG_SJJGSH_ORGID", superior, "S"),
                                        ("ORG_SJJGSH_ID", org, "S"), ("ORG_SJJGSH", "2", "B"),
                                        ("ORG_DDYXQ_TS", "10000", "S"), ("ORG_LCML", "1", "B")):
            with self.subTest(code=code, value=value):
                self.assertEqual(save(code, value, value_type), ["0"])
        self.assertEqual(save("ORG_SJJGSH_ID", "", "S", "D"), ["1"])

    # Announcements

    def announcement(self, group, **more):
        return {"ID": "", "START_DATE": "2024-03-05", "END_DATE": "", "AFFICHE_TYPE": "1",
                "AFFICHE_TITLE": "停业通知", "AFFICHE_CONTENT": "春节停业。", "UNION_ID": group,
                "PUBLIC_FLAG": "1", "SALER_FLAG": "0", "BUYER_FLAG": "1", "ENABLE_FLAG": "0", **more}

    def own_group(self):
        """A group that this user is assigned to."""
        group = self.new_group()
        user = self.peer.session()["UserId"]
        self.assertEqual(self.codes(ADMIN + "UniUser", "insertUniUser",
                                    [{"USER_ID": user, "UNION_ID": group}]), ["1"])
        return group

    def test_an_announcement_is_written_published_and_unpublished_by_a_change(self):
        group = self.own_group()
        code, values = self.peer.post(NOTICE, "insertUpdateNotic", [self.announcement(group)])[0]
        self.assertEqual((code, set(values)), ("1", {"ID"}))
        state = f"SELECT ENABLE_FLAG FROM SYS_AFFICHE WHERE ID = '{values['ID']}'"
        publication = [{"ID": values["ID"], "ENABLE_FLAG": "1"}]
        self.assertEqual(self.column(state), ["0"])
        self.assertEqual(self.codes(NOTICE, "confirmNotic", publication), ["1"])
        self.assertEqual(self.codes(NOTICE, "confirmNotic", publication), ["0"])
        self.assertEqual(self.column(state), ["1"])
        change = self.announcement(group, ID=values["ID"], END_DATE="2024-03-05")
        self.assertEqual(self.peer.post(NOTICE, "insertUpdateNotic", [change]), [("1", values)])
        self.assertEqual(self.column(state), ["0"])
        for _, answer in zip(range(2), (["1"], ["0"])):  # the second time it is gone
            self.assertEqual(self.codes(NOTICE, "deleteNotic", [{"ID": values["ID"]}]), answer)
        self.assertEqual(self.column(state), [])
        self.assertEqual(self.column("SELECT OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME ="
                                     f" 'SYS_AFFICHE' AND KEY_ID1 = '{values['ID']}'"
                                     " ORDER BY LOG_ID"), ["1", "3", "2", "6"])

    def test_an_announcement_has_a_group_of_the_user_and_makes_sense(self):
        group = self.own_group()
        for change in ({"UNION_ID": self.new_group()}, {"UNION_ID": "no-such"},
                       {"END_DATE": "2024-03-04"}, {"START_DATE": ""}, {"AFFICHE_TITLE": "  "},
                       {"AFFICHE_CONTENT": "\n"}, {"AFFICHE_TYPE": "2"}, {"ENABLE_FLAG": "1"},
                       {"PUBLIC_FLAG": ""}, {"ID": "no-such"}):
            with self.subTest(change=change):
                self.assertEqual(self.codes(NOTICE, "insertUpdateNotic",
                                            [self.announcement(group, **change)]), ["0"])
