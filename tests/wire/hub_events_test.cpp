// The lighting controllers: what the devices report by themselves.

#include "tests/support/debug_log.h"
#include "tests/support/hub.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace pyrux::test {
namespace {

struct Event {
    const char* report;
    std::string record; ///< Its beginning; empty: the report is none.
    const char* text;   ///< What goes to the debug output; empty: nothing.
};

template <class Model>
std::vector<Event> eventsOf();

template <>
std::vector<Event> eventsOf<GlowHubModel>()
{
    return {
        {"80 0B 03 03 0B 10 04 80 55 66 77", "00 0B 10 05 80 55 00 00", "notify effect argb change"},
        {"80 0B 03 03 00 00 FF 00 00", "00 00 00 00 00 00 00 00", "notify effect argb change"},
        {"80 0A 02 06 10 02 99 88", "01 06 10 03 00 00 00 00", "notify effect rgb change"},
        {"80 0B 03 04 0B 10 04 80 55", "", ""},
        {"80 0B 02 03 0B 10 04 80 55", "", ""},
        {"80 0A 03 06 10 02", "", ""},
        {"81 0A 02 06 10 02", "", ""},
        {"80 0C 03 03", "", ""},
    };
}

template <>
std::vector<Event> eventsOf<GlowHub2Model>()
{
    return {
        {"80 0B 03 0F 08 07 04 01 03 99", "00 08 07 05 01 04 00 00 01 00 01", ""},
        {"80 0B 03 00 03 06 00 00 00", "00 03 07 01 00 01 00 00 01 00 01", ""},
        {"80 0A 03 06 07 04 99", "01 00 00 01 00 01 06 07 05 00 01", ""},
        {"80 0B 02 0F 08", "", ""},
        {"80 0B 04 01", "", ""},
        {"80 0A 02 06", "", ""},
        {"80 10 03 06", "", ""},
        {"82 0A 03 06", "", ""},
    };
}

template <>
std::vector<Event> eventsOf<PlayDockModel>()
{
    static const std::string full = "80 10 03 FF 08 02 0A 0B 0C 36 " + counting(0x41, 16) + " 51 52 53 54 55";
    const std::string record = " FF 08 03 0A 0B 0C " + counting(0x41, 16) + " 51 52 53 54 55 36";
    return {
        {full.c_str(), "00" + record, "notify top&body effect change"},
        // The value goes to speed for effect 0 too.
        {"80 10 03 FF 00 07 0A 0B 0C 01", "00 FF 00 08 0A 0B 0C " + times(21, "00") + " 01",
         "notify top&body effect change"},
        {"80 10 03 11 05 FF", "00 FF 05 00 00 00 00", "notify top&body effect change"},
        {"80 12 03 FF 01 02 03 04", "01 FF FF FF 01 02 03 " + times(26, "FF"), ""},
        {"80 10 02 FF 05", "", ""},
        {"80 12 02 FF 05", "", ""},
        {"80 11 03 01 02 03", "", ""},
        {"40 10 03 FF", "", ""},
    };
}

template <class Model>
class HubEvents : public testing::Test {
protected:
    using Notify = ByValue<typename Model::Notify>;

    HubEvents()
    {
        EXPECT_EQ(hub->registerNotify(Notify::callback), E_OK);
        Notify::clear();
    }

