#include "wire/WireTree.h"

#include <QCborStreamReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace Qel::Wire {

using namespace Qt::StringLiterals;

QCborValue WireItem::Parse(const QByteArray &body, Format format)
{
    if (format == Format::Json) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(body, &error);
        if (error.error != QJsonParseError::NoError) {
            throw EWireError(
                u"报文不是 JSON：%1（第 %2 字节）"_s.arg(error.errorString()).arg(error.offset));
        }
        return QCborValue::fromJsonValue(document.isObject() ? QJsonValue(document.object())
                                                             : QJsonValue());
    }
    QCborStreamReader reader(body);
    const QCborValue value = QCborValue::fromCbor(reader);
    if (reader.lastError() != QCborError::NoError) {
        throw EWireError(u"报文不是 CBOR：%1（第 %2 字节）"_s.arg(reader.lastError().toString())
                             .arg(reader.currentOffset()));
    }
    if (reader.currentOffset() != body.size()) {
        throw EWireError(u"报文结尾之后还有多余的字节（第 %1 字节）"_s.arg(reader.currentOffset()));
    }
    return value;
}

void WireItem::ExpectKeys(std::initializer_list<QLatin1StringView> keys) const
{
    if (!value_.isMap())
        Fail(u"应为映射"_s);
    const QCborMap map = value_.toMap();
    for (const QLatin1StringView key : keys) {
        if (!map.contains(key))
            Fail(u"缺少键“%1”"_s.arg(key));
    }
    for (const auto &[key, value] : map) {
        const QString name = key.toString();
        if (!key.isString() || std::find(keys.begin(), keys.end(), name) == keys.end())
            Fail(u"未知的键“%1”"_s.arg(key.isString() ? name : key.toDiagnosticNotation()));
    }
    // All keys are known and each is there, so more of them than names means a repetition.
    if (map.size() != qsizetype(keys.size()))
        Fail(u"键重复"_s);
}

WireItem WireItem::operator[](QLatin1StringView key) const
{
    return {this, value_.toMap().value(key), key, -1};
}

qsizetype WireItem::ArraySize(qsizetype largest) const
{
    if (!value_.isArray())
        Fail(u"应为数组"_s);
    const qsizetype size = value_.toArray().size();
    if (size > largest)
        Fail(u"有 %1 项，最多 %2 项"_s.arg(size).arg(largest));
    return size;
}

WireItem WireItem::operator[](qsizetype index) const
{
    return {this, value_.toArray().at(index), {}, index};
}

QString WireItem::Text() const
{
    if (!value_.isString())
        Fail(u"应为文本"_s);
    QString text = value_.toString();
    // JSON can write half a surrogate pair, which no UTF-8 holds: it would be stored as another.
    if (!text.isValidUtf16())
        Fail(u"含有不成对的代理字符"_s);
    return text;
}

qint64 WireItem::Number(qint64 smallest, qint64 largest) const
{
    if (!value_.isInteger())
        Fail(u"应为整数"_s);
    const qint64 number = value_.toInteger();
    if (number < smallest || number > largest)
        Fail(u"%1 不在 %2 到 %3 之间"_s.arg(number).arg(smallest).arg(largest));
    return number;
}

QString WireItem::Path() const
{
    if (!parent_)
        return u"报文"_s;
    const QString before = parent_->parent_ ? parent_->Path() : QString();
    if (index_ >= 0)
        return before + u'[' + QString::number(index_) + u']';
    return before.isEmpty() ? QString(key_) : before + u'.' + key_;
}

void WireItem::Fail(const QString &what) const
{
    throw EWireError(u"报文有误：%1：%2"_s.arg(Path(), what));
}

NamedValues ReadNamedValues(const WireItem &item)
{
    NamedValues values;
    QSet<QString> manyNames; // of long lists only: comparing a dozen names is quicker
    constexpr qsizetype few = 16;
    const qsizetype size = item.ArraySize(MaxValuesPerRow);
    values.reserve(size);
    for (qsizetype i = 0; i < size; ++i) {
        const WireItem pair = item[i];
        if (pair.ArraySize(2) != 2)
            pair.Fail(u"应为名称和值两项"_s);
        const WireItem nameItem = pair[0];
        const QString name = nameItem.Text();
        if (name.isEmpty())
            nameItem.Fail(u"名称为空"_s);
        bool isKnown = false;
        if (size > few) {
            const qsizetype before = manyNames.size();
            manyNames.insert(name.toUpper());
            isKnown = manyNames.size() == before;
        } else {
            isKnown = std::any_of(values.begin(), values.end(), [&](const NamedValue &one) {
                return one.first.compare(name, Qt::CaseInsensitive) == 0;
            });
        }
        if (isKnown)
            nameItem.Fail(u"名称“%1”重复"_s.arg(name));
        values.append({name, pair[1].Text()});
    }
    return values;
}

QCborArray NamedValuesTree(const NamedValues &values)
{
    QCborArray tree;
    for (const auto &[name, value] : values)
        tree.append(QCborArray{name, value});
    return tree;
}

QByteArray WriteTree(const QCborMap &message, Format format)
{
    if (format == Format::Json)
        return QJsonDocument(message.toJsonObject()).toJson(QJsonDocument::Compact);
    return message.toCborValue().toCbor();
}

} // namespace Qel::Wire
