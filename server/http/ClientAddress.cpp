#include "http/ClientAddress.h"

#include "dataset/QelError.h"

#include <boost/asio/ip/address.hpp>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

namespace ip = boost::asio::ip;

constexpr int AllBits = 128;
constexpr int MappedBits = 96; ///< in front of an IPv4 address
constexpr qsizetype CustomerBytes = 8;

/// As 16 bytes; nothing for a text that is no address.
std::optional<QByteArray> BytesOf(const QByteArray &text)
{
    boost::system::error_code error;
    const auto address = ip::make_address(text.toStdString(), error);
    if (error)
        return std::nullopt;
    const auto bytes =
        (address.is_v4() ? ip::make_address_v6(ip::v4_mapped, address.to_v4()) : address.to_v6())
            .to_bytes();
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), std::ssize(bytes));
}

bool IsMapped(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArray(10, '\0') + "\xff\xff");
}

/// "1.2.3.4", "1.2.3.4:80", "::1", "[::1]:80" to the address alone; empty if there is none.
QByteArray WithoutPort(QByteArray text)
{
    if (text.startsWith('['))
        text = text.mid(1, text.indexOf(']') - 1);
    else if (text.count(':') == 1)
        text.truncate(text.indexOf(':'));
    return BytesOf(text) ? text : QByteArray();
}

QList<QByteArray> AddressesOf(const QByteArray &forwardedFor)
{
    QList<QByteArray> addresses;
    for (const QByteArray &one : forwardedFor.split(','))
        addresses += WithoutPort(one.trimmed());
    return addresses;
}

/// The for= part of each element of a Forwarded header.
QList<QByteArray> AddressesOfElements(const QByteArray &forwarded)
{
    QList<QByteArray> addresses;
    for (const QByteArray &element : forwarded.split(',')) {
        QByteArray address;
        for (const QByteArray &pair : element.split(';')) {
            const QByteArray one = pair.trimmed();
            if (one.left(4).toLower() == "for=")
                address = one.mid(4).replace('"', "");
        }
        addresses += WithoutPort(address);
    }
    return addresses;
}

bool IsTrusted(const QByteArray &address, const QList<AddressBlock> &trusted)
{
    return std::ranges::any_of(trusted, [&](const auto &block) { return block.Contains(address); });
}

/// From the nearest to the farthest, through as many proxies as are trusted.
QByteArray LastUntrusted(const QByteArray &peer, const QList<QByteArray> &named,
                         const QList<AddressBlock> &trusted)
{
    QByteArray address = peer;
    for (auto next = named.crbegin(); next != named.crend() && IsTrusted(address, trusted);
         ++next) {
        if (next->isEmpty())
            break;
        address = *next;
    }
    return address;
}

} // namespace

bool AddressBlock::Contains(const QByteArray &address) const
{
    const auto other = BytesOf(address);
    if (!other)
        return false;
    for (int bit = 0; bit < bits; ++bit) {
        const int mask = 0x80 >> (bit % 8);
        if (((bytes[bit / 8] ^ (*other)[bit / 8]) & mask) != 0)
            return false;
    }
    return true;
}

AddressBlock ParseAddressBlock(const QString &text)
{
    const QString address = text.section(u'/', 0, 0).trimmed();
    const auto bytes = BytesOf(address.toLatin1());
    const int offset = bytes && IsMapped(*bytes) ? MappedBits : 0;
    bool ok = true;
    const int bits = text.contains(u'/') ? text.section(u'/', 1).toInt(&ok) + offset : int(AllBits);
    if (!bytes || !ok || bits < offset || bits > AllBits)
        throw EQelError(u"不是数字地址或地址段：%1"_s.arg(text));
    return {*bytes, bits};
}

QByteArray ClientAddress(const Request &request, const QList<AddressBlock> &trusted)
{
    if (!IsTrusted(request.address, trusted))
        return request.address;
    const auto through = [&](const QList<QByteArray> &named) {
        return LastUntrusted(request.address, named, trusted);
    };
    if (request.forwarded.isEmpty())
        return through(AddressesOf(request.forwardedFor));
    const QByteArray address = through(AddressesOfElements(request.forwarded));
    if (request.forwardedFor.isEmpty() || address == through(AddressesOf(request.forwardedFor)))
        return address;
    return request.address;
}

QByteArray LoginAddress(const QByteArray &address)
{
    const auto bytes = BytesOf(address);
    if (!bytes)
        return address;
    return IsMapped(*bytes) ? *bytes : bytes->left(CustomerBytes);
}

} // namespace Qel::Http
