#include "demo/Affiliations.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr std::size_t Affiliated = 400;
constexpr int FullBranch = 99; ///< children of one superior: as many as two digits tell apart
constexpr int AloneAtTop = 2;  ///< centres without subordinates
constexpr qsizetype Minor = 5; ///< from this hospital of a county on, they report to its second
constexpr qsizetype ProvinceDigits = 2;
constexpr qsizetype CityDigits = 4;

constexpr int TopCodeDigits = 4;
constexpr int CodeDigitsPerLevel = 2;

struct Place
{
    const Organisation *organisation = nullptr;
    const Organisation *superior = nullptr; ///< null at the top
    QString code;
};

class Maker
{
public:
    Maker(const std::vector<Organisation> &organisations, const QStringList &focus)
    {
        for (const QString &code : focus) {
            if (code.size() == ProvinceDigits)
                provinces_ += code;
        }
        for (const Organisation &organisation : organisations) {
            if (!organisation.InUse())
                continue;
            if (organisation.type == OrgType::Operator)
                centres_.push_back(&organisation);
            else if (organisation.type == OrgType::Pharmacy)
                pharmacies_.push_back(&organisation);
            else if (organisation.type == OrgType::Hospital)
                hospitals_[organisation.region->code].push_back(&organisation);
        }
    }

    TableRows Make()
    {
        const Organisation *platform = centres_.front();
        Add(platform, nullptr);
        for (int child = 0; child < FullBranch; ++child)
            Add(pharmacies_[static_cast<std::size_t>(child)], platform);
        for (const QString &province : provinces_)
            Add(Centre(province), nullptr);
        const auto alone = Outside();
        for (int centre = 0; centre < AloneAtTop; ++centre)
            Add(alone[static_cast<std::size_t>(centre)], nullptr);
        AddHospitals();
        return Rows(*alone[AloneAtTop]);
    }

private:
    const Organisation *Centre(const QString &province) const
    {
        return *std::find_if(centres_.begin() + 1, centres_.end(),
                             [&](const auto *centre) { return centre->region->code == province; });
    }

    /// The centres of provinces that have no groups.
    std::vector<const Organisation *> Outside() const
    {
        std::vector<const Organisation *> result;
        std::copy_if(
            centres_.begin() + 1, centres_.end(), std::back_inserter(result),
            [&](const auto *centre) { return !provinces_.contains(centre->region->code); });
        return result;
    }

    /// A city's first hospital reports to the province's centre, a county's first to that of the
    /// city, the other ones to their first, the smallest ones of a county to its second.
    const Organisation *Superior(const Organisation *hospital) const
    {
        const QString &code = hospital->region->code;
        const auto &local = hospitals_[code];
        const auto number = std::find(local.begin(), local.end(), hospital) - local.begin();
        if (number > 0)
            return code.size() > CityDigits && number >= Minor ? local[1] : local[0];
        const auto city = hospitals_.constFind(code.first(CityDigits));
        return code.size() > CityDigits && city != hospitals_.constEnd()
                   ? city->front()
                   : Centre(code.first(ProvinceDigits));
    }

    /// Province by province in turn, so that each has its share when the number is reached.
    void AddHospitals()
    {
        std::vector<std::vector<const Organisation *>> queues;
        for (const QString &province : provinces_) {
            std::vector<const Organisation *> &queue = queues.emplace_back();
            for (auto local = hospitals_.begin(); local != hospitals_.end(); ++local) {
                if (local.key().startsWith(province))
                    queue.insert(queue.end(), local->begin(), local->end());
            }
            std::sort(queue.begin(), queue.end(),
                      [](const auto *left, const auto *right) { return left->id < right->id; });
        }
        for (std::size_t turn = 0; places_.size() < Affiliated; ++turn) {
            for (const auto &queue : queues) {
                if (turn < queue.size())
                    AddWithSuperiors(queue[turn]);
            }
        }
    }

    void AddWithSuperiors(const Organisation *hospital)
    {
        if (codes_.contains(hospital->id))
            return;
        const Organisation *superior = Superior(hospital);
        if (superior->type == OrgType::Hospital)
            AddWithSuperiors(superior);
        if (places_.size() < Affiliated)
            Add(hospital, superior);
    }

    void Add(const Organisation *organisation, const Organisation *superior)
    {
        const QString above = superior ? superior->id : QString();
        const QString code =
            codes_.value(above) +
            Padded(++children_[above], superior ? CodeDigitsPerLevel : TopCodeDigits);
        codes_.insert(organisation->id, code);
        places_.push_back({organisation, superior, code});
    }

    TableRows Rows(const Organisation &removed)
    {
        TableRows rows(u"BAS_ORG_AFFILIATION"_s,
                       {u"ID"_s, u"ORG_ID"_s, u"PARENT_ORGID"_s, u"TREE_CODE"_s, u"TREE_LEVEL"_s,
                        u"ENABLE_FLAG"_s});
        const auto add = [&rows](const Place &place, State state) {
            const auto level = (place.code.size() - TopCodeDigits) / CodeDigitsPerLevel + 1;
            rows.Add({MakeId(IdSeries::Affiliation, rows.Count()), place.organisation->id,
                      place.superior ? place.superior->id : QString(), place.code,
                      QString::number(level), state == State::Deleted ? u"D"_s : u"1"_s},
                     state);
        };
        for (const Place &place : places_)
            add(place, State::Live);
        add({&removed, nullptr, Padded(children_[QString()] + 1, TopCodeDigits)}, State::Deleted);
        return rows;
    }

    QStringList provinces_;                     ///< codes of those in focus
    std::vector<const Organisation *> centres_; ///< the platform's own first
    std::vector<const Organisation *> pharmacies_;
    QHash<QString, std::vector<const Organisation *>> hospitals_; ///< by code of their region
    QHash<QString, int> children_;  ///< of an organisation; those at the top under ""
    QHash<QString, QString> codes_; ///< of the organisations placed so far
    std::vector<Place> places_;
};

} // namespace

TableRows AffiliationRows(const std::vector<Organisation> &organisations, const QStringList &focus)
{
    return Maker(organisations, focus).Make();
}

} // namespace Qel::Demo
