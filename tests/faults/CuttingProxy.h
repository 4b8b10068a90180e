#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace Qel::Faults {

/// Stands between a client and the server and breaks the connection after so many bytes of an
/// answer. Runs in a thread of its own.
class CuttingProxy
{
public:
    explicit CuttingProxy(quint16 serverPort);
    ~CuttingProxy();
    Q_DISABLE_COPY_MOVE(CuttingProxy)

    quint16 Port() const { return port_; }

    /// The next answers end after so many bytes, one after the other, and their connections with
    /// them, orderly or (`reset`) by a reset; those that follow are passed on whole. Counts
    /// requests anew.
    void Cut(const QList<qsizetype> &lengths, bool reset = false);
    /// In place of the client's own Accept header; empty: that.
    void SetAccept(const QByteArray &mediaType);

    int Requests() const;             ///< since Cut
    qsizetype LastAnswerSize() const; ///< bytes of the last answer, head and body, uncut

private:
    struct Peer
    {
        int socket;
        QByteArray received;
    };

    void Run();
    bool Serve(Peer &peer); ///< false: the connection is at its end
    bool Answer(Peer &peer, QByteArray request);

    quint16 serverPort_;
    quint16 port_ = 0;
    int listener_;
    std::vector<Peer> peers_;

    mutable std::mutex lock_; ///< of what follows
    QList<qsizetype> lengths_;
    bool reset_ = false;
    QByteArray accept_;
    int requests_ = 0;
    qsizetype lastAnswerSize_ = 0;

    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace Qel::Faults
