#include "screens/AfficheScreen.h"

#include "controls/MemoEdit.h"

#include <QLineEdit>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

FieldDefs AfficheColumns()
{
    FieldDefs fields;
    for (const QString &name :
         {u"ID"_s, u"UNION_ID"_s, u"AFFICHE_TYPE"_s, u"AFFICHE_TITLE"_s, u"AFFICHE_CONTENT"_s})
        fields.append({name, FieldType::WideText, name == u"AFFICHE_CONTENT"_s ? 500 : 50});
    for (const QString &name : {u"START_DATE"_s, u"END_DATE"_s})
        fields.append({name, FieldType::DateTime});
    for (const QString &name :
         {u"PUBLIC_FLAG"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s, u"ENABLE_FLAG"_s})
        fields.append({name, FieldType::WideText, 1});
    fields.append({u"CREATE_USER"_s, FieldType::WideText, 50});
    fields.append({u"CREATE_DATE"_s, FieldType::DateTime});
    fields.append({u"CHECK_USER"_s, FieldType::WideText, 50});
    fields.append({u"CHECK_DATE"_s, FieldType::DateTime});
    fields.append({u"UNION_NAME"_s, FieldType::WideText, 50});
    return fields;
}

RowSet AffichesOf(const QList<QStringList> &rows)
{
    RowSetBuilder builder(AfficheColumns());
    for (const QStringList &row : rows) {
        for (const QString &cell : row) {
            if (cell == Null())
                builder.AddNull();
            else
                builder.AddCell(cell.toUtf8());
        }
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

} // namespace

RowSet Affiches()
{
    const QString start = u"2024-03-05 00:00:00"_s;
    const QString end = u"2024-04-05 00:00:00"_s;
    const QString written = u"2024-03-04 09:10:11"_s;
    return AffichesOf({
        {u"9001"_s, u"11"_s, u"1"_s, u"系统升级公告"_s, u"三月六日升级。"_s, start, end, u"1"_s,
         u"1"_s, u"0"_s, u"1"_s, u"张伟"_s, written, u"李娜"_s, u"2024-03-04 15:00:00"_s,
         u"浙江省采购集团"_s},
        {u"9002"_s, u"12"_s, u"1"_s, u"停业通知"_s, u"春节停业。"_s, start, end, u"0"_s, u"1"_s,
         u"1"_s, u"0"_s, u"张伟"_s, written, Null(), Null(), u"杭州市采购集团"_s},
        {u"9003"_s, u"11"_s, u"1"_s, u"价格调整"_s, u"四月起执行。"_s, start, Null(), u"0"_s,
         u"0"_s, u"1"_s, u"0"_s, u"李娜"_s, written, Null(), Null(), u"浙江省采购集团"_s},
    });
}

RowSet NoAffiches()
{
    return AffichesOf({});
}

RowSet AfficheUnions()
{
    return Rows({u"UNION_ID"_s, u"UNION_NAME"_s},
                {{u"11"_s, u"浙江省采购集团"_s}, {u"12"_s, u"杭州市采购集团"_s}});
}

AfficheScreen::AfficheScreen()
    : form(new TFrmSysAffiche)
{
    AnswerQueries(Affiches(), 120);
    ShowScreen(*form);
}

AfficheScreen::~AfficheScreen()
{
    delete form;
}

void AfficheScreen::AnswerQueries(const RowSet &rows, qint64 total)
{
    server.ClearScripts();
    server.OnQuery(u"SYS_AFFICHE B"_s).Answer(rows, total);
    server.OnQuery(u"SELECT B.UNION_ID, B.UNION_NAME "_s).Answer(AfficheUnions());
}

void AfficheScreen::AnswerPost(const QString &method, const QString &code,
                               const Wire::NamedValues &values)
{
    server.OnPost(u"com.notic.NoticManager"_s, method).Code(code, values);
}

void AfficheScreen::Query(int recNo)
{
    Trigger(form, u"ActionQuery"_s);
    Listed().SetRecNo(recNo);
}

void AfficheScreen::SetDates(const QDate &start, const QDate &end)
{
    Child<DateEdit>(form, u"edStart"_s)->SetValue(start.startOfDay());
    Child<DateEdit>(form, u"edEnd"_s)->SetValue(end.startOfDay());
}

void AfficheScreen::InDialog(const std::function<void()> &open,
                             const std::function<void(QWidget *)> &visit)
{
    const ModalVisitor visitor([&](QWidget *dialog) {
        const QPointer<QWidget> shown(dialog);
        visit(dialog);
        if (shown && shown->isVisible())
            shown->close();
    });
    open();
}

DataGrid &AfficheScreen::Grid() const
{
    return *Child<DataGrid>(form, u"gridMasterView"_s);
}

ClientDataSet &AfficheScreen::Listed() const
{
    return *Grid().DataSet();
}

TPageGuide &AfficheScreen::Pages() const
{
    return *Child<TPageGuide>(form, u"PageGuide1"_s);
}

QString AfficheScreen::Enabled() const
{
    QStringList enabled;
    for (const QString &word : {u"New"_s, u"Modify"_s, u"Delete"_s, u"Check"_s, u"Log"_s}) {
        if (ActionEnabled(form, u"Action"_s + word))
            enabled << word;
    }
    return enabled.join(u' ');
}

QStringList AfficheScreen::CurrentRow(const QStringList &fields) const
{
    QStringList texts;
    for (const QString &field : fields)
        texts << Listed().FieldText(field);
    return texts;
}

void FillEditor(QWidget *editor, const QString &start, const QString &end, const QString &title,
                const QString &content, int union_)
{
    Child<DateEdit>(editor, u"edStart"_s)->SetDateText(start);
    Child<DateEdit>(editor, u"edEnd"_s)->SetDateText(end);
    Type(editor, u"edTitle"_s, title);
    Type(editor, u"edAff"_s, content);
    auto *unions = Child<ImageComboBox>(editor, u"edUnion"_s);
    unions->showPopup();
    unions->hidePopup();
    unions->setCurrentIndex(union_);
}

} // namespace Qel::Test
