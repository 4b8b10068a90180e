#include "controls/CheckBox.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

class CheckBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void UserAndKeyboardChangeAnOrdinaryBox()
    {
        CheckBox box(u"买方"_s);
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(5, box.height() / 2));
        QVERIFY(box.isChecked());
        QTest::keyClick(&box, Qt::Key_Space);
        QVERIFY(!box.isChecked());
    }

    void ReadOnlyBoxIsChangedByCodeAlone()
    {
        CheckBox box(u"买方"_s);
        box.SetReadOnly(true);
        QVERIFY(box.isEnabled());
        QCOMPARE(box.focusPolicy(), Qt::NoFocus);
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(5, box.height() / 2));
        QTest::keyClick(&box, Qt::Key_Space);
        box.click();
        QVERIFY(!box.isChecked());
        box.setChecked(true);
        QVERIFY(box.isChecked());
    }

    void TakingReadOnlyBackMakesItOrdinary()
    {
        CheckBox box(u"买方"_s);
        box.SetReadOnly(true);
        box.SetReadOnly(false);
        QVERIFY(box.focusPolicy() & Qt::TabFocus);
        box.click();
        QVERIFY(box.isChecked());
    }
};

QTEST_MAIN(CheckBoxTest)
#include "CheckBoxTest.moc"
