#include "screens/walk/FormRules.h"

#include "controls/ButtonEdit.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QToolButton>

#include <algorithm>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

bool IsOneOf(const QWidget &widget, const std::initializer_list<const QMetaObject *> classes)
{
    return std::any_of(classes.begin(), classes.end(), [&widget](const QMetaObject *wanted) {
        return widget.metaObject()->inherits(wanted);
    });
}

/// One thing to the user, whatever it is made of.
bool IsClosed(const QWidget &widget)
{
    return IsOneOf(widget, {&QAbstractItemView::staticMetaObject, &QPlainTextEdit::staticMetaObject,
                            &QTextEdit::staticMetaObject, &QComboBox::staticMetaObject,
                            &QAbstractSpinBox::staticMetaObject, &QTabBar::staticMetaObject});
}

void AddShown(const QWidget &parent, QList<QWidget *> &found)
{
    for (QObject *child : parent.children()) {
        auto *widget = qobject_cast<QWidget *>(child);
        if (!widget || widget->isWindow() || !widget->isVisible())
            continue;
        found << widget;
        if (!IsClosed(*widget))
            AddShown(*widget, found);
    }
}

/// Runs `visit` with each page of each tab widget in front once; at least once.
void OnEveryPage(QWidget &form, const std::function<void()> &visit)
{
    visit();
    const auto tabWidgets = form.findChildren<QTabWidget *>();
    for (QTabWidget *tabs : tabWidgets) {
        const int front = tabs->currentIndex();
        for (int page = 0; page < tabs->count(); ++page) {
            if (page == front || !tabs->isTabVisible(page))
                continue;
            tabs->setCurrentIndex(page);
            QCoreApplication::processEvents();
            visit();
        }
        tabs->setCurrentIndex(front);
        QCoreApplication::processEvents();
    }
}

} // namespace

QList<QWidget *> ShownControls(const QWidget &parent)
{
    QList<QWidget *> found;
    AddShown(parent, found);
    return found;
}

bool IsComposite(const QWidget &widget)
{
    return IsClosed(widget) ||
           IsOneOf(widget, {&QAbstractScrollArea::staticMetaObject, &QLineEdit::staticMetaObject,
                            &QTabWidget::staticMetaObject, &QStackedWidget::staticMetaObject,
                            &QSplitter::staticMetaObject, &QAbstractButton::staticMetaObject});
}

bool OffersButtons(const QWidget &widget)
{
    if (!qobject_cast<const ButtonEdit *>(&widget))
        return false;
    const auto buttons = widget.findChildren<QToolButton *>();
    return std::any_of(buttons.begin(), buttons.end(), [&widget](const QToolButton *button) {
        return button->isEnabledTo(&widget);
    });
}

QString NameOf(const QWidget &widget)
{
    if (const QString name = widget.objectName(); !name.isEmpty())
        return name;
    for (const char *property : {"text", "title"}) {
        if (const QString text = widget.property(property).toString(); !text.isEmpty())
            return text;
    }
    return QString::fromLatin1(widget.metaObject()->className());
}

QStringList FormFaults(QWidget &form)
{
    QStringList faults = DefaultFocusFaults(form) + FocusChainFaults(form);
    OnEveryPage(form, [&] {
        faults << ClippedTexts(form) << MisplacedControls(form) << TabOrderFaults(form)
               << KeysUsedTwice(form) << UnhandledButtons(form);
    });
    form.resize(form.minimumSizeHint().expandedTo(form.minimumSize()));
    QCoreApplication::processEvents();
    QStringList narrow;
    OnEveryPage(form, [&] { narrow << ClippedTexts(form) << MisplacedControls(form); });
    for (const QString &fault : std::as_const(narrow)) {
        if (!faults.contains(fault))
            faults << fault + u" (at its least size)"_s;
    }
    faults.removeDuplicates();
    return faults;
}

} // namespace Qel::Test
