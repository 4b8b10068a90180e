#pragma once

#include "wire/Wire.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

#include <initializer_list>

namespace Qel::Wire {

/// One item of a message that is being read, with the way to it for error texts
/// ("rows[3].values[0]"). Both formats are read through it. Every member throws EWireError if the
/// item is not what is asked for. Lives on the stack, below the item that holds it.
class WireItem
{
public:
    /// The whole message. Throws if the bytes are no CBOR or JSON, or go on after its end.
    static QCborValue Parse(const QByteArray &body, Format format);

    explicit WireItem(const QCborValue &message)
        : value_(message)
    {
    }

    /// A map with exactly these keys.
    void ExpectKeys(std::initializer_list<QLatin1StringView> keys) const;
    WireItem operator[](QLatin1StringView key) const;

    qsizetype ArraySize(qsizetype largest) const;
    WireItem operator[](qsizetype index) const;

    bool IsNull() const { return value_.isNull(); }
    QString Text() const;
    qint64 Number(qint64 smallest, qint64 largest) const;

    [[noreturn]] void Fail(const QString &what) const;

private:
    WireItem(const WireItem *parent, QCborValue value, QLatin1StringView key, qsizetype index)
        : value_(std::move(value))
        , parent_(parent)
        , key_(key)
        , index_(index)
    {
    }
    QString Path() const;

    QCborValue value_;
    const WireItem *parent_ = nullptr;
    QLatin1StringView key_;
    qsizetype index_ = -1;
};

/// `[[name, value], ...]`, names not empty and different without regard to case.
NamedValues ReadNamedValues(const WireItem &item);
QCborArray NamedValuesTree(const NamedValues &values);

/// The bytes of a message of maps, arrays, texts and numbers.
QByteArray WriteTree(const QCborMap &message, Format format);

} // namespace Qel::Wire
