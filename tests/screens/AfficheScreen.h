#pragma once

#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "controls/ImageComboBox.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"
#include "screens/SysAffiche.h"

#include <QPointer>

namespace Qel::Test {

/// The announcements 9001 (published), 9002 and 9003 (not), as the server gives them: dates are
/// dates, 9003 has no end.
RowSet Affiches();
RowSet NoAffiches();
/// The groups 11 and 12.
RowSet AfficheUnions();

/// The announcement screen, shown, and a server that knows three of 120 announcements. Questions
/// are answered with their default button.
class AfficheScreen : public ScreenFixture
{
public:
    AfficheScreen();
    ~AfficheScreen();

    void AnswerQueries(const RowSet &rows, qint64 total = -1);
    void AnswerPost(const QString &method, const QString &code,
                    const Wire::NamedValues &values = {});
    /// Queries and goes to a row; without one it stays on the first.
    void Query(int recNo = 0);
    void SetDates(const QDate &start, const QDate &end); ///< invalid: empty
    /// Presses a button or key that opens a dialog and runs `visit` in it, which closes it.
    void InDialog(const std::function<void()> &open, const std::function<void(QWidget *)> &visit);

    DataGrid &Grid() const;
    ClientDataSet &Listed() const;
    TPageGuide &Pages() const;
    QString Enabled() const; ///< of New Modify Delete Check Log, by these words
    QStringList CurrentRow(const QStringList &fields) const;

    QPointer<TFrmSysAffiche> form; ///< null once it has freed itself
};

/// Fills the editor's boxes; `end` may be empty.
void FillEditor(QWidget *editor, const QString &start, const QString &end, const QString &title,
                const QString &content, int union_);

} // namespace Qel::Test
