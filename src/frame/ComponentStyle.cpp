// The styling pass: what every kind of control gets, in one list of rules.

#include "frame/DataModule.h"

#include "controls/BandedGrid.h"
#include "controls/DataTree.h"
#include "controls/ImageComboBox.h"
#include "controls/LevelGrid.h"
#include "frame/GridStyles.h"
#include "remote/PageGuide.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStyledItemDelegate>
#include <QTabWidget>
#include <QTextEdit>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

// Heights in device-independent pixels; controls grow beyond them with a larger font.
constexpr int bandHeight = 22;
constexpr int headerHeight = 22;
constexpr int rowHeight = 20;
constexpr int itemHeight = 18;
constexpr int formPointSize = 9;

/// Gives the lines of a plain combo box's list their least height.
class ItemHeightDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const QSize hint = QStyledItemDelegate::sizeHint(option, index);
        return {hint.width(), std::max(option.fontMetrics.height(), itemHeight)};
    }
};

template <class View>
void StyleView(View &view, const GridSheet &sheet)
{
    view.setFrameShape(QFrame::NoFrame);
    view.SetHeaderHeight(headerHeight);
    view.SetRowHeight(rowHeight);
    view.ApplySheet(sheet);
}

void StyleSections(DataGrid &grid)
{
    grid.horizontalHeader()->setSectionsMovable(true);
    grid.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
}

void StyleBandedGrid(BandedGrid &grid, TData_Module &)
{
    StyleView(grid, BandTableSheet());
    StyleSections(grid);
    grid.SetBandHeight(bandHeight);
}

void StyleGrid(DataGrid &grid, TData_Module &)
{
    StyleView(grid, TableSheet());
    StyleSections(grid);
}

void StyleTree(DataTree &tree, TData_Module &)
{
    StyleView(tree, TreeListSheet());
    tree.SetLines(DataTree::TreeLines::Dotted);
    tree.SetLineColor({}); // the default colour
    tree.header()->setSectionsMovable(true);
}

void StyleLevelGrid(LevelGrid &grid, TData_Module &)
{
    StyleView(grid, TableSheet());
    grid.header()->setSectionsMovable(true);
}

void StyleTabs(QTabWidget &tabs, TData_Module &)
{
    tabs.setTabShape(QTabWidget::Rounded); // no slanted edges
    tabs.setDocumentMode(true);            // flat: no frame around the pages
}

void StyleEditor(QWidget &editor, TData_Module &)
{
    editor.setFont(SongFont());
}

void StyleMemo(QFrame &memo, TData_Module &module)
{
    StyleEditor(memo, module);
    memo.setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
}

void StyleImageCombo(ImageComboBox &combo, TData_Module &module)
{
    StyleEditor(combo, module);
    combo.SetItemHeight(itemHeight);
    const QIcon &blank = module.EmptyImage().first();
    bool hasImages = false;
    for (int item = 0; item < combo.count(); ++item)
        hasImages = hasImages || !combo.itemIcon(item).isNull();
    for (int item = 0; item < combo.count() && !hasImages; ++item)
        combo.setItemIcon(item, blank);
    if (!hasImages)
        combo.setIconSize(blank.availableSizes().first());
}

void StyleCombo(QComboBox &combo, TData_Module &module)
{
    StyleEditor(combo, module);
    combo.setItemDelegate(new ItemHeightDelegate(&combo));
    if (combo.isEditable())
        combo.setCompleter(nullptr); // no incremental search
}

void StyleButton(QAbstractButton &button, TData_Module &)
{
    button.setStyle(nullptr); // the platform's
}

void StylePageGuide(TPageGuide &bar, TData_Module &)
{
    bar.Reset();
    bar.SetPageSizeSet(u"50,100,200"_s);
    bar.SetPageSize(50);
    bar.SetShowAllLimit(1000);
}

/// Applies `style` if the widget is of its kind, and says so.
template <class Widget, auto style>
bool Rule(QWidget *component, TData_Module &module)
{
    auto *widget = qobject_cast<Widget *>(component);
    if (widget)
        style(*widget, module);
    return widget;
}

// The first rule that matches, and no other: derived kinds stand before their base.
constexpr bool (*rules[])(QWidget *, TData_Module &) = {
    Rule<BandedGrid, StyleBandedGrid>,
    Rule<DataGrid, StyleGrid>,
    Rule<DataTree, StyleTree>,
    Rule<LevelGrid, StyleLevelGrid>,
    Rule<QTabWidget, StyleTabs>,
    Rule<ImageComboBox, StyleImageCombo>,
    Rule<QComboBox, StyleCombo>,
    Rule<QLineEdit, StyleEditor>, // date and button edits too; a date edit is masked by itself
    Rule<QAbstractSpinBox, StyleEditor>,
    Rule<QPlainTextEdit, StyleMemo>,
    Rule<QTextEdit, StyleMemo>,
    Rule<QAbstractButton, StyleButton>,
    Rule<TPageGuide, StylePageGuide>,
};

template <class Each>
void ForOwnedWidgets(const QWidget *owner, Each each)
{
    const auto owned = owner->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *child : owned)
        each(child);
}

} // namespace

void TData_Module::SetFormStyle(QWidget *form)
{
    form->setFont(SongFontInPoints(formPointSize));
    ForOwnedWidgets(form, [this](QWidget *owned) { SetComponentStyle(owned); });
}

void TData_Module::SetComponentStyle(QWidget *component)
{
    std::any_of(std::begin(rules), std::end(rules),
                [&](auto rule) { return rule(component, *this); });
    ForOwnedWidgets(component, [this](QWidget *owned) { SetComponentStyle(owned); });
}

} // namespace Qel
