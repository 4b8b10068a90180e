#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniProduct;
}

/// What the lists of the catalogue are narrowed by; every text may be empty.
struct TProductFilter
{
    QString information; ///< code, name, trade name or their initials
    QString factory;
    // Of catalogue rows; candidates have no status.
    QString statusText = {};  ///< the state's caption; "全部" adds no condition
    QString statusValue = {}; ///< its value
};

/// The statements of the catalogue; values are quoted here.
namespace UniProductSql {
QString Catalogue(const QString &unionId, const TProductFilter &filter);
QString Candidates(const QString &unionId, const TProductFilter &filter);
} // namespace UniProductSql

/// A group's product catalogue: on one tab the products that belong to it, on the other the
/// enabled products that do not; ticked ones are moved out and in. Made with `new` by its opener
/// and shown modally, it frees itself when it is closed: the opener does not.
class TFrmUniProduct : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUniProduct(QWidget *owner, const QString &unionId);
    ~TFrmUniProduct() override;

    /// The open instance; null when there is none, or none any more.
    static TFrmUniProduct *Instance();

protected:
    void FormShow() override;
    void closeEvent(QCloseEvent *event) override;

private:
    void PageGuide1ChangePage();
    void PageGuide2ChangePage();
    void ActionDeleteExecute();
    void ActionNewExecute();
    void ActionLogExecute();

    void UpdateInActions();
    void UpdateOutActions();

    std::unique_ptr<Ui::TFrmUniProduct> ui_;
    ClientDataSet cdsIn;
    ClientDataSet cdsOut;
    QString unionId_;
};

} // namespace Qel
