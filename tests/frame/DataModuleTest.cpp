#include "frame/DataModule.h"

#include "support/Raised.h"
#include "support/ScriptedServer.h"
#include "support/Service.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString regionSql =
    u"select a.*, cast('' as VARCHAR2(100)) as HOLD1, cast('' as VARCHAR2(100)) as HOLD2, '0' as SELECTED  from BAS_REGION a order by a.REGION_CODE"_s;

RowSet Regions()
{
    return Rows({u"REGION_ID"_s, u"REGION_CODE"_s, u"REGION_NAME"_s, u"CHINA_FLAG"_s, u"HOLD1"_s,
                 u"HOLD2"_s, u"SELECTED"_s},
                {{u"1"_s, u"110000"_s, u"北京市"_s, u"1"_s, Null(), Null(), u"0"_s},
                 {u"2"_s, u"310000"_s, u"上海市"_s, u"1"_s, Null(), Null(), u"0"_s},
                 {u"3"_s, u"900001"_s, u"日本"_s, u"0"_s, Null(), Null(), u"0"_s},
                 {u"4"_s, u"900002"_s, u"新加坡"_s, Null(), Null(), Null(), u"0"_s}});
}

QStringList Names(const ClientDataSet &table)
{
    QStringList names;
    for (int row = 0; row < table.RecordCount(); ++row)
        names << table.TextAt(row, table.FieldIndexOrThrow(u"REGION_NAME"));
    return names;
}

} // namespace

class DataModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder_ = std::make_unique<QTemporaryDir>();
        server_ = std::make_unique<ScriptedServer>();
        NewModule();
    }
    void cleanup()
    {
        module_.reset();
        server_.reset();
        folder_.reset();
    }

    // --- Regions -------------------------------------------------------------------------------

    void FirstUseMakesFolderAndFileTheSecondReadsItAndSendsNoQuery()
    {
        QVERIFY(!QDir(ApplicationFolder()).exists());
        server_->OnQueryExact(regionSql).Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, false);

        const QString file = ApplicationFolder() + u"/QelData/QelRegion.dat"_s;
        QVERIFY(QFile::exists(file));
        QCOMPARE(QDir::cleanPath(module_->RegionCacheFile()), file);
        QCOMPARE(server_->LastQuery().page, 0);
        QCOMPARE(server_->LastQuery().pageSize, 0);
        QCOMPARE(server_->LastQuery().queryType, 2);
        const QStringList all{u"北京市"_s, u"上海市"_s, u"日本"_s, u"新加坡"_s};
        QCOMPARE(Names(target), all);

        NewModule(); // another run of the program
        ClientDataSet again;
        module_->LoadRegions(again, false);
        QCOMPARE(server_->Queries().size(), 1);
        QCOMPARE(Names(again), all);
        QCOMPARE(again.Fields(), target.Fields());
        QVERIFY(again.FieldIsNull(u"HOLD1"));
    }

    void ChinaOnlyKeepsRowsWhoseFlagIs1()
    {
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, true);
        QCOMPARE(Names(target), (QStringList{u"北京市"_s, u"上海市"_s}));
    }

    void CacheFileHoldsEveryRegionEvenWhenChinaOnlyWasAsked()
    {
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, true);
        module_->LoadRegions(target, false);
        QCOMPARE(target.RecordCount(), 4);
        QCOMPARE(server_->Queries().size(), 1);
    }

    void TargetStandsOnItsFirstRowWithControlsResumedAndTheWorkTableIsClosed()
    {
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, false);
        QCOMPARE(target.RecNo(), 0);
        QVERIFY(!target.ControlsDisabled());
        QVERIFY(!module_->cdsTemp.IsActive());
    }

    void RegionsAreEditableInTheTargetOnly()
    {
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, false);
        target.Edit();
        target.SetFieldText(u"SELECTED", u"1"_s);
        target.Post();
        ClientDataSet other;
        module_->LoadRegions(other, false);
        QCOMPARE(other.FieldText(u"SELECTED"), u"0"_s);
    }

    void FailedRegionQueryRaisesAndLeavesNoFile()
    {
        server_->OnAnyQuery().Error(500, u"store.failed"_s, u"数据库出错"_s, u"R1"_s);
        ClientDataSet target;
        QVERIFY(Raised<ERemoteError>([&] { module_->LoadRegions(target, false); }));
        QVERIFY(module_->RegionCacheFile().isEmpty());
        QVERIFY(!target.IsActive());
        QVERIFY(!module_->cdsTemp.IsActive());
    }

    void CacheLiesInTheUsersFolderWhereTheApplicationsCannotBeWritten()
    {
        BlockApplicationFolder();
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, false);
        QCOMPARE(QDir::cleanPath(module_->RegionCacheFile()),
                 UserFolder() + u"/QelData/QelRegion.dat"_s);
        module_->LoadRegions(target, false);
        QCOMPARE(server_->Queries().size(), 1);
    }

    void NoFolderThatCanBeWrittenRaisesBeforeTheServerIsAsked()
    {
        BlockApplicationFolder();
        QFile user(UserFolder());
        QVERIFY(user.open(QIODevice::WriteOnly));
        ClientDataSet target;
        const auto error = Raised<EQelError>([&] { module_->LoadRegions(target, false); });
        QVERIFY(error);
        QVERIFY2(error->Message().contains(QDir::toNativeSeparators(UserFolder())), error->what());
        QVERIFY(server_->Queries().isEmpty());
    }

    void DamagedFileIsNamedWithWhatToDo_data()
    {
        QTest::addColumn<int>("damage");
        QTest::newRow("empty") << 0;
        QTest::newRow("cut") << 1;
        QTest::newRow("one byte changed") << 2;
        QTest::newRow("another table") << 3;
    }
    void DamagedFileIsNamedWithWhatToDo()
    {
        QFETCH(int, damage);
        server_->OnAnyQuery().Answer(Regions());
        ClientDataSet target;
        module_->LoadRegions(target, false);
        const QString path = module_->RegionCacheFile();
        Damage(path, damage);

        ClientDataSet other;
        const auto error = Raised<EQelError>([&] { module_->LoadRegions(other, false); });
        QVERIFY(error);
        QVERIFY2(error->Message().contains(QDir::toNativeSeparators(path)), error->what());
        QVERIFY2(error->Message().contains(u"删除该文件"_s), error->what());
        QVERIFY(!other.IsActive());
        QCOMPARE(server_->Queries().size(), 1);

        QVERIFY(QFile::remove(path));
        module_->LoadRegions(other, false);
        QCOMPARE(other.RecordCount(), 4);
        QCOMPARE(server_->Queries().size(), 2);
    }

    // --- Data ----------------------------------------------------------------------------------

    void PurchaseTableHasItsThirtyFieldsInOrder()
    {
        // name, maximum length of a text, -1 real, -2 auto-increment
        const QList<std::pair<QString, int>> expected{
            {u"AutoID"_s, -2},          {u"PRODUCT_ID"_s, 24},         {u"PRODUCT_SERIAL"_s, 100},
            {u"DNAME_CHN"_s, 100},      {u"TRADE_NAME"_s, 100},        {u"PRODUCT_NAME"_s, 100},
            {u"DOSE_FORM_NAME"_s, 100}, {u"FULL_SPEC"_s, 100},         {u"FACTORY_ID"_s, 24},
            {u"FACTORY_NAME"_s, 100},   {u"QUOTE_PRICE"_s, -1},        {u"UNIT_PRICE"_s, -1},
            {u"REQUEST_QTY"_s, -1},     {u"QUOTE_ORGID"_s, 24},        {u"QUOTE_NAME"_s, 100},
            {u"SENDER_ORGID"_s, 24},    {u"QUOTE_ID"_s, 24},           {u"QUOTE_TYPE"_s, 1},
            {u"BIG_TRANS"_s, -1},       {u"MERTIC_NAME"_s, 10},        {u"BIG_METRIC"_s, 100},
            {u"PACKAGING"_s, 100},      {u"REQUEST_MONEY"_s, -1},      {u"TRANSPORT_TYPE"_s, 1},
            {u"TRANSPORT_CYCLE"_s, 1},  {u"TRANSPORT_ADDRESS"_s, 100}, {u"RETAIL_PRICE"_s, -1},
            {u"BUYER_REMARK"_s, 200},   {u"SALER_REMARK"_s, 200},      {u"WRAP_NAME"_s, 50}};
        const FieldDefs &fields = module_->cdsPurchase.Fields();
        QCOMPARE(fields.size(), 30);
        for (int i = 0; i < 30; ++i) {
            const auto &[name, size] = expected.at(i);
            QCOMPARE(fields.at(i).name, name);
            QCOMPARE(fields.at(i).type, size == -1   ? FieldType::Real
                                        : size == -2 ? FieldType::AutoIncrement
                                                     : FieldType::Text);
            if (size > 0)
                QCOMPARE(fields.at(i).size, size);
        }
        module_->cdsPurchase.CreateDataSet();
        QVERIFY(module_->cdsPurchase.IsActive());
    }

    // --- Life ----------------------------------------------------------------------------------

    void ServiceExistsFromCreateToDestroy()
    {
        module_->SoapCtrl();
        module_->DataModuleDestroy();
        QVERIFY(Raised<EQelError>([&] { module_->SoapCtrl(); }));
        module_->DataModuleDestroy();
        module_->DataModuleCreate();
        module_->SoapCtrl();
    }

    void TheOneModuleCanBeDestroyedAndMadeAgain()
    {
        TData_Module *first = &DataModule();
        QCOMPARE(&DataModule(), first);
        DestroyDataModule();
        DestroyDataModule();
        CreateDataModule();
        DataModule().SoapCtrl();
        DestroyDataModule();
    }

private:
    QString ApplicationFolder() const { return folder_->filePath(u"host"_s); }
    QString UserFolder() const { return folder_->filePath(u"user"_s); }

    void NewModule()
    {
        module_ = std::make_unique<TData_Module>();
        module_->DataModuleCreate();
        module_->SetCacheFolders(ApplicationFolder(), UserFolder());
        UseServer(module_->SoapCtrl(), server_->Url());
    }
    /// A file in the folder's place: nobody, not even root, can make a folder below it.
    void BlockApplicationFolder()
    {
        QFile file(ApplicationFolder());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    static void Damage(const QString &path, int kind)
    {
        if (kind == 3) {
            ClientDataSet table;
            table.Open(Rows({u"A"_s}, {{u"x"_s}}));
            table.SaveToFile(path);
            return;
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray bytes = file.readAll();
        if (kind == 0)
            bytes.clear();
        if (kind == 1)
            bytes.chop(5);
        if (kind == 2)
            bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] ^ 1);
        QVERIFY(file.resize(0) && file.seek(0));
        file.write(bytes);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<ScriptedServer> server_;
    std::unique_ptr<TData_Module> module_;
};

QTEST_MAIN(DataModuleTest)
#include "DataModuleTest.moc"
