#include "screens/ScreenFixture.h"

#include "frame/DataModule.h"
#include "frame/LibrarySide.h"
#include "support/Service.h"

#include <QDir>
#include <QFile>
#include <QPointer>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

/// Every text of every file in the folder; a name that two files give ends the test.
QHash<QString, QString> ReadExpected()
{
    QHash<QString, QString> texts;
    const QDir folder(QStringLiteral(QEL_SCREEN_TEST_DATA));
    for (const QString &name : folder.entryList({u"*.txt"_s})) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            FailTest(u"cannot read "_s + file.fileName());
        const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
        for (const QString &line : lines) {
            const qsizetype quote = line.indexOf(u'"');
            if (quote <= 0 || line.startsWith(u'#'))
                continue;
            const QString key = line.left(quote).trimmed();
            if (texts.contains(key))
                FailTest(u"two expected texts "_s + key);
            texts.insert(key, line.mid(quote + 1).chopped(1));
        }
    }
    return texts;
}

template <typename View>
QStringList Columns(const View &view, const QStringList &lines)
{
    QStringList columns;
    for (const GridColumn &column : ParseGridColumns(lines))
        columns << column.field + u' ' + column.caption +
                       (view.IsColumnVisible(column.field) ? u""_s : u" hidden"_s);
    return columns;
}

QString Name(TBoxIcon icon)
{
    constexpr const char *Names[]{"Information", "Warning", "Error", "Question"};
    return QString::fromLatin1(Names[int(icon)]);
}

QString Name(TBoxButton button)
{
    constexpr const char *Names[]{"Ok", "Yes", "No"};
    return QString::fromLatin1(Names[int(button)]);
}

} // namespace

QString Expected(const QString &name)
{
    static const QHash<QString, QString> texts = ReadExpected();
    if (!texts.contains(name))
        FailTest(u"no expected text "_s + name);
    return texts.value(name);
}

QString RowText(const Wire::NamedValues &row)
{
    QStringList pairs;
    for (const auto &[name, value] : row)
        pairs << name + u'=' + value;
    return pairs.join(u'|');
}

QStringList RowTexts(const QList<Wire::NamedValues> &rows)
{
    QStringList texts;
    for (const Wire::NamedValues &row : rows)
        texts << RowText(row);
    return texts;
}

QString BoxText(const TMessageBox &box)
{
    return QStringList{Name(box.icon), box.caption, box.text, Name(box.defaultButton)}.join(u'|');
}

ScreenFixture::ScreenFixture()
{
    DataModule().SetCacheFolders(folder_.path(), folder_.path());
    UseServer(DataModule().SoapCtrl(), server.Url());
    TRunParam operator_;
    operator_.UserId = u"700001"_s;
    operator_.UserCode = u"wangmin"_s;
    operator_.UserName = u"王敏"_s;
    SetRunParam(operator_);
}

ScreenFixture::~ScreenFixture()
{
    if (!server.Unexpected().isEmpty())
        QTest::qFail(qPrintable(u"unexpected: "_s + server.Unexpected().join(u" / "_s)), __FILE__,
                     __LINE__);
}

QStringList ScreenFixture::Boxes() const
{
    QStringList texts;
    for (const TMessageBox &box : hook.Boxes())
        texts << BoxText(box);
    return texts;
}

QStringList ScreenFixture::DisabledAtRequests(const QWidget &form, const QStringList &names,
                                              const std::function<void()> &run)
{
    const auto isEnabled = [&](const QString &name) {
        const auto *action = form.findChild<QAction *>(name);
        return action ? action->isEnabled() : Child<QWidget>(&form, name)->isEnabled();
    };
    QStringList disabled;
    const QObject whileItRuns;
    QObject::connect(&server, &ScriptedServer::RequestArrived, &whileItRuns, [&] {
        std::ranges::remove_copy_if(names, std::back_inserter(disabled), isEnabled);
    });
    run();
    for (const QString &name : names) {
        if (!isEnabled(name))
            FailTest(name + u" is still disabled"_s);
    }
    return disabled;
}

void ShowScreen(QWidget &screen)
{
    screen.show();
    screen.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&screen));
    QCoreApplication::processEvents();
}

QString FocusName(const QWidget &form)
{
    return form.focusWidget() ? form.focusWidget()->objectName() : QString();
}

QString Caption(const QWidget &form, const QString &name)
{
    return Child<QWidget>(&form, name)->property("text").toString();
}

void ClickCell(DataGrid &grid, int row, QStringView field)
{
    const QModelIndex cell = grid.model()->index(row, grid.ColumnIndex(field));
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
}

void Tick(DataGrid &grid, const QList<int> &rows)
{
    for (const int row : rows)
        ClickCell(grid, row, u"SELECTED");
}

QStringList ColumnsOf(const DataGrid &grid)
{
    return Columns(grid, grid.Columns());
}

QStringList ColumnsOf(const DataTree &tree)
{
    return Columns(tree, tree.Columns());
}

QStringList CellTexts(const ClientDataSet &rows, QStringView field)
{
    QStringList texts;
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo)
        texts << rows.TextAt(recNo, field);
    return texts;
}

QList<Wire::ResultRow> ResultRows(const QString &key, const QStringList &rows)
{
    QList<Wire::ResultRow> results;
    for (const QString &row : rows)
        results << Wire::ResultRow{row.section(u' ', 0, 0), {{key, row.section(u' ', 1)}}};
    return results;
}

TModalResult ShowModally(TFrmBaseForm &form, const std::function<void(QWidget *dialog)> &visit)
{
    ModalVisitor visitor([&visit](QWidget *dialog) {
        const QPointer<QWidget> open(dialog);
        visit(dialog);
        if (open && open->isVisible())
            open->close();
    });
    return form.ShowModal();
}

const QStringList &UnionColumns()
{
    static const QStringList columns{
        u"UNION_ID"_s,  u"PARENT_ID"_s,    u"UNION_CODE"_s, u"UNION_NAME"_s,  u"UNION_TYPE"_s,
        u"REGION_ID"_s, u"MASTER_ORGID"_s, u"REMARK"_s,     u"REGION_NAME"_s, u"MASTER_ORGNAME"_s};
    return columns;
}

} // namespace Qel::Test
