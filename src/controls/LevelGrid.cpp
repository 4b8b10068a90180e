// The levels and how the focus and the datasets keep step.

#include "controls/LevelGrid.h"

#include "controls/CellDelegate.h"
#include "controls/GridHeader.h"
#include "controls/ViewParts.h"

#include <QScopedValueRollback>

#include <utility>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int NotSettled = -2;

/// A row is as high as the grid says, whatever the style thinks of a line of text.
class RowDelegate : public CellDelegate
{
public:
    explicit RowDelegate(LevelGrid *grid)
        : CellDelegate(grid)
        , grid_(grid)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        Q_UNUSED(option);
        Q_UNUSED(index);
        return {0, LeastRowHeight(*grid_, grid_->RowHeight())};
    }

private:
    const LevelGrid *grid_;
};

bool IsSameRow(const QModelIndex &a, const QModelIndex &b)
{
    return a.siblingAtColumn(0) == b.siblingAtColumn(0);
}

/// "NAME" and the rest of a line after `separator`.
std::pair<QString, QString> SplitName(const QString &line, QChar separator)
{
    const qsizetype at = line.indexOf(separator);
    return {line.left(at), at < 0 ? QString() : line.mid(at + 1)};
}

} // namespace

LevelGrid::LevelGrid(QWidget *parent)
    : QTreeView(parent)
    , model_(new LevelGridModel(this))
    , header_(new GridHeader(this))
    , emptyHint_(u"没有记录"_s)
{
    SetUpRowView(*this);
    setHeader(header_);
    setUniformRowHeights(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIndentation(18);
    setItemDelegate(new RowDelegate(this));
    WatchModel();
    connect(this, &QTreeView::expanded, this,
            [this](const QModelIndex &index) { expanded_.insert(MarkOf(index)); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        expanded_.remove(MarkOf(index));
        FollowCollapse(index);
    });
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
        if (!model_->IsHeader(index))
            emit levels_[model_->LevelOf(index)]->RowDoubleClicked();
    });
}

LevelGrid::~LevelGrid() = default;

// --- Levels --------------------------------------------------------------------------------------

QStringList LevelGrid::Levels() const
{
    QStringList lines;
    for (const GridLevel *level : levels_) {
        QString line = level->objectName() + u'|' + model_->KeyField(level->Depth());
        if (level->Depth() > 0)
            line += u'|' + model_->LinkField(level->Depth());
        lines.append(line);
    }
    return lines;
}

void LevelGrid::SetLevels(const QStringList &levels)
{
    qDeleteAll(std::exchange(levels_, {}));
    QList<LevelDef> defs;
    for (const QString &line : levels) {
        const QStringList parts = line.split(u'|');
        defs.append({parts[0], parts.value(1), parts.value(2), {}});
        auto *level = new GridLevel(this, int(levels_.size()));
        level->setObjectName(parts[0]);
        levels_.append(level);
    }
    settledAt_.fill(NotSettled, levels_.size());
    model_->SetLevels(defs);
}

QStringList LevelGrid::Columns() const
{
    QStringList lines;
    for (const GridLevel *level : levels_) {
        const QStringList columns = level->Columns();
        for (const QString &column : columns)
            lines.append(level->objectName() + u'.' + column);
    }
    return lines;
}

void LevelGrid::SetColumns(const QStringList &columns)
{
    QList<QStringList> ofLevel(levels_.size());
    for (const QString &line : columns) {
        const auto [name, column] = SplitName(line, u'.');
        ofLevel[Level(name)->Depth()].append(column);
    }
    for (int level = 0; level < levels_.size(); ++level)
        model_->SetColumns(level, ParseGridColumns(ofLevel[level]));
    if (levels_.isEmpty())
        return;
    ShowColumns(*header_, model_->Columns(0));
    setTreePosition(FirstVisibleColumn(*header_));
    setCurrentIndex({});
    Settle(0);
}

QStringList LevelGrid::LevelMenus() const
{
    QStringList lines;
    for (const GridLevel *level : levels_) {
        if (!level->menuActions_.isEmpty())
            lines.append(level->objectName() + u'|' + level->menuActions_.join(u','));
    }
    return lines;
}

