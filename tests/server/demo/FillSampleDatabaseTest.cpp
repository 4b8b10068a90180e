#include "SampleDatabase.h"

#include <QTest>

using namespace Qel;

/// Fills the sample database that the other tests of this folder copy.
class FillSampleDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void FillsTheDatabase()
    {
        SampleDatabase data(SampleDatabase::Source::Filled);
        QCOMPARE(data.Number("SELECT COUNT(*) FROM USR_USER WHERE USER_CODE = 'admin'"), 1);
        data.connection.reset();
        data.database.reset();
        const QString file = QStringLiteral(QEL_SAMPLE_FILE);
        QFile::remove(file);
        QVERIFY(QFile::rename(data.path, file));
    }
};

QTEST_GUILESS_MAIN(FillSampleDatabaseTest)
#include "FillSampleDatabaseTest.moc"
