"""A site of a few hundred rows that has everything the kit needs (docs/contract.md, "What the server
needs"), as INSERT statements that both databases take."""

DAY = "2024-03-%02d 08:30:00"
NAMES = ("仁济", "协和", "同德", "康泰", "百草园", "睿禾", "华山", "平湖市第一", "嘉和", "长宁区中心")
KINDS = ("制药有限公司", "医药贸易有限公司", "物流股份公司", "人民医院", "大药房", "药品采购中心")
DRUGS = ("阿莫西林胶囊", "布洛芬缓释片", "头孢克肟颗粒", "维生素C注射液", "复方甘草片", "板蓝根颗粒")


def sql_text(value):
    return "NULL" if value is None else "'" + str(value).replace("'", "''") + "'"


def regions():
    for number, name in enumerate(("浙江省", "杭州市", "嘉兴市", "江苏省", "南京市"), 1):
        yield {"REGION_ID": 100 + number, "PARENT_ID": -1 if number in (1, 4) else 101,
               "REGION_CODE": f"33{number:02}", "REGION_NAME": name, "FULL_NAME": name}


def organisations():
    for number in range(1, 41):
        kind = number % 6 or 6
        name = f"{NAMES[number % 10]}{KINDS[kind - 1]}{number}"
        yield {"ORG_ID": 200000 + number, "ORG_CODE": f"J{number:04}", "ORG_NAME": name,
               "ORG_ABBR": f"Abbr{number}{name[:2]}", "ORG_NAME_PY": f"PY{number:03}QRS",
               "ORG_NAME_WB": f"WB{number * 7:03}KLM", "ORG_TYPE": kind, "ORG_KIND": "国有",
               "ORG_ADDRESS": f"人民路{number}号" if number % 3 else None,
               "REGION_ID": 101 + number % 5 if number % 7 else None,
               "ENABLE_FLAG": "0" if number == 39 else "1", "LAST_OPERATE": "D" if number == 40 else "1"}


def users():
    for number in range(1, 31):
        yield {"USER_ID": 600000 + number, "USER_CODE": "admin" if number == 1 else f"user{number}",
               "USER_NAME": f"王敏{number}", "ORG_ID": 200001 + (number - 1) % 15,
               "ENABLE_FLAG": "0" if number == 30 else "1", "REMARK": None if number % 2 else "备注"}


def products():
    for number in range(1, 41):
        factory = 200001 + 6 * (number % 5)
        yield {"PRODUCT_ID": 700000 + number, "PRODUCT_SERIAL": f"YP{number:06}",
               "PRODUCT_CLASS": "02" if number % 4 == 0 else "01",
               "PRODUCT_NAME": f"{DRUGS[number % 6]}{number}号", "PRODUCT_NAME_PY": f"DRUG{number:03}PY",
               "PRODUCT_NAME_WB": f"DRUG{number:03}WB", "TRADE_NAME": f"Trade{number:02}name",
               "TRADE_NAME_PY": f"TR{number:03}", "TRADE_NAME_WB": f"TW{number:03}", "DOSE_NAME": "胶囊剂",
               "FULL_SPEC": f"0.25g*{number}粒", "WRAP_NAME": "铝塑", "UNIT_NAME": "盒",
               "PRODUCT_LEVEL": "GMP", "FACTORY_ID": factory, "FACTORY_NAME": f"制药厂{factory}有限公司",
               "FACTORY_ABBR": f"药厂{factory}", "FACTORY_NAME_PY": f"ZYC{factory}",
               "ENABLE_FLAG": "0" if number == 40 else "1"}


