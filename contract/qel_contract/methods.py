"""The methods of the page: manager class and method, parameters, and columns with their sizes."""

ADMIN = "com.business.admin."
ROLLBACK = "com.business.rollback.BusDataRollBack"
AFFILIATION = "com.business.basedata.OrgAffiliationManager"
STOCK = "com.business.stock.StockManager"
NOTICE = "com.notic.NoticManager"

SAVE_GROUP = (ADMIN + "UniUnion", "insert_update_UniUnion")
DELETE_GROUP = (ADMIN + "UniUnion", "delete_UniUnion")
SAVE_TYPE = (ADMIN + "UniUnion", "insert_update_UniOrgType")
SAVE_MEMBER = (ADMIN + "UniUnionOrg", "insert_update_UniUnionOrg")
DELETE_MEMBER = (ADMIN + "UniUnionOrg", "delete_UniOrg")
MOVE_IN = (ADMIN + "Uni_Product", "move_in_Uni_Product")
MOVE_OUT = (ADMIN + "Uni_Product", "move_out_Uni_Product")
ADD_USER = (ADMIN + "UniUser", "insertUniUser")
REMOVE_USER = (ADMIN + "UniUser", "deleteUniUser")
SAVE_PRICE = (ADMIN + "UniPrice", "insertUpdatePrcUniPriceProduct")
SAVE_PRICE_TYPE = (ADMIN + "UniPrice", "insertUpdatePrcUniPriceType")
SAVE_PRICE_BUYER = (ADMIN + "UniPrice", "insertUpdatePrcUniPriceOrg")
BACK_ORDER = (ROLLBACK, "DataRollBack")
BACK_RETURN = (ROLLBACK, "ReturnRollBack")
BACK_RECEIPT = (ROLLBACK, "ReceiveRollBack")
SAVE_PLACE = (AFFILIATION, "insertUpdateOrgAffiliation")
DELETE_PLACE = (AFFILIATION, "deleteOrgAffiliation")
SAVE_GROUP_RULE = (ADMIN + "RuleManager", "insertUpdateUnionRule")
SAVE_ORG_RULE = (ADMIN + "RuleManager", "insertUpdateOrgRule")
SAVE_STOCK = (STOCK, "stockOrgManager")
SAVE_STORE = (ADMIN + "TraBuyCatalog", "insertUpdateBuyCatalog")
DELETE_STORE = (ADMIN + "TraBuyCatalog", "deleteBuyCatalog")
SAVE_STORE_USERS = (ADMIN + "TraBuyCatalog", "insertUpdateTraUserBuyCatalog")
DELETE_STORE_USERS = (ADMIN + "TraBuyCatalog", "deleteTraUserBuyCatalog")
SAVE_NOTICE = (NOTICE, "insertUpdateNotic")
DELETE_NOTICE = (NOTICE, "deleteNotic")
PUBLISH_NOTICE = (NOTICE, "confirmNotic")

_PRICES = "".join(f" PRICE_0{slot}" for slot in range(1, 10))
_RULE = "RULE_CODE RULE_NAME RULE_VALUE VALUE_TYPE ENABLE_FLAG REMARK LAST_OPERATE"

