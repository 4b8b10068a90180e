#pragma once

#include "dataset/ClientDataSet.h"
#include "remote/SoapCtrl.h"

#include <QIcon>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QWidget;

namespace Qel {

/// The one data module of the library: owns the remote data service, the region cache and the
/// shared images, and gives every screen its look (colours: GridStyles.h). Made when the library
/// is loaded, which may be before the application object exists: nothing of the user interface or
/// the network is made before it is used.
class TData_Module
{
public:
    TData_Module();
    ~TData_Module();
    Q_DISABLE_COPY_MOVE(TData_Module)

    void DataModuleCreate();  ///< makes the remote data service, if there is none
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
    /// One blank image: what the items of an image combo box get that has none.
    const QList<QIcon> &EmptyImage();

    // --- Regions -------------------------------------------------------------------------------
    /// Fills `target` with the region list: from the cache file if there is one, otherwise from
    /// the server, and then writes the file. `chinaOnly` keeps the rows with CHINA_FLAG "1".
    /// Raises what the query raises, and an error that names the file if it is damaged or cannot
    /// be written. The file is never refreshed: deleting it fetches anew.
    void LoadRegions(ClientDataSet &target, bool chinaOnly);

    /// QelData/QelRegion.dat under the application's folder or, where that cannot be written,
    /// under the user's data folder. Empty if there is neither yet.
    QString RegionCacheFile() const;

    /// Takes other folders than the executable's and the user's data folder.
    void SetCacheFolders(const QString &application, const QString &user);

private:
    void FetchRegions();
    QString MakeCacheFolder() const;
    QStringList CacheFolders() const; ///< where to look and to write, first to last

    std::unique_ptr<TSoapCtrl> soapCtrl_;
    QString applicationFolder_; ///< empty: the executable's
    QString userFolder_;        ///< empty: the user's data folder
    QList<QIcon> stateImages_;
    QList<QIcon> emptyImage_;
};

TData_Module &DataModule(); ///< made, with its remote data service, at the first call
void CreateDataModule();    ///< makes it now: at library load
void DestroyDataModule();   ///< at detach and when the application ends; nothing if there is none

} // namespace Qel
