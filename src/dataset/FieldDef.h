#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace Qel {

enum class FieldType : quint8 { Text, WideText, Integer, Real, DateTime, AutoIncrement };

/// One column of a table of rows. Names are matched without regard to case.
struct FieldDef
{
    QString name;
    FieldType type = FieldType::Text;
    int size = 0; ///< largest number of characters of a text; 0: unlimited; no meaning elsewhere

    friend bool operator==(const FieldDef &, const FieldDef &) = default;
};

using FieldDefs = QList<FieldDef>;

/// Position of the first field of that name, -1 if there is none.
int IndexOfField(const FieldDefs &fields, QStringView name);

/// The name of a type in a row block and on the wire, such as "text" or "datetime".
QByteArrayView FieldTypeName(FieldType type);
std::optional<FieldType> FieldTypeFromName(QByteArrayView name);

} // namespace Qel
