#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmTraBuyCatalogEdit;
}

/// Creates drug stores of an organisation, one after another, or renames one. A new one is
/// appended to the opener's table and the dialog waits, emptied, for the next; it is left with
/// Cancel. Renaming closes with Ok, and the opener takes the name over.
class TFrmTraBuyCatalogEdit : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmTraBuyCatalogEdit(QWidget *owner = nullptr);
    ~TFrmTraBuyCatalogEdit() override;

    /// Where new drug stores are appended; it is created if it is not open. Not owned. Without
    /// one the first that is stored closes the dialog with Ok.
    void SetDataSet(ClientDataSet *dataSet) { catalogs_ = dataSet; }
    void SetEditMode(bool edit) { isEdit_ = edit; } ///< no: new
    void SetCatalogId(const QString &id) { catalogId_ = id; }
    void SetBuyOrgId(const QString &id) { buyOrgId_ = id; }
    void SetName(const QString &name);
    QString Name() const; ///< trimmed

protected:
    void FormShow() override;

private:
    void ActionSaveExecute();

    void StartNext();
    void AppendCatalog();

    std::unique_ptr<Ui::TFrmTraBuyCatalogEdit> ui_;
    ClientDataSet *catalogs_ = nullptr;
    bool isEdit_ = false;
    QString catalogId_;
    QString buyOrgId_;
};

} // namespace Qel
