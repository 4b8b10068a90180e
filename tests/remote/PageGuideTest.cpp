#include "remote/PageGuide.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

template <typename T>
T *Part(const TPageGuide &bar, const QString &name)
{
    T *part = bar.findChild<T *>(name);
    Q_ASSERT(part);
    return part;
}

QStringList Choices(const TPageGuide &bar)
{
    const auto *combo = Part<QComboBox>(bar, u"cbPageSize"_s);
    QStringList texts;
    for (int at = 0; at < combo->count(); ++at)
        texts << combo->itemText(at);
    return texts;
}

void Choose(TPageGuide &bar, const QString &text)
{
    auto *combo = Part<QComboBox>(bar, u"cbPageSize"_s);
    const int at = combo->findText(text);
    QVERIFY(at >= 0);
    combo->setCurrentIndex(at);
    emit combo->activated(at);
}

void Press(TPageGuide &bar, const QString &button)
{
    Part<QToolButton>(bar, button)->click();
}

/// What the styling pass of every form does to its bars.
void Style(TPageGuide &bar)
{
    bar.Reset();
    bar.SetPageSizeSet(u"50,100,200"_s);
    bar.SetPageSize(50);
    bar.SetShowAllLimit(1000);
}

} // namespace

class PageGuideTest : public QObject
{
    Q_OBJECT

private slots:
    void PublishedDefaults()
    {
        TPageGuide bar;
        QCOMPARE(bar.PageNumber(), 1);
        QCOMPARE(bar.PageSize(), 20);
        QCOMPARE(bar.PageSizeSet(), u"20,50,100"_s);
        QCOMPARE(bar.ShowAllLimit(), -1);
        QVERIFY(!bar.ShowSelectAll());
        QStringList labels;
        for (const QLabel *label : bar.findChildren<QLabel *>())
            labels << label->text();
        QVERIFY(labels.contains(u"每页行数："_s));
    }

