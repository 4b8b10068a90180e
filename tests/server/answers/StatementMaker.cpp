#include "answers/StatementMaker.h"

#include <QScopedValueRollback>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Answers {

namespace {

enum class Type { Text, Number, Date };

struct Column
{
    QString name;
    Type type = Type::Text;
    bool digits = false; ///< a text of digits in every row
};

struct Source
{
    QString alias;
    QString text; ///< in FROM
    const Sample *sample = nullptr;
    QList<Column> columns;
    QStringList key; ///< columns that tell its rows apart
};

struct Scope
{
    QList<Source> sources;
    const Scope *outer = nullptr;
    bool grouped = false; ///< only `groups` may stand outside of an aggregate
    QStringList groups[3];
};

const QStringList Comparisons{u"="_s, u"<>"_s, u"<"_s, u"<="_s, u">"_s, u">="_s};
const QStringList AwkwardTexts{u"''"_s,        u"' '"_s,  u"'%'"_s,    u"'_'"_s,     u"'\\'"_s,
                               u"'O''Hara'"_s, u"'ß'"_s,  u"'Ⅷ'"_s,    u"'ａｂ'"_s,  u"'ǅ'"_s,
                               u"'😀'"_s,       u"'药'"_s, u"' 一 '"_s, u"'İ'"_s,     u"'0010'"_s,
                               u"'1.50'"_s,    u"'.5'"_s, u"'-7'"_s,   u"'中文ab'"_s};
const QStringList Numbers{u"0"_s,   u"1"_s,      u"2"_s,     u"10"_s,        u"100"_s,
                          u".5"_s,  u"0.25"_s,   u"1.10"_s,  u"3.333"_s,     u"100000"_s,
                          u"0.1"_s, u"99.995"_s, u"0.001"_s, u"123456789"_s, u"2.675"_s};
const QStringList DateFormats{u"'YYYY-MM-DD'"_s,
                              u"'yyyy-mm-dd HH24:MI:SS'"_s,
                              u"'YYYY/MM'"_s,
                              u"'MM.DD'"_s,
                              u"'HH12:MI'"_s,
                              u"'YY-MM'"_s,
                              u"'YYYY\"年\"MM\"月\"'"_s,
                              u"'yyyymmddhh24miss'"_s};
constexpr int MostSources = 3;

QString Quoted(const QString &text)
{
    return u'\'' + QString(text).replace(u'\'', u"''"_s) + u'\'';
}

/// Which record a column names: those of one family are joined. Empty: none.
QString Family(const QString &column)
{
    if (column.endsWith(u"ORGID"_s) || column == u"ORG_ID")
        return u"ORG"_s;
    if (column == u"PARENT_ID")
        return u"UNION_ID"_s; // or a region, of other numbers
    if (column == u"TREE_CODE" || column == u"LAST_USER_ID" || column == u"ID")
        return {};
    return column.endsWith(u"_ID"_s) || column == u"ORD_CODE" ? column : QString();
}

class Maker
{
public:
    Maker(Dice &dice, const QList<Sample> &samples)
        : dice_(dice)
        , samples_(samples)
    {
    }

    MadeStatement Statement()
    {
        switch (dice_.Below(10)) {
        case 0:
        case 1:
            made_.text = Grouped();
            break;
        case 2:
        case 3:
            made_.text = Wrapped();
            break;
        default:
            made_.text = Flat(dice_.Below(4), !dice_.OneIn(4));
        }
        return made_;
    }

private:
    // --- shapes

