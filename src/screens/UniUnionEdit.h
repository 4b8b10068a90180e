#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUnionEdit;
}

/// The statement that asks for the next free code below `parentId`; at top level it is not used.
namespace UniUnionCode {
QString Query(bool topLevel, const QString &parentId);
} // namespace UniUnionCode

/// What the group editor is opened with.
struct TUnionHandOver
{
    enum class Mode { Insert, Modify };

    Mode mode = Mode::Insert;
    QString unionId;  ///< empty for a new group
    QString parentId; ///< empty at top level
    QString parentCode;
    QString parentName;
    // In mode Modify the group as it is:
    QString code; ///< its own segment
    QString name;
    QString type;
    QString regionId;
    QString regionName;
    QString masterOrgId;
    QString masterOrgName;
    QString remark;
};

/// The hand-over for a new group below the one in the table's current row.
TUnionHandOver ChildOfCurrentRow(const ClientDataSet &unions);

/// The hand-over for changing the group in the table's current row. The parent's name is taken
/// from the table, if it holds the parent.
TUnionHandOver UnionOfCurrentRow(const ClientDataSet &unions);

/// Creates or changes one purchasing group. Set up with the hand-over and the group tree's table,
/// show modally: on Ok the group is stored and the table holds its row.
class TFrmUniUnionEdit : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUniUnionEdit(QWidget *owner, ClientDataSet &unions, const TUnionHandOver &handOver);
    ~TFrmUniUnionEdit() override;

protected:
    void FormShow() override;

private:
    void BtnSaveClick();

    bool IsTopLevel() const { return handOver_.parentCode.isEmpty(); }
    bool InputIsComplete();
    Wire::NamedValues PostedValues() const;
    void StoreInTable(const Wire::NamedValues &posted);

    std::unique_ptr<Ui::TFrmUniUnionEdit> ui_;
    ClientDataSet &unions_;
    TUnionHandOver handOver_;
};

} // namespace Qel
