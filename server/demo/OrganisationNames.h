#pragma once

#include "demo/DemoFiles.h"
#include "demo/Random.h"
#include "demo/Regions.h"

#include <QSet>

namespace Qel::Demo {

struct OrganisationName
{
    QString name;
    QString abbr;
    QString kind; ///< nature of the organisation
};

/// A kind of hospital that a city or a county has, from hospitals.csv.
struct HospitalKind
{
    QString name;
    QString abbr;
    QString kind;
    Region::Level level = Region::Level::County;
};

/// Composes names as such organisations have them in China: place and kind for hospitals, place,
/// an invented trade name and the form of the company for firms.
class OrganisationNames
{
public:
    explicit OrganisationNames(const Regions &regions);

    const std::vector<HospitalKind> &HospitalKinds() const { return hospitalKinds_; }
    OrganisationName Hospital(const Region &region, const HospitalKind &kind, Random &random) const;
    /// `suffixes` and `kinds` are names of word lists.
    OrganisationName Company(const Region &city, const QString &suffixes, const QString &kinds,
                             Random &random) const;

private:
    const Regions &regions_;
    WordLists words_;
    std::vector<HospitalKind> hospitalKinds_;
};

} // namespace Qel::Demo