    /// `total`: in an order that leaves nothing open.
    QString Flat(int depth, bool total)
    {
        Scope scope;
        const QString from = From(scope, 1 + dice_.Below(MostSources));
        const bool distinct = dice_.OneIn(6);
        QStringList items;
        if (!distinct && dice_.OneIn(4)) {
            items << (dice_.OneIn(2) ? dice_.Any(scope.sources).alias + u".*"_s : u"*"_s);
        } else {
            for (int i = 1 + dice_.Below(4); i > 0; --i)
                items << AnyValue(scope, depth) + u" AS C%1"_s.arg(i);
        }
        const QString where = Where(scope, depth);
        QStringList order;
        if (distinct) {
            for (int i = 1; total && i <= items.size(); ++i)
                order << QString::number(i) + Direction();
        } else {
            for (int i = dice_.Below(3); i > 0; --i)
                order << NotANumber(AnyValue(scope, std::min(depth, 1))) + Direction();
            if (total)
                order += Keys(scope);
            else
                order.clear();
        }
        made_.ordered = total;
        return u"SELECT "_s + (distinct ? u"DISTINCT "_s : u""_s) + items.join(u',') + from +
               where + OrderBy(order);
    }

    QString Grouped()
    {
        Scope scope;
        const QString from = From(scope, 1 + dice_.Below(2));
        const QString where = Where(scope, 1);
        QStringList groups;
        for (int i = dice_.Below(3); i > 0; --i) {
            const Type type = AnyType();
            const QString value = Value(scope, type, dice_.Below(2));
            if (!HasColumn(value))
                continue; // a literal groups nothing
            groups << value;
            scope.groups[int(type)] << value;
        }
        scope.grouped = true;
        QStringList items;
        for (int i = 0; i < groups.size(); ++i)
            items << groups[i] + u" AS G%1"_s.arg(i);
        for (int i = 1 + dice_.Below(3); i > 0; --i)
            items << Aggregate(scope) + u" AS C%1"_s.arg(i);
        QString having;
        if (dice_.OneIn(3))
            having =
                u" HAVING COUNT(*)"_s + dice_.Any(Comparisons) + QString::number(dice_.Below(4));
        QStringList order;
        for (int i = 1; i <= groups.size(); ++i)
            order << QString::number(i) + Direction();
        if (dice_.OneIn(3))
            order.prepend(QString::number(items.size()) + Direction());
        made_.ordered = true;
        return u"SELECT "_s + items.join(u',') + from + where +
               (groups.isEmpty() ? QString() : u" GROUP BY "_s + groups.join(u',')) + having +
               OrderBy(order);
    }

    /// A part of an ordered list, as pages were written before there were pages.
    QString Wrapped()
    {
        const QString inner = Flat(1, true);
        const QString upTo = QString::number(dice_.Below(30));
        switch (dice_.Below(4)) {
        case 0:
            return u"SELECT * FROM ("_s + inner + u") WHERE ROWNUM <= "_s + upTo;
        case 1:
            return u"SELECT * FROM (SELECT ROWNUM AS RN, A.* FROM ("_s + inner +
                   u") A WHERE ROWNUM <= "_s + upTo + u") WHERE RN > "_s +
                   QString::number(dice_.Below(10));
        case 2:
            made_.ordered = true;
            return u"SELECT COUNT(*) AS N FROM ("_s + inner + u')';
        default:
            return u"SELECT ROWNUM AS RN, A.* FROM ("_s + inner + u") A"_s;
        }
    }

    static QString OrderBy(const QStringList &order)
    {
        return order.isEmpty() ? QString() : u" ORDER BY "_s + order.join(u',');
    }

    QString Direction()
    {
        return (dice_.OneIn(3) ? u" DESC"_s : u""_s) +
               (dice_.OneIn(4) ? (dice_.OneIn(2) ? u" NULLS FIRST"_s : u" NULLS LAST"_s) : u""_s);
    }

    /// A number alone would name a column of the list.
    static QString NotANumber(const QString &value) { return u"NVL("_s + value + u",NULL)"_s; }

    static QStringList Keys(const Scope &scope)
    {
        QStringList keys;
        for (const Source &source : scope.sources) {
            for (const QString &column : source.key)
                keys << source.alias + u'.' + column;
        }
        return keys;
    }

