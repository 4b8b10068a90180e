#pragma once

#include "demo/TableRows.h"

#include <QHash>

namespace Qel::Demo {

struct Region
{
    enum class Level { Province = 1, City = 2, County = 3 };

    QString id;
    QString parentId; ///< "-1" at the top
    QString code;     ///< a region's code begins with that of the one above
    QString name;
    QString fullName; ///< from the top down, without purely administrative levels
    Level level = Level::Province;
    bool inChina = true;
    bool administrative = false; ///< a name such as 市辖区, which stands for no place

    /// The name without 市, 县, 区 or 省 at its end where two characters are left.
    QString ShortName() const;
};

/// The administrative divisions of China and some of other countries.
class Regions
{
public:
    Regions();

    const std::vector<Region> &All() const { return regions_; }
    /// Throws EQelError if there is none.
    const Region &ByCode(const QString &code) const;
    /// The region one level up; not for one of the top.
    const Region &Above(const Region &region) const;

    TableRows Rows() const;

private:
    std::vector<Region> regions_;
    QHash<QString, std::size_t> byCode_;
};

} // namespace Qel::Demo
