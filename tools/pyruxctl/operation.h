#pragma once

#include "value.h"
#include "worst_times.h"

#include "pyrux/error.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// @file
/// The operations of a host object as data: one line each, in a list whose interface is called `Interface`:
///
///     OP(changeDpiLevel, in("level")),
///     OP(getPerformance, out("record")),
///     OP(setKeyMappingAll, in<13>("map")),          // a pointer to 13 elements
///     OP(getMacro, inout("macro", {"button"})),     // the caller fills in `button`, the device the rest
///     OP(getEffect, inout("mode"), out("speed")),   // a number that goes both ways
///     OP(saveConfig).waiting(3, 1),                 // three requests, one plain write
///     OP(getMap, out("map")).waiting({9, 1}, {1, 1}), // gives up when the first request has no reply
///
/// The types come from the operation itself. What two models do alike is a list in a function template over
/// `Interface`.

namespace pyrux::ctl {

enum class Direction { in, out, inout };

struct Argument {
    std::string_view name;
    Direction direction;
    const Type* type;
    std::vector<std::string_view> keys; ///< Of an inout record: the fields that the caller fills in.

    bool isOutput() const { return direction != Direction::in; }
    /// One word of the command line stands for all of it.
    bool isWord() const;
};

/// One word that a call takes on the command line: an argument, or one field of an inout record.
struct Word {
    std::size_t argument;
    std::string_view name;
    const Type* type;
    std::size_t offset; ///< In the argument.
};

struct Operation {
    std::string_view name;
    std::vector<Argument> arguments;
    /// Calls the operation on a host object; `memory` holds one block for each argument.
    std::int32_t (*call)(void* host, std::byte* const* memory);
    Waits waits{};

    /// The same operation, which sends so many requests and plain writes, whatever becomes of them.
    Operation waiting(int requests, int writes = 0) const;
    /// The same operation, which gives up on a device that answers nothing.
    Operation waiting(Steps all, Steps unanswered) const;

    /// What it takes on the command line, in order.
    std::vector<Word> words() const;
    /// "changeDpiLevel LEVEL", "getMacro BUTTON -> macro".
    std::string synopsis() const;
};

namespace detail {

template <class T>
using Pointee = std::remove_cv_t<std::remove_pointer_t<std::remove_reference_t<T>>>;
template <class T>
inline constexpr bool isIndirect = std::is_pointer_v<T> || std::is_reference_v<T>;

/// An argument as the list states it, its type still open. `count` is the number of elements that a pointer
/// leads to.
template <std::size_t count>
struct Stated {
    std::string_view name;
    Direction direction;
    std::vector<std::string_view> keys;

    template <class Parameter>
    Argument as() const
    {
        using Element = Pointee<Parameter>;
        static_assert(!std::is_function_v<Element> && !std::is_void_v<Element>);
        static_assert(count == 1 || std::is_pointer_v<Parameter>, "only a pointer leads to several elements");
        using Value = std::conditional_t<count == 1, Element, Element[count]>;
        return {name, direction, &typeOf<Value>, keys};
    }
};

template <class Parameter>
decltype(auto) load(std::byte* memory)
{
    using Value = Pointee<Parameter>;
    if constexpr (std::is_pointer_v<Parameter>) {
        return reinterpret_cast<Value*>(memory);
    } else if constexpr (std::is_reference_v<Parameter>) {
        return *reinterpret_cast<Value*>(memory);
    } else {
        Value value;
        std::memcpy(&value, memory, sizeof value);
        return value;
    }
}

template <class Interface, auto method>
struct Call;
template <class Interface, class Owner, class Result, class... Parameters,
          Result (Owner::*method)(Parameters...)>
struct Call<Interface, method> {
    static std::int32_t invoke(void* host, std::byte* const* memory)
    {
        return [&]<std::size_t... i>(std::index_sequence<i...>)
        {
            Owner* object = static_cast<Interface*>(host);
            return static_cast<std::int32_t>((object->*method)(load<Parameters>(memory[i])...));
        }
        (std::index_sequence_for<Parameters...>());
    }

    template <class... StatedArguments>
    static Operation describe(std::string_view name, const StatedArguments&... stated)
    {
        static_assert(sizeof...(stated) == sizeof...(Parameters), "state each argument of the operation");
        return {name, {stated.template as<Parameters>()...}, &invoke};
    }
};

} // namespace detail

template <std::size_t count = 1>
detail::Stated<count> in(std::string_view name)
{
    return {name, Direction::in, {}};
}
template <std::size_t count = 1>
detail::Stated<count> out(std::string_view name)
{
    return {name, Direction::out, {}};
}
inline detail::Stated<1> inout(std::string_view name, std::initializer_list<std::string_view> keys = {})
{
    return {name, Direction::inout, keys};
}

#define OP(method, ...)                                                                                      \
    ::pyrux::ctl::detail::Call<Interface, &Interface::method>::describe(#method __VA_OPT__(, ) __VA_ARGS__)

} // namespace pyrux::ctl