    bool HasColumn(const QString &value) const
    {
        return value.contains(u'T') && value.contains(u'.') && !value.contains(u'(');
    }

    // --- FROM and WHERE

    Source TableSource(const Sample &sample)
    {
        Source source;
        source.alias = u"T%1"_s.arg(++aliases_);
        source.text = QString::fromStdString(sample.table->name) + u' ' + source.alias;
        source.sample = &sample;
        for (const Sql::Column &column : sample.table->columns) {
            const QString name = QString::fromStdString(column.name);
            const Type type = column.type == Sql::ColumnType::Text       ? Type::Text
                              : column.type == Sql::ColumnType::DateTime ? Type::Date
                                                                         : Type::Number;
            const int at = int(source.columns.size());
            const bool digits =
                type == Type::Text && !Family(name).isEmpty() &&
                std::ranges::all_of(sample.rows, [at](const QStringList &row) {
                    return std::ranges::all_of(row[at], [](QChar c) { return c.isDigit(); });
                });
            source.columns << Column{name, type, digits};
        }
        for (const int column : sample.table->primaryKey)
            source.key << source.columns[column].name;
        return source;
    }

    QString From(Scope &scope, int count)
    {
        scope.sources << TableSource(dice_.Any(samples_));
        where_ = {Range(scope.sources.front())};
        while (scope.sources.size() < count) {
            if (!Join(scope))
                break;
        }
        if (dice_.OneIn(6))
            Wrap(scope.sources.back());
        QStringList from;
        for (const Source &source : std::as_const(scope.sources))
            from << source.text;
        return u" FROM "_s + from.join(u", "_s);
    }

    /// A sub-select of all columns stands in for the table.
    void Wrap(Source &source)
    {
        QStringList names;
        for (const Column &column : std::as_const(source.columns))
            names << column.name;
        Scope inner;
        inner.sources << source;
        source.text = u"(SELECT "_s + (dice_.OneIn(2) ? names.join(u',') : source.alias + u".*"_s) +
                      u" FROM "_s + source.text +
                      (dice_.OneIn(2) ? u" WHERE "_s + Condition(inner, 1) : QString()) + u") "_s +
                      source.alias;
    }

    /// Some rows of the table.
    QString Range(const Source &source)
    {
        const Sample &sample = *source.sample;
        if (sample.rows.isEmpty() || (!sample.large && dice_.OneIn(2)))
            return {};
        const Sql::ColumnList &key = sample.table->primaryKey;
        const auto name = [&](int column) {
            return source.alias + u'.' + source.columns[column].name;
        };
        bool whole = false;
        const qint64 first = dice_.Any(sample.rows)[key.front()].toLongLong(&whole);
        if (whole && key.size() == 1 && dice_.OneIn(2))
            return name(key.front()) + u" BETWEEN "_s + Quoted(QString::number(first)) +
                   u" AND "_s + Quoted(QString::number(first + dice_.Below(40)));
        QStringList list;
        for (int i = 1 + dice_.Below(12); i > 0; --i) {
            const QStringList &row = dice_.Any(sample.rows);
            QStringList parts;
            for (const int column : key)
                parts << name(column) + u'=' + Quoted(row[column]);
            list << (key.size() == 1 ? Quoted(row[key.front()])
                                     : u'(' + parts.join(u" AND "_s) + u')');
        }
        return key.size() == 1 ? name(key.front()) + u" IN ("_s + list.join(u',') + u')'
                               : u'(' + list.join(u" OR "_s) + u')';
    }

