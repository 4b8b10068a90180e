#include "faults/Client.h"

#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int LateRepeat = 30; // one in so many posts is followed by the one before, once more

/// What differs, for a person to read.
QString Difference(const Records &expected, const Records &found)
{
    QStringList differences;
    for (auto at = expected.cbegin(); at != expected.cend(); ++at)
        if (found.value(at.key(), u"-"_s) != at.value())
            differences +=
                u"%1: %2 instead of %3"_s.arg(at.key(), found.value(at.key(), u"-"_s), at.value());
    for (auto at = found.cbegin(); at != found.cend(); ++at)
        if (!expected.contains(at.key()))
            differences += u"%1: %2 is too much"_s.arg(at.key(), at.value());
    return differences.mid(0, 4).join(u"; "_s);
}

QStringList Sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

Client::Client(int number, quint64 seed, Findings &findings)
    : domain_(number)
    , random_(seed + quint64(number))
    , findings_(findings)
    , number_(number)
{
    for (const QString &product : domain_.priced)
        records_[u"product "_s + product] = QString(); // as AddDomain left them
}

void Client::Work(quint16 port, const std::atomic<bool> &stop)
{
    Line line(port);
    if (answered_ && Between(random_, 0, 3) == 0 && !RepeatAnswered(line))
        return;
    while (!stop) {
        if (!pending_)
            pending_ = NewPending();
        if (!SendPending(line))
            return;
        if (answered_ && Between(random_, 1, LateRepeat) == 1 && !RepeatAnswered(line))
            return;
    }
}

/// False: work ends here for now.
bool Client::SendPending(Line &line)
{
    const HttpReply reply = line.Ask(pending_->bytes);
    if (reply.status == 0) {
        ++lost_;
        return false;
    }
    if (reply.status == 200) {
        TakeAnswer(reply);
        return true;
    }
    ++refused_;
    if (reply.status < 500)
        Tell(u"refused with %1: %2"_s.arg(reply.status).arg(QString::fromUtf8(reply.body)));
    if (errors_ == Errors::UnknownEffect)
        return false;
    if (pending_->isStored)
        Tell(u"a post that is stored was refused when it was repeated"_s);
    pending_.reset();
    return true;
}

void Client::TakeAnswer(const HttpReply &reply)
{
    const Wire::PostAnswer answer = Wire::DecodePostAnswer(reply.body, pending_->format);
    for (const Wire::ResultRow &row : answer.rows) {
        if (row.code != u"1")
            Tell(u"result code %1"_s.arg(row.code));
        for (const auto &[name, value] : row.values)
            if (name == u"CATALOG_ID")
                for (const QString &record : pending_->after.keys())
                    if (record.startsWith(u"store "_s) && !records_.contains(record))
                        stores_[record.mid(6)] = value;
    }
    records_ = pending_->after;
    entries_ += pending_->entries;
    ++acknowledged_;
    if (!pending_->key.isEmpty())
        answered_ = {pending_->bytes, reply.body};
    pending_.reset();
}

/// The same post again under its key gets the same answer and has no effect. False: no answer.
bool Client::RepeatAnswered(Line &line)
{
    const HttpReply reply = line.Ask(answered_->bytes);
    if (reply.status == 0)
        return false;
    ++repeated_;
    if (reply.status != 200 && errors_ == Errors::UnknownEffect)
        return false;
    if (reply.status == 200 && reply.body != answered_->answer)
        Tell(u"a repeated key was answered otherwise the second time"_s);
    return true;
}

Client::Pending Client::NewPending()
{
    const Change change = NextChange(domain_, records_, stores_, ++stamp_, random_);
    const auto format = Between(random_, 0, 1) == 0 ? Wire::Format::Cbor : Wire::Format::Json;
    const QByteArray key = Between(random_, 0, 3) == 0
                               ? QByteArray()
                               : QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    const QByteArray bytes = ToBytes({.path = "/NorvaneServlet",
                                      .body = Wire::Encode(change.request, format),
                                      .format = format,
                                      .credential = domain_.credential,
                                      .key = key});
    return {bytes, key, format, change.after, change.entries};
}

void Client::Check(Store::Connection &connection)
{
    const Records found = ReadRecords(connection, domain_);
    const QStringList logged = Sorted(ReadEntries(connection, domain_, lastEntry_));
    const bool isLogged =
        pending_ && !pending_->entries.isEmpty() && logged == Sorted(entries_ + pending_->entries);
    const bool isThere = pending_ && pending_->after != records_ && found == pending_->after;

    if (!isThere && found != records_)
        Tell(u"rows: "_s + Difference(records_, found));
    if (!isLogged && logged != Sorted(entries_))
        Tell(u"log: %1 entries instead of %2 (or %3)"_s.arg(logged.size())
                 .arg(entries_.size())
                 .arg(entries_.size() + (pending_ ? pending_->entries.size() : 0)));
    if (isThere != isLogged)
        Tell(isThere ? u"a change without its log"_s : u"a log without its change"_s);
    if (pending_ && !pending_->key.isEmpty() && pending_->after != records_ &&
        KeepsKey(connection, pending_->key) != isThere)
        Tell(isThere ? u"a change without its key"_s : u"a key without its change"_s);

    entries_.clear();
    records_ = found;
    stores_ = ReadStores(connection, domain_);
    if (!pending_)
        return;
    if (isThere) {
        pending_->entries.clear();
        pending_->isStored = true;
    }
    if (pending_->key.isEmpty() || Between(random_, 0, 1) == 0)
        pending_.reset(); // the user gives up
}

void Client::Tell(const QString &finding)
{
    findings_.Add(u"client %1, post %2: %3"_s.arg(number_).arg(stamp_).arg(finding));
}

} // namespace Qel::Faults
