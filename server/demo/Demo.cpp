#include "demo/Demo.h"

#include "demo/Affiliations.h"
#include "demo/Announcements.h"
#include "demo/Catalogues.h"
#include "demo/Deliveries.h"
#include "demo/DrugStores.h"
#include "demo/Groups.h"
#include "demo/History.h"
#include "demo/Memberships.h"
#include "demo/OrganisationRules.h"
#include "demo/Organisations.h"
#include "demo/Products.h"
#include "demo/Regions.h"
#include "demo/Rules.h"
#include "demo/StockPermissions.h"
#include "demo/Users.h"

#include "store/Schema.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// The tables whose keys are counted, in the order of their rows; SRV_SEQUENCE goes on with them.
constexpr QStringView CountedTables[] = {
    u"BAS_REGION",
    u"BAS_ORG",
    u"UNI_UNION",
    u"UNI_ORG_TYPE",
    u"BAS_PRODUCT",
    u"USR_USER",
    u"SYS_UPDATE_LOG",
    u"PRC_UNI_PRICE_TYPE",
    u"PRC_UNI_PRICE_PRODUCT",
    u"TRA_ORDER",
    u"TRA_ORDER_ITEM",
    u"TRA_SEND",
    u"TRA_RETURN",
    u"BAS_ORG_AFFILIATION",
    u"SYS_AFFICHE",
    u"TRA_BUY_CATALOG",
};

void StoreSequences(Store::Connection &connection, const std::vector<TableRows> &tables)
{
    for (const QStringView table : CountedTables) {
        const QString name = table.toString();
        const auto rows = std::find_if(tables.begin(), tables.end(),
                                       [&](const TableRows &one) { return one.Table() == name; });
        // Not their number: some announcements were deleted for good.
        const QString last = rows->Text(rows->Count() - 1, 0);
        connection.Run("INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES (?1, ?2)",
                       {name, last.toLongLong() + 1});
    }
}

/// Those that quote: the only ones that the second list of organisations names.
std::vector<Organisation> Sellers(std::vector<Organisation> organisations)
{
    std::erase_if(organisations, [](const Organisation &organisation) {
        return organisation.type != OrgType::Manufacturer &&
               organisation.type != OrgType::Distributor;
    });
    return organisations;
}

/// The trade begins when all prices are entered.
constexpr OfficeTime FirstTradeDay = 155;

OfficeTime EndOfTrade(QDate today)
{
    return std::max(LastMorningBefore(today) + OfficeDay, FirstTradeDay * OfficeDay + TradeTime);
}

void AddTables(std::vector<TableRows> &tables, std::vector<TableRows> more)
{
    std::move(more.begin(), more.end(), std::back_inserter(tables));
}

} // namespace

std::vector<TableRows> MakeRows(QDate today)
{
    const Initials initials;
    const Regions regions;
    const std::vector<GroupPlan> plans = ReadGroupPlans();
    QStringList focus;
    for (const GroupPlan &plan : plans)
        focus += plan.region;
    focus.removeDuplicates();

    const std::vector<Organisation> organisations = MakeOrganisations(regions, focus);
    const std::vector<Group> groups = MakeGroups(plans, organisations);
    const Members members = MakeMembers(groups, organisations);
    const std::vector<User> users = MakeUsers(organisations, initials);
    History history(groups, users);
    std::vector<TableRows> tables;
    tables.push_back(regions.Rows());
    tables.push_back(OrganisationRows(u"BAS_ORG"_s, organisations, initials));
    tables.push_back(OrganisationRows(u"CAT_ORG"_s, Sellers(organisations), initials));
    const std::size_t affiliation = tables.size();
    tables.push_back(AffiliationRows(organisations, focus));
    const std::size_t products = tables.size();
    tables.push_back(ProductRows(organisations, initials));
    const QStringList productIds = tables.back().LiveKeys();
    std::vector<User> everybody = MakeStoreKeepers(organisations, users, initials);
    everybody.insert(everybody.begin(), users.begin(), users.end());
    tables.push_back(UserRows(everybody));
    tables.push_back(GroupRows(groups, regions, history));
    tables.push_back(MemberTypeRows(members.types, history));
    tables.push_back(MembershipRows(members.memberships, history));
    tables.push_back(AssignmentRows(users, groups, members.memberships, history));
    tables.push_back(RuleRows(groups, members.memberships, history));
    tables.push_back(CatalogueRows(groups, productIds, history));
    const std::vector<Quotation> quotations =
        MakeQuotations(groups, members, tables[products], tables.back());
    AddTables(tables, QuotationRows(quotations, history));
    const Clerks clerks(users);
    const OfficeTime end = EndOfTrade(today);
    std::vector<Order> orders = MakeOrders(quotations, clerks, end, history);
    std::vector<TableRows> deliveries = DeliveryRows(orders, clerks, end, history);
    AddTables(tables, OrderRows(orders));
    AddTables(tables, std::move(deliveries));
    tables.push_back(StockPermissionRows(members.memberships, history));
    tables.push_back(OrganisationRuleRows(members.memberships, tables[affiliation], history));
    tables.push_back(AnnouncementRows(groups, end, history));
    AddTables(tables, DrugStoreRows(organisations, everybody));
    tables.push_back(history.Rows()); // the others have made it
    return tables;
}

void Fill(Store::Connection &connection, QDate today)
{
    const std::vector<TableRows> tables = MakeRows(today);
    Store::Transaction transaction(connection);
    Store::DropIndexes(connection);
    for (const TableRows &table : tables)
        table.Store(connection);
    Store::CreateIndexes(connection);
    StoreSequences(connection, tables);
    transaction.Commit();
}

} // namespace Qel::Demo
