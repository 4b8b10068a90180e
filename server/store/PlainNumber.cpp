#include "store/PlainNumber.h"

#include <cmath>

namespace Qel::Store {

QByteArray PlainNumber(double value)
{
    if (value == 0)
        return "0"; // also the negative zero
    // 15 digits are what a double keeps of any decimal; from the exponent follows how many of
    // them stand behind the point.
    const int magnitude = static_cast<int>(std::floor(std::log10(std::fabs(value))));
    QByteArray text = QByteArray::number(value, 'f', qBound(0, 14 - magnitude, 130));
    if (text.contains('.')) {
        while (text.endsWith('0'))
            text.chop(1);
        if (text.endsWith('.'))
            text.chop(1);
    }
    return text;
}

} // namespace Qel::Store
