#pragma once

#include "tests/support/mouse.h"
#include "tests/support/strand.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// @file
/// The lighting controllers, for tests that hold for all of them.

namespace pyrux::test {

struct GlowHubModel {
    using Interface = PYRUX_GLOW_Base;
    using Notify = ArgbEffectNotify;
    static constexpr auto factory = &glow_hub;
    static constexpr const char* exportName = "glow_hub";
    static constexpr const char* name = "PYRUX_GLOW";
    static constexpr const char* tag = "GLOWHUB";
    static constexpr const char* exitText = "exit devie GLOW HUB by probe";
    static constexpr const char* readerText = "Glow hub USB fail";
    static constexpr std::uint16_t pid = 0x1011;
    static constexpr int interface = 0;
    static constexpr std::size_t slots = 29;
    static constexpr int replyMs = 1000;
    static constexpr const char* opening = "80 01 05 03 | 80 0B 01 01"; ///< What a fresh device is told.
    static constexpr const char* goodbye = "";

    // An operation that waits for one reply: what it sends, the reply, and what comes out of it.
    static constexpr const char* question = "80 14 01";
    static constexpr const char* answer = "80 14 03 34 12";
    static constexpr int value = 0x1234;
    static _error ask(Interface* host, int& value)
    {
        std::uint16_t version = 0xEEEE;
        const _error result = host->getVersion(&version);
        value = version;
        return result;
    }
    static constexpr int untouched = 0xEEEE;

    static void prepare(ScriptedDevice& device)
    {
        device.answer("80 01 05", "80 01 05 03");
        device.answer("80 0B 01", "80 0B 03 01 00 00 02 FF");
    }
};

struct GlowHub2Model {
    using Interface = PYRUX_GLOW2_Base;
    using Notify = GlowHub2Notify;
    static constexpr auto factory = &glow2;
    static constexpr const char* exportName = "glow2";
    static constexpr const char* name = "PYRUX_GLOW2";
    static constexpr const char* tag = "GLOWHUB2";
    static constexpr const char* exitText = "exit devie GLOW HUB II by probe";
    static constexpr const char* readerText = "GLOW HUB II USB fail";
    static constexpr std::uint16_t pid = 0x1007;
    static constexpr int interface = 0;
    static constexpr std::size_t slots = 19;
    static constexpr int replyMs = 1000;
    static constexpr const char* opening = "80 16 02 04";
    static constexpr const char* goodbye = "80 16 02 04";

    static constexpr const char* question = "80 11 01";
    static constexpr const char* answer = "80 11 03 34 12 56";
    static constexpr int value = 0x561234;
    static _error ask(Interface* host, int& value)
    {
        std::uint8_t color[3]{0xEE, 0xEE, 0xEE};
        const _error result = host->getRGBCustomize(color);
        value = color[0] | color[1] << 8 | color[2] << 16;
        return result;
    }
    static constexpr int untouched = 0xEEEEEE;

    static void prepare(ScriptedDevice&) {}
};

struct TintHubModel {
    using Interface = PYRUX_TINT_Base;
    static constexpr auto factory = &tint_hub;
    static constexpr const char* exportName = "tint_hub";
    static constexpr const char* name = "PYRUX_TINT";
    static constexpr const char* tag = "TINTHUB";
    static constexpr const char* exitText = "exit devie TINT HUB by probe";
    static constexpr const char* readerText = "TINT HUB USB fail";
    static constexpr std::uint16_t pid = 0x004F;
    static constexpr int interface = 1;
    static constexpr std::size_t slots = 12;
    static constexpr int replyMs = 1500;
    static constexpr const char* opening = "";
    static constexpr const char* goodbye = "41 00";

    static constexpr const char* question = "52 28";
    static constexpr const char* answer = "52 28 77 03";
    static constexpr int value = 3;
    static _error ask(Interface* host, int& value)
    {
        std::uint8_t mode = 0xEE;
        const _error result = host->getEffectStandardMode(&mode);
        value = mode;
        return result;
    }
    static constexpr int untouched = 0xEE;

    static void prepare(ScriptedDevice&) {}
};

struct PlayDockModel {
    using Interface = PYRUX_PLAY_DOCK_Base;
    using Notify = PlayDockNotify;
    static constexpr auto factory = &playdock;
    static constexpr const char* exportName = "playdock";
    static constexpr const char* name = "PYRUX_PLAY_DOCK";
    static constexpr const char* tag = "PLAY_DOCK";
    static constexpr const char* exitText = "exit devie PLAY DOCK by probe";
    static constexpr const char* readerText = "play dock USB fail";
    static constexpr std::uint16_t pid = 0x0153;
    static constexpr int interface = 0;
    static constexpr std::size_t slots = 19;
    static constexpr int replyMs = 1000;
    static constexpr const char* opening = "";
    static constexpr const char* goodbye = "";

    static constexpr const char* question = "80 B4 01";
    static constexpr const char* answer = "80 B4 03 34 12";
    static constexpr int value = 0x1234;
    static _error ask(Interface* host, int& value)
    {
        std::uint16_t version = 0xEEEE;
        const _error result = host->getVersion(&version);
        value = version;
        return result;
    }
    static constexpr int untouched = 0xEEEE;

