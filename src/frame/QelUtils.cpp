#include "frame/QelUtils.h"

#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "dataset/ClientDataSet.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

// The last moment that the dates of the platform know; its milliseconds never reach the text.
QTime EndOfDay()
{
    return QTime(23, 59, 59, 59);
}

/// Built from date and time of day: a local time that a clock change skips is still written.
QString DateLiteral(const QDate &date, const QTime &time)
{
    const QString text = date.isValid()
                             ? date.toString(u"yyyy-MM-dd") + u' ' + time.toString(u"HH:mm:ss")
                             : u"0000-00-00 "_s + time.toString(u"HH:mm:ss");
    return u"to_date("_s + Quoted(text) + u',' + Quoted(u"yyyy-mm-dd HH24:MI:SS") + u')';
}

/// What a column of product lists is called, and whether it is shown, by product type.
struct ProductColumn
{
    QStringView field;
    QStringView herbal; ///< type "02"; empty: the caption stays
    QStringView other;
    bool hiddenForHerbal = false;
};

// The blank inside "品 名", "产 地" and "规 格" is part of the caption.
constexpr ProductColumn productColumns[] = {
    {u"PRODUCT_NAME", u"品 名", u"通用名"},
    {u"TRADE_NAME", u"产 地", u"商品名"},
    {u"DOSE_NAME", {}, {}, true},
    {u"FACTORY_NAME", u"厂家", u"生产企业"},
    {u"FULL_SPEC", u"规 格", u"规格包装"},
    {u"SPEC", u"规 格", u"规格"},
    {u"WRAP_NAME", {}, {}, true},
    {u"PRODUCT_LEVEL", {}, {}, true},
    {u"COST_PRICE", u"十克零售价", u"成本价"},
    {u"HIT_PRICE", u"批发价", u"成交价"},
};

} // namespace

QString Quoted(QStringView text)
{
    QString doubled = text.toString();
    doubled.replace(u'\'', "''"_L1);
    return u'\'' + doubled + u'\'';
}

bool IsDateEmpty(const DateEdit &edit)
{
    return edit.IsEmpty();
}

QDateTime DateIn(DateEdit &edit)
{
    edit.TakeTyped();
    return edit.Value();
}

void PresetDates(DateEdit &from, DateEdit &to, int days)
{
    const QDate today = QDate::currentDate();
    from.SetValue(today.addDays(-days).startOfDay());
    to.SetValue(today.startOfDay());
}

QString ToDateSQL(const QDateTime &value)
{
    return DateLiteral(value.date(), value.date().isValid() ? value.time() : QTime(0, 0));
}

QString LocalNowText()
{
    return QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss");
}

QString DateRangeCondition(const QString &fieldName, const QDateTime &from, const QDateTime &to)
{
    const bool hasFrom = from.date().isValid();
    const bool hasTo = to.date().isValid();
    if (hasFrom && !hasTo)
        return fieldName + u" >= "_s + ToDateSQL(from);
    if (!hasFrom && hasTo)
        return fieldName + u" <= "_s + DateLiteral(to.date(), EndOfDay());
    const auto [low, high] = std::minmax({from.date(), to.date()});
    return fieldName + u" between "_s + DateLiteral(low, QTime(0, 0)) + u" and "_s +
           DateLiteral(high, EndOfDay());
}

QString DateRangeCondition(const QString &fieldName, const DateEdit &from, const DateEdit &to)
{
    return DateRangeCondition(fieldName, from.Value(), to.Value());
}

void LikeFilter(const QString &fieldList, const QString &value, QString &result)
{
    static const QRegularExpression separators(u"[,\\s]+"_s);
    const QStringList columns = fieldList.split(separators, Qt::SkipEmptyParts);
    if (columns.isEmpty())
        return;
    const QString pattern = Quoted(u'%' + value.trimmed().toUpper() + u'%');
    QStringList pieces;
    if (!result.isEmpty())
        pieces << result;
    for (const QString &column : columns)
        pieces << u"(UPPER("_s + column + u") like "_s + pattern + u')';
    result = u'(' + pieces.join(u" or "_s) + u')';
}

QString AndLike(const QString &fieldList, const QString &value, QStringView joint)
{
    const QString text = value.trimmed();
    if (text.isEmpty())
        return {};
    QString like;
    LikeFilter(fieldList, text, like);
    return joint.toString() + like;
}

void SetAllFieldValue(ClientDataSet &dataSet, bool flag, const QString &fieldName,
                      const QString &trueValue, const QString &falseValue)
{
    if (dataSet.IsEmpty() || !dataSet.HasField(fieldName))
        return;
    const ControlsSuspender suspended(dataSet);
    const ClientDataSet::Bookmark current = dataSet.GetBookmark();
    dataSet.SetAll(fieldName, flag ? trueValue : falseValue);
    dataSet.GotoBookmark(current);
}

void SetProductCaptions(const QString &productType, DataGrid &grid)
{
    const bool herbal = productType == "02"_L1;
    for (const ProductColumn &column : productColumns) {
        const QStringView caption = herbal ? column.herbal : column.other;
        if (!caption.isEmpty())
            grid.SetColumnCaption(column.field, caption.toString());
        if (column.hiddenForHerbal)
            grid.SetColumnVisible(column.field, !herbal);
    }
}

} // namespace Qel
