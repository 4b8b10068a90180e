#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmSysAfficheEdit;
}

/// An announcement as the editor's boxes hold it.
struct TAffiche
{
    QString id;    ///< empty for a new one
    QString start; ///< a date; what is shown is yyyy-MM-dd, empty when the box is empty
    QString end;
    QString title;
    QString content;
    QString publicFlag; ///< "1" or "0", like the two below
    QString salerFlag;
    QString buyerFlag;
    QString unionId; ///< the receiving group
    QString unionName;
};

/// The announcement in the table's current row.
TAffiche AfficheOfCurrentRow(const ClientDataSet &affiches);

/// What the announcement's row in the list takes over. Without an end the row keeps the one that it
/// has, and whoever saved it is shown as the creator.
Wire::NamedValues ShownValues(const TAffiche &affiche);

/// The groups that a user may address.
QString AfficheUnionsSql(const QString &userId);

/// Writes announcements. A stored one is unpublished, whatever it was before.
class TFrmSysAfficheEdit : public TFrmBaseForm
{
    Q_OBJECT

public:
    /// Mode Insert: each stored announcement is appended to `target`, which is created if it is not
    /// open, the boxes are emptied and the dialog stays for the next one; it closes with Cancel.
    /// Without a target it closes with Ok after the first.
    TFrmSysAfficheEdit(QWidget *owner, ClientDataSet *target);
    /// Mode Edit: changes one. Ok: it is stored as Affiche() says.
    TFrmSysAfficheEdit(QWidget *owner, const TAffiche &affiche);
    ~TFrmSysAfficheEdit() override;

    int AddedCount() const { return addedCount_; } ///< announcements appended to the target
    TAffiche Affiche() const;                      ///< as the boxes hold it; the title trimmed

protected:
    void FormShow() override;

private:
    enum class Mode { Insert, Edit };

    TFrmSysAfficheEdit(QWidget *owner, Mode mode, const QString &id, ClientDataSet *target);

    void ActionSaveExecute();
    void edUnionInitPopup();

    void ClearBoxes();
    void FocusFirstBox();
    bool InputIsComplete(const TAffiche &affiche);
    QString Store(const TAffiche &affiche); ///< the answer's code
    void AppendToTarget(const TAffiche &affiche);

    std::unique_ptr<Ui::TFrmSysAfficheEdit> ui_;
    const Mode mode_;
    const QString id_;
    ClientDataSet *const target_;
    int addedCount_ = 0;
};

} // namespace Qel
