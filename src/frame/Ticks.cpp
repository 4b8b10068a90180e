#include "frame/Ticks.h"

#include "dataset/ClientDataSet.h"
#include "frame/QelUtils.h"

namespace Qel {

using namespace Qt::StringLiterals;

QList<int> TickedRows(const ClientDataSet &rows)
{
    QList<int> ticked;
    const int field = rows.FieldIndex(u"SELECTED");
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo) {
        if (rows.BytesAt(recNo, field) == "1")
            ticked.append(recNo);
    }
    return ticked;
}

void TickAll(ClientDataSet &rows, bool ticked)
{
    SetAllFieldValue(rows, ticked, u"SELECTED"_s, u"1"_s, u"0"_s);
}

} // namespace Qel
