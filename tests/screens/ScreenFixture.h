#pragma once

#include "controls/DataGrid.h"
#include "controls/DataTree.h"
#include "frame/BaseForm.h"
#include "frame/MisCommon.h"
#include "support/ScreenDriver.h"
#include "support/ScriptedServer.h"

#include <QTemporaryDir>
#include <QTest>

#include <functional>

namespace Qel::Test {

/// The text of that name in the files data/*.txt; ends the test if there is none.
QString Expected(const QString &name);

/// "UNION_ID=11|LAST_USER=王敏": a posted row as those files write it.
QString RowText(const Wire::NamedValues &row);
QStringList RowTexts(const QList<Wire::NamedValues> &rows);

/// "Warning|警告|text|Ok": icon, caption, text and default button of a box.
QString BoxText(const TMessageBox &box);

/// What a screen's test stands on: a scripted server that the data module is told of, an empty
/// folder for the region cache, the operator 王敏 (700001, wangmin), message boxes written down and
/// answered.
class ScreenFixture
{
public:
    ScreenFixture();
    ~ScreenFixture(); ///< a statement or post that no script covered fails the test

    QStringList Boxes() const; ///< BoxText of each box so far

    /// Those of the form's actions and controls that were disabled when a request arrived while
    /// `run` ran, request by request. One that is not enabled again afterwards ends the test.
    QStringList DisabledAtRequests(const QWidget &form, const QStringList &names,
                                   const std::function<void()> &run);

    ScriptedServer server;
    MessageBoxHook hook;

private:
    QTemporaryDir folder_;
};

/// Shows a screen as the host does and waits until its FormShow has run.
void ShowScreen(QWidget &screen);

/// The object name of the control that has the form's focus; empty if none has.
QString FocusName(const QWidget &form);

/// The text of a label, button or other control that has one.
QString Caption(const QWidget &form, const QString &name);

/// A click into the middle of a cell: in the tick column it ticks.
void ClickCell(DataGrid &grid, int row, QStringView field);
/// Clicks into the tick column of these rows.
void Tick(DataGrid &grid, const QList<int> &rows);

/// "UNION_CODE 编码": the columns in their order, hidden ones marked "UNION_CODE 编码 hidden".
QStringList ColumnsOf(const DataGrid &grid);
QStringList ColumnsOf(const DataTree &tree);

/// A field of every row, in their order.
QStringList CellTexts(const ClientDataSet &rows, QStringView field);

/// "1 701", "0 702": the answer to a post row by row, each a code and the value of `key` that says
/// which row it is about.
QList<Wire::ResultRow> ResultRows(const QString &key, const QStringList &rows);

/// Shows a form as a dialog and runs `visit` in it. What `visit` leaves open is closed: Cancel.
TModalResult ShowModally(TFrmBaseForm &form, const std::function<void(QWidget *dialog)> &visit);

/// The columns of the group tree's statement.
const QStringList &UnionColumns();

} // namespace Qel::Test
