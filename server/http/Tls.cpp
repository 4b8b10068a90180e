#include "http/Tls.h"

#include "dataset/QelError.h"

using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

namespace ssl = boost::asio::ssl;

/// For TLS 1.2; all that 1.3 knows are good.
constexpr char Ciphers[] = "ECDHE+AESGCM:ECDHE+CHACHA20";

[[noreturn]] void Fail(const QString &what, const QString &file,
                       const boost::system::error_code &error)
{
    throw EQelError(u"%1 %2：%3"_s.arg(what, file, QString::fromStdString(error.message())));
}

} // namespace

std::shared_ptr<ssl::context> LoadTls(const QString &certificate, const QString &key)
{
    auto context = std::make_shared<ssl::context>(ssl::context::tls_server);
    SSL_CTX *native = context->native_handle();
    SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
    SSL_CTX_set_cipher_list(native, Ciphers);
    // A client that has gone without a word is no error of the protocol: lengths tell.
    SSL_CTX_set_options(native, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION |
                                    SSL_OP_CIPHER_SERVER_PREFERENCE | SSL_OP_IGNORE_UNEXPECTED_EOF);
    // Sessions that clients resume are kept by the clients (tickets), not in this process.
    SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
    // A key with a password would wait for somebody at a terminal.
    context->set_password_callback([](auto, auto) { return std::string(); });

    boost::system::error_code error;
    context->use_certificate_chain_file(certificate.toStdString(), error);
    if (error)
        Fail(u"无法读取证书"_s, certificate, error);
    context->use_private_key_file(key.toStdString(), ssl::context::pem, error);
    if (error &&
        ERR_GET_REASON(static_cast<unsigned long>(error.value())) == X509_R_KEY_VALUES_MISMATCH)
        throw EQelError(u"私钥 %1 不属于证书 %2。"_s.arg(key, certificate));
    if (error)
        Fail(u"无法读取私钥"_s, key, error);
    return context;
}

} // namespace Qel::Http
