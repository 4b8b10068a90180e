#include "remote/PageGuide.h"

#include "ui_PageGuide.h"

#include <QIntValidator>
#include <QScopedValueRollback>
#include <QSignalBlocker>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int ShowAllChoice = -1; // data of the "全部" choice

QList<int> ParseSizes(const QString &text)
{
    QList<int> sizes;
    for (const QString &part : text.split(u',')) {
        bool ok = false;
        const int size = part.trimmed().toInt(&ok);
        if (ok && size > 0)
            sizes.append(size);
    }
    return sizes;
}

} // namespace

TPageGuide::TPageGuide(QWidget *parent)
    : QWidget(parent)
    , ui_(std::make_unique<Ui::PageGuide>())
    , sizes_{20, 50, 100}
{
    ui_->setupUi(this);
    ui_->ckSelectAll->hide();
    ui_->edPage->setValidator(new QIntValidator(1, 999'999'999, this));
    ui_->edPage->setFixedWidth(ui_->edPage->fontMetrics().horizontalAdvance(u"0000000"_s) + 8);
    connect(ui_->cbPageSize, &QComboBox::activated, this,
            [this](int at) { ChooseSize(ui_->cbPageSize->itemData(at).toInt()); });
    connect(ui_->btnFirst, &QToolButton::clicked, this, [this] { GoToPage(1); });
    connect(ui_->btnPrev, &QToolButton::clicked, this, [this] { GoToPage(pageNumber_ - 1); });
    connect(ui_->btnNext, &QToolButton::clicked, this, [this] { GoToPage(pageNumber_ + 1); });
    connect(ui_->btnLast, &QToolButton::clicked, this, [this] { GoToPage(PageCount()); });
    connect(ui_->edPage, &QLineEdit::returnPressed, this, &TPageGuide::TypedPage);
    connect(ui_->edPage, &QLineEdit::editingFinished, this, &TPageGuide::ShowState);
    connect(ui_->ckSelectAll, &QCheckBox::toggled, this, [this](bool checked) {
        if (raising_)
            UncheckSelectAll();
        else
            emit SelectAll(checked);
    });
    ShowState();
}

TPageGuide::~TPageGuide() = default;

// --- Setting up ----------------------------------------------------------------------------------

void TPageGuide::Reset()
{
    pageNumber_ = 1;
    recordCount_ = 0;
    showingAll_ = false;
    UncheckSelectAll();
    ShowState();
}

void TPageGuide::SetPageSizeSet(const QString &sizes)
{
    const QList<int> parsed = ParseSizes(sizes);
    if (parsed.isEmpty())
        return;
    sizes_ = parsed;
    if (!sizes_.contains(pageSize_))
        SetPageSize(sizes_.first());
    ShowState();
}

QString TPageGuide::PageSizeSet() const
{
    QStringList sizes;
    for (const int size : sizes_)
        sizes.append(QString::number(size));
    return sizes.join(u',');
}

void TPageGuide::SetPageSize(int rows)
{
    if (rows < 1)
        return;
    pageSize_ = rows;
    pageNumber_ = 1;
    showingAll_ = false;
    ShowState();
}

int TPageGuide::PageSize() const
{
    return showingAll_ ? showAllSize_ : pageSize_;
}

void TPageGuide::SetShowAllLimit(int records)
{
    showAllLimit_ = records;
    ShowState();
}

void TPageGuide::SetShowSelectAll(bool shown)
{
    ui_->ckSelectAll->setVisible(shown);
}

bool TPageGuide::ShowSelectAll() const
{
    return !ui_->ckSelectAll->isHidden();
}

// --- Pages ---------------------------------------------------------------------------------------

int TPageGuide::PageCount() const
{
    const int size = PageSize();
    return std::max(1, recordCount_ / size + (recordCount_ % size > 0 ? 1 : 0));
}

void TPageGuide::SetRecordCount(int records)
{
    recordCount_ = std::max(0, records);
    if (pageNumber_ > PageCount()) {
        pageNumber_ = PageCount();
        pageWasCut_ = recordCount_ > 0;
    }
    ShowState();
}

void TPageGuide::QueryFirstPage()
{
    if (raising_)
        return;
    pageNumber_ = 1;
    showingAll_ = false;
    RaiseChangePage();
}

void TPageGuide::GoToPage(int page)
{
    const int wanted = std::clamp(page, 1, PageCount());
    if (raising_ || wanted == pageNumber_)
        return;
    pageNumber_ = wanted;
    RaiseChangePage();
}

void TPageGuide::TypedPage()
{
    const int page = ui_->edPage->text().toInt();
    if (page > 0)
        GoToPage(page);
    ShowState();
}

void TPageGuide::ChooseSize(int choice)
{
    const int before = PageSize();
    if (!raising_) {
        showingAll_ = choice == ShowAllChoice;
        if (showingAll_)
            showAllSize_ = recordCount_;
        else
            pageSize_ = choice;
    }
    if (raising_ || PageSize() == before) {
        ShowState();
        return;
    }
    pageNumber_ = 1;
    RaiseChangePage();
}

void TPageGuide::RaiseChangePage()
{
    const QScopedValueRollback guard(raising_, true);
    UncheckSelectAll();
    ShowState();
    pageWasCut_ = false;
    emit ChangePage();
    // The rows went away while the user paged: what was loaded is past the end. Once is enough.
    if (std::exchange(pageWasCut_, false))
        emit ChangePage();
    pageWasCut_ = false;
}

// --- Showing -------------------------------------------------------------------------------------

/// The rows of another page are not ticked.
void TPageGuide::UncheckSelectAll()
{
    const QSignalBlocker blocker(ui_->ckSelectAll);
    ui_->ckSelectAll->setChecked(false);
}

void TPageGuide::ShowChoices()
{
    QList<int> sizes = sizes_;
    if (!sizes.contains(pageSize_))
        sizes.insert(std::lower_bound(sizes.begin(), sizes.end(), pageSize_), pageSize_);
    QComboBox &combo = *ui_->cbPageSize;
    const QSignalBlocker blocker(&combo);
    combo.clear();
    for (const int size : std::as_const(sizes))
        combo.addItem(QString::number(size), size);
    const bool offersAll = recordCount_ > 0 && (showAllLimit_ < 0 || recordCount_ <= showAllLimit_);
    if (offersAll || showingAll_)
        combo.addItem(u"全部"_s, ShowAllChoice);
    combo.setCurrentIndex(combo.findData(showingAll_ ? ShowAllChoice : pageSize_));
}

void TPageGuide::ShowState()
{
    ShowChoices();
    ui_->edPage->setText(QString::number(pageNumber_));
    ui_->labPageCount->setText(u"/ %1 页"_s.arg(PageCount()));
    ui_->labTotal->setText(u"共 %1 条记录"_s.arg(recordCount_));
    for (QWidget *backward : {ui_->btnFirst, ui_->btnPrev})
        backward->setEnabled(pageNumber_ > 1);
    for (QWidget *forward : {ui_->btnNext, ui_->btnLast})
        forward->setEnabled(pageNumber_ < PageCount());
    ui_->edPage->setEnabled(PageCount() > 1);
}

} // namespace Qel
