// Random operations on a dataset and on a plain vector of rows side by side: after each one both
// must show the same, and whoever followed the dataset's signals alone must know the same rows.

#include "PlainTable.h"

#include "dataset/ColumnReader.h"

#include <QDeadlineTimer>
#include <QRandomGenerator>
#include <QTest>

#include <iterator>
#include <memory>
#include <utility>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kMilliseconds = 2000;
constexpr int kOperationsARound = 400;

enum Column { Key, Name, Number, ColumnCount };

const FieldDefs kFields{{u"KEY"_s, FieldType::Text, 0},
                        {u"NAME"_s, FieldType::WideText, 0},
                        {u"N"_s, FieldType::Integer, 0}};

const QList<Cell> kTexts{std::nullopt, u""_s, u"a"_s, u"b"_s, u"ab"_s, u"甲"_s, u"乙甲"_s};
const QList<Cell> kNumbers{std::nullopt, u"-3"_s, u"0"_s, u"2"_s, u"10"_s};

using Row = PlainTable::Row;

// What the texts mean, written beside them.
const QList<PlainTable::Filter> kFilters{
    {u""_s, [](const Row &) { return true; }},
    {u"NAME contains '甲'"_s, [](const Row &r) { return r[Name] && r[Name]->contains(u'甲'); }},
    {u"N > 1"_s, [](const Row &r) { return r[Number] && r[Number]->toInt() > 1; }},
    {u"KEY = NULL"_s, [](const Row &r) { return !r[Key]; }},
    {u"KEY <> 'a' and N <> 2"_s,
     [](const Row &r) { return r[Key] != u"a"_s && r[Number] != u"2"_s; }},
    {u"not (KEY < 'b') or NAME = ''"_s,
     [](const Row &r) { return !r[Key] || *r[Key] >= u"b"_s || r[Name] == u""_s; }},
};

QString RowAt(const ClientDataSet &dataSet, int recNo)
{
    QStringList cells;
    for (int field = 0; field < ColumnCount; ++field)
        cells.append(dataSet.IsNullAt(recNo, field) ? u"-"_s : dataSet.TextAt(recNo, field));
    return cells.join(u'|');
}

QStringList RowsIn(const ClientDataSet &dataSet)
{
    QStringList rows;
    for (int recNo = 0; recNo < dataSet.RecordCount(); ++recNo)
        rows.append(RowAt(dataSet, recNo));
    return rows;
}

QString TextOf(const Row &row)
{
    QStringList cells;
    for (const Cell &cell : row)
        cells.append(cell.value_or(u"-"_s));
    return cells.join(u'|');
}

/// Knows the rows from what the dataset's signals tell, as a model does.
class Follower
{
public:
    explicit Follower(ClientDataSet &dataSet)
        : dataSet_(dataSet)
    {
        const auto connect = [&](auto signal, auto slot) {
            QObject::connect(&dataSet_, signal, &dataSet_, slot);
        };
        connect(&ClientDataSet::ResetEnd, [this] { rows_ = RowsIn(dataSet_); });
        connect(&ClientDataSet::RowsAboutToBeInserted, [this](int first, int) { at_ = first; });
        connect(&ClientDataSet::RowsInserted, [this] { rows_.insert(at_, RowAt(dataSet_, at_)); });
        connect(&ClientDataSet::RowsAboutToBeRemoved, [this](int first, int) { at_ = first; });
        connect(&ClientDataSet::RowsRemoved, [this] { rows_.remove(at_); });
        connect(&ClientDataSet::RowChanged,
                [this](int recNo) { rows_[recNo] = RowAt(dataSet_, recNo); });
        connect(&ClientDataSet::CurrentChanged, [this](int recNo) { current_ = recNo; });
        rows_ = RowsIn(dataSet_);
        current_ = dataSet_.RecNo();
    }

    const QStringList &Rows() const { return rows_; }
    int Current() const { return current_; }

private:
    ClientDataSet &dataSet_;
    QStringList rows_;
    int current_ = -1;
    int at_ = -1;
};

/// One table and its plain twin, and the operations on both.
class Round
{
public:
    explicit Round(quint32 seed)
        : random_(seed)
    {
        Reopen(Rows(int(random_.bounded(60))));
        follower_ = std::make_unique<Follower>(dataSet_);
    }

