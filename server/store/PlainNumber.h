#pragma once

#include <QByteArray>

namespace Qel::Store {

/// A number as this system writes it: plain decimal notation, at most 15 significant digits, no
/// exponent, no trailing zeros ("0.5", "1310", "-12.25").
QByteArray PlainNumber(double value);

} // namespace Qel::Store