    static void prepare(ScriptedDevice& device)
    {
        for (const char* command : {"80 01", "80 03", "80 04", "80 06", "80 11", "80 B0", "80 B1", "80 B6"})
            device.answer(command, std::string(command) + " 03");
    }
};

using HubModels = testing::Types<GlowHubModel, GlowHub2Model, TintHubModel, PlayDockModel, StrandHubModel,
                                 StrandHubV2Model>;
using StrandModels = testing::Types<StrandHubModel, StrandHubV2Model>;
using NotifyingHubModels = testing::Types<GlowHubModel, GlowHub2Model, PlayDockModel>;

struct HubModelName {
    template <class Model>
    static std::string GetName(int)
    {
        return Model::tag;
    }
};

template <class Model>
sim::Identity hubIdentity()
{
    sim::Identity identity;
    identity.pid = Model::pid;
    identity.product = Model::tag;
    identity.collections = {{.interface = Model::interface},
                            {.interface = 1 - Model::interface, .usagePage = 0xFF01}};
    identity.controlInterface = Model::interface;
    return identity;
}

/// A scripted controller that is opened, its opening behind it. It answers what the opening asks, and what
/// the test lays down; all else is met with silence.
template <class Model>
class HubOf : public OpenedMouse<typename Model::Interface> {
public:
    explicit HubOf(const std::function<void(ScriptedDevice&)>& prepare = {})
        : OpenedMouse<typename Model::Interface>(Model::factory, hubIdentity<Model>(),
                                                 [&](ScriptedDevice& device) {
                                                     device.silence("");
                                                     Model::prepare(device);
                                                     device.answer(Model::question, Model::answer);
                                                     if (prepare)
                                                         prepare(device);
                                                 })
    {
    }

    /// Asks the model's question and waits for its reply: everything that the device sent before has been
    /// looked at.
    void settle()
    {
        int value = 0;
        EXPECT_EQ(Model::ask(this->host, value), E_OK);
        EXPECT_EQ(value, Model::value);
    }

    /// Sends a report that nobody waits for, and waits until the reader has looked at it: the second read
    /// that begins behind it begins behind that.
    void sendUnasked(std::string_view report)
    {
        this->device->send(report);
        for (const int before = sim::readWakeups(this->path); sim::readWakeups(this->path) < before + 2;)
            std::this_thread::yield();
    }

    /// The output reports so far, when the model's question has gone out behind them.
    std::string writtenBeforeQuestion()
    {
        settle();
        std::vector<std::string> all = reports(this->written());
        EXPECT_FALSE(all.empty());
        if (!all.empty())
            all.pop_back();
        return joined(all);
    }
};

/// Runs a scenario for each model, all at once: `scenario` is called with the model as its template argument.
template <class... Models, class Scenario>
void forModels(testing::Types<Models...>, Scenario scenario)
{
    together({[&] {
        SCOPED_TRACE(Models::tag);
        scenario.template operator()<Models>();
    }...});
}

/// A log line of a model's host object.
template <class Model>
std::string hubLine(const std::string& text)
{
    return std::string("[PYRUX][") + Model::tag + "]PYRUX::" + Model::name + "::" + text;
}

/// Lanes drain in order once the queue is at work, but the first one that gets something may go out first:
/// puts the groups of a text into order. A group is one report, or the reports 00, 01 and 82 of a port.
std::string sortedGroups(const std::string& text);

/// Collects what a notification callback is given that takes its record by value.
template <class Record>
class ByValue {
public:
    /// For `registerNotify`.
    static void callback(Record record)
    {
        const std::lock_guard lock(mutex);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&record);
        records.push_back(hex({bytes, sizeof record}));
        arrived.notify_all();
    }

    static void clear()
    {
        const std::lock_guard lock(mutex);
        records.clear();
    }

    /// Waits for `count` records since `clear`, and gives all, with " | " between them.
    static std::string await(std::size_t count)
    {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, patience, [&] { return records.size() >= count; });
        return joined(records);
    }

private:
    static inline std::mutex mutex;
    static inline std::condition_variable arrived;
    static inline std::vector<std::string> records;
};

/// The bytes of a record.
template <class Record>
std::string bytesOf(const Record& record)
{
    return hex({reinterpret_cast<const std::uint8_t*>(&record), sizeof record});
}

/// A record from its bytes; those that are not given are 0.
template <class Record>
Record recordOf(const std::string& text)
{
    Record record{};
    const ByteVector given = bytes(text);
    EXPECT_LE(given.size(), sizeof record);
    std::copy(given.begin(), given.end(), reinterpret_cast<std::uint8_t*>(&record));
    return record;
}

/// A byte as text.
inline std::string hexByte(int value)
{
    const auto byte = std::uint8_t(value);
    return hex({&byte, 1});
}

/// The same bytes again and again: "01 02 03" three times.
std::string times(std::size_t count, const std::string& bytes);

/// Bytes that count up from `first`, wrapping around.
std::string counting(int first, std::size_t count);

} // namespace pyrux::test
