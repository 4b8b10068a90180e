#pragma once

#include "dataset/ClientDataSet.h"
#include "remote/SoapCtrl.h"

#include <QIcon>
#include <QList>
#include <QString>

#include <memory>

class QWidget;

namespace Qel {

/// The one data module of the library: owns the remote data service, the shared styles and the
/// region cache, and gives every screen its look. Made when the library is loaded, freed when it
/// is detached; may exist before the application object does, so nothing of the user interface
/// or the network is made before it is used.
class TData_Module
{
public:
    TData_Module();
    ~TData_Module();
    Q_DISABLE_COPY_MOVE(TData_Module)

    void DataModuleCreate();  ///< makes the remote data service
    void DataModuleDestroy(); ///< frees it; a second call does nothing

    TSoapCtrl &SoapCtrl(); ///< raises if the service is not there

    ClientDataSet cdsTemp;     ///< work table of the region cache
    ClientDataSet cdsRegion;   ///< region list for screens that bind to it
    ClientDataSet cdsPurchase; ///< thirty declared fields, not filled here

    // --- The look ------------------------------------------------------------------------------
    /// Called by every screen when it is created: the form's font, then SetComponentStyle on every
    /// widget that the form owns.
    void SetFormStyle(QWidget *form);
    /// The settings of the first rule that the widget matches, then the same for its children.
    void SetComponentStyle(QWidget *component);
    /// Images for image combo boxes: 0 a grey dot (not in force), 1 a green one (in force).
    const QList<QIcon> &StateImages();
    /// One empty image: what an image combo box gets that has none.
    const QList<QIcon> &EmptyImage();

    // --- Regions -------------------------------------------------------------------------------
    /// Fills `target` with the region list, from the cache file if there is one, otherwise from
    /// the server, and then writes the file. `chinaOnly` keeps the rows with CHINA_FLAG "1".
    /// Raises what the query raises, and an error that names the file if it is damaged.
    void LoadRegions(ClientDataSet &target, bool chinaOnly);

    /// Where the cache file is, or will be written: QelData/QelRegion.dat under the application's
    /// folder, or under the user's data folder where that cannot be written.
    QString RegionCacheFile() const;

    /// Replaces the application's folder (for tests and portable set-ups).
    void SetApplicationFolder(const QString &folder) { applicationFolder_ = folder; }
    /// Replaces the user's data folder.
    void SetUserDataFolder(const QString &folder) { userDataFolder_ = folder; }

private:
    void FetchRegions(const QString &file);

    std::unique_ptr<TSoapCtrl> soapCtrl_;
    QString applicationFolder_;
    QString userDataFolder_;
    QList<QIcon> stateImages_;
    QList<QIcon> emptyImage_;
};

/// The data module. Made at the first call, by CreateDataModule at the latest.
TData_Module &DataModule();
void CreateDataModule();  ///< at library load
void DestroyDataModule(); ///< at detach; does nothing if there is none

} // namespace Qel