# Method: the table whose columns its parameters are, the parameters, those that are no columns.
METHODS = {
    SAVE_GROUP: ("UNI_UNION", "UNION_ID PARENT_ID UNION_CODE UNION_NAME UNION_TYPE REGION_ID"
                 " MASTER_ORGID REMARK"),
    DELETE_GROUP: ("UNI_UNION", "UNION_ID"),
    SAVE_TYPE: ("UNI_ORG_TYPE", "ORG_TYPE_ID ORG_TYPE_NAME UNION_ID BUYER_FLAG SALER_FLAG"
                " SENDER_FLAG ADMIN_FLAG REMARK LAST_OPERATE"),
    SAVE_MEMBER: ("UNI_ORG", "UNION_ID ORG_ID ORG_TYPE_ID"),
    DELETE_MEMBER: ("UNI_ORG", "UNION_ID ORG_ID"),
    MOVE_IN: ("UNI_PRODUCT", "UNION_ID PRODUCT_ID"),
    MOVE_OUT: ("UNI_PRODUCT", "UNION_ID PRODUCT_ID"),
    ADD_USER: ("UNI_USER_UNION", "USER_ID UNION_ID"),
    REMOVE_USER: ("UNI_USER_UNION", "USER_ID UNION_ID"),
    SAVE_PRICE: ("PRC_UNI_PRICE_PRODUCT", "PRICE_ID UNION_ID SALE_ORGID SEND_ORGID PRODUCT_ID"
                 " COST_PRICE" + _PRICES + " LAST_OPERATE"),
    SAVE_PRICE_TYPE: ("PRC_UNI_PRICE_TYPE", "PRICE_TYPE_ID UNION_ID SALE_ORGID PRICE_NAME"
                      " PRICE_FIELD ENABLE_FLAG LAST_OPERATE"),
    SAVE_PRICE_BUYER: ("PRC_UNI_PRICE_ORG", "BUY_ORGID SALE_ORGID UNION_ID PRICE_TYPE_ID"),
    BACK_ORDER: ("TRA_ORDER_ITEM", "ORD_ITEM_ID ALL_FLAG"),
    BACK_RETURN: ("TRA_RETURN", "RETURN_ID"),
    BACK_RECEIPT: ("TRA_SEND", "SEND_ID"),
    SAVE_PLACE: ("BAS_ORG_AFFILIATION", "ID ORG_ID PARENT_ORGID TREE_CODE TREE_LEVEL"),
    DELETE_PLACE: ("BAS_ORG_AFFILIATION", "ORG_ID ENABLE_FLAG"),
    SAVE_GROUP_RULE: ("UNI_UNION_RULE", "UNION_ID " + _RULE),
    SAVE_ORG_RULE: ("UNI_ORG_RULE", "ORG_ID " + _RULE),
    SAVE_STOCK: ("STK_ORG_SET", "OWNER_ORGID ORG_ID SHOW_QTY LAST_OPERATE"),
    SAVE_STORE: ("TRA_BUY_CATALOG", "CATALOG_ID CATALOG_NAME BUY_ORGID"),
    DELETE_STORE: ("TRA_BUY_CATALOG", "CATALOG_ID BUY_ORGID"),
    SAVE_STORE_USERS: ("TRA_USER_BUY_CATALOG", "USER_ID CATALOG_ID BUY_ORGID RELATION_FLAG"),
    DELETE_STORE_USERS: ("TRA_USER_BUY_CATALOG", "CATALOG_ID BUY_ORGID"),
    SAVE_NOTICE: ("SYS_AFFICHE", "ID START_DATE END_DATE AFFICHE_TYPE AFFICHE_TITLE AFFICHE_CONTENT"
                  " UNION_ID PUBLIC_FLAG SALER_FLAG BUYER_FLAG ENABLE_FLAG"),
    DELETE_NOTICE: ("SYS_AFFICHE", "ID"),
    PUBLISH_NOTICE: ("SYS_AFFICHE", "ID ENABLE_FLAG"),
}
METHODS = {method: (table, names.split()) for method, (table, names) in METHODS.items()}

TAKES_NO_ROWS = {SAVE_TYPE}
ROW_BY_ROW = {MOVE_IN, MOVE_OUT, ADD_USER, REMOVE_USER}


def nothing(method, **values):
    """A row of the method that names nothing: well formed, and "0" wherever it is posted."""
    row = {name: "" for name in METHODS[method][1]}
    for key in ("UNION_ID", "ORG_ID", "PRODUCT_ID", "USER_ID", "CATALOG_ID", "ORD_ITEM_ID",
                "RETURN_ID", "SEND_ID", "ID", "OWNER_ORGID", "ORG_TYPE_ID", "PRICE_TYPE_ID",
                "PRICE_ID"):
        if key in row:
            row[key] = "no-such"
    if "ALL_FLAG" in row:
        row["ALL_FLAG"] = "0"
    return {**row, **values}
