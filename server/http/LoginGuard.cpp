#include "http/LoginGuard.h"

#include "http/Problem.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

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

LoginGuard::Attempt::Attempt(LoginGuard &guard, const QByteArray &address,
                             const QByteArray &credential, Clock::time_point deadline,
                             Clock::time_point now)
    : guard_(guard)
    , address_(address)
    , digest_(guard.Digest(credential))
    , now_(now)
{
    std::unique_lock lock(guard_.lock_);
    while (!guard_.IsKnown(digest_, now_)) {
        const std::size_t failures = guard_.FailuresOf(address_, now_);
        if (failures >= MostFailures) {
            const auto first = guard_.failures_.Find(address_)->front();
            refused_ = std::chrono::ceil<std::chrono::seconds>(first + Window - now_);
            return;
        }
        std::size_t &taken = guard_.places_[address_];
        if (failures + taken < MostFailures) {
            ++taken;
            hasPlace_ = true;
            return;
        }
        if (Clock::now() >= deadline)
            throw EProblem("server.busy", u"服务器繁忙，请稍后再试。"_s, Retry);
        guard_.ended_.wait_until(lock, deadline);
    }
}

LoginGuard::Attempt::~Attempt()
{
    const std::lock_guard lock(guard_.lock_);
    End();
}

/// Under the lock. False: it had ended.
bool LoginGuard::Attempt::End()
{
    if (std::exchange(ended_, true))
        return false;
    if (hasPlace_) {
        guard_.GiveBack(address_);
        guard_.ended_.notify_all();
    }
    return true;
}

void LoginGuard::Attempt::Failed()
{
    const std::lock_guard lock(guard_.lock_);
    if (!End())
        return;
    guard_.known_.Forget(digest_); // was taken back
    auto &failures = guard_.failures_.Touch(address_);
    failures.push_back(now_);
    if (failures.size() > MostFailures)
        failures.pop_front();
}

void LoginGuard::Attempt::Succeeded()
{
    const std::lock_guard lock(guard_.lock_);
    if (End())
        guard_.known_.Touch(digest_) = now_;
}

bool LoginGuard::IsKnown(const QByteArray &digest, Clock::time_point now)
{
    const auto *known = known_.Find(digest);
    return known && now - *known < KnownFor;
}

/// Within the last minute.
std::size_t LoginGuard::FailuresOf(const QByteArray &address, Clock::time_point now)
{
    auto *const failures = failures_.Find(address);
    if (!failures)
        return 0;
    std::erase_if(*failures, [now](Clock::time_point at) { return now - at >= Window; });
    const std::size_t count = failures->size();
    if (count == 0)
        failures_.Forget(address);
    return count;
}

void LoginGuard::GiveBack(const QByteArray &address)
{
    const auto place = places_.find(address);
    if (--place->second == 0)
        places_.erase(place);
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
