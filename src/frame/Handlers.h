#pragma once

#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Qel::Handlers {

template <typename F, typename Arguments, std::size_t... I>
constexpr bool TakesFirst(std::index_sequence<I...>)
{
    return std::is_invocable_v<F, std::tuple_element_t<I, Arguments>...>;
}

/// Calls `f` with as many of the first arguments as it takes, as a slot is called with the first
/// arguments of its signal.
template <std::size_t Count, typename F, typename Arguments>
void CallWithFirst(F &f, Arguments &arguments)
{
    constexpr auto indexes = std::make_index_sequence<Count>{};
    if constexpr (TakesFirst<F &, Arguments>(indexes)) {
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            std::invoke(f, std::get<I>(arguments)...);
        }
        (indexes);
    } else {
        static_assert(Count > 0, "the handler does not take the signal's arguments");
        CallWithFirst<Count - 1>(f, arguments);
    }
}

template <typename F, typename... Arguments>
void Call(F &f, Arguments &&...arguments)
{
    std::tuple<Arguments &&...> all(std::forward<Arguments>(arguments)...);
    CallWithFirst<sizeof...(Arguments)>(f, all);
}

template <typename Method>
struct ClassOf;
template <typename Class, typename Result, typename... Arguments>
struct ClassOf<Result (Class::*)(Arguments...)>
{
    using Type = Class;
};
template <typename Class, typename Result, typename... Arguments>
struct ClassOf<Result (Class::*)(Arguments...) const>
{
    using Type = Class;
};

/// A method bound to its object, callable with whatever the method takes.
template <typename Class, typename Method>
struct BoundMember
{
    Class *object;
    Method method;

    template <typename... Arguments>
    requires std::is_invocable_v<Method, Class *, Arguments...>
    auto operator()(Arguments &&...arguments) const
    {
        return std::invoke(method, object, std::forward<Arguments>(arguments)...);
    }
};

} // namespace Qel::Handlers
