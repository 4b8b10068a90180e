#include "frame/DataModule.h"

#include "dataset/QelError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPixmap>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

FieldDef Text(const QString &name, int size)
{
    return {name, FieldType::Text, size};
}

FieldDef Real(const QString &name)
{
    return {name, FieldType::Real, 0};
}

/// "MERTIC_NAME" is spelt like this on purpose: it is the name on the platform.
FieldDefs PurchaseFields()
{
    return {
        {u"AutoID"_s, FieldType::AutoIncrement, 0},
        Text(u"PRODUCT_ID"_s, 24),
        Text(u"PRODUCT_SERIAL"_s, 100),
        Text(u"DNAME_CHN"_s, 100),
        Text(u"TRADE_NAME"_s, 100),
        Text(u"PRODUCT_NAME"_s, 100),
        Text(u"DOSE_FORM_NAME"_s, 100),
        Text(u"FULL_SPEC"_s, 100),
        Text(u"FACTORY_ID"_s, 24),
        Text(u"FACTORY_NAME"_s, 100),
        Real(u"QUOTE_PRICE"_s),
        Real(u"UNIT_PRICE"_s),
        Real(u"REQUEST_QTY"_s),
        Text(u"QUOTE_ORGID"_s, 24),
        Text(u"QUOTE_NAME"_s, 100),
        Text(u"SENDER_ORGID"_s, 24),
        Text(u"QUOTE_ID"_s, 24),
        Text(u"QUOTE_TYPE"_s, 1),
        Real(u"BIG_TRANS"_s),
        Text(u"MERTIC_NAME"_s, 10),
        Text(u"BIG_METRIC"_s, 100),
        Text(u"PACKAGING"_s, 100),
        Real(u"REQUEST_MONEY"_s),
        Text(u"TRANSPORT_TYPE"_s, 1),
        Text(u"TRANSPORT_CYCLE"_s, 1),
        Text(u"TRANSPORT_ADDRESS"_s, 100),
        Real(u"RETAIL_PRICE"_s),
        Text(u"BUYER_REMARK"_s, 200),
        Text(u"SALER_REMARK"_s, 200),
        Text(u"WRAP_NAME"_s, 50),
    };
}

// Two spare columns and a selection column are added for the screens.
constexpr QStringView regionSql =
    u"select a.*, cast('' as VARCHAR2(100)) as HOLD1, cast('' as VARCHAR2(100)) as HOLD2, "
    u"'0' as SELECTED  from BAS_REGION a order by a.REGION_CODE";

constexpr auto cacheFolder = "/QelData"_L1;
constexpr auto cacheName = "/QelRegion.dat"_L1;

/// Reads the cache file into `table`, or says what a person can do about it.
void LoadCache(ClientDataSet &table, const QString &file)
{
    QString trouble;
    try {
        table.LoadFromFile(file);
        if (table.HasField(u"REGION_CODE") && table.HasField(u"CHINA_FLAG"))
            return;
        trouble = u"里面不是区域数据"_s;
    } catch (const EQelError &error) {
        trouble = error.Message();
    }
    throw EQelError(u"区域缓存文件 %1 已损坏（%2）。删除该文件后，会重新从服务器取得区域。"_s.arg(
        QDir::toNativeSeparators(file), trouble));
}

QIcon Dot(const QColor &color)
{
    QPixmap pixmap(32, 32); // sharp at 200 %
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(3, 3, 10, 10));
    return QIcon(pixmap);
}

/// Closes the work table again, on every path.
struct Closer
{
    ClientDataSet &table;
    ~Closer() { table.Close(); }
};

} // namespace

TData_Module::TData_Module()
{
    cdsPurchase.SetFieldDefs(PurchaseFields());
}

TData_Module::~TData_Module()
{
    DataModuleDestroy();
}

void TData_Module::DataModuleCreate()
{
    if (!soapCtrl_)
        soapCtrl_ = std::make_unique<TSoapCtrl>();
}

void TData_Module::DataModuleDestroy()
{
    soapCtrl_.reset();
}

TSoapCtrl &TData_Module::SoapCtrl()
{
    if (!soapCtrl_)
        throw EQelError(u"数据服务已经关闭。"_s);
    return *soapCtrl_;
}

const QList<QIcon> &TData_Module::StateImages()
{
    if (stateImages_.isEmpty())
        stateImages_ = {Dot(QColor(0xA0, 0xA0, 0xA0)), Dot(QColor(0x2E, 0x9E, 0x4F))};
    return stateImages_;
}

const QList<QIcon> &TData_Module::EmptyImage()
{
    if (emptyImage_.isEmpty()) {
        QPixmap blank(1, 16);
        blank.fill(Qt::transparent);
        emptyImage_ = {QIcon(blank)};
    }
    return emptyImage_;
}

void TData_Module::LoadRegions(ClientDataSet &target, bool chinaOnly)
{
    const Closer closed{cdsTemp};
    if (const QString file = RegionCacheFile(); !file.isEmpty())
        LoadCache(cdsTemp, file);
    else
        FetchRegions();

    const ControlsSuspender suspended(target);
    target.AssignData(cdsTemp);
    if (chinaOnly) {
        const int flag = target.FieldIndexOrThrow(u"CHINA_FLAG");
        target.DeleteRows([&](int recNo) { return target.BytesAt(recNo, flag) != "1"; });
    }
    target.First();
}

void TData_Module::FetchRegions()
{
    // First the folder: a place that cannot be written is known before the server is asked.
    const QString file = MakeCacheFolder() + cacheName;
    SoapCtrl().SQLQuery(regionSql.toString(), 0, 0, cdsTemp, TQueryType::List);
    cdsTemp.SaveToFile(file);
}

QString TData_Module::RegionCacheFile() const
{
    for (const QString &folder : CacheFolders()) {
        const QString file = folder + cacheName;
        if (QFileInfo::exists(file))
            return file;
    }
    return {};
}

QString TData_Module::MakeCacheFolder() const
{
    const QStringList folders = CacheFolders();
    for (const QString &folder : folders) {
        if (QDir().mkpath(folder) && QFileInfo(folder).isWritable())
            return folder;
    }
    throw EQelError(u"无法创建或写入区域缓存的文件夹：%1。"_s.arg(
        QDir::toNativeSeparators(folders.join(u"、"_s))));
}

QStringList TData_Module::CacheFolders() const
{
    const QString application =
        applicationFolder_.isEmpty() ? QCoreApplication::applicationDirPath() : applicationFolder_;
    const QString user = userFolder_.isEmpty()
                             ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                             : userFolder_;
    return {application + cacheFolder, user + cacheFolder};
}

void TData_Module::SetCacheFolders(const QString &application, const QString &user)
{
    applicationFolder_ = application;
    userFolder_ = user;
}

namespace {

/// Made at the first use, so that it outlives whatever made it first.
std::unique_ptr<TData_Module> &TheDataModule()
{
    static std::unique_ptr<TData_Module> dataModule;
    return dataModule;
}

} // namespace

TData_Module &DataModule()
{
    if (!TheDataModule())
        CreateDataModule();
    return *TheDataModule();
}

void CreateDataModule()
{
    if (TheDataModule())
        return;
    TheDataModule() = std::make_unique<TData_Module>();
    TheDataModule()->DataModuleCreate();
    // A host that ends without unloading the library: images and network have to go before the
    // application object does.
    qAddPostRoutine(DestroyDataModule);
}

void DestroyDataModule()
{
    if (!TheDataModule())
        return;
    qRemovePostRoutine(DestroyDataModule);
    TheDataModule()->DataModuleDestroy();
    TheDataModule().reset();
}

} // namespace Qel
