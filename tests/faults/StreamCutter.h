#pragma once

#include "faults/Cutter.h"

#include <atomic>
#include <list>
#include <thread>

namespace Qel::Faults {

/// Cuts what a server with TLS sends, from the first byte of the handshake on: passes bytes in both
/// directions without understanding them. Each connection counts as one request.
class StreamCutter : public Cutter
{
public:
    explicit StreamCutter(quint16 serverPort);
    ~StreamCutter() override;

private:
    struct Pair
    {
        int client;
        int server;
        std::optional<qsizetype> length; ///< after which it is cut
        qsizetype sent = 0;              ///< by the server
    };

    void Run();
    void Accept();
    bool PassOn(Pair &pair, bool fromServer); ///< false: both connections are at their end
    void Close(const Pair &pair) const;

    quint16 serverPort_;
    std::list<Pair> pairs_;

    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace Qel::Faults
