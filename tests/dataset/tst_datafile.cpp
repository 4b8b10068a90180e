#include "DataSetSamples.h"

#include "dataset/Checksum.h"
#include "dataset/DataFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

QByteArray Contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void Overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

class DataFileTest : public QObject
{
    Q_OBJECT

    QTemporaryDir folder_;
    ClientDataSet sample_;

    QString Path() const { return folder_.filePath(u"区域 缓存.dat"_s); }

    void ExpectRefusal(const QByteArray &bytes, const QString &why)
    {
        Overwrite(Path(), bytes);
        ClientDataSet target;
        target.Open(RowsOf({{u"X"_s, FieldType::Text, 0}}, {{u"kept"_s}}));
        try {
            target.LoadFromFile(Path());
            QFAIL("not refused");
        } catch (const EDataSetError &error) {
            QVERIFY2(error.Message().contains(QDir::toNativeSeparators(Path())), error.what());
            QVERIFY2(error.Message().contains(why), error.what());
        }
        QCOMPARE(target.FieldText(u"X"), u"kept"_s);
    }

private slots:
    void init()
    {
        sample_.Open(
            RowsOf({{u"REGION_ID"_s, FieldType::Integer, 0}, {u"NAME"_s, FieldType::WideText, 9}},
                   {{u"1"_s, u"北京市"_s}, {u"2"_s, std::nullopt}, {u"3"_s, u""_s}}));
        sample_.SaveToFile(Path());
    }

    void ChecksumIsXxh64()
    {
        // Values of the published specification's reference, seed 0.
        QCOMPARE(Checksum(""), 0xEF46DB3751D8E999ULL);
        QCOMPARE(Checksum("a"), 0xD24EC4F1A98C6E5BULL);
        QCOMPARE(Checksum("abc"), 0x44BC2CF5AD770999ULL);
        QCOMPARE(Checksum("Nobody inspects the spammish repetition"), 0xFBCEA83C8A378BF1ULL);
    }
    void ChecksumOfPiecesIsThatOfTheWhole()
    {
        QByteArray bytes;
        for (int i = 0; i < 1000; ++i)
            bytes.append(char(i * 37));
        for (const qsizetype size : {0, 1, 31, 32, 33, 64, 95, 96, 1000}) {
            const QByteArrayView whole = QByteArrayView(bytes).first(size);
            for (qsizetype cut = 0; cut <= size; cut += RunningChecksum::Unit) {
                RunningChecksum checksum;
                checksum.Add(whole.first(cut));
                QCOMPARE(checksum.Finish(whole.sliced(cut)), Checksum(whole));
            }
        }
    }
    void BlocksOfManyPiecesComeBack()
    {
        RowSetBuilder builder({{u"NAME"_s, FieldType::Text, 0}});
        for (int i = 0; i < 20'000; ++i) { // about 600 KB
            builder.AddCell(QByteArray::number(i).repeated(5));
            builder.EndRow();
        }
        const QByteArray block = builder.Finish();
        DataFile::Write(Path(), block);
        QCOMPARE(DataFile::Read(Path()), block);
    }
    void RowsAndFieldsComeBack()
    {
        sample_.SetRecNo(1);
        sample_.Edit();
        sample_.SetFieldText(u"NAME", u"天津市"_s);
        sample_.Post();
        sample_.Append();
        sample_.Post();
        sample_.SaveToFile(Path());
        ClientDataSet loaded;
        loaded.LoadFromFile(Path());
        QCOMPARE(loaded.Fields(), sample_.Fields());
        QCOMPARE(Column(loaded, u"NAME"),
                 QStringList({u"北京市"_s, u"天津市"_s, u""_s, u"<null>"_s}));
        QCOMPARE(loaded.RecNo(), 0);
    }
    void EmptyTableComesBack()
    {
        ClientDataSet empty;
        empty.SetFieldDefs(sample_.Fields());
        empty.CreateDataSet();
        empty.SaveToFile(Path());
        ClientDataSet loaded;
        loaded.LoadFromFile(Path());
        QVERIFY(loaded.IsActive() && loaded.IsEmpty());
        QCOMPARE(loaded.Fields(), sample_.Fields());
    }
    void SavingReplacesTheWholeFileAndLeavesNothingBeside()
    {
        Overwrite(Path(), QByteArray(100'000, 'x'));
        sample_.SaveToFile(Path());
        QVERIFY(Contents(Path()).size() < 1000);
        QCOMPARE(QDir(folder_.path()).entryList(QDir::Files).size(), 1);
    }
    void FailedSaveLeavesTheOldFileAndNamesIt()
    {
        const QByteArray before = Contents(Path());
        const QString nowhere = folder_.filePath(u"missing/x.dat"_s);
        try {
            sample_.SaveToFile(nowhere);
            QFAIL("saved into a folder that is not there");
        } catch (const EDataSetError &error) {
            QVERIFY(error.Message().contains(QDir::toNativeSeparators(nowhere)));
        }
        QCOMPARE(Contents(Path()), before);
    }
    void FileCutAnywhereIsRefused()
    {
        const QByteArray whole = Contents(Path());
        for (qsizetype length = 0; length < whole.size(); ++length)
            ExpectRefusal(whole.first(length), length < 32 ? u"文件头"_s : u"长度"_s);
    }
    void AnyFlippedByteIsRefused()
    {
        const QByteArray whole = Contents(Path());
        for (qsizetype at = 0; at < whole.size(); ++at) {
            QByteArray damaged = whole;
            damaged[at] = char(damaged[at] ^ 0x10);
            ExpectRefusal(damaged, at < 8    ? u"不是数据文件"_s
                                   : at < 16 ? u"版本"_s
                                   : at < 24 ? u"长度"_s
                                             : u"校验和"_s);
        }
    }
    void BytesAfterTheEndAreRefused() { ExpectRefusal(Contents(Path()) + 'x', u"长度"_s); }
    void SoundFileWithWrongRowsIsRefused()
    {
        DataFile::Write(Path(), "\xA0");
        ExpectRefusal(Contents(Path()), u"行数据块"_s);
    }
    void MissingFileIsNamed()
    {
        QFile::remove(Path());
        ClientDataSet target;
        QVERIFY_THROWS_EXCEPTION(EDataSetError, target.LoadFromFile(Path()));
        QVERIFY(!target.IsActive());
    }
};

QTEST_GUILESS_MAIN(DataFileTest)
#include "tst_datafile.moc"