    HubOf<Model> hub;
};
TYPED_TEST_SUITE(HubEvents, NotifyingHubModels, ModelName);

TYPED_TEST(HubEvents, comeWithTheirRecords)
{
    for (const Event& event : eventsOf<TypeParam>()) {
        TestFixture::Notify::clear();
        forgetDebugOutput();
        this->hub.device->send(event.report);
        this->hub.settle();
        const std::string record = TestFixture::Notify::await(0);
        EXPECT_EQ(record.substr(0, event.record.size()), event.record) << event.report;
        EXPECT_EQ(record.empty(), event.record.empty()) << event.report;
        EXPECT_EQ(record.find('|'), std::string::npos) << event.report;
        Lines lines = debugLines();
        ASSERT_GE(lines.size(), 2U);
        std::erase_if(lines,
                      [](const std::string& line) { return line.starts_with("[PYRUX]["); }); // the question's
        EXPECT_EQ(lines, *event.text ? Lines{std::string("[PYRUX]") + event.text} : Lines{}) << event.report;
    }
}

TYPED_TEST(HubEvents, areToldInTheDebugOutputWithoutACallbackToo)
{
    const Event event = eventsOf<TypeParam>().front();
    this->hub->unRegisterNotify();
    forgetDebugOutput();
    this->hub.device->send(event.report);
    this->hub.settle();
    const Lines lines = debugLines();
    if (*event.text) {
        EXPECT_EQ(std::ranges::count(lines, std::string("[PYRUX]") + event.text), 1);
    }
    EXPECT_EQ(TestFixture::Notify::await(0), "");
}

TYPED_TEST(HubEvents, endWithTheirCallback)
{
    const Event event = eventsOf<TypeParam>().front();
    this->hub.device->send(event.report);
    EXPECT_NE(TestFixture::Notify::await(1), "");
    TestFixture::Notify::clear();
    EXPECT_EQ(this->hub->unRegisterNotify(), E_OK);
    this->hub.device->send(event.report);
    this->hub.settle();
    EXPECT_EQ(TestFixture::Notify::await(0), "");
    EXPECT_EQ(this->hub->registerNotify(TestFixture::Notify::callback), E_OK);
    this->hub.device->send(event.report);
    EXPECT_NE(TestFixture::Notify::await(1), "");
}

TYPED_TEST(HubEvents, areRefusedByAClosedObject)
{
    this->hub->exit_device(1);
    EXPECT_EQ(this->hub->registerNotify(TestFixture::Notify::callback), E_CLOSED);
    EXPECT_EQ(this->hub->unRegisterNotify(), E_CLOSED);
}

/// A callback that the test holds.
template <class Model>
struct Held {
    static inline std::promise<void> entered, leave;
    static void callback(typename Model::Notify)
    {
        entered.set_value();
        leave.get_future().wait();
    }
};

TYPED_TEST(HubEvents, keepTheEndOfTheRegistrationWaiting)
{
    using Callback = Held<TypeParam>;
    Callback::entered = {};
    Callback::leave = {};
    this->hub->registerNotify(Callback::callback);
    this->hub.device->send(eventsOf<TypeParam>().front().report);
    Callback::entered.get_future().wait();
    auto ending = std::async(std::launch::async, [&] { return this->hub->unRegisterNotify(); });
    EXPECT_EQ(ending.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    Callback::leave.set_value();
    EXPECT_EQ(ending.get(), E_OK);
}

TEST(GlowHubEvents, areNotMadeOfReplies)
{
    HubOf<GlowHubModel> hub;
    using Notify = ByValue<ArgbEffectNotify>;
    hub->registerNotify(Notify::callback);
    Notify::clear();
    hub.device->answer("80 0B 01", "80 0B 03 03 0B 10 04 80 55 66 77"); // looks like a notification
    auto record = recordOf<ArgbEffectParam>("01");
    EXPECT_EQ(hub->getEffectParameter(&record), E_OK);
    EXPECT_EQ(bytesOf(record), "00 0B 10 05 80 55 66 77");
    hub.settle();
    EXPECT_EQ(Notify::await(0), "");
}

TEST(GlowHub2Events, areNotMadeOfReplies)
{
    HubOf<GlowHub2Model> hub;
    using Notify = ByValue<GlowHub2Notify>;
    hub->registerNotify(Notify::callback);
    Notify::clear();
    hub.device->answer("80 0A 01", "80 0A 03 06 07 04");
    std::uint8_t bytes[3]{};
    EXPECT_EQ(hub->getRGBEffectParameter(bytes, bytes + 1, bytes + 2), E_OK);
    EXPECT_EQ(hex(bytes), "06 07 05");
    hub.settle();
    EXPECT_EQ(Notify::await(0), "");
}

TEST(PlayDockEvents, doNotReachARequestThatWaits)
{
    // A request whose match is already half done by an older one would take any report that begins with 80.
    HubOf<PlayDockModel> hub;
    using Notify = ByValue<PlayDockNotify>;
    hub->registerNotify(Notify::callback);
    Notify::clear();
    hub.device->silence("80 B4");
    hub.device->silence("80 11");
    auto older = std::async(std::launch::async, [&] {
        std::uint16_t version = 0;
        return hub->getVersion(&version);
    });
    ASSERT_TRUE(hub.device->awaitCommands("80 B4"));
    std::uint8_t color[3]{};
    auto younger = std::async(std::launch::async, [&] { return hub->getBottomEffectParameter(color); });
    ASSERT_TRUE(hub.device->awaitCommands("80 11"));
    hub.device->send("80 12 03 FF 01 02 03");
    EXPECT_NE(Notify::await(1), "");
    hub.device->send("80 11 03 0A 0B 0C");
    EXPECT_EQ(younger.get(), E_OK);
    EXPECT_EQ(hex(color), "0A 0B 0C");
    hub.device->send("80 B4 03");
    EXPECT_EQ(older.get(), E_OK);
}

} // namespace
} // namespace pyrux::test
