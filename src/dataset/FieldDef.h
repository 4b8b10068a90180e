#pragma once

#include <QList>
#include <QString>

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

} // namespace Qel
