#pragma once

#include "http/Message.h"

#include <QByteArray>

#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace Qel::Http {

/// Failed log-ins by address: after five within a minute, credentials from there are not looked at
/// until the first of the five is a minute old. Refusals do not prolong that. A credential that
/// was good within the last twelve hours goes on being looked at, from wherever it comes: whoever
/// guesses from the network of an office does not lock out those who work there.
///
/// An attempt has its place among the five from its beginning and gives it back if it did not fail:
/// of any number that come at once no more than five are looked at and found wrong.
///
/// Of one process and in bounded memory: what was not used for longest is forgotten. From any
/// thread.
class LoginGuard
{
public:
    class Attempt;

    std::size_t AddressCount() const; ///< that are remembered

    static constexpr int MostFailures = 5;
    static constexpr std::chrono::seconds Window{60};
    static constexpr std::chrono::hours KnownFor{12};
    static constexpr std::size_t MostAddresses = 10'000;
    static constexpr std::size_t MostKnown = 10'000;

private:
    /// Keys by their last use, with a bound.
    template <typename Mapped>
    class Recent
    {
    public:
        explicit Recent(std::size_t most)
            : most_(most)
        {
        }
        Mapped *Find(const QByteArray &key);
        Mapped &Touch(const QByteArray &key); ///< made if it is not there
        void Forget(const QByteArray &key);
        std::size_t Count() const { return places_.size(); }

    private:
        using Entries = std::list<std::pair<QByteArray, Mapped>>;
        std::size_t most_;
        Entries entries_; ///< the last used first
        std::unordered_map<QByteArray, typename Entries::iterator> places_;
    };

    QByteArray Digest(const QByteArray &credential) const;
    std::size_t FailuresOf(const QByteArray &address, Clock::time_point now);
    bool IsKnown(const QByteArray &digest, Clock::time_point now);
    void GiveBack(const QByteArray &address);

    mutable std::mutex lock_;
    const QByteArray salt_ = NewSalt();
    Recent<std::list<Clock::time_point>> failures_{MostAddresses};
    Recent<Clock::time_point> known_{MostKnown};         ///< by digest, never the credential itself
    std::unordered_map<QByteArray, std::size_t> places_; ///< taken by attempts, by address
    std::condition_variable ended_;                      ///< an attempt

    static QByteArray NewSalt();
};

/// One look at a credential, for a scope.
class LoginGuard::Attempt
{
public:
    /// Waits while the address has no place left and others that have one are still looked at, at
    /// most until `deadline`: then it throws EProblem. `address` as LoginAddress gives it;
    /// `credential`: the Authorization header.
    Attempt(LoginGuard &guard, const QByteArray &address, const QByteArray &credential,
            Clock::time_point deadline, Clock::time_point now = Clock::now());
    ~Attempt();
    Q_DISABLE_COPY_MOVE(Attempt)

    /// How long to wait, in whole seconds, if the credential must not be looked at now.
    const std::optional<std::chrono::seconds> &Refused() const { return refused_; }
    // The first of these counts, and ends the attempt.
    void Failed();
    void Succeeded();

private:
    bool End();

    LoginGuard &guard_;
    const QByteArray address_;
    const QByteArray digest_;
    const Clock::time_point now_;
    std::optional<std::chrono::seconds> refused_;
    bool hasPlace_ = false;
    bool ended_ = false;
};

} // namespace Qel::Http
