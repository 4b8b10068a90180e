#include "controls/GridBand.h"

#include "controls/GridColumn.h"
#include "dataset/QelError.h"

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

bool IsField(const GridColumn &column, const QString &field)
{
    return column.field.compare(field, Qt::CaseInsensitive) == 0;
}

/// Why the field does not stand where the column `wanted` does.
QString WhyMisplaced(const QString &field, qsizetype wanted, const QList<GridColumn> &columns)
{
    qsizetype at = 0;
    while (at < columns.size() && !IsField(columns[at], field))
        ++at;
    if (at == columns.size())
        return u"没有列“%1”"_s.arg(field);
    if (at < wanted)
        return u"列“%1”已属于前面的栏目"_s.arg(field);
    return u"列“%1”与列的次序不符，此处应为列“%2”"_s.arg(field, columns[wanted].field);
}

} // namespace

GridBand ParseGridBand(const QString &line)
{
    const qsizetype bar = line.lastIndexOf(u'|');
    GridBand band{line.left(bar), {}};
    const QStringList fields = line.mid(bar + 1).split(u',', Qt::SkipEmptyParts);
    for (const QString &field : fields) {
        if (!field.trimmed().isEmpty())
            band.fields.append(field.trimmed());
    }
    if (bar < 0 || band.fields.isEmpty())
        throw EQelError(u"栏目定义“%1”无法识别：缺少字段名"_s.arg(line));
    return band;
}

QString FormatGridBand(const GridBand &band)
{
    return band.caption + u'|' + band.fields.join(u',');
}

QList<GridBand> ParseGridBands(const QStringList &lines)
{
    QList<GridBand> bands;
    for (const QString &line : lines)
        bands.append(ParseGridBand(line));
    return bands;
}

QStringList FormatGridBands(const QList<GridBand> &bands)
{
    QStringList lines;
    for (const GridBand &band : bands)
        lines.append(FormatGridBand(band));
    return lines;
}

void CheckBands(const QList<GridBand> &bands, const QList<GridColumn> &columns)
{
    qsizetype next = 0;
    for (const GridBand &band : bands) {
        for (const QString &field : band.fields) {
            if (next == columns.size() || !IsField(columns[next], field))
                throw EQelError(
                    u"栏目“%1”有误：%2"_s.arg(band.caption, WhyMisplaced(field, next, columns)));
            ++next;
        }
    }
    if (next < columns.size())
        throw EQelError(u"列“%1”不属于任何栏目"_s.arg(columns[next].field));
}

} // namespace Qel