    /// Does `count` operations. What differs first, or nothing.
    QString Run(int count)
    {
        for (int i = 0; i < count; ++i) {
            const auto &[name, operation] =
                kOperations[size_t(random_.bounded(int(std::size(kOperations))))];
            (this->*operation)();
            if (difference_.isEmpty())
                Compare();
            if (!difference_.isEmpty())
                return u"operation %1, %2: %3"_s.arg(i).arg(QLatin1StringView(name), difference_);
        }
        return {};
    }

private:
    // --- Material ---
    Cell AnyOf(const QList<Cell> &values) { return values[random_.bounded(values.size())]; }
    Cell AnyValue(int field) { return AnyOf(field == Number ? kNumbers : kTexts); }
    int AnyField() { return random_.bounded(int(ColumnCount)); }
    int AnyRecNo() { return random_.bounded(dataSet_.RecordCount()); }
    bool Chance(int outOf) { return random_.bounded(outOf) == 0; }

    std::vector<Row> Rows(int count)
    {
        std::vector<Row> rows;
        for (int i = 0; i < count; ++i)
            rows.push_back({AnyValue(Key), AnyValue(Name), AnyValue(Number)});
        return rows;
    }

    void Reopen(const std::vector<Row> &rows)
    {
        dataSet_.Open(RowsOf(kFields, rows));
        plain_.Open(rows);
        marks_.clear();
    }

    // --- Operations ---
    void Move()
    {
        const int recNo = random_.bounded(-1, dataSet_.RecordCount() + 1);
        dataSet_.SetRecNo(recNo);
        plain_.MoveTo(recNo);
    }
    void Next()
    {
        dataSet_.Next();
        plain_.Next();
    }
    void Prior()
    {
        dataSet_.Prior();
        plain_.Prior();
    }
    void Append()
    {
        dataSet_.Append();
        plain_.Append(ColumnCount);
    }
    void Edit()
    {
        if (dataSet_.IsEmpty())
            return;
        dataSet_.Edit();
        plain_.Edit();
    }
    void Set()
    {
        if (!dataSet_.IsEditing())
            return;
        const int field = AnyField();
        const Cell value = AnyValue(field);
        if (value)
            dataSet_.SetFieldTextAt(field, *value);
        else
            dataSet_.SetFieldNull(kFields[field].name);
        plain_.Set(field, value);
    }
    void Post()
    {
        dataSet_.Post();
        plain_.Post();
    }
    void Cancel()
    {
        dataSet_.Cancel();
        plain_.Cancel();
    }
    void Delete()
    {
        if (dataSet_.IsEmpty())
            return;
        dataSet_.Delete();
        plain_.Delete();
    }
    void Filter()
    {
        const PlainTable::Filter &filter = kFilters[random_.bounded(kFilters.size())];
        dataSet_.SetFilter(filter.text);
        plain_.SetFilter(filter);
    }
    void Filtered()
    {
        const bool on = Chance(2);
        dataSet_.SetFiltered(on);
        plain_.SetFiltered(on);
    }
    void SetAll()
    {
        if (!Chance(8))
            return;
        const int field = AnyField();
        const Cell value = AnyOf({u"2"_s, u"10"_s});
        dataSet_.SetAll(kFields[field].name, *value);
        plain_.SetAll(field, value);
    }
    void DeleteRows()
    {
        if (!Chance(4))
            return;
        const int field = AnyField();
        const Cell value = AnyValue(field);
        dataSet_.Post(); // the readers below see the rows as they are then
        plain_.Post();
        const ColumnReader column = dataSet_.Column(field);
        const int deleted = dataSet_.DeleteRows([&](int recNo) {
            return value ? !column.IsNull(recNo) && column.Bytes(recNo) == value->toUtf8()
                         : column.IsNull(recNo);
        });
        Expect(u"deleted rows"_s, deleted,
               plain_.DeleteRows([&](const Row &row) { return row[size_t(field)] == value; }));
    }
    void Locate()
    {
        const Cell key = AnyOf(kTexts);
        const Cell number = AnyOf(kNumbers);
        const bool both = Chance(2);
        const QStringList values = both ? QStringList{key.value_or(u""_s), number.value_or(u""_s)}
                                        : QStringList{key.value_or(u""_s)};
        const std::vector<int> fields =
            both ? std::vector<int>{Key, Number} : std::vector<int>{Key};
        const QString names = both ? u"KEY;N"_s : u"key"_s;
        Expect(u"found"_s, dataSet_.Find(names, values), plain_.Find(fields, values));
        if (Chance(2))
            return;
        plain_.Post();
        const int recNo = plain_.Find(fields, values);
        Expect(u"located"_s, int(dataSet_.Locate(names, values)), int(recNo >= 0));
        if (recNo >= 0)
            plain_.MoveTo(recNo);
    }
    void FindContaining()
    {
        const QString part = AnyOf(kTexts).value_or(u"丙"_s);
        const int from = random_.bounded(dataSet_.RecordCount() + 1);
        Expect(u"containing"_s, dataSet_.FindContaining(u"NAME", part, from),
               plain_.FindContaining(Name, part, from));
    }
    void Mark()
    {
        if (!dataSet_.IsEmpty()) {
            const int recNo = AnyRecNo();
            marks_.append({dataSet_.BookmarkAt(recNo), plain_.IdAt(recNo)});
        }
    }
    void GoToMark()
    {
        if (marks_.isEmpty())
            return;
        const auto [mark, id] = marks_[random_.bounded(marks_.size())];
        Expect(u"valid mark"_s, int(dataSet_.BookmarkValid(mark)), int(plain_.IsVisible(id)));
        Expect(u"reached mark"_s, int(dataSet_.GotoBookmark(mark)), int(plain_.GoTo(id)));
    }
    void Suspend()
    {
        if (dataSet_.ControlsDisabled())
            dataSet_.EnableControls();
        else
            dataSet_.DisableControls();
    }
    void Save()
    {
        const RowSet saved = dataSet_.ToRowSet();
        ClientDataSet copy;
        copy.Open(saved);
        QStringList expected;
        for (const Row &row : plain_.Posted())
            expected.append(TextOf(row));
        Expect(u"saved rows"_s, RowsIn(copy).join(u'\n'), expected.join(u'\n'));
        if (Chance(10))
            Reopen(plain_.Posted());
    }

