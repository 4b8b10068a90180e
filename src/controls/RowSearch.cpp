#include "controls/RowSearch.h"

#include <QByteArrayMatcher>

namespace Qel {

int FindRowContaining(const ClientDataSet &dataSet, QStringView field, const QString &text,
                      int first)
{
    if (text.isEmpty())
        return -1;
    const int column = dataSet.FieldIndexOrThrow(field);
    // UTF-8 is self-synchronising: a text is contained in another exactly when its bytes are.
    const QByteArray wanted = text.toUtf8();
    const QByteArrayMatcher matcher(wanted);
    const int rows = dataSet.RecordCount();
    for (int recNo = qMax(0, first); recNo < rows; ++recNo) {
        const QByteArrayView cell = dataSet.BytesAt(recNo, column);
        if (cell.size() >= wanted.size() && matcher.indexIn(cell.data(), cell.size()) >= 0)
            return recNo;
    }
    return -1;
}

} // namespace Qel
