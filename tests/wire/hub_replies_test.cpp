// The lighting controllers: how a request finds its reply, and the end of the reader.

#include "tests/support/debug_log.h"
#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

template <class Model>
class HubReplies : public testing::Test {
protected:
    /// A call of the model's question on a thread of its own: its result and what it gave.
    auto askAside()
    {
        return std::async(std::launch::async, [this] {
            int value = 0;
            const _error result = Model::ask(hub.host, value);
            return std::pair(result, value);
        });
    }

    using Answer = std::pair<_error, int>;

    HubOf<Model> hub;
};
TYPED_TEST_SUITE(HubReplies, HubModels, ModelName);

TYPED_TEST(HubReplies, comeForEachRequest)
{
    for (int i = 0; i < 3; ++i)
        this->hub.settle();
    EXPECT_EQ(this->hub.written(),
              joined({wire(TypeParam::question), wire(TypeParam::question), wire(TypeParam::question)}));
}

TYPED_TEST(HubReplies, mayComeTwice)
{
    const std::string answer = TypeParam::answer;
    this->hub.device->answer(TypeParam::question, answer + " | " + answer);
    for (int i = 0; i < 5; ++i)
        this->hub.settle();
}

TYPED_TEST(HubReplies, mayComeBehindOtherReports)
{
    this->hub.device->answer(TypeParam::question,
                             std::string("FF FF | 00 | 81 02 03 | 51 28 | 40 55 | ") + TypeParam::answer);
    this->hub.settle();
}

TYPED_TEST(HubReplies, serveTheOldestRequest)
{
    this->hub.device->silence(TypeParam::question);
    // A round in which the requests have not been answered within their limit says nothing.
    bool inTime = false;
    for (std::size_t asked = 0; !inTime && asked < 100; asked += 2) {
        const auto start = std::chrono::steady_clock::now();
        auto first = this->askAside();
        ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::question, asked + 1));
        auto second = this->askAside();
        ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::question, asked + 2));
        // Deliberate: a full match ends the pass, so that each reply serves the oldest request alone.
        this->hub.device->send(TypeParam::answer);
        const typename TestFixture::Answer atFirst = first.get();
        const bool waits = second.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
        this->hub.device->send(TypeParam::answer);
        const typename TestFixture::Answer then = second.get();
        inTime = std::chrono::steady_clock::now() - start < std::chrono::milliseconds(TypeParam::replyMs);
        if (inTime) {
            const typename TestFixture::Answer good{E_OK, TypeParam::value};
            EXPECT_EQ(atFirst, good);
            EXPECT_TRUE(waits);
            EXPECT_EQ(then, good);
        }
    }
    EXPECT_TRUE(inTime);
}

TYPED_TEST(HubReplies, doNoHarmWhenTheyAreShort)
{
    for (std::size_t length = 2; length < 64; length += 3) {
        sim::setConduct(this->hub.path, {.shortReads = length});
        int value = 0;
        TypeParam::ask(this->hub.host, value);
    }
    sim::setConduct(this->hub.path, {});
    this->hub.settle();
}

TYPED_TEST(HubReplies, doNotHoldUpTheEnd)
{
    this->hub.device->silence(TypeParam::question);
    auto asking = this->askAside();
    ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::question));
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->hub->exit_device(1), E_OK); }), 5000);
    const auto [result, value] = asking.get();
    EXPECT_LT(result, 0);
    EXPECT_EQ(value, TypeParam::untouched);
    int after = 0;
    EXPECT_EQ(TypeParam::ask(this->hub.host, after), E_CLOSED);
}

// Replies that do not come.

/// Asks for a reply that does not come: the ms that it takes.
template <class Model>
std::int64_t askInVain(HubOf<Model>& hub)
{
    int value = 0;
    const auto time = milliseconds([&] { EXPECT_EQ(Model::ask(hub.host, value), E_INVALID_GET); });
    EXPECT_EQ(value, Model::untouched);
    EXPECT_GE(time, Model::replyMs);
    return time;
}

TEST(HubMissingReply, isWaitedForSoLongAndNoLonger)
{
    forgetDebugOutput();
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        hub.device->silence(Model::question);
        EXPECT_LT(fastestOf(2, [&] { return askInVain(hub); }), Model::replyMs + 450);
    });
    const Lines lines = debugLines();
    for (const char* tag : {"GLOWHUB", "GLOWHUB2", "TINTHUB", "PLAY_DOCK", "STRANDHUB", "STRANDHUBV2"})
        EXPECT_EQ(std::ranges::count(lines, std::string("[PYRUX][") + tag + "]cannot receive"), 2) << tag;
}

WAITING_TEST(HubMissingReply, isNotMadeUpFromGarbage)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        sim::setConduct(hub.path, {.garbage = true});
        askInVain(hub);
        sim::setConduct(hub.path, {});
        hub.settle();
    });
}

WAITING_TEST(HubMissingReply, isNotReplacedByAnEarlierOne)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        hub.sendUnasked(Model::answer); // it is forgotten
        hub.settle();
        hub.sendUnasked(Model::answer);
        hub.device->silence(Model::question);
        askInVain(hub);
    });
}

WAITING_TEST(HubMissingReply, isNotReplacedByForeignReports)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        const std::string answer = Model::answer;
        // All but the first byte, all but the second one, the bytes one place further.
        hub.device->answer(Model::question, "FF" + answer.substr(2) + " | " + answer.substr(0, 2) + " FF" +
                                                answer.substr(5) + " | 00 " + answer + " | " +
                                                answer.substr(3));
        askInVain(hub);
    });
}

