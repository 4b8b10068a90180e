#include "frame/UpdateLogGrid.h"

#include "controls/DataGrid.h"

namespace Qel {

using namespace Qt::StringLiterals;

void SetUpUpdateLogGrid(DataGrid &grid, ClientDataSet &log)
{
    grid.SetColumns({
        u"USER_NAME|操作人姓名|160"_s,
        u"OPTION_TYPE|操作类型|110"_s,
        u"OPTION_DATE|操作时间|170"_s,
    });
    grid.SetValueList(u"OPTION_TYPE", {
                                          {u"1"_s, u"新增"_s},
                                          {u"2"_s, u"修改"_s},
                                          {u"3"_s, u"审核"_s},
                                          {u"4"_s, u"禁用"_s},
                                          {u"5"_s, u"逻辑删除"_s},
                                          {u"6"_s, u"物理删除"_s},
                                      });
    grid.SetDataSet(&log);
}

} // namespace Qel
