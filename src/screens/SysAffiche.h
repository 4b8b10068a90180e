#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <QDateTime>

#include <memory>

namespace Qel {

namespace Ui {
class TFrmSysAffiche;
}

/// Which announcements are listed.
struct TAfficheFilter
{
    QString userId = {};  ///< only those to his groups
    QDateTime start = {}; ///< of the range in which they were created; invalid: open
    QDateTime end = {};
    QString audienceText = {};  ///< the audience's caption; "全部" adds no condition
    QString audienceValue = {}; ///< its value: 0 public, 1 buyers, 2 sellers
    QString title = {};         ///< part of it
};

/// The announcements to a user's groups, newest first.
QString AffichesSql(const TAfficheFilter &filter);

/// Announcement management: the announcements to the operator's groups, page by page, the way to
/// the editor, publishing, and who did what to one.
///
/// After a change the list shows what the operator did, not what the server made of it: a published
/// announcement that was modified is unpublished there and goes on as published here until the
/// next query.
class TFrmSysAffiche : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmSysAffiche(QWidget *owner = nullptr);
    ~TFrmSysAffiche() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void ActionNewExecute();
    void ActionModifyExecute();
    void ActionDeleteExecute();
    void ActionCheckExecute();
    void ActionLogExecute();
    void gridMasterViewKeyPress();

    void UpdateActions();

    std::unique_ptr<Ui::TFrmSysAffiche> ui_;
    ClientDataSet cdsMaster;
};

} // namespace Qel
