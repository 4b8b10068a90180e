#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUserAdd;
}

/// Which users are listed as candidates for a group.
struct TUserFilter
{
    QString unionId;   ///< the group; its users are left out
    QString org;       ///< in the organisation's name, short name or initials
    QString user;      ///< in the user's code or name
    QString typeText;  ///< the kind's caption; "全部" adds no condition
    QString typeValue; ///< its value
};

/// The enabled users of live, enabled organisations who are not, or no longer, assigned to the
/// group. Without an ORDER BY: the server gives its pages an order of its own.
QString CandidateUsersSql(const TUserFilter &filter);

/// Moves users into a group: a paged list of candidates in which the operator ticks several.
/// Create with the opener's user list, set UnionId and UnionName, show modally. What the server
/// accepts goes from the candidates into that list, row by row up to the first refusal, whatever
/// the result of the dialog: Ok says that all were accepted. Only the page on screen can be
/// ticked; another page drops the ticks.
class TFrmUniUserAdd : public TFrmBaseForm
{
    Q_OBJECT

public:
    /// `targetUsers` outlives the dialog. If it is empty at the first answer, it is built anew:
    /// USER_ID, UNION_ID, USER_CODE, USER_NAME, ENABLE_FLAG, REMARK, ORG_NAME.
    TFrmUniUserAdd(QWidget *owner, ClientDataSet &targetUsers);
    ~TFrmUniUserAdd() override;

    QString UnionId;
    QString UnionName; ///< for the messages

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void btnSelectClick();

    bool TakeAcceptedUsers();

    std::unique_ptr<Ui::TFrmUniUserAdd> ui_;
    ClientDataSet &TargetUsers;
    ClientDataSet cdsQuery;
};

} // namespace Qel