void LevelGrid::SetLevelMenus(const QStringList &menus)
{
    for (const QString &line : menus) {
        const auto [name, actions] = SplitName(line, u'|');
        Level(name)->menuActions_ = actions.split(u',');
    }
}

GridLevel *LevelGrid::Level(QStringView name) const
{
    for (GridLevel *level : levels_) {
        if (level->objectName() == name)
            return level;
    }
    throw EQelError(u"列表 %1 没有层次 %2"_s.arg(objectName(), name));
}

GridLevel *LevelGrid::FocusedLevel() const
{
    return levels_.value(model_->LevelOf(currentIndex()));
}

/// The grid hears of a change before the model and of its end after it, so that what the view
/// does in between is not taken for the user's doing.
void LevelGrid::SetLevelDataSet(int level, ClientDataSet *dataSet)
{
    if (ClientDataSet *before = model_->DataSet(level))
        disconnect(before, nullptr, this, nullptr);
    const auto begins = [this] { ++changing_; };
    const auto ends = [this, level] {
        if (--changing_ == 0)
            Settle(level);
    };
    if (dataSet) {
        connect(dataSet, &ClientDataSet::ResetBegin, this, begins);
        connect(dataSet, &ClientDataSet::RowsAboutToBeInserted, this, begins);
        connect(dataSet, &ClientDataSet::RowsAboutToBeRemoved, this, begins);
        connect(dataSet, &QObject::destroyed, this, [this] { takenApart_ = true; });
    }
    takenApart_ = false;
    model_->SetDataSet(level, dataSet);
    if (!dataSet)
        return;
    const auto rowsWent = [this, level, ends] {
        ends();
        settledAt_[level] = model_->DataSet(level)->RecNo();
    };
    connect(dataSet, &ClientDataSet::ResetEnd, this, rowsWent);
    connect(dataSet, &ClientDataSet::RowsInserted, this, ends);
    connect(dataSet, &ClientDataSet::RowsRemoved, this, rowsWent);
    connect(dataSet, &ClientDataSet::CurrentChanged, this, [this, level] { DataSetMoved(level); });
    connect(dataSet, &ClientDataSet::RowChanged, this, [this, level](int recNo) {
        if (recNo == model_->DataSet(level)->RecNo())
            FollowDataSet(level); // its link may have brought it under a master just now
    });
}

void LevelGrid::ShowLevelMenu()
{
    const GridLevel *level = FocusedLevel();
    const QList<QAction *> wanted = level ? level->Actions() : QList<QAction *>();
    const QList<QAction *> shown = actions();
    if (shown == wanted)
        return;
    for (QAction *action : shown)
        removeAction(action);
    addActions(wanted);
}

// --- Expanding -----------------------------------------------------------------------------------

void LevelGrid::ExpandAll()
{
    expandAll(); // tells of no row
    for (const GridLevel *level : levels_) {
        const ClientDataSet *dataSet = level->DataSet();
        for (int recNo = 0; dataSet && recNo < dataSet->RecordCount(); ++recNo) {
            if (level->HasDetails(recNo))
                expanded_.insert({level->Depth(), dataSet->BookmarkAt(recNo)});
        }
    }
    if (currentIndex().isValid())
        scrollTo(currentIndex());
}

void LevelGrid::CollapseAll()
{
    collapseAll();
    expanded_.clear();
    QModelIndex top = currentIndex();
    while (top.parent().isValid())
        top = top.parent();
    if (top.isValid() && !IsSameRow(top, currentIndex()))
        setCurrentIndex(top.siblingAtColumn(EntryColumn(0)));
}

/// The model was built anew; of the same tables, the view shows the same rows expanded.
void LevelGrid::reset()
{
    QTreeView::reset();
    const QSet<RowMark> marks = std::exchange(expanded_, {});
    if (marks.isEmpty())
        return;
    for (GridLevel *level : std::as_const(levels_)) {
        const ClientDataSet *dataSet = level->DataSet();
        for (int recNo = 0; dataSet && recNo < dataSet->RecordCount(); ++recNo) {
            if (marks.contains({level->Depth(), dataSet->BookmarkAt(recNo)}))
                level->Expand(recNo);
        }
    }
}