    bool Join(Scope &scope)
    {
        for (int attempt = 0; attempt < 30; ++attempt) {
            const Source &near = dice_.Any(scope.sources);
            const QString column = dice_.Any(near.columns).name;
            const QString family = Family(column);
            const Sample &sample = dice_.Any(samples_);
            if (family.isEmpty())
                continue;
            const Source far = TableSource(sample);
            for (int i = 0; i < far.columns.size(); ++i) {
                if (Family(far.columns[i].name) != family || !sample.foundBy.contains(i))
                    continue;
                const int mark = dice_.Below(3); // none, far, near
                const QString left = near.alias + u'.' + column + (mark == 2 ? u"(+)"_s : u""_s);
                const QString right =
                    far.alias + u'.' + far.columns[i].name + (mark == 1 ? u"(+)"_s : u""_s);
                // Outer to two others it would leave nothing between them.
                if (mark == 2 && (sample.large || scope.sources.size() > 1))
                    break;
                where_ << (dice_.OneIn(2) ? left + u'=' + right : right + u" = "_s + left);
                scope.sources << far;
                return true;
            }
        }
        return false;
    }

    QString Where(const Scope &scope, int depth)
    {
        QStringList parts = where_;
        parts.removeAll(QString());
        for (int i = dice_.Below(3); i > 0; --i)
            parts << u'(' + Condition(scope, depth) +
                         (dice_.OneIn(3) ? QString() : u" OR "_s + Condition(scope, 0)) + u')';
        dice_.Shuffle(parts);
        return parts.isEmpty() ? QString() : u" WHERE "_s + parts.join(u" AND "_s);
    }

    // --- literals

    Type AnyType()
    {
        const int face = dice_.Below(6);
        return face < 3 ? Type::Text : face < 5 ? Type::Number : Type::Date;
    }

    /// What stands somewhere in the tables, or a piece of it.
    QString SampleText()
    {
        for (int attempt = 0; attempt < 10; ++attempt) {
            const Sample &sample = dice_.Any(samples_);
            if (sample.rows.isEmpty())
                continue;
            const QString text = dice_.Any(dice_.Any(sample.rows));
            if (text.isEmpty() || text.size() > 60)
                continue;
            if (dice_.OneIn(2))
                return text;
            return text.mid(dice_.Below(int(text.size())), 1 + dice_.Below(4));
        }
        return u"1"_s;
    }

    QString Literal(Type type)
    {
        if (dice_.OneIn(12))
            return u"NULL"_s;
        switch (type) {
        case Type::Text:
            return dice_.OneIn(3) ? dice_.Any(AwkwardTexts) : Quoted(SampleText());
        case Type::Number:
            return dice_.Any(Numbers);
        case Type::Date:
            break;
        }
        const QString day = u"202%1-%2-%3"_s.arg(dice_.Below(8))
                                .arg(1 + dice_.Below(12), 2, 10, QChar(u'0'))
                                .arg(1 + dice_.Below(28), 2, 10, QChar(u'0'));
        switch (dice_.Below(3)) {
        case 0:
            return u"DATE '"_s + day + u'\'';
        case 1:
            return u"to_date('"_s + day + u" 23:59:59','yyyy-mm-dd HH24:MI:SS')"_s;
        default:
            return u"TO_DATE('"_s + day + u"','YYYY-MM-DD')"_s;
        }
    }

    QString Pattern(const Scope &scope)
    {
        QString text = SampleText();
        switch (dice_.Below(9)) {
        case 0:
            return Quoted(text + u'%');
        case 1:
            return Quoted(u'%' + text);
        case 2:
            return Quoted(text.replace(dice_.Below(int(text.size())), 1, u'_'));
        case 3:
            return dice_.Any(AwkwardTexts);
        case 4:
            return u"'%'||"_s + Value(scope, Type::Text, 0) + u"||'%'"_s;
        case 5:
            return Quoted(u'%' + text.left(1) + u'%' + text.right(1) + u'%');
        default:
            return Quoted(u'%' + text + u'%');
        }
    }

    // --- values

    QString AnyValue(const Scope &scope, int depth) { return Value(scope, AnyType(), depth); }