WAITING_TEST(HubMissingReply, mayComeLate)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        sim::setConduct(hub.path, {.replyTime = std::chrono::milliseconds(Model::replyMs + 700)});
        askInVain(hub);
        sim::setConduct(hub.path, {});
        hub.settle();
    });
}

WAITING_TEST(HubMissingReply, isWaitedForWhenTheWriteIsRefused)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        sim::setConduct(hub.path, {.refuseWrites = true}); // which counts as sent
        askInVain(hub);
    });
}

WAITING_TEST(HubMissingReply, isWaitedForWhenTheWriteIsStalled)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        sim::setConduct(hub.path, {.writeTime = 60s});
        EXPECT_GE(askInVain(hub), 1000 + Model::replyMs);
        sim::releaseWrites(hub.path);
    });
}

WAITING_TEST(HubMissingReply, isAllThatAHostHasFromAPulledDevice)
{
    forModels(HubModels(), []<class Model>() {
        HubOf<Model> hub;
        sim::unplug(hub.path);
        askInVain(hub);
        EXPECT_LT(milliseconds([&] { EXPECT_EQ(hub->exit_device(1), E_OK); }), 5000);
        int value = 0;
        EXPECT_EQ(Model::ask(hub.host, value), E_CLOSED);
    });
}

/// A second request of some models, to which a report belongs that is neither's.
struct GlowHubSecond : GlowHubModel {
    static constexpr const char* secondQuestion = "80 17 01";
    static constexpr _error stray = E_OK; // deliberate: the wait's result, the output as it was
    static _error askSecond(Interface* host, std::uint8_t* value) { return host->getMultilayerMode(value); }
};
struct GlowHub2Second : GlowHub2Model {
    static constexpr const char* secondQuestion = "80 0A 01";
    static constexpr _error stray = E_OK;
    static _error askSecond(Interface* host, std::uint8_t* value)
    {
        return host->getRGBEffectParameter(value, value + 1, value + 2);
    }
};
struct PlayDockSecond : PlayDockModel {
    static constexpr const char* secondQuestion = "80 11 01";
    static constexpr _error stray = _error(-98);
    static _error askSecond(Interface* host, std::uint8_t* value)
    {
        return host->getBottomEffectParameter(value);
    }
};

template <class Model>
struct StrandSecond : Model {
    static constexpr const char* secondQuestion = "80 C0 01";
    static constexpr _error stray = _error(-98);
    static _error askSecond(STRANDHUB_Operations* host, std::uint8_t* value)
    {
        return host->getMultilayerMode(value);
    }
};

template <class Model>
class HubRunningCount : public HubReplies<Model> {
};
using SecondModels = testing::Types<GlowHubSecond, GlowHub2Second, PlayDockSecond,
                                    StrandSecond<StrandHubModel>, StrandSecond<StrandHubV2Model>>;
TYPED_TEST_SUITE(HubRunningCount, SecondModels, ModelName);

TYPED_TEST(HubRunningCount, letsAYoungerRequestEndWithAForeignReport)
{
    // Deliberate: the first byte equals that of the older request, and once more that of the younger, whose
    // count is then full.
    this->hub.device->silence(TypeParam::question);
    this->hub.device->silence(TypeParam::secondQuestion);
    auto older = this->askAside();
    ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::question));
    std::uint8_t values[3]{0xE1, 0xE2, 0xE3};
    auto younger =
        std::async(std::launch::async, [&] { return TypeParam::askSecond(this->hub.host, values); });
    ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::secondQuestion));
    this->hub.device->send("80 99 03 01 02 03");
    EXPECT_EQ(younger.get(), TypeParam::stray);
    EXPECT_EQ(hex(values), "E1 E2 E3");
    this->hub.device->send(TypeParam::answer);
    const typename TestFixture::Answer good{E_OK, TypeParam::value};
    EXPECT_EQ(older.get(), good);
}

TYPED_TEST(HubRunningCount, bringsItsOwnReplyToAYoungerRequest)
{
    this->hub.device->silence(TypeParam::question);
    auto older = this->askAside();
    ASSERT_TRUE(this->hub.device->awaitCommands(TypeParam::question));
    std::uint8_t values[3]{0xE1, 0xE2, 0xE3};
    const std::string second = TypeParam::secondQuestion;
    this->hub.device->answer(second, second.substr(0, 5) + " 03 0A 0B 0C");
    EXPECT_EQ(TypeParam::askSecond(this->hub.host, values), E_OK);
    EXPECT_EQ(values[0], 0x0A);
    this->hub.device->send(TypeParam::answer);
    const typename TestFixture::Answer good{E_OK, TypeParam::value};
    EXPECT_EQ(older.get(), good);
}

// The reader and a device that cannot be read.

TEST(HubReader, endsAtItsThirtiethFailure)
{
    forgetDebugOutput();
    forModels(HubModels(), []<class Model>() {
        const std::string text = Model::facts().reader;
        HubOf<Model> hub;
        // 29 failures, 100 ms after one another: a request that begins meanwhile may get its reply in the
        // end.
        sim::setConduct(hub.path, {.readFailures = 29});
        int value = 0;
        int tries = 0;
        while (Model::ask(hub.host, value) != E_OK && tries < 6)
            ++tries;
        EXPECT_EQ(value, Model::value);
        EXPECT_GE(tries, 1);
        EXPECT_EQ(std::ranges::count(debugLines(), text), 0);
        // Never taken back: one more is enough, whatever was read between.
        sim::setConduct(hub.path, {.readFailures = 1});
        EXPECT_EQ(std::ranges::count(debugLinesWith(text), text), 1);
        EXPECT_EQ(Model::ask(hub.host, value), E_INVALID_GET);
        EXPECT_LT(milliseconds([&] { hub->exit_device(0); }), 5000);
    });
}

} // namespace
} // namespace pyrux::test
