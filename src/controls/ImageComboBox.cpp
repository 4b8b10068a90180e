#include "controls/ImageComboBox.h"

#include <QAbstractItemView>
#include <QScopedValueRollback>
#include <QStylePainter>
#include <QStyledItemDelegate>
#include <QWheelEvent>

namespace Qel {

namespace {

/// List lines of the combo's item height, or higher where the font needs it.
class LineDelegate : public QStyledItemDelegate
{
public:
    explicit LineDelegate(ImageComboBox *combo)
        : QStyledItemDelegate(combo)
        , combo_(combo)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width(), qMax(size.height(), combo_->ItemHeight())};
    }

private:
    const ImageComboBox *combo_;
};

} // namespace

ImageComboBox::ImageComboBox(QWidget *parent)
    : QComboBox(parent)
{
    setFocusPolicy(Qt::StrongFocus); // the wheel gives no focus
    setItemDelegate(new LineDelegate(this));
    connect(this, &QComboBox::currentIndexChanged, this, [this] { ReportChange(); });
}

QStringList ImageComboBox::Items() const
{
    QStringList items;
    for (int i = 0; i < count(); ++i)
        items.append(itemData(i).toString() + u'|' + itemText(i));
    return items;
}

void ImageComboBox::SetItems(const QStringList &items)
{
    SetItems(ParseValueList(items));
}

void ImageComboBox::SetItems(const ValueList &items)
{
    FillAnew(
        [&] {
            clear();
            for (const ValueItem &item : items)
                addItem(item.text, item.value);
        },
        EditValue());
}

void ImageComboBox::AddItem(const QString &value, const QString &text, const QIcon &icon)
{
    const int selected = currentIndex();
    const QScopedValueRollback guard(filling_, true);
    addItem(icon, text, value);
    setCurrentIndex(selected); // a first item would select itself
}

void ImageComboBox::ClearItems()
{
    choice_.reset();
    FillAnew([this] { clear(); }, {});
}

void ImageComboBox::FillAnew(const std::function<void()> &fill, const QString &value)
{
    const bool hadValue = currentIndex() >= 0 || choice_;
    {
        const QScopedValueRollback guard(filling_, true);
        fill();
        setCurrentIndex(hadValue ? IndexOf(value) : -1);
    }
    ReportChange();
}

int ImageComboBox::IndexOf(const QString &value) const
{
    return findData(value, Qt::UserRole, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

QString ImageComboBox::EditValue() const
{
    return currentIndex() < 0 && choice_ ? choice_->value : currentData().toString();
}

QString ImageComboBox::ShownText() const
{
    return currentIndex() < 0 && choice_ ? choice_->text : currentText();
}

void ImageComboBox::SetEditValue(const QString &value)
{
    Select(IndexOf(value), {});
}

void ImageComboBox::SetChoice(const QString &value, const QString &text)
{
    const int index = IndexOf(value);
    Select(index, index < 0 ? std::optional(ValueItem{value, text}) : std::nullopt);
}

void ImageComboBox::ClearSelection()
{
    Select(-1, {});
}

void ImageComboBox::Select(int index, const std::optional<ValueItem> &choice)
{
    choice_ = choice;
    setCurrentIndex(index);
    ReportChange(); // also where the index stayed
    update();
}

void ImageComboBox::SetItemHeight(int height)
{
    itemHeight_ = height;
    view()->doItemsLayout();
}

void ImageComboBox::showPopup()
{
    emit DroppingDown();
    QComboBox::showPopup();
    // Where nothing is selected, the base makes the first item current without showing it.
    if (currentIndex() < 0)
        view()->setCurrentIndex(model()->index(0, modelColumn()));
}

void ImageComboBox::ReportChange()
{
    if (filling_)
        return;
    if (currentIndex() >= 0)
        choice_.reset();
    const bool selected = currentIndex() >= 0 || choice_;
    if (selected == reportedSelected_ && EditValue() == reportedValue_)
        return;
    reportedSelected_ = selected;
    reportedValue_ = EditValue();
    emit EditValueChanged();
}

void ImageComboBox::paintEvent(QPaintEvent *event)
{
    if (currentIndex() >= 0 || !choice_)
        return QComboBox::paintEvent(event);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = choice_->text;
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void ImageComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore(); // the page behind scrolls
}

} // namespace Qel
