#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

namespace Qel {

class ClientDataSet;
class DataGrid;
class DateEdit;

// How filter controls become SQL text (Oracle dialect), and what every screen does to its grids
// in the same way. The texts are exact to the blank.

/// `text` in single quotes, single quotes inside doubled.
QString Quoted(QStringView text);

/// Whether the editor holds its empty-date value.
bool IsDateEmpty(const DateEdit &edit);

/// The editor's value. What is typed there counts, whether or not the edit has been left.
QDateTime DateIn(DateEdit &edit);

/// A date range at first: from `days` before today to today.
void PresetDates(DateEdit &from, DateEdit &to, int days);

/// to_date('2024-03-05 00:00:00','yyyy-mm-dd HH24:MI:SS'). An invalid value, which is how an
/// empty date arrives, is written 0000-00-00.
QString ToDateSQL(const QDateTime &value);

/// This machine's date and time as tables carry it, "2024-03-05 13:07:00".
QString LocalNowText();

/// The condition of a date range: ">=" with From only (its time unchanged), "<=" with To only (to
/// the end of its day), otherwise "between" the two days, the earlier first. Two empty dates give
/// a "between" over the empty-date value too: ask for it only when one is set.
QString DateRangeCondition(const QString &fieldName, const QDateTime &from, const QDateTime &to);
QString DateRangeCondition(const QString &fieldName, const DateEdit &from, const DateEdit &to);

/// Adds "(UPPER(c) like '%VALUE%')" to `result` for each column expression of `fieldList`
/// (separated by commas or blanks), joined by " or ", then encloses the whole of `result` in
/// parentheses. What `result` held before takes part; an empty list changes nothing. Wildcards
/// typed by the user act as wildcards.
void LikeFilter(const QString &fieldList, const QString &value, QString &result);

/// `joint` and the LikeFilter of the trimmed value; empty if nothing is left of the value.
QString AndLike(const QString &fieldList, const QString &value, QStringView joint = u" AND ");

/// Sets one column of every row, if there are rows and such a column. The current row stays.
void SetAllFieldValue(ClientDataSet &dataSet, bool flag, const QString &fieldName,
                      const QString &trueValue, const QString &falseValue);

/// Captions and visibility of the product columns that the grid has; `productType` "02" (herbal
/// pieces) has a set of its own.
void SetProductCaptions(const QString &productType, DataGrid &grid);

} // namespace Qel
