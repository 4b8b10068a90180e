#pragma once

#include <cstddef>

namespace Qel::Http {

/// The memory that large bodies may take, all together: a thousand connections that each send as
/// much as one may would take all there is. What a body has up to Free is not counted, so that
/// nobody keeps small requests out. On the network's thread only.
class BodyRoom
{
public:
    explicit BodyRoom(std::size_t most)
        : left_(most)
    {
    }

    static constexpr std::size_t Free = 256u << 10;

    /// What one body takes, for as long as it is kept.
    class Share
    {
    public:
        explicit Share(BodyRoom &room)
            : room_(room)
        {
        }
        ~Share() { room_.left_ += taken_; }
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

        /// `size`: bytes of the body so far. False: there is no room for it.
        bool Fits(std::size_t size)
        {
            const std::size_t more = size > Free + taken_ ? size - Free - taken_ : 0;
            if (more > room_.left_)
                return false;
            room_.left_ -= more;
            taken_ += more;
            return true;
        }

    private:
        BodyRoom &room_;
        std::size_t taken_ = 0;
    };

private:
    std::size_t left_;
};

} // namespace Qel::Http
