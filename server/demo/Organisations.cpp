#include "demo/Organisations.h"

#include "demo/OrganisationNames.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// How many there are of the firms, how they are called, and how many more are deleted.
struct CompanyPlan
{
    OrgType type;
    QString suffixes; ///< word list
    QString kinds;    ///< word list
    int count;
    int deleted;
};

const std::array<CompanyPlan, 5> CompanyPlans{{
    {OrgType::Manufacturer, u"药企"_s, u"企业性质"_s, 200, 3},
    {OrgType::Manufacturer, u"饮片厂"_s, u"企业性质"_s, 30, 0},
    {OrgType::Distributor, u"商业"_s, u"企业性质"_s, 180, 4},
    {OrgType::Logistics, u"物流"_s, u"企业性质"_s, 40, 1},
    {OrgType::Pharmacy, u"药房"_s, u"药房性质"_s, 218, 4},
}};

constexpr int Hospitals = 500;
constexpr std::size_t HospitalKindsInFocus = 7; ///< of each level
constexpr int FocusPercent = 55;                ///< firms and further hospitals in focus provinces
constexpr int DisabledEvery = 45;               ///< one firm of so many is disabled

/// Development zones and the like have codes but neither hospitals nor firms of their own.
bool IsPlace(const Region &region)
{
    static const QStringList zones{u"开发"_s, u"园"_s,   u"管理"_s,  u"示范"_s,
                                   u"实验"_s, u"聚集"_s, u"食品"_s,  u"海域"_s,
                                   u"岛礁"_s, u"新区"_s, u"委员会"_s};
    if (!region.inChina || region.administrative || region.name.size() > 5)
        return false;
    return std::none_of(zones.begin(), zones.end(),
                        [&](const QString &zone) { return region.name.contains(zone); });
}

class Maker
{
public:
    Maker(const Regions &regions, const QStringList &focus)
        : regions_(regions)
        , names_(regions)
        , focus_(focus)
    {
        for (const Region &region : regions.All()) {
            if (!IsPlace(region))
                continue;
            if (region.level == Region::Level::City && region.name.endsWith(u'市'))
                (InFocus(region) ? focusCities_ : otherCities_).push_back(&region);
            else if (region.level == Region::Level::County)
                (InFocus(region) ? focusCounties_ : otherCounties_).push_back(&region);
        }
    }

    std::vector<Organisation> Make()
    {
        AddOperators();
        AddHospitals();
        for (const CompanyPlan &plan : CompanyPlans)
            AddCompanies(plan);
        return std::move(organisations_);
    }

private:
    bool InFocus(const Region &region) const { return focus_.contains(region.code.first(2)); }

    /// False if there is one of this name already.
    bool Add(OrgType type, const Region &region, const OrganisationName &name,
             State state = State::Live)
    {
        if (taken_.contains(name.name))
            return false;
        taken_.insert(name.name);
        const QString area = region.code.leftJustified(6, u'0');
        const QString codeHead = area + QString::number(static_cast<int>(type));
        Organisation organisation;
        organisation.id =
            MakeId(IdSeries::Organisation, static_cast<qsizetype>(organisations_.size()));
        organisation.code = codeHead + Padded(++counts_[codeHead], 3);
        organisation.type = type;
        organisation.name = name.name;
        organisation.abbr = name.abbr;
        organisation.kind = name.kind;
        const QString number = QString::number(random_.Between(1, 680));
        organisation.address = region.fullName + random_.Pick(words_[u"道路"_s]) + number + u'号';
        organisation.region = &region;
        organisation.state = state;
        organisations_.push_back(std::move(organisation));
        return true;
    }

    void AddOperators()
    {
        const Region &seat = regions_.All().front();
        Add(OrgType::Operator, seat, {u"药品集中交易平台营运中心"_s, u"营运中心"_s, u"事业单位"_s});
        for (const Region &region : regions_.All()) {
            if (region.level == Region::Level::Province && region.inChina)
                Add(OrgType::Operator, region,
                    {region.name + u"药品集中采购服务中心"_s, region.ShortName() + u"药采中心"_s,
                     u"事业单位"_s});
        }
    }

    void AddHospitals()
    {
        int left = Hospitals;
        for (const QString &code : focus_) {
            const Region &region = regions_.ByCode(code);
            std::size_t kinds = HospitalKindsInFocus;
            for (const HospitalKind &kind : names_.HospitalKinds()) {
                if (kind.level == region.level && kinds > 0) {
                    --kinds;
                    left -= Add(OrgType::Hospital, region, names_.Hospital(region, kind, random_))
                                ? 1
                                : 0;
                }
            }
        }
        while (left > 0) {
            const HospitalKind &kind = random_.Pick(names_.HospitalKinds());
            const bool focus = random_.Chance(FocusPercent);
            const Region &region = kind.level == Region::Level::City
                                       ? *random_.Pick(focus ? focusCities_ : otherCities_)
                                       : *random_.Pick(focus ? focusCounties_ : otherCounties_);
            left -= Add(OrgType::Hospital, region, names_.Hospital(region, kind, random_)) ? 1 : 0;
        }
    }

    void AddCompanies(const CompanyPlan &plan)
    {
        for (int count = 0; count < plan.count + plan.deleted;) {
            const Region &city =
                *random_.Pick(random_.Chance(FocusPercent) ? focusCities_ : otherCities_);
            if (!Add(plan.type, city, names_.Company(city, plan.suffixes, plan.kinds, random_),
                     count < plan.count ? State::Live : State::Deleted))
                continue;
            ++count;
            organisations_.back().enabled = count % DisabledEvery != 0;
        }
    }

    const Regions &regions_;
    OrganisationNames names_;
    WordLists words_;
    QStringList focus_;
    Random random_{u"BAS_ORG"};
    std::vector<const Region *> focusCities_;
    std::vector<const Region *> otherCities_;
    std::vector<const Region *> focusCounties_;
    std::vector<const Region *> otherCounties_;
    QSet<QString> taken_;
    QHash<QString, int> counts_; ///< by the head of ORG_CODE
    std::vector<Organisation> organisations_;
};

} // namespace

std::vector<Organisation> MakeOrganisations(const Regions &regions, const QStringList &focus)
{
    return Maker(regions, focus).Make();
}

TableRows OrganisationRows(const QString &table, const std::vector<Organisation> &organisations,
                           const Initials &initials)
{
    TableRows rows(table, {u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s,
                           u"ORG_NAME_PY"_s, u"ORG_NAME_WB"_s, u"ORG_TYPE"_s, u"ORG_KIND"_s,
                           u"ORG_ADDRESS"_s, u"REGION_ID"_s, u"ENABLE_FLAG"_s});
    for (const Organisation &organisation : organisations)
        rows.Add({organisation.id, organisation.code, organisation.name, organisation.abbr,
                  initials.Pinyin(organisation.name), initials.Wubi(organisation.name),
                  QString::number(static_cast<int>(organisation.type)), organisation.kind,
                  organisation.address, organisation.region->id,
                  organisation.enabled ? u"1"_s : u"0"_s},
                 organisation.state);
    return rows;
}

} // namespace Qel::Demo
