#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmMrgOrgAffiliationEdit;
}

namespace AffiliationCode {
/// The statement that asks for the next free code at the top, or below `parentOrgId`.
QString Query(bool topLevel, const QString &parentOrgId);
/// TREE_LEVEL of a whole code: "1" to "5"; "0" for one that has no length of a code.
QString Level(const QString &code);
} // namespace AffiliationCode

/// One organisation's place in the tree, as the editor takes it and leaves it.
struct TAffiliation
{
    enum class Mode { Insert, Modify };

    Mode mode = Mode::Insert;
    QString parentOrgId = {}; ///< empty at the top
    QString parentCode = {};
    QString parentName = {};
    // In mode Modify:
    QString id = {};
    QString orgId = {};
    QString orgName = {};
    QString orgAbbr = {};
    QString code = {};      ///< its own part
    bool codeFixed = false; ///< others stand below it
};

/// Places organisations in the tree: one after the other below the same superior (Insert; each
/// that is stored is appended to `list`), or changes the place of one (Modify; closes with Ok and
/// Place() says what was stored).
class TFrmMrgOrgAffiliationEdit : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmMrgOrgAffiliationEdit(QWidget *owner, ClientDataSet &list, const TAffiliation &place);
    ~TFrmMrgOrgAffiliationEdit() override;

    const TAffiliation &Place() const { return place_; }

protected:
    void FormShow() override;

private:
    void BtnSaveClick();
    void PickOrganisation();

    bool IsTopLevel() const { return place_.parentCode.isEmpty(); }
    void SetOwnCode(const QString &code);
    void ProposeCode();
    void RejectIllegalCode();
    bool InputIsComplete();
    void AppendToList();

    std::unique_ptr<Ui::TFrmMrgOrgAffiliationEdit> ui_;
    ClientDataSet &list_;
    TAffiliation place_;
};

} // namespace Qel
