#include "Fuzz.h"

#include "wire/Wire.h"

using namespace Qel;
using namespace Qel::Wire;

namespace {

template <typename Message>
bool Same(const Message &one, const Message &other)
{
    return one == other;
}

bool Same(const QueryAnswer &one, const QueryAnswer &other)
{
    return one.total == other.total && Fuzz::SameRows(one.rows, other.rows);
}

/// What one format could say must arrive unchanged in both.
template <typename Message>
void Read(Message (*decode)(const QByteArray &, Format), const QByteArray &body, Format format)
{
    Message message;
    try {
        message = decode(body, format);
    } catch (const EWireError &) {
        return;
    } catch (const EDataSetError &) {
        return;
    }
    for (const Format other : {Format::Cbor, Format::Json})
        Fuzz::Require(Same(decode(Encode(message, other), other), message),
                      "what was decoded is encoded and decoded equal", body);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Fuzz::Input input(data, size);
    const int choice = input.Byte();
    const Format format = choice % 2 == 0 ? Format::Cbor : Format::Json;
    const QByteArray body = input.Rest();
    switch (choice / 2 % 6) {
    case 0:
        Read(DecodeQueryRequest, body, format);
        break;
    case 1:
        Read(DecodePostRequest, body, format);
        break;
    case 2:
        Read(DecodeQueryAnswer, body, format);
        break;
    case 3:
        Read(DecodePostAnswer, body, format);
        break;
    case 4:
        Read(DecodeErrorAnswer, body, format);
        break;
    default:
        Read(DecodeSessionAnswer, body, format);
    }
    return 0;
}
