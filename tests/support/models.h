#pragma once

#include "pyrux/pyrux.h"
#include "tests/support/debug_log.h"
#include "tests/support/scripted_device.h"
#include "tests/support/written.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// @file
/// The models as hosts, devices and logs see them: one row for each factory, written by hand, in models.cpp or
/// with the model's class for typed tests. Nothing here is taken from the library's own tables.

namespace pyrux::test {

struct ModelFacts {
    std::string factoryName = {};
    void* (*factory)(const char* path) = nullptr;
    std::string hostClass = {}; ///< Class of the host object, as log lines name it.
    std::string tag = {};       ///< Of its log lines. Empty: they are dropped.
    std::string model = {};     ///< Model text, as the line tells it with which the core ends an object.
    std::uint16_t pid = 0;
    std::vector<sim::Collection> collections = {};
    int interface = -1;      ///< The one that takes the commands.
    std::size_t slots = 0;   ///< Entries of the first virtual table.
    std::string reader = {}; ///< The line with which the reader gives up.

    std::string opening = {}; ///< What a fresh device is told.
    std::string goodbye = {}; ///< What `exit_device` says to a device that is still there.

    std::vector<std::string> openingLines = {}; ///< What is logged then, after the constructor's name.
    /// How those commands of the opening begin of which no reply is waited for. Null: there are none.
    const char* unanswered = nullptr;
    /// Lays down the answers without which the device would not open at once.
    void (*prepare)(ScriptedDevice& device) = [](ScriptedDevice&) {};
    /// What the device has been sent, as its tests write it.
    std::string (*written)(const std::string& path, std::size_t atLeast) = takeWritten;
};

/// What tells a model from the others of a family that has one form of row.
struct NamedModel {
    std::string_view factoryName;
    std::string_view name; ///< Its host class is this after "PYRUX_".
    std::uint16_t pid;
    std::size_t slots;
    std::string_view tag = name; ///< Of its log lines.
};

/// All models, each with a row of its own.
const std::vector<ModelFacts>& models();

/// The row of a factory.
const ModelFacts& factsOf(const std::string& factoryName);

/// The model as the bus shows it.
sim::Identity identityOf(const ModelFacts& facts);

/// Lines of a model's log category, as the debug output shows them.
Lines linesOf(const ModelFacts& facts, const std::vector<std::string>& texts);

/// A text about one of a host object's own functions: "PYRUX::PYRUX_RD210::saveConfig, #".
std::string hostText(const ModelFacts& facts, const std::string& text);

/// Names a model in the output of tests.
void PrintTo(const ModelFacts& facts, std::ostream* out);

/// Calls a factory whose interface does not matter.
template <auto make>
void* made(const char* path)
{
    return make(path);
}

/// The row of a factory.
const ModelFacts& factsOf(void* (*factory)(const char* path));

/// A model for typed tests, which derive from this what they need beside its row.
template <auto make>
struct ModelOf {
    using Interface = std::remove_pointer_t<std::invoke_result_t<decltype(make), const char*>>;
    static constexpr auto factory = make;
    static const ModelFacts& facts() { return factsOf(&made<make>); }
};

/// Does the same with each model of a list for typed tests: `act.operator()<Model>()`.
template <class... Models, class Act>
void forEachOf(testing::Types<Models...>, Act act)
{
    (act.template operator()<Models>(), ...);
}

/// Names the models of a typed test.
struct ModelName {
    template <class Model>
    static std::string GetName(int)
    {
        return Model::facts().factoryName;
    }
};

template <class Model>
sim::Identity identityOf()
{
    return identityOf(Model::facts());
}

/// A log line of a model's category.
template <class Model>
std::string ownLine(const std::string& text)
{
    return "[PYRUX][" + Model::facts().tag + "]" + text;
}

/// A log line of a model's host object.
template <class Model>
std::string hostLine(const std::string& text)
{
    return ownLine<Model>(hostText(Model::facts(), text));
}

} // namespace pyrux::test
