#pragma once

#include <QString>

#include <utility> // before Asio: its coroutine headers use std::exchange without including it

#include <boost/asio/ssl/context.hpp>

#include <memory>

namespace Qel::Http {

/// What a server shows its clients and encrypts with: TLS 1.2 and later, ciphers with forward
/// secrecy only. `certificate`: a PEM file with the chain, the server's own first; `key`: a PEM
/// file with the private key, without a password. Throws EQelError that names the file.
std::shared_ptr<boost::asio::ssl::context> LoadTls(const QString &certificate, const QString &key);

} // namespace Qel::Http
