#pragma once

#include "tests/support/mouse.h"
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

// An operation that waits for one reply: what it sends, the reply, what comes out of it and when it is
// missing.

struct AsksForVersion {
    static constexpr int replyMs = 1000;
    static constexpr int value = 0x1234;
    static constexpr int untouched = 0xEEEE;
    template <class Host>
    static _error ask(Host* host, int& value)
    {
        std::uint16_t version = 0xEEEE;
        const _error result = host->getVersion(&version);
        value = version;
        return result;
    }
};

struct GlowHubModel : ModelOf<&glow_hub>, AsksForVersion {
    using Notify = ArgbEffectNotify;
    static constexpr const char* question = "80 14 01";
    static constexpr const char* answer = "80 14 03 34 12";
};

struct GlowHub2Model : ModelOf<&glow2> {
    using Notify = GlowHub2Notify;
    static constexpr int replyMs = 1000;

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
};

struct TintHubModel : ModelOf<&tint_hub> {
    static constexpr int replyMs = 1500;

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
};

struct PlayDockModel : ModelOf<&playdock>, AsksForVersion {
    using Notify = PlayDockNotify;
    static constexpr const char* question = "80 B4 01";
    static constexpr const char* answer = "80 B4 03 34 12";
};

/// What both strand controllers have in common: everything but their rows.
struct StrandModel : AsksForVersion {
    static constexpr const char* question = "80 B4 01";
    static constexpr const char* answer = "80 B4 03 34 12";
};
struct StrandHubModel : ModelOf<&strandhub>, StrandModel {};
struct StrandHubV2Model : ModelOf<&strandhubv2>, StrandModel {};

using HubModels = testing::Types<GlowHubModel, GlowHub2Model, TintHubModel, PlayDockModel, StrandHubModel,
                                 StrandHubV2Model>;
using StrandModels = testing::Types<StrandHubModel, StrandHubV2Model>;
using NotifyingHubModels = testing::Types<GlowHubModel, GlowHub2Model, PlayDockModel>;

/// A scripted controller that is opened, its opening over. It answers the model's question too, and what
/// the test lays down; all else is met with silence.
template <class Model>
class HubOf : public Opened<Model> {
public:
    explicit HubOf(const Prepare& prepare = {})
        : Opened<Model>([&](ScriptedDevice& device) {
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
    /// that begins after it begins after that.
    void sendUnasked(std::string_view report)
    {
        this->device->send(report);
        for (const int before = sim::readWakeups(this->path); sim::readWakeups(this->path) < before + 2;)
            std::this_thread::yield();
    }

    /// The output reports so far, when the model's question has gone out after them.
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
        SCOPED_TRACE(Models::facts().factoryName);
        scenario.template operator()<Models>();
    }...});
}

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

} // namespace pyrux::test
