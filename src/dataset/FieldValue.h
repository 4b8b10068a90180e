#pragma once

#include "dataset/FieldDef.h"

#include <QByteArray>
#include <QString>

#include <compare>
#include <optional>

namespace Qel {

/// What a cell is set to: UTF-8 bytes, or null.
struct FieldValue
{
    QByteArray utf8;
    bool isNull = false;
};

/// The one text form that a field of this type keeps for `text`:
///   text, wide text  as it is, at most `size` characters
///   integer          "-12"; no plus, no leading zeros, within 64 bits
///   real             "-0.5"; plain decimal digits, none superfluous; exact, never rounded
///   date-time        "2024-03-05 13:07:00"; also read without seconds, or as a date alone
/// An empty or blank text is null for all but the text types. Throws EDataSetError that names the
/// field if the text is none of this, and for auto-increment fields, which number themselves.
FieldValue CanonicalValue(const FieldDef &field, const QString &text);

/// The number in the form above, nullopt if it is none. Reads "+1.50", ".5", "12e-1".
std::optional<QByteArray> CanonicalDecimal(QByteArrayView text);

/// Order of two numbers in the form above.
std::strong_ordering CompareDecimals(QByteArrayView left, QByteArrayView right);

} // namespace Qel