    void ResetAfterTheStylingPassKeepsWhatThePassSet()
    {
        TPageGuide bar;
        Style(bar);
        bar.SetRecordCount(500);
        Press(bar, u"btnNext"_s);
        bar.Reset();
        QCOMPARE(bar.PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(bar.PageSize(), 50);
        QCOMPARE(bar.ShowAllLimit(), 1000);
        QCOMPARE(bar.PageNumber(), 1);
        QCOMPARE(bar.RecordCount(), 0);
    }

    void QueryFirstPageGoesToPageOneAndRaisesOnce()
    {
        TPageGuide bar;
        bar.SetRecordCount(100);
        Press(bar, u"btnLast"_s);
        QCOMPARE(bar.PageNumber(), 5);
        QSignalSpy changes(&bar, &TPageGuide::ChangePage);
        bar.QueryFirstPage();
        QCOMPARE(bar.PageNumber(), 1);
        QCOMPARE(changes.size(), 1);
    }

    void ButtonsAndTypedNumbersMoveWithinThePages()
    {
        TPageGuide bar;
        bar.SetRecordCount(41); // three pages of 20
        QSignalSpy changes(&bar, &TPageGuide::ChangePage);
        QCOMPARE(bar.PageCount(), 3);
        QVERIFY(!Part<QToolButton>(bar, u"btnFirst"_s)->isEnabled());
        Press(bar, u"btnNext"_s);
        QCOMPARE(bar.PageNumber(), 2);
        Press(bar, u"btnLast"_s);
        QCOMPARE(bar.PageNumber(), 3);
        QVERIFY(!Part<QToolButton>(bar, u"btnNext"_s)->isEnabled());
        Press(bar, u"btnPrev"_s);
        QCOMPARE(bar.PageNumber(), 2);
        auto *page = Part<QLineEdit>(bar, u"edPage"_s);
        page->setText(u"9"_s);
        emit page->returnPressed();
        QCOMPARE(bar.PageNumber(), 3);
        QCOMPARE(changes.size(), 4);
        page->setText(u"3"_s);
        emit page->returnPressed(); // where it is already
        QCOMPARE(changes.size(), 4);
    }

    void AnotherPageSizeStartsAtPageOneAndRaises()
    {
        TPageGuide bar;
        bar.SetRecordCount(100);
        Press(bar, u"btnLast"_s);
        QSignalSpy changes(&bar, &TPageGuide::ChangePage);
        Choose(bar, u"50"_s);
        QCOMPARE(bar.PageSize(), 50);
        QCOMPARE(bar.PageNumber(), 1);
        QCOMPARE(changes.size(), 1);
        Choose(bar, u"50"_s);
        QCOMPARE(changes.size(), 1);
    }

    void ShowAllIsOfferedUpToItsLimit()
    {
        TPageGuide bar;
        Style(bar);
        QVERIFY(!Choices(bar).contains(u"全部"_s));
        bar.SetRecordCount(1000);
        QVERIFY(Choices(bar).contains(u"全部"_s));
        bar.SetRecordCount(1001);
        QVERIFY(!Choices(bar).contains(u"全部"_s));
    }

    void LimitOfMinusOneAlwaysOffersShowAll()
    {
        TPageGuide bar;
        bar.SetRecordCount(5'000'000);
        QVERIFY(Choices(bar).contains(u"全部"_s));
    }

    void ShowAllAsksForPageOneWithTheTotalAsSize()
    {
        TPageGuide bar;
        Style(bar);
        bar.SetRecordCount(321);
        Press(bar, u"btnNext"_s);
        QSignalSpy changes(&bar, &TPageGuide::ChangePage);
        Choose(bar, u"全部"_s);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(bar.PageNumber(), 1);
        QCOMPARE(bar.PageSize(), 321);
        QVERIFY(bar.IsShowingAll());
        bar.QueryFirstPage();
        QVERIFY(!bar.IsShowingAll());
        QCOMPARE(bar.PageSize(), 50);
    }

    void EmptyResultHasOnePage()
    {
        TPageGuide bar;
        bar.SetRecordCount(0);
        QCOMPARE(bar.PageCount(), 1);
        QCOMPARE(Part<QLabel>(bar, u"labTotal"_s)->text(), u"共 0 条记录"_s);
    }

    void TotalBelowTheCurrentPageGoesToTheLastPage()
    {
        TPageGuide bar;
        bar.SetRecordCount(100);
        Press(bar, u"btnLast"_s);
        bar.SetRecordCount(39);
        QCOMPARE(bar.PageNumber(), 2);
    }

    void PageThatVanishedWhilePagingIsAskedForOnceMore()
    {
        TPageGuide bar;
        bar.SetRecordCount(100);
        QList<int> asked;
        QObject::connect(&bar, &TPageGuide::ChangePage, &bar, [&] {
            asked << bar.PageNumber();
            bar.SetRecordCount(39);
        });
        Press(bar, u"btnLast"_s);
        QCOMPARE(asked, QList<int>({5, 2}));
    }

    void ChangePageIsNotRaisedInsideItself()
    {
        TPageGuide bar;
        bar.SetRecordCount(100);
        int raised = 0;
        QObject::connect(&bar, &TPageGuide::ChangePage, &bar, [&] {
            ++raised;
            bar.QueryFirstPage();
            Press(bar, u"btnNext"_s);
        });
        Press(bar, u"btnNext"_s);
        QCOMPARE(raised, 1);
        QCOMPARE(bar.PageNumber(), 2);
    }

    void SelectAllReportsAndIsUncheckedByAnotherPage()
    {
        TPageGuide bar;
        bar.SetShowSelectAll(true);
        bar.SetRecordCount(100);
        QVERIFY(bar.ShowSelectAll());
        QSignalSpy ticks(&bar, &TPageGuide::SelectAll);
        auto *box = Part<QCheckBox>(bar, u"ckSelectAll"_s);
        box->click();
        QCOMPARE(ticks.value(0).value(0).toBool(), true);
        Press(bar, u"btnNext"_s);
        QVERIFY(!box->isChecked());
        QCOMPARE(ticks.size(), 1);
    }

    void BadPageSizesAreLeftOut()
    {
        TPageGuide bar;
        bar.SetPageSizeSet(u" 30, x, -1, 0, 60 "_s);
        QCOMPARE(bar.PageSizeSet(), u"30,60"_s);
        QCOMPARE(bar.PageSize(), 30);
        bar.SetPageSizeSet(u"nothing"_s);
        QCOMPARE(bar.PageSizeSet(), u"30,60"_s);
    }
};

QTEST_MAIN(PageGuideTest)
#include "PageGuideTest.moc"
