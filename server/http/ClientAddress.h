#pragma once

#include "http/Message.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace Qel::Http {

/// A block of addresses, as "10.0.0.0/8", or one address.
struct AddressBlock
{
    QByteArray bytes; ///< 16 of them; IPv4 as in ::ffff:0:0/96
    int bits = 128;   ///< that count, from the front

    bool Contains(const QByteArray &address) const; ///< numeric
};

/// Throws EQelError for a text that is no numeric address or block.
AddressBlock ParseAddressBlock(const QString &text);

/// Where the request comes from: the other end of the connection, or, if that is a trusted proxy,
/// the address that the proxies name, the last one that is not a trusted proxy's itself. What is
/// in front of that may be anybody's invention. A proxy that names nothing readable, or that let
/// two headers through that do not agree, is taken for the client.
QByteArray ClientAddress(const Request &request, const QList<AddressBlock> &trusted);

/// What log-ins are counted by: the address, of IPv6 the first 64 bits, which is what one
/// customer of a network has. IPv4 is the same in either notation.
QByteArray LoginAddress(const QByteArray &address);

} // namespace Qel::Http