    /// A column of this type; a literal if there is none.
    QString ColumnOf(const Scope &scope, Type type, bool digits = false)
    {
        const Scope *at = &scope;
        while (at->outer && dice_.OneIn(3))
            at = at->outer;
        if (at->grouped)
            return at->groups[int(type)].isEmpty() || digits ? Literal(type)
                                                             : dice_.Any(at->groups[int(type)]);
        const Source &source = dice_.Any(at->sources);
        QStringList names;
        for (const Column &column : source.columns) {
            if (column.type == type && (!digits || column.digits))
                names << source.alias + u'.' + column.name;
        }
        return names.isEmpty() ? (digits ? u"'12'"_s : Literal(type)) : dice_.Any(names);
    }

    QString Value(const Scope &scope, Type type, int depth)
    {
        if (depth <= 0 || dice_.OneIn(3))
            return dice_.OneIn(4) ? Literal(type) : ColumnOf(scope, type);
        const auto part = [&](Type of) { return Value(scope, of, depth - 1); };
        switch (dice_.Below(9)) {
        case 0:
            return u"NVL("_s + part(type) + u',' + part(type) + u')';
        case 1:
            return u"NVL2("_s + part(AnyType()) + u',' + part(type) + u',' + part(type) + u')';
        case 2: {
            const Type of = AnyType();
            QString text = u"DECODE("_s + part(of);
            for (int i = 1 + dice_.Below(2); i > 0; --i)
                text += u',' + (dice_.OneIn(4) ? u"NULL"_s : part(of)) + u',' + part(type);
            return text + (dice_.OneIn(2) ? u',' + part(type) : QString()) + u')';
        }
        case 3:
            return u"CASE WHEN "_s + Condition(scope, depth - 1) + u" THEN "_s + part(type) +
                   (dice_.OneIn(3) ? QString() : u" ELSE "_s + part(type)) + u" END"_s;
        case 4: {
            const Type of = AnyType();
            return u"CASE "_s + part(of) + u" WHEN "_s + part(of) + u" THEN "_s + part(type) +
                   u" WHEN "_s + part(of) + u" THEN "_s + part(type) + u" ELSE "_s + part(type) +
                   u" END"_s;
        }
        case 5:
            if (dice_.OneIn(3))
                return ScalarSelect(scope, type);
            [[fallthrough]];
        default:
            return type == Type::Text     ? TextValue(scope, depth)
                   : type == Type::Number ? NumberValue(scope, depth)
                                          : DateValue(scope, depth);
        }
    }

    QString TextValue(const Scope &scope, int depth)
    {
        const auto part = [&](Type of) { return Value(scope, of, depth - 1); };
        const auto text = [&] { return part(Type::Text); };
        switch (dice_.Below(12)) {
        case 0:
            return u"UPPER("_s + text() + u')';
        case 1:
            return u"LOWER("_s + text() + u')';
        case 2:
            return u"TRIM("_s + text() + u')';
        case 3:
            return u"SUBSTR("_s + text() + u',' + QString::number(dice_.Below(8) - 3) + u')';
        case 4:
            return u"SUBSTR("_s + text() + u',' + QString::number(dice_.Below(8) - 3) + u',' +
                   (dice_.OneIn(4) ? part(Type::Number) : QString::number(dice_.Below(5))) + u')';
        case 5:
            return u'(' + text() + u"||"_s + part(AnyType()) + u')';
        case 6:
            return u"TO_CHAR("_s + part(Type::Number) + u')';
        case 7:
            return u"TO_CHAR("_s + part(Type::Date) + u',' + dice_.Any(DateFormats) + u')';
        case 8:
            return u"TO_CHAR("_s + part(Type::Date) + u')';
        case 9:
            return u"CAST("_s + part(AnyType()) + u" AS VARCHAR2("_s +
                   QString::number(1 + dice_.Below(30)) + u"))"_s;
        case 10:
            return u"CAST("_s + text() + u" AS CHAR("_s + QString::number(1 + dice_.Below(12)) +
                   u"))"_s;
        default:
            return text();
        }
    }

