#include "screens/walk/FormRules.h"

#include "controls/ButtonEdit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOption>
#include <QTabBar>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr int HeaderPadding = 4;   // beside a column's caption, each side
constexpr int EditPadding = 2;     // that an edit keeps free beside its text, each side
constexpr int TabPadding = 4;      // each side
constexpr int LeastCharacters = 2; // that an edit has to show beside its buttons

QString Size(const QSize &size)
{
    return u"%1 x %2"_s.arg(size.width()).arg(size.height());
}

/// The faults of one form, as they are found.
class Texts
{
public:
    void Compare(const QWidget &widget, const QString &text, const QSize &need, const QSize &room)
    {
        if (need.width() > room.width() || need.height() > room.height())
            faults_ << u"%1: \"%2\" needs %3 and has %4"_s.arg(NameOf(widget), text, Size(need),
                                                               Size(room));
    }

    /// A text in one line, in the widget's own font. Its height is that of its characters: what
    /// the font keeps free above and below may be cut off.
    void Line(const QWidget &widget, const QString &text, const QSize &room)
    {
        if (text.isEmpty())
            return;
        const QFontMetrics metrics = widget.fontMetrics();
        Compare(widget, text,
                {metrics.size(Qt::TextShowMnemonic, text).width(),
                 metrics.tightBoundingRect(text).height()},
                room);
    }

    const QStringList &Faults() const { return faults_; }

private:
    QStringList faults_;
};

void LookAt(const QLabel &label, Texts &texts)
{
    QSize room = label.contentsRect().size();
    room -= 2 * QSize(label.margin(), label.margin());
    if (label.wordWrap())
        texts.Compare(label, label.text(), {0, label.heightForWidth(label.width())}, label.size());
    else if (Qt::mightBeRichText(label.text()))
        texts.Compare(label, label.text(), label.sizeHint(), label.size());
    else
        texts.Line(label, label.text(), room);
}

/// Push buttons, boxes to tick and radio buttons: the style says where the contents go.
void LookAt(const QAbstractButton &button, QStyle::SubElement contents, Texts &texts)
{
    QStyleOptionButton option;
    option.initFrom(&button);
    option.text = button.text();
    option.icon = button.icon();
    option.iconSize = button.iconSize();
    QSize room = button.style()->subElementRect(contents, &option, &button).size();
    if (!button.icon().isNull())
        room.rwidth() -= button.iconSize().width() + 4;
    texts.Line(button, button.text(), room);
}

void LookAt(const QToolButton &button, Texts &texts)
{
    const bool shown = button.toolButtonStyle() != Qt::ToolButtonIconOnly || button.icon().isNull();
    if (shown && button.arrowType() == Qt::NoArrow)
        texts.Line(button, button.text(), button.size() - QSize(2, 2));
}

void LookAt(const QGroupBox &box, Texts &texts)
{
    if (!box.title().isEmpty())
        texts.Line(box, box.title(), {box.contentsRect().width(), box.height()});
}

void LookAt(const QTabBar &bar, Texts &texts)
{
    for (int tab = 0; tab < bar.count(); ++tab) {
        if (!bar.isTabVisible(tab))
            continue;
        const QRect seen = bar.tabRect(tab) & bar.rect();
        texts.Line(bar, bar.tabText(tab), seen.size() - QSize(2 * TabPadding, 0));
    }
}

void LookAt(const QHeaderView &header, Texts &texts)
{
    for (int column = 0; column < header.count(); ++column) {
        if (header.isSectionHidden(column))
            continue;
        const QString caption =
            header.model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        texts.Line(*header.parentWidget(), caption,
                   {header.sectionSize(column) - 2 * HeaderPadding, header.height()});
    }
}

void LookAt(const QComboBox &combo, Texts &texts)
{
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    option.editable = combo.isEditable();
    option.frame = combo.hasFrame();
    QSize room =
        combo.style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &combo)
            .size();
    for (int item = 0; item < combo.count(); ++item) {
        QSize forText = room;
        if (!combo.itemIcon(item).isNull())
            forText.rwidth() -= combo.iconSize().width() + 4;
        texts.Line(combo, combo.itemText(item), forText);
    }
}

void LookAt(const QLineEdit &edit, Texts &texts)
{
    QStyleOptionFrame option;
    option.initFrom(&edit);
    option.lineWidth = edit.hasFrame()
                           ? edit.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &edit)
                           : 0;
    QRect room = edit.style()->subElementRect(QStyle::SE_LineEditContents, &option, &edit);
    room = room.marginsRemoved(edit.textMargins()).adjusted(EditPadding, 0, -EditPadding, 0);
    if (!edit.inputMask().isEmpty())
        texts.Line(edit, edit.displayText(), room.size());
    texts.Line(edit, edit.placeholderText(), room.size());
    const auto *withButtons = qobject_cast<const ButtonEdit *>(&edit);
    if (withButtons && !withButtons->Buttons().isEmpty())
        texts.Line(edit, QString(LeastCharacters, u'国'), room.size());
}

void LookAt(const QWidget &widget, Texts &texts)
{
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        LookAt(*label, texts);
    else if (const auto *push = qobject_cast<const QPushButton *>(&widget))
        LookAt(*push, QStyle::SE_PushButtonContents, texts);
    else if (const auto *check = qobject_cast<const QCheckBox *>(&widget))
        LookAt(*check, QStyle::SE_CheckBoxContents, texts);
    else if (const auto *radio = qobject_cast<const QRadioButton *>(&widget))
        LookAt(*radio, QStyle::SE_RadioButtonContents, texts);
    else if (const auto *tool = qobject_cast<const QToolButton *>(&widget))
        LookAt(*tool, texts);
    else if (const auto *box = qobject_cast<const QGroupBox *>(&widget))
        LookAt(*box, texts);
    else if (const auto *tabs = qobject_cast<const QTabBar *>(&widget))
        LookAt(*tabs, texts);
    else if (const auto *table = qobject_cast<const QTableView *>(&widget))
        LookAt(*table->horizontalHeader(), texts);
    else if (const auto *tree = qobject_cast<const QTreeView *>(&widget))
        LookAt(*tree->header(), texts);
    else if (const auto *combo = qobject_cast<const QComboBox *>(&widget))
        LookAt(*combo, texts);
    else if (const auto *edit = qobject_cast<const QLineEdit *>(&widget))
        LookAt(*edit, texts);
}

} // namespace

QStringList ClippedTexts(const QWidget &form)
{
    Texts texts;
    for (const QWidget *widget : ShownControls(form))
        LookAt(*widget, texts);
    return texts.Faults();
}

} // namespace Qel::Test
