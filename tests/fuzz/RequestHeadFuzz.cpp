#include "Fuzz.h"

#include "http/RequestHead.h"

#include <string_view>

using Qel::Http::RequestHead;
using State = RequestHead::State;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    RequestHead whole;
    const State state = whole.Look(bytes);

    // As the network brings it, a byte at a time.
    RequestHead pieces;
    State reached = State::Incomplete;
    for (std::size_t count = 1; reached == State::Incomplete && count <= size; ++count)
        reached = pieces.Look(bytes.substr(0, count));
    Qel::Fuzz::Require(reached == state, "a head is the same however it arrives");
    if (state == State::Complete) {
        Qel::Fuzz::Require(whole.Size() <= size && whole.Size() == pieces.Size(),
                           "a head ends where it ends");
        Qel::Fuzz::Require(bytes.substr(0, whole.Size()).ends_with("\r\n\r\n"),
                           "a head ends with an empty line");
    }
    return 0;
}
