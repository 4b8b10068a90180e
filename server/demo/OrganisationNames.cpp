#include "demo/OrganisationNames.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// The company's name without the legal form at its end.
QString WithoutLegalForm(QString name)
{
    for (const QString &form : {u"股份有限公司"_s, u"连锁有限公司"_s, u"有限公司"_s}) {
        if (name.endsWith(form))
            return name.chopped(form.size());
    }
    return name;
}

} // namespace

OrganisationNames::OrganisationNames(const Regions &regions)
    : regions_(regions)
{
    for (const QStringList &record :
         ReadDemoFile(u"hospitals.csv"_s, {u"NAME"_s, u"ABBR"_s, u"KIND"_s, u"LEVEL"_s}))
        hospitalKinds_.push_back(
            {record[0], record[1], record[2],
             record[3] == u"市"_s ? Region::Level::City : Region::Level::County});
}

OrganisationName OrganisationNames::Hospital(const Region &region, const HospitalKind &kind,
                                             Random &random) const
{
    QString place = region.name;
    QString shortPlace = region.ShortName();
    if (region.level == Region::Level::County && region.name.endsWith(u'区')) {
        // Many cities have a 城关区 or a 新城区, so a district's hospital names its city too.
        const Region &city = regions_.Above(region);
        const Region &named = city.administrative ? regions_.Above(city) : city;
        place.prepend(named.name);
        shortPlace.prepend(named.ShortName());
    }
    return {place + kind.name, shortPlace + kind.abbr,
            kind.kind + u'（' + random.Pick(words_[u"医院性质"_s]) + u'）'};
}

OrganisationName OrganisationNames::Company(const Region &city, const QString &suffixes,
                                            const QString &kinds, Random &random) const
{
    const QString &suffix = random.Pick(words_[suffixes]);
    const QString name = city.ShortName() + random.Pick(words_[u"字号"_s]) + suffix;
    return {name, WithoutLegalForm(name), random.Pick(words_[kinds])};
}

} // namespace Qel::Demo
