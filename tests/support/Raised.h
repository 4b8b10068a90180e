#pragma once

#include <optional>

namespace Qel::Test {

/// The error of that type that `function` raises; none if it raises none.
template <class Error, class Function>
std::optional<Error> Raised(Function function)
{
    try {
        function();
    } catch (const Error &error) {
        return error;
    }
    return std::nullopt;
}

} // namespace Qel::Test
