#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace Qel {

/// One choice of a value list: the stored value and the text that stands for it.
struct ValueItem
{
    QString value;
    QString text; ///< kept exactly, trailing blanks included

    friend bool operator==(const ValueItem &, const ValueItem &) = default;
};

using ValueList = QList<ValueItem>;

/// Reads "value|text"; the text may hold further bars. Without a bar the text is the value too.
ValueItem ParseValueItem(const QString &line);
ValueList ParseValueList(const QStringList &lines);
QStringList FormatValueList(const ValueList &list);

/// How the cells of a column are shown and edited.
enum class GridEditor : quint8 {
    None,     ///< shown only
    Text,     ///< edited in place
    Check,    ///< a tick for "1"; toggled and posted at once, unless read-only
    Combo,    ///< chosen from the column's value list
    Date,     ///< yyyy-MM-dd with a calendar
    Currency, ///< an amount with two decimals, right-aligned unless a flag says otherwise
};

/// One column of a grid or a tree, bound to a field by name. Two columns may show one field.
struct GridColumn
{
    QString field;
    QString caption;
    int width = 100; ///< device-independent pixels
    GridEditor editor = GridEditor::None;
    bool hidden = false;
    bool readOnly = false;
    bool rowNumber = false; ///< shows the row's place from 1; the dataset has no such field
    Qt::Alignment alignment = Qt::AlignLeft;
    QString band;     ///< caption of the band above the column; not part of the text form
    ValueList values; ///< if not empty, cells show the text that stands for their value

    bool IsEditable() const { return editor != GridEditor::None && !readOnly; }

    friend bool operator==(const GridColumn &, const GridColumn &) = default;
};

/// The text form used in layouts: "FIELD|caption|width|editor|flags". Editor: empty, "text",
/// "check", "combo", "date" or "currency". Flags, separated by commas: "hidden", "readonly",
/// "rownumber", "right", "center". Trailing parts may be left out. Throws EQelError that quotes
/// what it cannot read.
GridColumn ParseGridColumn(const QString &line);
QString FormatGridColumn(const GridColumn &column);
QList<GridColumn> ParseGridColumns(const QStringList &lines);
QStringList FormatGridColumns(const QList<GridColumn> &columns);

} // namespace Qel
