#include "reference/Statement.h"

using namespace Qt::StringLiterals;

namespace Qel::Reference {

namespace {

QString Text(const Term &term);

QStringList Texts(const QList<TermPtr> &terms)
{
    QStringList texts;
    for (const TermPtr &term : terms)
        texts << Text(*term);
    return texts;
}

QString LiteralText(const Cell &cell)
{
    if (const auto *number = std::get_if<qint64>(&cell))
        return QString::number(*number);
    if (const auto *text = std::get_if<QString>(&cell))
        return u'\'' + QString(*text).replace(u'\'', u"''"_s) + u'\'';
    return u"NULL"_s;
}

QString Text(const Term &term)
{
    const QStringList parts = Texts(term.arguments);
    const QString negation = term.negated ? u" NOT"_s : QString();
    switch (term.kind) {
    case Kind::Column:
        return term.text + (term.marked ? u"(+)"_s : QString());
    case Kind::Literal:
        return term.text.isEmpty() ? LiteralText(term.literal) : term.text;
    case Kind::Call:
        return term.text + u'(' + parts.join(u',') + u')';
    case Kind::Aggregate:
        return term.text + (term.distinct ? u"(DISTINCT "_s : u"("_s) +
               (parts.isEmpty() ? u"*"_s : parts[0]) + u')';
    case Kind::Concat:
        return u'(' + parts.join(u"||"_s) + u')';
    case Kind::Add:
        return u'(' + parts.join(u'+') + u')';
    case Kind::Case:
        return u"CASE WHEN %1 THEN %2 ELSE %3 END"_s.arg(parts[0], parts[1], parts[2]);
    case Kind::Scalar:
        return u'(' + Text(*term.select) + u')';
    case Kind::Compare:
        return parts[0] + term.text + parts[1];
    case Kind::IsNull:
        return parts[0] + u" IS"_s + negation + u" NULL"_s;
    case Kind::Like:
        return parts[0] + negation + u" LIKE "_s + parts[1];
    case Kind::Between:
        return parts[0] + negation + u" BETWEEN "_s + parts[1] + u" AND "_s + parts[2];
    case Kind::InList:
        return parts[0] + negation + u" IN ("_s + parts.mid(1).join(u',') + u')';
    case Kind::InSelect:
        return parts[0] + negation + u" IN ("_s + Text(*term.select) + u')';
    case Kind::Exists:
        return u"EXISTS ("_s + Text(*term.select) + u')';
    case Kind::And:
        return u'(' + parts.join(u" AND "_s) + u')';
    case Kind::Or:
        return u'(' + parts.join(u" OR "_s) + u')';
    case Kind::Not:
        return u"NOT ("_s + parts[0] + u')';
    }
    return {};
}

QString Text(const Item &item, const Select &select)
{
    if (!item.value)
        return item.starOf < 0 ? u"*"_s : select.sources[item.starOf].alias + u".*"_s;
    return Text(*item.value) + (item.label.isEmpty() ? QString() : u" AS "_s + item.label);
}

QString Text(const Source &source)
{
    const QString what =
        source.select ? u'(' + Text(*source.select) + u')' : u"T%1"_s.arg(source.table);
    return source.aliasWritten ? what + u' ' + source.alias : what;
}

QString Text(const OrderTerm &order, const Select &select)
{
    QString text;
    if (order.item < 0)
        text = Text(*order.value);
    else
        text = order.byLabel ? select.items[order.item].label : QString::number(order.item + 1);
    if (order.descending)
        text += u" DESC"_s;
    if (order.nullsFirst)
        text += *order.nullsFirst ? u" NULLS FIRST"_s : u" NULLS LAST"_s;
    return text;
}

template <typename List, typename Write>
QString Joined(const List &list, const QString &separator, Write write)
{
    QStringList texts;
    for (const auto &one : list)
        texts << write(one);
    return texts.join(separator);
}

} // namespace

QString Shown(const Cell &cell)
{
    if (const auto *number = std::get_if<qint64>(&cell))
        return QString::number(*number);
    const auto *text = std::get_if<QString>(&cell);
    return text ? *text : u"-"_s;
}

QString Text(const Select &select)
{
    QString text = select.distinct ? u"SELECT DISTINCT "_s : u"SELECT "_s;
    text += Joined(select.items, u","_s, [&](const Item &item) { return Text(item, select); });
    text += u" FROM "_s +
            Joined(select.sources, u","_s, [](const Source &source) { return Text(source); });
    QStringList where;
    for (const Conjunct &conjunct : select.where)
        where << Text(*conjunct.condition);
    if (select.bracketed && where.size() > 2)
        where = QStringList{u'(' + where[0] + u" AND "_s + where[1] + u')'} + where.mid(2);
    if (!where.isEmpty())
        text += u" WHERE "_s + where.join(u" AND "_s);
    if (!select.groupBy.isEmpty())
        text += u" GROUP BY "_s + Texts(select.groupBy).join(u',');
    if (select.having)
        text += u" HAVING "_s + Text(*select.having);
    if (!select.orderBy.isEmpty())
        text += u" ORDER BY "_s + Joined(select.orderBy, u","_s, [&](const OrderTerm &order) {
                    return Text(order, select);
                });
    return text;
}

QStringList LabelsOf(const Select &select)
{
    QStringList labels;
    for (const Item &item : select.items) {
        if (item.value) {
            labels << (item.label.isEmpty() ? item.value->text.section(u'.', -1) : item.label);
            continue;
        }
        for (int i = 0; i < select.sources.size(); ++i)
            if (item.starOf < 0 || item.starOf == i)
                labels << select.sources[i].columns;
    }
    return labels;
}

QList<Type> TypesOf(const Select &select)
{
    QList<Type> types;
    for (const Item &item : select.items) {
        if (item.value) {
            types << item.value->type;
            continue;
        }
        for (int i = 0; i < select.sources.size(); ++i)
            if (item.starOf < 0 || item.starOf == i)
                types << select.sources[i].types;
    }
    return types;
}

} // namespace Qel::Reference
