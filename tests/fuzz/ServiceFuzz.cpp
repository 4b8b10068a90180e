#include "Fuzz.h"

#include "http/Metrics.h"
#include "http/Negotiation.h"
#include "http/Problem.h"
#include "http/Service.h"
#include "support/TestDatabase.h"

#include <QFile>

#include <array>
#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr std::array<const char *, 4> MediaTypes{Wire::CborType, Wire::JsonType, "text/plain", ""};
constexpr const char *PostPath = "/NorvaneServlet";
constexpr const char *QueryPath = "/NorvaneSelectServlet";
constexpr std::array<const char *, 4> Paths{PostPath, QueryPath, "/session", "/healthz"};

QByteArray FileBytes(const QString &path)
{
    QFile file(path);
    Fuzz::Require(file.open(QIODevice::ReadOnly), "a file can be read");
    return file.readAll();
}

/// The service over a database that every input finds the same: after a post that was stored the
/// next one gets a new copy.
class Site
{
public:
    Site()
    {
        TestDatabase source;
        source.Connection().Execute("PRAGMA wal_checkpoint(TRUNCATE)");
        fresh_ = FileBytes(source.Url().sliced(u"sqlite:"_s.size()));
    }

    Http::Response Handle(const Http::Request &request)
    {
        if (!service_)
            Renew();
        return service_->Handle(request);
    }

    void Forget() { service_.reset(); }

private:
    QString Path() const { return folder_.filePath(u"fuzz.sqlite"_s); }

    void Renew()
    {
        for (const QString &suffix : {u"-wal"_s, u"-shm"_s})
            QFile::remove(Path() + suffix);
        QFile file(Path());
        Fuzz::Require(file.open(QIODevice::WriteOnly) && file.write(fresh_) == fresh_.size(),
                      "a file can be written");
        file.close();
        database_ = Store::Database::Open(u"sqlite:"_s + Path());
        service_ = std::make_unique<Http::Service>(*database_, Http::ServiceOptions{}, metrics_);
    }

    QTemporaryDir folder_;
    QByteArray fresh_;
    Http::Metrics metrics_;
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Http::Service> service_;
};

/// Two bytes choose the address and the headers, the rest is the body.
Http::Request RequestOf(Fuzz::Input input)
{
    const unsigned address = input.Byte();
    const unsigned headers = input.Byte();
    Http::Request request;
    request.method = address & 4u ? "GET" : "POST";
    request.path = Paths[address % Paths.size()];
    request.contentType = MediaTypes[headers % MediaTypes.size()];
    request.accept = MediaTypes[headers / 4 % MediaTypes.size()];
    if (headers & 16u)
        request.idempotencyKey = "key-1";
    if (!(address & 8u))
        request.authorization =
            "Basic " + (QByteArray("admin:") + TestDatabase::AdminToken).toBase64();
    request.body = input.Rest();
    request.deadline = Http::Clock::now() + std::chrono::seconds(20);
    return request;
}

void CheckError(const Http::Response &response, Wire::Format format)
{
    const Wire::ErrorAnswer error = Wire::DecodeErrorAnswer(response.body, format);
    Fuzz::Require(Http::StatusOf(error.code.toLatin1()) == response.status, "a code has one status",
                  response.body);
    Fuzz::Require(!error.reference.isEmpty(), "an error has a reference", response.body);
    Fuzz::Require(response.status != 500, "no request makes the server fail", response.body);
}

void CheckAnswer(const Http::Request &request, const Http::Response &response, Wire::Format format)
{
    if (request.path == PostPath)
        Wire::DecodePostAnswer(response.body, format);
    else if (request.path == QueryPath)
        Wire::DecodeQueryAnswer(response.body, format);
}

void CheckRepetition(Site &site, Http::Request request, const QByteArray &answer)
{
    Fuzz::Require(site.Handle(request).body == answer, "a post under a key has one effect");
    request.body += ' ';
    if (request.contentType == Wire::JsonType)
        Fuzz::Require(site.Handle(request).status == 409, "a key stands for one body");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Site site;
    const Http::Request request = RequestOf({data, size});
    const Http::Response response = site.Handle(request);
    const Wire::Format format = Http::AnswerFormat(request);
    if (response.status != 200) {
        CheckError(response, format);
        return 0;
    }
    CheckAnswer(request, response, format);
    if (request.path != PostPath)
        return 0;
    if (!request.idempotencyKey.isEmpty())
        CheckRepetition(site, request, response.body);
    site.Forget();
    return 0;
}
