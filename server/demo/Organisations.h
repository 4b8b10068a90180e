#pragma once

#include "demo/Initials.h"
#include "demo/Regions.h"
#include "demo/TableRows.h"

namespace Qel::Demo {

/// Values of ORG_TYPE.
enum class OrgType {
    Manufacturer = 1,
    Distributor = 2,
    Logistics = 3,
    Hospital = 4,
    Pharmacy = 5,
    Operator = 6,
};

struct Organisation
{
    QString id;
    QString code;
    OrgType type = OrgType::Operator;
    QString name;
    QString abbr;
    QString kind;
    QString address;
    const Region *region = nullptr; ///< belongs to the Regions they were made of
    bool enabled = true;
    State state = State::Live;

    bool InUse() const { return enabled && state == State::Live; }
    /// A manufacturer of herbal pieces and of nothing else.
    bool MakesHerbs() const { return type == OrgType::Manufacturer && name.contains(u"中药"); }
};

/// The organisations, the platform's own first. `focus` are codes of the regions that have groups:
/// each has hospitals of several kinds, the rest are spread over the country.
std::vector<Organisation> MakeOrganisations(const Regions &regions, const QStringList &focus);

/// `table` is BAS_ORG, or CAT_ORG for those that quote or make what is bought.
TableRows OrganisationRows(const QString &table, const std::vector<Organisation> &organisations,
                           const Initials &initials);

} // namespace Qel::Demo