    QString NumberValue(const Scope &scope, int depth)
    {
        const auto number = [&] { return Value(scope, Type::Number, depth - 1); };
        switch (dice_.Below(12)) {
        case 0:
        case 1:
            return u'(' + number() + u'+' + number() + u')';
        case 2:
            return u'(' + number() + u'-' + number() + u')';
        case 3:
            return u'(' + number() + u'*' + number() + u')';
        case 4:
            return u'(' + number() + u'/' +
                   dice_.Any(QStringList{u"3"_s, u"7"_s, u"0.5"_s, u"100"_s}) + u')';
        case 5:
            made_.mayFail = true;
            return u'(' + number() + u'/' + number() + u')';
        case 6:
            return u"LENGTH("_s + Value(scope, Type::Text, depth - 1) + u')';
        case 7:
            return u"TRUNC("_s + number() + u')';
        case 8:
            return u"TRUNC("_s + number() + u',' + QString::number(dice_.Below(6) - 2) + u')';
        case 9:
            if (dice_.OneIn(6)) {
                made_.mayFail = true;
                return u"TO_NUMBER("_s + Value(scope, Type::Text, depth - 1) + u')';
            }
            return u"TO_NUMBER("_s + ColumnOf(scope, Type::Text, true) + u')';
        case 10:
            return u'(' + Value(scope, Type::Date, depth - 1) + u" - "_s +
                   ColumnOf(scope, Type::Date) + u')';
        default:
            return u"(- "_s + number() + u')';
        }
    }

    QString DateValue(const Scope &scope, int depth)
    {
        const auto date = [&] { return Value(scope, Type::Date, depth - 1); };
        switch (dice_.Below(5)) {
        case 0:
            return u"TRUNC("_s + date() + u')';
        case 1:
            return u'(' + date() +
                   dice_.Any(QStringList{u"+1"_s, u"-0.5"_s, u"+1/24"_s, u"-30"_s}) + u')';
        case 2:
            return u"TO_DATE("_s + u"TO_CHAR("_s + date() + u",'YYYY-MM-DD'),'YYYY-MM-DD')"_s;
        case 3:
            made_.mayFail = true;
            return u'(' + date() + u'+' + Value(scope, Type::Number, depth - 1) + u')';
        default:
            return date();
        }
    }

    QString Aggregate(Scope &scope)
    {
        const QScopedValueRollback<bool> inside(scope.grouped, false);
        const auto value = [&](Type type) { return Value(scope, type, dice_.Below(2)); };
        const QString distinct = dice_.OneIn(4) ? u"DISTINCT "_s : u""_s;
        switch (dice_.Below(7)) {
        case 0:
            return u"COUNT(*)"_s;
        case 1:
            return u"COUNT("_s + distinct + value(AnyType()) + u')';
        case 2:
            return u"MAX("_s + value(AnyType()) + u')';
        case 3:
            return u"MIN("_s + value(AnyType()) + u')';
        case 4:
            return u"AVG("_s + distinct + value(Type::Number) + u')';
        case 5:
            return u"NVL(SUM("_s + value(Type::Number) + u"),0)"_s;
        default:
            return u"SUM("_s + distinct + value(Type::Number) + u')';
        }
    }

    // --- sub-selects

    /// Of one table, joined to a column around if there is one of its family.
    struct Inner
    {
        Scope scope;
        QString text; ///< behind the items
    };

    Inner InnerSelect(const Scope &around, int depth)
    {
        const QStringList where = where_;
        Inner inner;
        inner.scope.outer = &around;
        inner.scope.sources << TableSource(dice_.Any(samples_));
        const Source &own = inner.scope.sources.front();
        QStringList conditions{Link(own, around)};
        if (conditions.front().isEmpty())
            conditions = QStringList{Range(own)};
        conditions.removeAll(QString());
        if (depth > 0 && dice_.OneIn(2))
            conditions << u'(' + Condition(inner.scope, 0) + u')';
        inner.text = u" FROM "_s + own.text;
        if (!conditions.isEmpty())
            inner.text += u" WHERE "_s + conditions.join(u" AND "_s);
        where_ = where;
        return inner;
    }

