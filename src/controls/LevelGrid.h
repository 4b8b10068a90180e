#pragma once

#include "controls/GridLevel.h"
#include "controls/GridSheet.h"
#include "controls/LevelGridModel.h"

#include <QPersistentModelIndex>
#include <QSet>
#include <QTreeView>

#include <utility>

namespace Qel {

class GridHeader;

/// A grid of several levels over as many datasets: under each row of a level, when it is expanded,
/// the rows of the level below that belong to it, with a header row and columns of their own.
/// Details are found on the client by the fields that link them. Read-only, ticks too.
///
/// The focused row and the datasets' current rows keep step: the focused row is current in its
/// table, its masters are in theirs, and below it the current row is one of its details, if it has
/// any. A dataset that is moved takes the focus with it, unless the row already stands above or
/// below the focus. A dataset that is being edited or suspended is never moved.
///
/// Keys: up, down, page up and down, home and end pass over header rows; left collapses or goes to
/// the master, right expands or goes to the first detail; Enter reports the row to its level;
/// Ctrl+C copies the current cell, Ctrl+Shift+C the row. What is expanded stays so as long as a
/// table is not opened anew. The context menu is that of the focused row's level.
///
/// Layouts give, with stdset="0", string lists of lines that begin with the name of a level:
/// levels: "NAME|key field|link field", top level first (before the others, once);
/// columns: "NAME.FIELD|caption|width|editor|flags" (see ParseGridColumn);
/// levelMenus: "NAME|ActionA,ActionB,-".
class LevelGrid : public QTreeView
{
    Q_OBJECT
    Q_PROPERTY(QStringList levels READ Levels WRITE SetLevels)
    Q_PROPERTY(QStringList columns READ Columns WRITE SetColumns)
    Q_PROPERTY(QStringList levelMenus READ LevelMenus WRITE SetLevelMenus)
    Q_PROPERTY(int rowHeight READ RowHeight WRITE SetRowHeight)
    Q_PROPERTY(int headerHeight READ HeaderHeight WRITE SetHeaderHeight)
    Q_PROPERTY(QString emptyHint READ EmptyHint WRITE SetEmptyHint)

public:
    explicit LevelGrid(QWidget *parent = nullptr);
    ~LevelGrid() override;

    QStringList Levels() const;
    void SetLevels(const QStringList &levels);
    QStringList Columns() const;
    void SetColumns(const QStringList &columns); ///< throws for a level that there is not
    QStringList LevelMenus() const;
    void SetLevelMenus(const QStringList &menus); ///< throws for a level that there is not

    const QList<GridLevel *> &AllLevels() const { return levels_; }
    GridLevel *Level(QStringView name) const; ///< throws if there is none
    GridLevel *FocusedLevel() const;          ///< nullptr: no row has the focus
    LevelGridModel *Model() const { return model_; }

    void ExpandAll();   ///< every row of the top level with all below it
    void CollapseAll(); ///< the focus goes to the focused row's master on the top level

    // Least heights in device-independent pixels; a larger font makes them grow.
    int RowHeight() const { return rowHeight_; }
    void SetRowHeight(int height);
    int HeaderHeight() const;
    void SetHeaderHeight(int height);
    const QString &EmptyHint() const { return emptyHint_; }
    void SetEmptyHint(const QString &hint); ///< shown when the top level is open without rows
    void ApplySheet(const GridSheet &sheet);

    void CopyCell() const;
    void CopyRow() const; ///< visible columns of the row's level, separated by tabs

    QModelIndex indexAt(const QPoint &point) const override;
    QRect visualRect(const QModelIndex &index) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;
    void keyboardSearch(const QString &text) override;

public slots:
    void reset() override;

signals:
    void FocusedRowChanged(); ///< another row has the focus, or none any more

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                 const QModelIndex &index) const override;
    void changeEvent(QEvent *event) override;

private:
    friend class GridLevel;
    /// A row that outlives what happens around it: level and bookmark.
    using RowMark = std::pair<int, ClientDataSet::Bookmark>;

    void SetLevelDataSet(int level, ClientDataSet *dataSet);
    void ShowLevelMenu();
    void FocusRow(int level, int recNo);

    // Keeping step
    void WatchModel();
    void ModelChanged();
    void ChooseHeir(const QModelIndex &parent, int first, int last);
    void ViewMoved(const QModelIndex &current);
    void DataSetMoved(int level);
    void FollowDataSet(int level);
    void Settle(int changedLevel);
    QModelIndex FocusAfterReset(int changedLevel) const;
    void MoveView(const QModelIndex &index);
    void AlignDataSets(const QModelIndex &focused);
    bool CanMove(int level) const;
    void Reveal(const QModelIndex &index);
    void FocusMayHaveChanged();
    bool IsFocusAtOrBelow(const QModelIndex &index) const;
    QModelIndex CurrentOf(int level) const; ///< the dataset's current row
    RowMark MarkOf(const QModelIndex &index) const;
    QModelIndex IndexOfMark(const RowMark &mark) const;
    QModelIndex Visible(const QModelIndex &index) const;
    void FollowCollapse(const QModelIndex &collapsed);

    // Geometry and painting
    int EntryColumn(int level) const;
    QList<int> VisibleColumns(int level) const; ///< from the left
    QRect CellRect(int level, int column, int top, int height) const;
    QModelIndex InColumn(const QModelIndex &row, const QModelIndex &like) const;
    QModelIndex NextFocusable(QModelIndex index, int step) const;
    QModelIndex LastRow() const;
    int RowsOnPage() const;
    int RowsBottom() const;
    void PaintExpandMark(QPainter &painter, const QRect &gutter, const QModelIndex &index) const;
    void PaintCell(QPainter &painter, const QStyleOptionViewItem &row, const QModelIndex &cell,
                   const QRect &rect) const;

    LevelGridModel *model_;
    GridHeader *header_;
    QList<GridLevel *> levels_;
    int rowHeight_ = 20;
    QString emptyHint_;
    QColor background_;
    QColor hintColor_;
    QColor headerColor_;

    int changing_ = 0;           ///< inside a change that the view is being told of
    bool following_ = false;     ///< one side is being moved to the other
    QList<int> settledAt_;       ///< by level: the recNo after rows went, a move that was seen to
    bool takenApart_ = false;    ///< a dataset went, its owner with it: nobody to be told
    QPersistentModelIndex heir_; ///< takes the focus of a row that goes
    RowMark focused_{-1, ClientDataSet::NoBookmark};
    QSet<RowMark> expanded_;
};

} // namespace Qel
