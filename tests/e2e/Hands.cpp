#include "e2e/Hands.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QTest>

#include <memory>
#include <vector>

namespace Qel::Test {

using namespace Qt::StringLiterals;

QTableView &Grid(const QObject *screen, const QString &name)
{
    return *Child<QTableView>(screen, name);
}

QModelIndex Cell(const QTableView &grid, int row, const QString &caption)
{
    for (int column = 0; column < grid.model()->columnCount(); ++column) {
        if (grid.model()->headerData(column, Qt::Horizontal) == caption)
            return grid.model()->index(row, column);
    }
    FailTest(u"no column "_s + caption);
}

QString Text(const QTableView &grid, int row, const QString &caption)
{
    return Cell(grid, row, caption).data().toString();
}

QStringList Texts(const QTableView &grid, const QString &caption)
{
    QStringList texts;
    for (int row = 0; row < grid.model()->rowCount(); ++row)
        texts << Text(grid, row, caption);
    return texts;
}

void ClickCell(QTableView &grid, int row, const QString &caption)
{
    const QModelIndex cell = Cell(grid, row, caption);
    grid.scrollTo(cell);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
}

void ChooseInCell(QTableView &grid, int row, const QString &caption)
{
    grid.setCurrentIndex(Cell(grid, row, caption));
    grid.edit(Cell(grid, row, caption));
    Press(Child<QComboBox>(grid.viewport(), QString()), Qt::Key_Down);
    LetEditorGo();
}

void LetEditorGo()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList Answers(const QStringList &buttons, const std::function<void()> &action)
{
    QStringList texts;
    std::vector<std::unique_ptr<ModalVisitor>> visitors;
    const std::function<void()> awaitNext = [&] {
        const auto at = qsizetype(visitors.size());
        if (at == buttons.size())
            return;
        visitors.push_back(std::make_unique<ModalVisitor>([&, at](QWidget *box) {
            texts << box->property("text").toString();
            awaitNext();
            Click(Child<QAbstractButton>(box, buttons.at(at)));
        }));
    };
    awaitNext();
    action();
    return texts;
}

QString Answer(const QString &button, const std::function<void()> &action)
{
    return Answers({button}, action).value(0);
}

void InDialog(const QObject *screen, const QString &action,
              const std::function<void(QWidget *)> &visit)
{
    ModalVisitor dialog(visit);
    Trigger(screen, action);
    if (!dialog.Visited())
        FailTest(u"no dialog after "_s + action);
}

} // namespace Qel::Test
