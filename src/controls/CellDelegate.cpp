#include "controls/CellDelegate.h"

#include "controls/CurrencyEdit.h"
#include "controls/CurrencyText.h"
#include "controls/DataSetModel.h"
#include "controls/DateEdit.h"
#include "controls/ImageComboBox.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

GridEditor EditorOf(const QModelIndex &index)
{
    return GridEditor(index.data(EditorRole).toInt());
}

QStyle *StyleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

QRect TickRect(const QStyleOptionViewItem &option)
{
    const QStyle *style = StyleOf(option);
    const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, option.widget),
                     style->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, option.widget));
    return QStyle::alignedRect(option.direction, Qt::AlignCenter, size, option.rect);
}

/// The columns of the model, whichever of the two it is.
const QList<GridColumn> &ColumnsOf(const QAbstractItemModel *model)
{
    static const QList<GridColumn> none;
    const auto *table = qobject_cast<const DataSetModel *>(model);
    return table ? table->Columns() : none;
}

} // namespace

void CellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    if (EditorOf(index) != GridEditor::Check) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    item.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    item.text.clear();
    const QStyle *style = StyleOf(item);
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    QStyleOptionViewItem tick = item;
    tick.rect = TickRect(option);
    tick.state.setFlag(QStyle::State_HasFocus, false);
    tick.state.setFlag(QStyle::State_On, item.checkState == Qt::Checked);
    tick.state.setFlag(QStyle::State_Off, item.checkState != Qt::Checked);
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &tick, painter, item.widget);
}

QWidget *CellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const
{
    Q_UNUSED(option);
    const QList<GridColumn> &columns = ColumnsOf(index.model());
    const GridColumn column = columns.value(index.column());
    QWidget *editor = nullptr;
    switch (EditorOf(index)) {
    case GridEditor::None:
    case GridEditor::Check:
        return nullptr;
    case GridEditor::Text: {
        auto *edit = new QLineEdit(parent);
        edit->setFrame(false);
        if (const int size = index.data(FieldSizeRole).toInt(); size > 0)
            edit->setMaxLength(size);
        editor = edit;
        break;
    }
    case GridEditor::Combo: {
        auto *combo = new ImageComboBox(parent);
        combo->SetItems(column.values);
        // A choice is complete at once; it need not wait for the focus to go.
        connect(combo, &QComboBox::activated, this, [this, combo] {
            auto *self = const_cast<CellDelegate *>(this);
            emit self->commitData(combo);
            emit self->closeEditor(combo);
        });
        editor = combo;
        break;
    }
    case GridEditor::Date:
        editor = new DateEdit(parent);
        break;
    case GridEditor::Currency: {
        auto *edit = new CurrencyEdit(parent);
        edit->setFrame(false);
        editor = edit;
        break;
    }
    }
    editor->setObjectName(u"cellEditor"_s);
    editor->setAccessibleName(
        index.model()
            ->headerData(index.column(), Qt::Horizontal, Qt::AccessibleTextRole)
            .toString());
    return editor;
}

void CellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    const QString text = index.data(RawValueRole).toString();
    if (auto *combo = qobject_cast<ImageComboBox *>(editor)) {
        combo->SetEditValue(text);
    } else if (auto *date = qobject_cast<DateEdit *>(editor)) {
        date->SetDateText(text);
    } else if (auto *currency = qobject_cast<CurrencyEdit *>(editor)) {
        currency->SetValue(text);
        currency->selectAll();
    } else if (auto *edit = qobject_cast<QLineEdit *>(editor)) {
        edit->setText(text);
        edit->selectAll();
    }
}

void CellDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                const QModelIndex &index) const
{
    const QString before = index.data(RawValueRole).toString();
    QString text;
    if (auto *combo = qobject_cast<ImageComboBox *>(editor)) {
        text = combo->EditValue();
    } else if (auto *date = qobject_cast<DateEdit *>(editor)) {
        date->TakeTyped(); // the delegate hears of a lost focus before the editor does
        text = date->DateText();
    } else if (auto *currency = qobject_cast<CurrencyEdit *>(editor)) {
        text = currency->Value();
        if (!currency->IsChanged() || IsSameCurrency(text, before))
            return;
    } else if (auto *edit = qobject_cast<QLineEdit *>(editor)) {
        text = edit->text();
    }
    if (text != before)
        model->setData(index, text, Qt::EditRole);
}

bool CellDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                               const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (EditorOf(index) != GridEditor::Check)
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    if (!(model->flags(index) & Qt::ItemIsUserCheckable))
        return false;
    bool toggles = false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        // A finger's breadth around the tick counts, the rest of the cell only selects the row.
        toggles = mouse->button() == Qt::LeftButton &&
                  TickRect(option).adjusted(-4, -4, 4, 4).contains(mouse->position().toPoint());
        break;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent *>(event)->key();
        toggles = key == Qt::Key_Space || key == Qt::Key_Select;
        break;
    }
    default:
        break;
    }
    if (!toggles)
        return false;
    const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    model->setData(index, int(checked ? Qt::Unchecked : Qt::Checked), Qt::CheckStateRole);
    return true;
}

bool CellDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                             const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QRect room =
        StyleOf(item)->subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget);
    const int margin =
        StyleOf(item)->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, item.widget) + 1;
    const bool elided = item.fontMetrics.horizontalAdvance(item.text) > room.width() - 2 * margin;
    QToolTip::showText(event->globalPos(), elided ? item.text : QString(), view);
    return true;
}

} // namespace Qel
