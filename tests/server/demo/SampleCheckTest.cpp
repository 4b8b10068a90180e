#include "SampleDatabase.h"
#include "admin/Check.h"

#include <QTest>

using namespace Qel;

class SampleCheckTest : public QObject
{
    Q_OBJECT

private slots:
    void NothingIsWrongWithTheSampleDatabase()
    {
        const SampleDatabase data;
        QStringList problems;
        for (const Admin::CheckFinding &finding : Admin::CheckDatabase(*data.database))
            problems += finding.code + u' ' + finding.place + u' ' + finding.text;
        QCOMPARE(problems, QStringList());
    }
};

QTEST_GUILESS_MAIN(SampleCheckTest)
#include "SampleCheckTest.moc"
