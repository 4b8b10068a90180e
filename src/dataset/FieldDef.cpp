#include "dataset/FieldDef.h"

#include <array>

namespace Qel {

namespace {

struct NamedType
{
    FieldType type;
    const char *name;
};

constexpr std::array kTypes{
    NamedType{FieldType::Text, "text"},
    NamedType{FieldType::WideText, "widetext"},
    NamedType{FieldType::Integer, "integer"},
    NamedType{FieldType::Real, "real"},
    NamedType{FieldType::DateTime, "datetime"},
    NamedType{FieldType::AutoIncrement, "autoincrement"},
};

} // namespace

int IndexOfField(const FieldDefs &fields, QStringView name)
{
    for (qsizetype i = 0; i < fields.size(); ++i) {
        const QString &candidate = fields[i].name;
        // Names of equal case have equal length in all scripts that columns are named in.
        if (candidate.size() == name.size() && name.compare(candidate, Qt::CaseInsensitive) == 0)
            return int(i);
    }
    return -1;
}

QByteArrayView FieldTypeName(FieldType type)
{
    for (const NamedType &known : kTypes) {
        if (known.type == type)
            return known.name;
    }
    Q_UNREACHABLE();
}

std::optional<FieldType> FieldTypeFromName(QByteArrayView name)
{
    for (const NamedType &known : kTypes) {
        if (name == known.name)
            return known.type;
    }
    return std::nullopt;
}

} // namespace Qel