    QString Link(const Source &own, const Scope &around)
    {
        if (around.grouped || dice_.OneIn(3))
            return {};
        for (const Source &other : around.sources) {
            for (const Column &there : other.columns) {
                const QString family = Family(there.name);
                for (int i = 0; i < own.columns.size() && !family.isEmpty(); ++i) {
                    if (Family(own.columns[i].name) == family && own.sample->foundBy.contains(i))
                        return own.alias + u'.' + own.columns[i].name + u" = "_s + other.alias +
                               u'.' + there.name;
                }
            }
        }
        return {};
    }

    QString ScalarSelect(const Scope &scope, Type type)
    {
        const Inner inner = InnerSelect(scope, 1);
        const QString column = ColumnOf(Scope{inner.scope.sources, nullptr, false, {}}, type);
        const QString function =
            dice_.Any(type == Type::Number ? QStringList{u"MAX"_s, u"MIN"_s, u"COUNT"_s, u"SUM"_s}
                                           : QStringList{u"MAX"_s, u"MIN"_s});
        return u"(SELECT "_s + function + u'(' + column + u')' + inner.text + u')';
    }

    // --- conditions

    QString Condition(const Scope &scope, int depth)
    {
        const QString negation = dice_.OneIn(4) ? u" NOT"_s : u""_s;
        if (depth > 0) {
            const auto condition = [&] { return Condition(scope, depth - 1); };
            switch (dice_.Below(7)) {
            case 0:
                return u'(' + condition() + u" OR "_s + condition() + u')';
            case 1:
                return u'(' + condition() + u" AND "_s + condition() + u')';
            case 2:
                return u"NOT ("_s + condition() + u')';
            case 3: {
                const Inner inner = InnerSelect(scope, depth - 1);
                return negation + u" EXISTS (SELECT 1"_s + inner.text + u')';
            }
            case 4: {
                const Inner inner = InnerSelect(scope, depth - 1);
                const Type type = AnyType();
                return Value(scope, type, 0) + negation + u" IN (SELECT "_s +
                       ColumnOf(Scope{inner.scope.sources, nullptr, false, {}}, type) + inner.text +
                       u')';
            }
            default:
                break;
            }
        }
        const Type type = AnyType();
        const auto value = [&] { return Value(scope, type, depth); };
        switch (dice_.Below(9)) {
        case 0:
            return value() + u" IS"_s + negation + u" NULL"_s;
        case 1:
            return Value(scope, Type::Text, depth) + negation + u" LIKE "_s + Pattern(scope);
        case 2: { // as the screens search
            const QString column = ColumnOf(scope, Type::Text);
            return u"UPPER("_s + column + u") LIKE UPPER("_s + Pattern(scope) + u')';
        }
        case 3:
            return value() + negation + u" BETWEEN "_s + value() + u" AND "_s + value();
        case 4: {
            QStringList list;
            for (int i = 1 + dice_.Below(5); i > 0; --i)
                list << Literal(type);
            return value() + negation + u" IN ("_s + list.join(u',') + u')';
        }
        case 5: // a text of digits beside a number
            return ColumnOf(scope, Type::Text, true) + dice_.Any(Comparisons) +
                   Value(scope, Type::Number, depth);
        default:
            return value() + dice_.Any(Comparisons) + value();
        }
    }

    Dice &dice_;
    const QList<Sample> &samples_;
    MadeStatement made_;
    QStringList where_;
    int aliases_ = 0;
};

} // namespace

MadeStatement MakeStatement(Dice &dice, const QList<Sample> &samples)
{
    return Maker(dice, samples).Statement();
}

} // namespace Qel::Answers
