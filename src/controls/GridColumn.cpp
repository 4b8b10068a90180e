#include "controls/GridColumn.h"

#include "dataset/QelError.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr std::array<std::pair<GridEditor, QStringView>, 6> EditorNames{{
    {GridEditor::None, u""},
    {GridEditor::Text, u"text"},
    {GridEditor::Check, u"check"},
    {GridEditor::Combo, u"combo"},
    {GridEditor::Date, u"date"},
    {GridEditor::Currency, u"currency"},
}};

struct FlagRule
{
    QStringView name;
    void (*set)(GridColumn &);
    bool (*isSet)(const GridColumn &);
};

constexpr std::array<FlagRule, 5> FlagRules{{
    {u"hidden", [](GridColumn &c) { c.hidden = true; },
     [](const GridColumn &c) { return c.hidden; }},
    {u"readonly", [](GridColumn &c) { c.readOnly = true; },
     [](const GridColumn &c) { return c.readOnly; }},
    {u"rownumber", [](GridColumn &c) { c.rowNumber = true; },
     [](const GridColumn &c) { return c.rowNumber; }},
    {u"right", [](GridColumn &c) { c.alignment = Qt::AlignRight; },
     [](const GridColumn &c) { return c.alignment == Qt::AlignRight; }},
    {u"center", [](GridColumn &c) { c.alignment = Qt::AlignHCenter; },
     [](const GridColumn &c) { return c.alignment == Qt::AlignHCenter; }},
}};

[[noreturn]] void Refuse(const QString &line, const QString &what)
{
    throw EQelError(u"列定义“%1”无法识别：%2"_s.arg(line, what));
}

GridEditor ParseEditor(const QString &line, const QString &name)
{
    for (const auto &[editor, known] : EditorNames) {
        if (known == name)
            return editor;
    }
    Refuse(line, u"没有编辑方式“%1”"_s.arg(name));
}

void ParseFlag(GridColumn &column, const QString &line, const QString &name)
{
    for (const FlagRule &rule : FlagRules) {
        if (rule.name == name) {
            rule.set(column);
            return;
        }
    }
    Refuse(line, u"没有标志“%1”"_s.arg(name));
}

} // namespace

ValueItem ParseValueItem(const QString &line)
{
    const qsizetype bar = line.indexOf(u'|');
    return bar < 0 ? ValueItem{line, line} : ValueItem{line.left(bar), line.mid(bar + 1)};
}

ValueList ParseValueList(const QStringList &lines)
{
    ValueList list;
    for (const QString &line : lines)
        list.append(ParseValueItem(line));
    return list;
}

QStringList FormatValueList(const ValueList &list)
{
    QStringList lines;
    for (const ValueItem &item : list)
        lines.append(item.value + u'|' + item.text);
    return lines;
}

GridColumn ParseGridColumn(const QString &line)
{
    const QStringList parts = line.split(u'|');
    GridColumn column;
    column.field = parts[0].trimmed();
    if (column.field.isEmpty())
        Refuse(line, u"缺少字段名"_s);
    if (parts.size() > 5)
        Refuse(line, u"分隔符过多"_s);
    column.caption = parts.value(1);
    if (const QString width = parts.value(2).trimmed(); !width.isEmpty()) {
        bool ok = false;
        column.width = width.toInt(&ok);
        if (!ok || column.width <= 0)
            Refuse(line, u"宽度“%1”不是正整数"_s.arg(width));
    }
    column.editor = ParseEditor(line, parts.value(3).trimmed());
    if (column.editor == GridEditor::Check)
        column.alignment = Qt::AlignHCenter;
    if (column.editor == GridEditor::Currency)
        column.alignment = Qt::AlignRight;
    const QStringList flags = parts.value(4).split(u',', Qt::SkipEmptyParts);
    for (const QString &flag : flags)
        ParseFlag(column, line, flag.trimmed());
    return column;
}

QString FormatGridColumn(const GridColumn &column)
{
    QStringList parts{column.field, column.caption, QString::number(column.width)};
    for (const auto &[editor, name] : EditorNames) {
        if (editor == column.editor)
            parts.append(name.toString());
    }
    QStringList flags;
    for (const FlagRule &rule : FlagRules) {
        if (rule.isSet(column))
            flags.append(rule.name.toString());
    }
    parts.append(flags.join(u','));
    return parts.join(u'|');
}

QList<GridColumn> ParseGridColumns(const QStringList &lines)
{
    QList<GridColumn> columns;
    for (const QString &line : lines)
        columns.append(ParseGridColumn(line));
    return columns;
}

QStringList FormatGridColumns(const QList<GridColumn> &columns)
{
    QStringList lines;
    for (const GridColumn &column : columns)
        lines.append(FormatGridColumn(column));
    return lines;
}

} // namespace Qel