def groups():
    yield "UNI_UNION", [{"UNION_ID": 300001, "UNION_CODE": "0001", "UNION_NAME": "省采购联合体",
                         "UNION_TYPE": "1", "REGION_ID": 101, "MASTER_ORGID": 200030},
                        {"UNION_ID": 300002, "PARENT_ID": 300001, "UNION_CODE": "000101",
                         "UNION_NAME": "Team北区", "UNION_TYPE": "2", "MASTER_ORGID": 200029}]
    yield "UNI_ORG_TYPE", [{"ORG_TYPE_ID": 310001, "UNION_ID": 300001, "ORG_TYPE_NAME": "采购成员",
                            "BUYER_FLAG": "1"}]
    yield "UNI_ORG", [{"UNION_ID": 300001, "ORG_ID": 200000 + number, "ORG_TYPE_ID": 310001}
                      for number in range(20, 28)]
    yield "BAS_ORG_AFFILIATION", [
        {"ID": 320001, "ORG_ID": 200020, "TREE_CODE": "0001", "TREE_LEVEL": "1"},
        {"ID": 320002, "ORG_ID": 200021, "PARENT_ORGID": 200020, "TREE_CODE": "000101", "TREE_LEVEL": "2"}]
    yield "STK_ORG_SET", [{"OWNER_ORGID": 200020, "ORG_ID": 200000 + number, "SHOW_QTY": number % 2}
                          for number in range(21, 27)]


def delivery(key, line, order, received="1", invoiced="0"):
    return {"SEND_ID": key, "ORD_ITEM_ID": line, "ORD_CODE": f"DD{order:06}", "ORD_DATE": DAY % (order % 28 + 1),
            "PRODUCT_ID": 700000 + line % 30 + 1, "BUY_ORGID": 200004, "SALE_ORGID": 200002,
            "HIT_PRICE": "12.5", "ORD_QTY": "10", "SEND_QTY": "10", "RECEIVE_QTY": "10", "LOT_NO": f"L{key}",
            "SEND_FLAG": received, "RECEIVE_FLAG": received, "INVOICE_FLAG": invoiced,
            "CREATE_DATE": DAY % (key % 28 + 1)}


def trade():
    orders, lines, deliveries, returns = [], [], [], []
    for order in range(1, 21):
        orders.append({"ORD_ID": order, "ORD_CODE": f"DD{order:06}", "ORD_DATE": DAY % (order % 28 + 1),
                       "ORD_TYPE": "1", "ORD_STATE": "1", "BUY_ORGID": 200004 + 6 * (order % 3),
                       "SALE_ORGID": 200002, "SEND_ORGID": 200003, "ITEM_COUNT": 3, "ITEM_MONEY": "375"})
        for number in range(3):
            line = 10 * order + number
            is_delivered = order <= 10
            lines.append({"ORD_ITEM_ID": line, "ORD_ID": order, "PRODUCT_ID": 700001 + line % 30,
                          "HIT_PRICE": "12.5", "ORD_QTY": "10", "STATE": "1" if is_delivered else "0"})
            if is_delivered:  # accepted invoices for every third
                deliveries.append(delivery(line, line, order, invoiced="1" if number == 2 else "0"))
            if is_delivered and number == 1:  # open, confirmed, invoiced and refused returns
                returns.append({"RETURN_ID": order, "SEND_ID": line, "RETURN_QTY": "1",
                                "CONFIRM_FLAG": ("0", "1", "1", "2")[order % 4],
                                "INVOICE_FLAG": "1" if order % 4 == 2 else "0",
                                "RETURN_DATE": DAY % (order + 1), "LAST_UPDATE": DAY % (order + 1)})
    deliveries.append(delivery(900, 200, 20, received="0"))  # entered for an open line
    lines.append({"ORD_ITEM_ID": 299, "ORD_ID": 20, "PRODUCT_ID": 700001, "STATE": "0", "LAST_OPERATE": "D"})
    return (("TRA_ORDER", orders), ("TRA_ORDER_ITEM", lines), ("TRA_SEND", deliveries),
            ("TRA_RETURN", returns))


def statements():
    for table, rows in (("BAS_REGION", regions()), ("BAS_ORG", organisations()), ("USR_USER", users()),
                        ("BAS_PRODUCT", products()), *groups(), *trade()):
        for row in rows:
            yield (f"INSERT INTO {table} ({', '.join(row)}) VALUES"
                   f" ({', '.join(map(sql_text, row.values()))});")