    // --- Comparison ---
    template <typename T>
    void Expect(const QString &what, const T &actual, const T &expected)
    {
        if (actual != expected && difference_.isEmpty())
            difference_ = u"%1: %2, expected %3"_s.arg(what).arg(actual).arg(expected);
    }

    void Compare()
    {
        QStringList expected;
        for (const int id : plain_.Visible())
            expected.append(TextOf(plain_.Cells(id)));
        Expect(u"rows"_s, RowsIn(dataSet_).join(u'\n'), expected.join(u'\n'));
        Expect(u"state"_s, int(dataSet_.CurrentState()), int(plain_.State()));
        Expect(u"current row"_s, dataSet_.RecNo(), plain_.RecNo());
        if (dataSet_.ControlsDisabled())
            return;
        Expect(u"rows by signals"_s, follower_->Rows().join(u'\n'), expected.join(u'\n'));
        Expect(u"current row by signals"_s, follower_->Current(), plain_.RecNo());
    }

    struct Operation
    {
        const char *name;
        void (Round::*run)();
    };
    // Editing stands several times, so that most edits come to set a field.
    static constexpr Operation kOperations[] = {
        {"move", &Round::Move},
        {"next", &Round::Next},
        {"prior", &Round::Prior},
        {"append", &Round::Append},
        {"append", &Round::Append},
        {"edit", &Round::Edit},
        {"edit", &Round::Edit},
        {"set", &Round::Set},
        {"set", &Round::Set},
        {"set", &Round::Set},
        {"post", &Round::Post},
        {"cancel", &Round::Cancel},
        {"delete", &Round::Delete},
        {"filter", &Round::Filter},
        {"filtered", &Round::Filtered},
        {"set all", &Round::SetAll},
        {"delete rows", &Round::DeleteRows},
        {"locate", &Round::Locate},
        {"locate", &Round::Locate},
        {"find containing", &Round::FindContaining},
        {"mark", &Round::Mark},
        {"go to mark", &Round::GoToMark},
        {"suspend", &Round::Suspend},
        {"save", &Round::Save},
    };

    QRandomGenerator random_;
    ClientDataSet dataSet_;
    PlainTable plain_;
    std::unique_ptr<Follower> follower_;
    QList<std::pair<ClientDataSet::Bookmark, int>> marks_;
    QString difference_;
};

} // namespace

class ClientDataSetRandomTest : public QObject
{
    Q_OBJECT

private slots:
    /// QEL_TEST_SEED repeats the round of that seed alone.
    void ShowsTheSameAsAPlainVectorOfRows()
    {
        bool given = false;
        const quint32 fixed = qEnvironmentVariable("QEL_TEST_SEED").toUInt(&given);
        const QDeadlineTimer deadline(kMilliseconds);
        do {
            const quint32 seed = given ? fixed : QRandomGenerator::global()->generate();
            Round round(seed);
            const QString difference = round.Run(kOperationsARound);
            QVERIFY2(difference.isEmpty(),
                     qPrintable(u"QEL_TEST_SEED=%1 %2"_s.arg(seed).arg(difference)));
        } while (!given && !deadline.hasExpired());
    }
};

QTEST_GUILESS_MAIN(ClientDataSetRandomTest)
#include "tst_clientdataset_random.moc"
