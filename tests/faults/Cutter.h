#pragma once

#include <QList>

#include <mutex>
#include <optional>

namespace Qel::Faults {

/// What stands between a client and the server and breaks connections in the middle of what the
/// server sends. Runs in a thread of its own.
class Cutter
{
public:
    Cutter();
    virtual ~Cutter();
    Q_DISABLE_COPY_MOVE(Cutter)

    quint16 Port() const { return port_; }

    /// What the server sends next ends after so many bytes, one time after the other, and its
    /// connection with it, orderly or (`reset`) by a reset; what follows is passed on whole. A
    /// length that is not less than what the server sends cuts nothing. Counts anew.
    void Cut(const QList<qsizetype> &lengths, bool reset = false);

    int Cuts() const;     ///< since Cut
    int Requests() const; ///< since Cut: requests, or connections where one has one request
    qsizetype LastAnswerSize() const; ///< bytes that the server sent last, those cut off too

protected:
    int Listener() const { return listener_; }
    void CountRequest();
    std::optional<qsizetype> TakeLength(); ///< nothing: not to be cut
    void CountAnswer(qsizetype size, bool isCut);
    /// So that the next close of the socket is a reset, if resets are wanted.
    void PrepareClose(int socket) const;

private:
    quint16 port_ = 0;
    int listener_;

    mutable std::mutex lock_; ///< of what follows
    QList<qsizetype> lengths_;
    bool reset_ = false;
    int cuts_ = 0;
    int requests_ = 0;
    qsizetype lastAnswerSize_ = 0;
};

} // namespace Qel::Faults
