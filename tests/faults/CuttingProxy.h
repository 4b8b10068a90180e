#pragma once

#include "faults/Cutter.h"

#include <QByteArray>

#include <atomic>
#include <thread>
#include <vector>

namespace Qel::Faults {

/// Cuts answers, head and body, of a server without TLS: reads a request, asks the server and
/// passes a part of the answer on.
class CuttingProxy : public Cutter
{
public:
    explicit CuttingProxy(quint16 serverPort);
    ~CuttingProxy() override;

    /// In place of the client's own Accept header; empty: that.
    void SetAccept(const QByteArray &mediaType);

private:
    struct Peer
    {
        int socket;
        QByteArray received;
    };

    void Run();
    bool Serve(Peer &peer); ///< false: the connection is at its end
    bool Answer(const Peer &peer, QByteArray request);

    quint16 serverPort_;
    std::vector<Peer> peers_;
    std::mutex acceptLock_;
    QByteArray accept_;

    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace Qel::Faults
