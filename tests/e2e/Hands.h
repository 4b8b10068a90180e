#pragma once

#include "support/ScreenDriver.h"

#include <QModelIndex>
#include <QStringList>
#include <QTableView>

/// What an operator does and sees in the stories, beyond a single control.
namespace Qel::Test {

QTableView &Grid(const QObject *screen, const QString &name);
/// The cell below a caption.
QModelIndex Cell(const QTableView &grid, int row, const QString &caption);
/// What stands there.
QString Text(const QTableView &grid, int row, const QString &caption);
QStringList Texts(const QTableView &grid, const QString &caption);
void ClickCell(QTableView &grid, int row, const QString &caption);
/// Opens the cell's drop-down and takes the choice after the present one.
void ChooseInCell(QTableView &grid, int row, const QString &caption);
/// The editor of a cell takes its leave in the event loop.
void LetEditorGo();

/// Does what brings up message boxes one after the other and presses a button in each. The texts
/// they had.
QStringList Answers(const QStringList &buttons, const std::function<void()> &action);
QString Answer(const QString &button, const std::function<void()> &action); ///< one box
/// Opens a dialog with an action of `screen`, and is inside it meanwhile.
void InDialog(const QObject *screen, const QString &action,
              const std::function<void(QWidget *)> &visit);

} // namespace Qel::Test
