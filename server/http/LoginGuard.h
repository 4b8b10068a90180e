#pragma once

#include "http/Message.h"

#include <QByteArray>

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
/// Of one process and in bounded memory: what was not used for longest is forgotten. From any
/// thread.
class LoginGuard
{
public:
    /// How long to wait, in whole seconds, if the credential must not be looked at now.
    /// `address` as LoginAddress gives it; `credential`: the Authorization header.
    std::optional<std::chrono::seconds> Refuses(const QByteArray &address,
                                                const QByteArray &credential,
                                                Clock::time_point now = Clock::now());
    void Failed(const QByteArray &address, const QByteArray &credential,
                Clock::time_point now = Clock::now());
    void Succeeded(const QByteArray &credential, Clock::time_point now = Clock::now());

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

    mutable std::mutex lock_;
    const QByteArray salt_ = NewSalt();
    Recent<std::list<Clock::time_point>> failures_{MostAddresses};
    Recent<Clock::time_point> known_{MostKnown}; ///< by digest, never the credential itself

    static QByteArray NewSalt();
};

} // namespace Qel::Http
