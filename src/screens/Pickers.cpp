#include "screens/Pickers.h"

#include "controls/ButtonEdit.h"
#include "screens/OrgSelect.h"
#include "screens/RegionSelect.h"

namespace Qel {

bool PickRegion(QWidget *owner, ButtonEdit &edit)
{
    TFrmRegionSelect picker(owner);
    picker.SetInformation(edit.text());
    if (picker.ShowModal() != TModalResult::Ok)
        return false;
    edit.SetChoice(picker.RegionId, picker.FullName);
    return true;
}

bool PickOrg(QWidget *owner, const QString &baseSql, ButtonEdit &edit, QString *abbr)
{
    TFrmOrgSelect picker(owner);
    picker.SetOrgText(edit.text());
    picker.BaseSql = baseSql;
    if (picker.ShowModal() != TModalResult::Ok)
        return false;
    edit.SetChoice(picker.OrgId, picker.OrgName);
    if (abbr)
        *abbr = picker.OrgAbbr;
    return true;
}

} // namespace Qel
