#include "demo/Regions.h"

#include "dataset/QelError.h"
#include "demo/DemoFiles.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr qsizetype CodeDigitsPerLevel = 2;

/// Levels of the administration that are no places: they are left out of full names.
bool IsAdministrative(const QString &name)
{
    return name == u"市辖区"_s || name == u"县"_s || name.endsWith(u"直辖县级行政区划"_s);
}

} // namespace

QString Region::ShortName() const
{
    static const QString endings = u"市县区省"_s;
    return name.size() > 2 && endings.contains(name.back()) ? name.chopped(1) : name;
}

Regions::Regions()
{
    for (const QStringList &record : ReadDemoFile(u"regions.csv"_s, {u"CODE"_s, u"NAME"_s})) {
        Region region;
        region.id = MakeId(IdSeries::Region, static_cast<qsizetype>(regions_.size()));
        region.code = record[0];
        region.name = record[1];
        region.level = static_cast<Region::Level>(region.code.size() / CodeDigitsPerLevel);
        region.inChina = region.code.front().isDigit();
        region.administrative = IsAdministrative(region.name);
        if (region.level == Region::Level::Province) {
            region.parentId = u"-1"_s;
            region.fullName = region.name;
        } else {
            const Region &above = Above(region);
            region.parentId = above.id;
            region.fullName = region.administrative ? above.fullName : above.fullName + region.name;
        }
        byCode_.insert(region.code, regions_.size());
        regions_.push_back(std::move(region));
    }
}

const Region &Regions::ByCode(const QString &code) const
{
    const auto found = byCode_.constFind(code);
    if (found == byCode_.cend())
        throw EQelError(u"示例数据中没有编码为“%1”的地区"_s.arg(code));
    return regions_[*found];
}

const Region &Regions::Above(const Region &region) const
{
    return ByCode(region.code.chopped(CodeDigitsPerLevel));
}

TableRows Regions::Rows() const
{
    TableRows rows(u"BAS_REGION"_s,
                   {u"REGION_ID"_s, u"PARENT_ID"_s, u"REGION_CODE"_s, u"REGION_NAME"_s,
                    u"FULL_NAME"_s, u"REGION_LEVEL"_s, u"CHINA_FLAG"_s, u"ENABLE_FLAG"_s});
    for (const Region &region : regions_)
        rows.Add({region.id, region.parentId, region.code, region.name, region.fullName,
                  QString::number(static_cast<int>(region.level)), region.inChina ? u"1"_s : u"0"_s,
                  u"1"_s});
    return rows;
}

} // namespace Qel::Demo
