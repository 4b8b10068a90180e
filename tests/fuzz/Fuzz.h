#pragma once

#include "dataset/RowSet.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

/// What libFuzzer, and Replay.cpp where there is none, calls with one input. A target aborts when
/// one of its rules does not hold; whatever an input makes the sanitizers say is a finding as well.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace Qel::Fuzz {

/// A copy of standard error: a run may close the program's own, because the server logs to it.
inline const int findings = dup(STDERR_FILENO);

inline void Require(bool holds, const char *rule, const QByteArray &detail = {})
{
    if (holds)
        return;
    dprintf(findings, "does not hold: %s\n%s\n", rule, detail.constData());
    std::abort();
}

/// Reads an input from its front: some bytes choose what is done with the rest.
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size)
        : bytes_(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
    {
    }

    std::uint8_t Byte() ///< 0 at the end
    {
        return at_ < bytes_.size() ? static_cast<std::uint8_t>(bytes_.at(at_++)) : std::uint8_t(0);
    }
    QByteArray Rest() const { return bytes_.mid(at_); }

private:
    QByteArray bytes_;
    qsizetype at_ = 0;
};

inline bool SameRows(const RowSet &one, const RowSet &other)
{
    if (one.Fields() != other.Fields() || one.RowCount() != other.RowCount() ||
        one.Total() != other.Total())
        return false;
    for (int field = 0; field < one.FieldCount(); ++field) {
        for (int row = 0; row < one.RowCount(); ++row) {
            if (one.IsNull(row, field) != other.IsNull(row, field) ||
                one.Bytes(row, field) != other.Bytes(row, field))
                return false;
        }
    }
    return true;
}

} // namespace Qel::Fuzz