/// A focused row that vanishes into a collapsed one hands the focus to it.
void LevelGrid::FollowCollapse(const QModelIndex &collapsed)
{
    if (!IsSameRow(currentIndex(), collapsed) && IsFocusAtOrBelow(collapsed))
        setCurrentIndex(collapsed.siblingAtColumn(EntryColumn(model_->LevelOf(collapsed))));
}

// --- Keeping step --------------------------------------------------------------------------------

void LevelGrid::WatchModel()
{
    const auto begins = [this] { ++changing_; };
    const auto ends = [this] { ModelChanged(); };
    connect(model_, &QAbstractItemModel::modelAboutToBeReset, this, begins);
    connect(model_, &QAbstractItemModel::rowsAboutToBeInserted, this, begins);
    connect(model_, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex &parent, int first, int last) {
                ++changing_;
                ChooseHeir(parent, first, last);
            });
    connect(model_, &QAbstractItemModel::layoutAboutToBeChanged, this, begins);
    setModel(model_);
    connect(model_, &QAbstractItemModel::modelReset, this, ends);
    connect(model_, &QAbstractItemModel::rowsInserted, this, ends);
    connect(model_, &QAbstractItemModel::rowsRemoved, this, ends);
    connect(model_, &QAbstractItemModel::layoutChanged, this, ends);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) { ViewMoved(current); });
}

/// A change that no dataset announced: other levels or columns, or a row whose link is another.
void LevelGrid::ModelChanged()
{
    if (--changing_ == 0)
        Settle(0);
}

/// The focus of a row that goes falls to the next row under its master, else to the one before,
/// else to the master.
void LevelGrid::ChooseHeir(const QModelIndex &parent, int first, int last)
{
    QModelIndex current = currentIndex().siblingAtColumn(0);
    while (current.isValid() && current.parent() != parent)
        current = current.parent();
    if (!current.isValid() || current.row() < first || current.row() > last)
        return;
    const QModelIndex after = model_->index(last + 1, 0, parent);
    const QModelIndex before = model_->index(first - 1, 0, parent);
    if (after.isValid())
        heir_ = after;
    else
        heir_ = before.isValid() && !model_->IsHeader(before) ? before : parent;
}

/// Rows came or went, and the view knows. The datasets follow the focus: where the current row of
/// a level went, its dataset stepped on to whatever stood next, perhaps under another master.
void LevelGrid::Settle(int changedLevel)
{
    QModelIndex wanted = currentIndex();
    if (heir_.isValid())
        wanted = heir_;
    heir_ = QPersistentModelIndex();
    if (!wanted.isValid())
        wanted = FocusAfterReset(changedLevel);
    MoveView(wanted);
    AlignDataSets(wanted);
    FocusMayHaveChanged();
}

/// The row that had the focus, if its table is still the same; but a table that was moved while it
/// was suspended takes the focus with it. Else the nearest master that is left.
QModelIndex LevelGrid::FocusAfterReset(int changedLevel) const
{
    QModelIndex wanted = IndexOfMark(focused_);
    if (wanted.isValid() && changedLevel <= focused_.first) {
        const QModelIndex moved = CurrentOf(changedLevel);
        if (moved.isValid() && !IsSameRow(moved, wanted) &&
            !model_->IsUnder(focused_.first, model_->RecNoOf(wanted), moved))
            wanted = moved;
    }
    for (int level = focused_.first - 1; level >= 0 && !wanted.isValid(); --level)
        wanted = CurrentOf(level);
    return Visible(wanted.isValid() ? wanted : CurrentOf(0));
}

void LevelGrid::ViewMoved(const QModelIndex &current)
{
    if (changing_ > 0 || following_ || !current.isValid())
        return;
    AlignDataSets(current);
    FocusMayHaveChanged();
}

void LevelGrid::DataSetMoved(int level)
{
    if (changing_ > 0 || following_)
        return;
    if (std::exchange(settledAt_[level], NotSettled) != model_->DataSet(level)->RecNo())
        FollowDataSet(level);
}

