#pragma once

#include <QList>
#include <QWidget>

#include <memory>

namespace Ui {
class PageGuide;
}

namespace Qel {

/// The paging bar under a list: rows per page, first/previous/next/last, the page number to type,
/// the total, and, if asked for, a select-all box. The screen loads the page in its ChangePage
/// handler, with PageNumber() and PageSize(), and gives the total back by SetRecordCount.
///
/// Where the total is within the show-all limit, "全部" is among the rows-per-page choices: it
/// asks for page 1 with the total as page size. QueryFirstPage and Reset return to the size before.
///
/// ChangePage is never raised inside itself: what the user or code asks for meanwhile is ignored.
/// Layout properties (stdset="0"): pageSizeSet, pageSize, showAllLimit, showSelectAll.
class TPageGuide : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString pageSizeSet READ PageSizeSet WRITE SetPageSizeSet)
    Q_PROPERTY(int pageSize READ PageSize WRITE SetPageSize)
    Q_PROPERTY(int showAllLimit READ ShowAllLimit WRITE SetShowAllLimit)
    Q_PROPERTY(bool showSelectAll READ ShowSelectAll WRITE SetShowSelectAll)

public:
    explicit TPageGuide(QWidget *parent = nullptr);
    ~TPageGuide() override;

    /// Page 1, no records, select-all unchecked; sizes, limit and visibility stay. No event.
    void Reset();
    /// Comma-separated choices ("20,50,100"); entries that are no positive number are left out, a
    /// list without any changes nothing. If the page size is not among them, the first becomes it.
    void SetPageSizeSet(const QString &sizes);
    QString PageSizeSet() const;
    void SetPageSize(int rows); ///< page 1; no event. One outside the choices is shown beside them
    int PageSize() const;
    /// Largest total for which "全部" is offered; -1: no limit, always offered.
    void SetShowAllLimit(int records);
    int ShowAllLimit() const { return showAllLimit_; }
    void SetShowSelectAll(bool shown);
    bool ShowSelectAll() const;
    /// The total of the query. If the current page is past the last one now, the last one becomes
    /// current and, inside ChangePage, is asked for once more when the handler has returned.
    void SetRecordCount(int records);
    int RecordCount() const { return recordCount_; }

    int PageNumber() const { return pageNumber_; } ///< from 1
    int PageCount() const;                         ///< at least 1
    bool IsShowingAll() const { return showingAll_; }

    void QueryFirstPage(); ///< page 1 and ChangePage

signals:
    void ChangePage();
    void SelectAll(bool checked);

private:
    void GoToPage(int page);
    void TypedPage();
    void ChooseSize(int choice);
    void RaiseChangePage();
    void UncheckSelectAll();
    void ShowChoices();
    void ShowState();

    std::unique_ptr<::Ui::PageGuide> ui_;
    QList<int> sizes_;
    int pageSize_ = 20;
    int pageNumber_ = 1;
    int recordCount_ = 0;
    int showAllLimit_ = -1;
    int showAllSize_ = 0; ///< total when "全部" was chosen
    bool showingAll_ = false;
    bool raising_ = false;
    bool pageWasCut_ = false;
};

} // namespace Qel
