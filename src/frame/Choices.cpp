#include "frame/Choices.h"

#include "dataset/ClientDataSet.h"

namespace Qel {

ValueList ChoicesOf(const ClientDataSet &rows, QStringView valueField, QStringView textField)
{
    ValueList choices;
    const int value = rows.FieldIndex(valueField);
    const int text = rows.FieldIndex(textField);
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo)
        choices.append({rows.TextAt(recNo, value), rows.TextAt(recNo, text)});
    return choices;
}

} // namespace Qel