void LevelGrid::FollowDataSet(int level)
{
    if (changing_ > 0 || following_)
        return;
    const QModelIndex moved = CurrentOf(level);
    if (!moved.isValid())
        return;
    const bool isAbove = IsFocusAtOrBelow(moved);
    const bool isBelow = model_->IsUnder(level, model_->RecNoOf(moved), currentIndex());
    if (!isAbove && !isBelow) {
        Reveal(moved);
        MoveView(moved);
    }
    AlignDataSets(currentIndex());
    FocusMayHaveChanged();
}

void LevelGrid::MoveView(const QModelIndex &index)
{
    const QScopedValueRollback guard(following_, true);
    const QModelIndex before = currentIndex();
    if (!index.isValid()) {
        selectionModel()->clear();
    } else if (!IsSameRow(index, before)) {
        setCurrentIndex(InColumn(index, before));
    } else if (!selectionModel()->isRowSelected(before.row(), before.parent())) {
        selectionModel()->select(before,
                                 QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
}

bool LevelGrid::CanMove(int level) const
{
    const ClientDataSet *dataSet = model_->DataSet(level);
    return dataSet && dataSet->IsActive() && !dataSet->ControlsDisabled() && !dataSet->IsEditing();
}

void LevelGrid::AlignDataSets(const QModelIndex &focused)
{
    const QScopedValueRollback guard(following_, true);
    const auto move = [this](int level, int recNo) {
        if (CanMove(level) && model_->DataSet(level)->RecNo() != recNo)
            model_->DataSet(level)->SetRecNo(recNo);
    };
    for (QModelIndex up = focused; up.isValid(); up = up.parent())
        move(model_->LevelOf(up), model_->RecNoOf(up));
    QModelIndex master = focused.siblingAtColumn(0);
    while (model_->rowCount(master) > 0 && master.isValid()) {
        const int level = model_->LevelOf(master);
        if (CurrentOf(level + 1).parent() != master)
            move(level + 1, model_->DetailRecNo(level, model_->RecNoOf(master), 0));
        master = CurrentOf(level + 1);
    }
}

void LevelGrid::FocusMayHaveChanged()
{
    if (std::exchange(focused_, MarkOf(currentIndex())) == focused_)
        return;
    ShowLevelMenu();
    if (takenApart_)
        return;
    if (GridLevel *level = FocusedLevel())
        emit level->RowFocused();
    emit FocusedRowChanged();
}

void LevelGrid::FocusRow(int level, int recNo)
{
    const QModelIndex row = model_->IndexOf(level, recNo);
    if (!row.isValid())
        return;
    Reveal(row);
    setCurrentIndex(InColumn(row, currentIndex()));
}

void LevelGrid::Reveal(const QModelIndex &index)
{
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        expand(up);
}

bool LevelGrid::IsFocusAtOrBelow(const QModelIndex &index) const
{
    for (QModelIndex up = currentIndex(); up.isValid(); up = up.parent()) {
        if (IsSameRow(up, index))
            return true;
    }
    return false;
}

QModelIndex LevelGrid::CurrentOf(int level) const
{
    const ClientDataSet *dataSet = level < levels_.size() ? model_->DataSet(level) : nullptr;
    return dataSet ? model_->IndexOf(level, dataSet->RecNo()) : QModelIndex();
}

LevelGrid::RowMark LevelGrid::MarkOf(const QModelIndex &index) const
{
    const int level = model_->LevelOf(index);
    if (level < 0)
        return {-1, ClientDataSet::NoBookmark};
    return {level, model_->DataSet(level)->BookmarkAt(model_->RecNoOf(index))};
}

QModelIndex LevelGrid::IndexOfMark(const RowMark &mark) const
{
    const auto [level, bookmark] = mark;
    const ClientDataSet *dataSet = level >= 0 ? model_->DataSet(level) : nullptr;
    if (!dataSet || !dataSet->BookmarkValid(bookmark))
        return {};
    int recNo = 0;
    while (dataSet->BookmarkAt(recNo) != bookmark)
        ++recNo;
    return model_->IndexOf(level, recNo);
}

/// The row itself, or the topmost of its masters that hides it.
QModelIndex LevelGrid::Visible(const QModelIndex &index) const
{
    QModelIndex visible = index;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent()) {
        if (!isExpanded(up))
            visible = up;
    }
    return visible;
}

} // namespace Qel
