#include "http/LoginGuard.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <algorithm>
#include <array>

namespace Qel::Http {

template <typename Mapped>
Mapped *LoginGuard::Recent<Mapped>::Find(const QByteArray &key)
{
    const auto place = places_.find(key);
    return place == places_.end() ? nullptr : &place->second->second;
}

template <typename Mapped>
Mapped &LoginGuard::Recent<Mapped>::Touch(const QByteArray &key)
{
    if (const auto place = places_.find(key); place != places_.end()) {
        entries_.splice(entries_.begin(), entries_, place->second);
        return entries_.front().second;
    }
    if (entries_.size() >= most_)
        Forget(QByteArray(entries_.back().first));
    entries_.emplace_front(key, Mapped());
    places_[key] = entries_.begin();
    return entries_.front().second;
}

template <typename Mapped>
void LoginGuard::Recent<Mapped>::Forget(const QByteArray &key)
{
    const auto place = places_.find(key);
    if (place == places_.end())
        return;
    entries_.erase(place->second);
    places_.erase(place);
}

std::optional<std::chrono::seconds>
LoginGuard::Refuses(const QByteArray &address, const QByteArray &credential, Clock::time_point now)
{
    const std::lock_guard lock(lock_);
    auto *const failures = failures_.Find(address);
    if (!failures)
        return std::nullopt;
    std::erase_if(*failures, [now](Clock::time_point at) { return now - at >= Window; });
    if (failures->empty()) {
        failures_.Forget(address);
        return std::nullopt;
    }
    if (failures->size() < MostFailures)
        return std::nullopt;
    if (const auto *known = known_.Find(Digest(credential)); known && now - *known < KnownFor)
        return std::nullopt;
    return std::chrono::ceil<std::chrono::seconds>(failures->front() + Window - now);
}

void LoginGuard::Failed(const QByteArray &address, const QByteArray &credential,
                        Clock::time_point now)
{
    const std::lock_guard lock(lock_);
    known_.Forget(Digest(credential)); // was taken back
    auto &failures = failures_.Touch(address);
    failures.push_back(now);
    if (failures.size() > MostFailures)
        failures.pop_front();
}

void LoginGuard::Succeeded(const QByteArray &credential, Clock::time_point now)
{
    const std::lock_guard lock(lock_);
    known_.Touch(Digest(credential)) = now;
}

std::size_t LoginGuard::AddressCount() const
{
    const std::lock_guard lock(lock_);
    return failures_.Count();
}

QByteArray LoginGuard::Digest(const QByteArray &credential) const
{
    return QCryptographicHash::hash(salt_ + credential, QCryptographicHash::Sha256);
}

QByteArray LoginGuard::NewSalt()
{
    std::array<quint32, 8> random{};
    QRandomGenerator::system()->fillRange(random.data(), std::ssize(random));
    return {reinterpret_cast<const char *>(random.data()), sizeof random};
}

} // namespace Qel::Http
