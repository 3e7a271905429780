// The strand controllers: requests, their limits, and how replies are judged.

#include "tests/support/debug_log.h"
#include "tests/support/hub.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;
using Host = STRANDHUB_Operations;

template <class Model>
class StrandRequests : public testing::Test {
protected:
    HubOf<Model> hub;
};
TYPED_TEST_SUITE(StrandRequests, StrandModels, ModelName);

/// A place as a record: effect 5, speed 3, A, B, a color.
StrandEffectParam effectAt(Byte port, Byte subPort)
{
    return {5, 0xEE, 3, 0x0A, 0x0B, 0x11, 0x22, 0x33, port, subPort};
}

/// An operation of one request, and that request's first two bytes.
struct Request {
    const char* name;
    const char* head;
    std::function<_error(Host&)> call;
};

const std::vector<Request>& requests()
{
    static StrandEffectParam effect;
    static StrandEffectTable table;
    static StrandGen1Size gen1;
    static StrandGen2Size gen2;
    static StrandRemap remap;
    static StrandOverlayParam overlay;
    static std::array<Byte, 32> id;
    static Byte value;
    static std::uint16_t version;
    static const std::vector<Request> all{
        {"setEffectParameter", "80 03",
         [](Host& host) { return host.setEffectParameter(&(effect = effectAt(2, 4))); }},
        {"getEffectParameter", "80 03",
         [](Host& host) { return host.getEffectParameter(&(effect = effectAt(2, 4))); }},
        {"getAnyEffectParameter", "80 04",
         [](Host& host) { return host.getAnyEffectParameter(&(effect = effectAt(2, 4))); }},
        {"getAllEffectParameter", "80 0C",
         [](Host& host) {
             return host.getAllEffectParameter(&(table = {1, 0, {}}));
         }},
        {"setGen1Size", "80 06",
         [](Host& host) {
             return host.setGen1Size(&(gen1 = {1, 1, 4}));
         }},
        {"getGen1Size", "80 06",
         [](Host& host) {
             return host.getGen1Size(&(gen1 = {1, 0, 0}));
         }},
        {"getGen2Size", "80 07",
         [](Host& host) {
             return host.getGen2Size(&(gen2 = {1, 0, {}}));
         }},
        {"remapGen2SubPort", "80 0D",
         [](Host& host) {
             return host.remapGen2SubPort(&(remap = {1, {}}));
         }},
        {"setUID", "80 B5", [](Host& host) { return host.setUID(1, id.data()); }},
        {"getUID", "80 B5", [](Host& host) { return host.getUID(id.data()); }},
        {"setIdentify", "80 0A", [](Host& host) { return host.setIdentify(1, 1); }},
        {"saveConfig", "80 B0", [](Host& host) { return host.saveConfig(); }},
        {"resetConfig", "80 B1", [](Host& host) { return host.resetConfig(0); }},
        {"resetData", "80 B6", [](Host& host) { return host.resetData(); }},
        {"getVersion", "80 B4", [](Host& host) { return host.getVersion(&version); }},
        {"setARGBType", "80 0B", [](Host& host) { return host.setARGBType(1, 1); }},
        {"getARGBType", "80 0B", [](Host& host) { return host.getARGBType(1, &value); }},
        {"refreshPortInfo", "80 B2", [](Host& host) { return host.refreshPortInfo(1); }},
        {"setMultilayerMode", "80 C0", [](Host& host) { return host.setMultilayerMode(1); }},
        {"getMultilayerMode", "80 C0", [](Host& host) { return host.getMultilayerMode(&value); }},
        {"getEffectMode", "80 03",
         [](Host& host) { return host.getEffectMode(&(effect = effectAt(2, 4)), &value); }},
        {"setOverlayMode", "80 11", [](Host& host) { return host.setOverlayMode(1); }},
        {"getOverlayMode", "80 11", [](Host& host) { return host.getOverlayMode(&value); }},
        {"getOverlayEffectParameter", "80 10",
         [](Host& host) {
             return host.getOverlayEffectParameter(&(overlay = {1, {}, 0}));
         }},
    };
    return all;
}

/// Rules of the support are longer than a head: this one counts.
template <class Model>
void answer(HubOf<Model>& hub, const Request& request, const std::string& rest)
{
    for (const char* operation : {" 01", " 02"})
        hub.device->answer(request.head + std::string(operation), request.head + rest);
}

TYPED_TEST(StrandRequests, areRefusedWithTheDevicesReasonInTheLog)
{
    for (const Request& request : requests()) {
        HubOf<TypeParam> hub;
        answer(hub, request, " 04 2A");
        const Lines lines =
            debugLinesOf([&] { EXPECT_EQ(request.call(*hub.host), E_INVALID_GET) << request.name; });
        const std::string name = request.name;
        EXPECT_EQ(lines,
                  (Lines{hostLine<TypeParam>(name + ", #"), hostLine<TypeParam>(name + ", error code = 42"),
                         hostLine<TypeParam>(name + ", ret = -3")}));
        EXPECT_EQ(reports(hub.written()).size(), 1U) << name;
    }
}

TYPED_TEST(StrandRequests, takeNoOtherWordForAReply)
{
    for (const Request& request : requests())
        for (const char* word : {" 00", " 01", " 02", " 05", " 13", " 83", " FF"}) {
            answer(this->hub, request, word);
            EXPECT_EQ(request.call(*this->hub.host), -98) << request.name << word;
            EXPECT_EQ(reports(this->hub.written()).size(), 1U) << request.name;
        }
}

TYPED_TEST(StrandRequests, leaveTheOutputsAloneWhenTheyFail)
{
    for (const char* word : {" 04 01 77 77 77 77", " 05 77 77 77 77 77"}) {
        for (const char* head : {"80 03 01", "80 04 01", "80 06 01", "80 07 01", "80 0B 01", "80 B4 01",
                                 "80 B5 01", "80 C0 01", "80 11 01", "80 10 01", "80 0C 01"})
            this->hub.device->answer(head, std::string(head).substr(0, 5) + word);
        Host& host = *this->hub.host;
        const StrandEffectParam effectBefore = effectAt(1, 1);
        StrandEffectParam effect = effectBefore;
        EXPECT_NE(host.getEffectParameter(&effect), E_OK);
        EXPECT_NE(host.getAnyEffectParameter(&effect), E_OK);
        Byte value = 0xEE;
        EXPECT_NE(host.getEffectMode(&effect, &value), E_OK);
        EXPECT_EQ(bytesOf(effect), bytesOf(effectBefore));
        EXPECT_NE(host.getARGBType(1, &value), E_OK);
        EXPECT_NE(host.getMultilayerMode(&value), E_OK);
        EXPECT_NE(host.getOverlayMode(&value), E_OK);
        EXPECT_EQ(value, 0xEE);
        StrandGen1Size gen1{1, 0xEE, 0xEE};
        EXPECT_NE(host.getGen1Size(&gen1), E_OK);
        EXPECT_EQ(bytesOf(gen1), "01 EE EE");
        StrandGen2Size gen2{1, 0xEE, {0xEE}};
        EXPECT_NE(host.getGen2Size(&gen2), E_OK);
        EXPECT_EQ(bytesOf(gen2), "01 EE EE 00 00 00 00");
        std::uint16_t version = 0xEEEE;
        EXPECT_NE(host.getVersion(&version), E_OK);
        EXPECT_EQ(version, 0xEEEE);
        std::array<Byte, 32> id{0xEE};
        EXPECT_NE(host.getUID(id.data()), E_OK);
        EXPECT_EQ(id, (std::array<Byte, 32>{0xEE}));
        auto overlay = recordOf<StrandOverlayParam>("01 EE");
        EXPECT_NE(host.getOverlayEffectParameter(&overlay), E_OK);
        EXPECT_EQ(bytesOf(overlay), bytesOf(recordOf<StrandOverlayParam>("01 EE")));
        auto table = recordOf<StrandEffectTable>("01 01 EE");
        EXPECT_NE(host.getAllEffectParameter(&table), E_OK);
        EXPECT_EQ(bytesOf(table), bytesOf(recordOf<StrandEffectTable>("01 01 EE")));
    }
}

TYPED_TEST(StrandRequests, nameAPlaceByMasks)
{
    struct Mask {
        int number;
        const char* onWire;
    };
    for (const Mask& port : {Mask{0, "00"}, Mask{1, "01"}, Mask{2, "02"}, Mask{3, "04"}, Mask{255, "FF"},
                             Mask{4, "00"}, Mask{5, "00"}})
        for (const Mask& subPort : {Mask{0, "00"}, Mask{1, "01"}, Mask{2, "02"}, Mask{3, "04"}, Mask{4, "08"},
                                    Mask{5, "10"}, Mask{255, "FF"}, Mask{6, "00"}, Mask{7, "00"}}) {
            const StrandEffectParam effect = effectAt(Byte(port.number), Byte(subPort.number));
            EXPECT_EQ(this->hub->setEffectParameter(&effect), E_OK);
            EXPECT_EQ(this->hub.written(), std::string("80 03 02 ") + port.onWire + " " + subPort.onWire +
                                               " 05 02 0A 11 22 33 0B");
        }
}

// Parameter A stands before the color, B after it. Speeds are one less on the wire, both ways.
TYPED_TEST(StrandRequests, carrySpeedsOneLess)
{
    for (const int speed : {1, 2, 5, 128, 255, 0}) {
        StrandEffectParam effect = effectAt(1, 0);
        effect.speed = Byte(speed);
        EXPECT_EQ(this->hub->setEffectParameter(&effect), E_OK);
        EXPECT_EQ(this->hub.written(), "80 03 02 01 00 05 " + hexByte(speed - 1) + " 0A 11 22 33 0B");
        this->hub.device->answer("80 03 01", "80 03 03 01 00 09 " + hexByte(speed - 1) + " 1A 21 22 23 1B");
        StrandEffectParam got = effectAt(1, 0);
        EXPECT_EQ(this->hub->getEffectParameter(&got), E_OK);
        EXPECT_EQ(bytesOf(got), "09 EE " + hexByte(speed) + " 1A 1B 21 22 23 01 00");
        EXPECT_EQ(this->hub.written(), wire("80 03 01 01 00"));
    }
}

TYPED_TEST(StrandRequests, limitTheSizeOfAStrand)
{
    struct Row {
        StrandGen1Size size;
        const char* written; ///< Empty: refused.
    };
    for (const Row& row : {
             Row{{1, 1, 4}, "80 06 02 00 01 04"},
             Row{{2, 10, 6}, "80 06 02 01 0A 06"},
             Row{{3, 1, 60}, "80 06 02 02 01 3C"},
             Row{{255, 3, 20}, "80 06 02 FF 03 14"}, // an index, not a mask
             Row{{1, 7, 10}, "80 06 02 00 07 08"},   // 60 by 7
             Row{{1, 2, 60}, "80 06 02 00 02 1E"},
             Row{{1, 10, 60}, "80 06 02 00 0A 06"},
             Row{{1, 9, 7}, "80 06 02 00 09 06"},
             Row{{1, 4, 16}, "80 06 02 00 04 0F"},
             Row{{1, 4, 15}, "80 06 02 00 04 0F"},
             Row{{0, 1, 4}, ""},
             Row{{4, 1, 4}, ""},
             Row{{254, 1, 4}, ""},
             Row{{1, 0, 4}, ""},
             Row{{1, 11, 4}, ""},
             Row{{1, 255, 4}, ""},
             Row{{1, 1, 3}, ""},
             Row{{1, 1, 0}, ""},
             Row{{1, 1, 61}, ""},
             Row{{1, 1, 255}, ""},
         }) {
        const StrandGen1Size before = row.size;
        const bool refused = *row.written == '\0';
        EXPECT_EQ(this->hub->setGen1Size(&row.size), refused ? E_INVALID_SET : E_OK) << bytesOf(before);
        EXPECT_EQ(this->hub.written(), row.written);
        EXPECT_EQ(bytesOf(row.size), bytesOf(before));
    }
}

/// Ports that an operation does not take; the others are 1 to 3, and 255 where it is none of these.
struct PortLimit {
    const char* name;
    std::vector<int> refused;
    _error result;
    std::function<_error(Host&, Byte port)> call;
};

TYPED_TEST(StrandRequests, limitThePort)
{
    const std::vector<int> one{0, 4, 5, 9, 128, 254, 255}, oneOrAll{0, 4, 5, 9, 128, 254};
    const PortLimit limits[]{
        {"getGen1Size", one, E_INVALID_GET,
         [](Host& host, Byte port) {
             StrandGen1Size size{port, 0, 0};
             return host.getGen1Size(&size);
         }},
        {"getGen2Size", one, E_INVALID_GET,
         [](Host& host, Byte port) {
             StrandGen2Size size{port, 0, {}};
             return host.getGen2Size(&size);
         }},
        {"remapGen2SubPort", one, E_INVALID_SET,
         [](Host& host, Byte port) {
             const StrandRemap remap{port, {}};
             return host.remapGen2SubPort(&remap);
         }},
        {"setOverlayEffectParameter", one, E_INVALID_SET,
         [](Host& host, Byte port) {
             const StrandOverlayParam overlay{port, {}, 0};
             return host.setOverlayEffectParameter(&overlay);
         }},
        {"setIdentify", oneOrAll, E_INVALID_SET,
         [](Host& host, Byte port) { return host.setIdentify(port, 1); }},
        {"setARGBType", oneOrAll, E_INVALID_SET,
         [](Host& host, Byte port) { return host.setARGBType(port, 1); }},
        {"refreshPortInfo", oneOrAll, E_INVALID_GET,
         [](Host& host, Byte port) { return host.refreshPortInfo(port); }},
    };
    for (const PortLimit& limit : limits) {
        for (const int port : limit.refused) {
            EXPECT_EQ(limit.call(*this->hub.host, Byte(port)), limit.result) << limit.name << port;
            EXPECT_EQ(this->hub.written(), "") << limit.name << port;
        }
        for (const int port : {1, 2, 3})
            EXPECT_EQ(limit.call(*this->hub.host, Byte(port)), E_OK) << limit.name << port;
        if (limit.refused == oneOrAll) {
            this->hub.written();
            EXPECT_EQ(limit.call(*this->hub.host, 255), E_OK) << limit.name;
            EXPECT_EQ(reports(this->hub.written()).front().substr(6, 5).substr(3), "FF") << limit.name;
        }
        this->hub.written();
    }
}

TYPED_TEST(StrandRequests, limitTheRest)
{
    for (const int value : {0, 1, 2}) {
        EXPECT_EQ(this->hub->resetConfig(Byte(value)), E_OK);
        EXPECT_EQ(this->hub.written(), wire("80 B1 02 0" + std::to_string(value)));
    }
    for (const int value : {3, 4, 128, 255})
        EXPECT_EQ(this->hub->resetConfig(Byte(value)), E_INVALID_SET);
    EXPECT_EQ(this->hub.written(), "");
    for (const int value : {0, 1, 2, 255}) {
        EXPECT_EQ(this->hub->setMultilayerMode(Byte(value)), E_OK);
        EXPECT_EQ(this->hub->setOverlayMode(Byte(value)), E_OK);
        EXPECT_EQ(this->hub.written(),
                  wire("80 C0 02 " + hexByte(value) + " | 80 11 02 " + hexByte(value) + " 32"));
    }
}

TYPED_TEST(StrandRequests, lookAtAPortAgainBehindItsType)
{
    EXPECT_EQ(this->hub->setARGBType(255, 9), E_OK);
    EXPECT_EQ(this->hub.written(), "80 0B 02 FF 09 | 80 B2 02 FF");
    // Its own result stands when the refresh fails.
    for (const char* reply : {"80 B2 04 07", "80 B2 05"}) {
        this->hub.device->answer("80 B2", reply);
        EXPECT_EQ(this->hub->setARGBType(3, 1), E_OK);
        EXPECT_EQ(this->hub.written(), "80 0B 02 04 01 | 80 B2 02 04");
    }
    // A refused type does not refresh.
    this->hub.device->answer("80 0B", "80 0B 04 07");
    EXPECT_EQ(this->hub->setARGBType(3, 1), E_INVALID_GET);
    EXPECT_EQ(this->hub.written(), "80 0B 02 04 01");
}

TYPED_TEST(StrandRequests, changeTheEffectWithWhatIsStoredForIt)
{
    this->hub.device->answer("80 04 01", "80 04 03 04 01 07 FF 1A 21 22 23 1B");
    StrandEffectParam place = effectAt(3, 1);
    EXPECT_EQ(this->hub->setEffectMode(&place, 7), E_OK);
    EXPECT_EQ(this->hub.written(), "80 04 01 04 01 07 | 80 03 02 04 01 07 FF 1A 21 22 23 1B");
    EXPECT_EQ(bytesOf(place), "07 EE 00 1A 1B 21 22 23 03 01");
    this->hub.device->answer("80 04 01", "80 04 04 01");
    EXPECT_EQ(this->hub->setEffectMode(&place, 8), E_INVALID_GET);
    EXPECT_EQ(this->hub.written(), "80 04 01 04 01 08");
    this->hub.device->answer("80 04 01", "80 04 03 04 01 07");
    this->hub.device->answer("80 03 02", "80 03 05");
    EXPECT_EQ(this->hub->setEffectMode(&place, 8), -98);
}

TYPED_TEST(StrandRequests, readAllEffectsOnlyInBothParts)
{
    this->hub.device->answer("80 0C 01", "80 0C 03 01 01 0A " + counting(1, 56));
    for (const char* reply : {"81 0C 04 01", "81 0C 01"}) {
        this->hub.device->answer("81 0C 01", reply);
        auto table = recordOf<StrandEffectTable>("01 01 EE");
        EXPECT_EQ(this->hub->getAllEffectParameter(&table), std::string(reply) == "81 0C 01" ? -98 : -3);
        EXPECT_EQ(bytesOf(table), bytesOf(recordOf<StrandEffectTable>("01 01 EE")));
        EXPECT_EQ(this->hub.written(), "80 0C 01 01 01 | 81 0C 01 01 01");
    }
}

TYPED_TEST(StrandRequests, knowFiveFansOfAPortAtMost)
{
    this->hub.device->answer("80 07 01", "80 07 03 01 05 04 05 06 07 08 EE");
    StrandGen2Size size{1, 0, {}};
    EXPECT_EQ(this->hub->getGen2Size(&size), E_OK);
    EXPECT_EQ(bytesOf(size), "01 05 04 05 06 07 08");
    for (const char* count : {"06", "3C", "FF"}) {
        this->hub.device->answer("80 07 01", std::string("80 07 03 01 ") + count + " 14 14 14 14 14 14");
        StrandGen2Size other{1, 0, {}};
        EXPECT_EQ(this->hub->getGen2Size(&other), E_INVALID_GET) << count;
        EXPECT_EQ(bytesOf(other), "01 00 00 00 00 00 00");
    }
}

TYPED_TEST(StrandRequests, keepTheirDistance)
{
    // 32 ms between two, 10 times.
    EXPECT_GE(milliseconds([&] {
                  for (int i = 0; i < 11; ++i)
                      EXPECT_EQ(this->hub->saveConfig(), E_OK);
              }),
              315);
    // They do not wait for anything else.
    EXPECT_LT(fastestOf(5, [&] { return milliseconds([&] { this->hub->saveConfig(); }); }), 45);
}

// Custom colors.

/// Where a custom zone is on the wire.
struct CustomZone {
    int zone;
    const char* place;
};
constexpr CustomZone customZones[]{{1, "01 00"},  {2, "02 00"},  {3, "04 00"},  {4, "01 01"},  {5, "01 02"},
                                   {6, "01 04"},  {7, "01 08"},  {8, "01 10"},  {9, "02 01"},  {10, "02 02"},
                                   {11, "02 04"}, {12, "02 08"}, {13, "02 10"}, {14, "04 01"}, {15, "04 02"},
                                   {16, "04 04"}, {17, "04 08"}, {18, "04 10"}};

/// Colors that count up.
StrandCustomBuffer countingBuffer()
{
    return recordOf<StrandCustomBuffer>("EE EE EE EE " + counting(1, 180));
}

/// The frames of so many bytes that count up.
std::string customFrames(const std::string& words, const std::string& place, std::size_t bytes)
{
    std::string text;
    const std::size_t frames = bytes == 0 ? 1 : (bytes + 58) / 59;
    for (std::size_t i = 0; i < frames; ++i) {
        const int head = int(i) | (i + 1 == frames ? 0x80 : 0);
        text += (i == 0 ? "" : " | ") + hexByte(head) + " " + words + " " + place + " " +
                counting(1 + int(59 * i), std::min<std::size_t>(59, bytes - 59 * i));
    }
    return text;
}

TYPED_TEST(StrandRequests, customizeEachZoneWithFourLedsAtFirst)
{
    const StrandCustomBuffer buffer = countingBuffer();
    for (const CustomZone& row : customZones) {
        EXPECT_EQ(this->hub->setEffectCustomize(Byte(row.zone), &buffer), E_OK) << row.zone;
        EXPECT_EQ(this->hub.written(),
                  std::string("80 08 02 ") + row.place + " 01 02 03 04 05 06 07 08 09 0A 0B 0C");
    }
    for (const int zone : {0, 19, 20, 128, 255}) {
        EXPECT_EQ(this->hub->setEffectCustomize(Byte(zone), &buffer), E_INVALID_SET) << zone;
        StrandCustomBuffer got = buffer;
        EXPECT_EQ(this->hub->getEffectCustomize(Byte(zone), &got), E_INVALID_GET) << zone;
    }
    EXPECT_EQ(this->hub->setEffectCustomize(1, nullptr), E_INVALID_SET);
    EXPECT_EQ(this->hub->getEffectCustomize(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(this->hub.written(), "");
}

TYPED_TEST(StrandRequests, customizeAsManyLedsAsAStrandHas)
{
    for (const char* head : {"00", "01", "02", "81", "82", "83"})
        this->hub.device->answer(std::string(head) + " 08", std::string(head) + " 08 03");
    const StrandCustomBuffer buffer = countingBuffer();
    struct Row {
        const char* size; ///< Chain length, LEDs of each.
        std::size_t leds;
    };
    for (const Row& row :
         {Row{"01 04", 4}, Row{"01 13", 19}, Row{"02 0A", 20}, Row{"01 14", 20}, Row{"05 07", 35},
          Row{"01 28", 40}, Row{"01 3B", 59}, Row{"01 3C", 60}, Row{"0A 06", 60}}) {
        this->hub.device->answer("80 06 01", std::string("80 06 03 02 ") + row.size);
        StrandGen1Size size{2, 0, 0};
        EXPECT_EQ(this->hub->getGen1Size(&size), E_OK);
        this->hub.written();
        EXPECT_EQ(this->hub->setEffectCustomize(2, &buffer), E_OK) << row.size;
        EXPECT_EQ(this->hub.written(), customFrames("08 02", "02 00", 3 * row.leds)) << row.size;
    }
    // The other zones are as they were.
    EXPECT_EQ(this->hub->setEffectCustomize(1, &buffer), E_OK);
    EXPECT_EQ(this->hub.written(), "80 08 02 01 00 01 02 03 04 05 06 07 08 09 0A 0B 0C");
}

/// 20 LEDs are 60 bytes and therefore two frames, the second with one byte.
TYPED_TEST(StrandRequests, cutTwentyLedsBehindTheFirstFrame)
{
    for (const char* head : {"00", "81"})
        this->hub.device->answer(std::string(head) + " 08", std::string(head) + " 08 03");
    this->hub.device->answer("80 07 01", "80 07 03 04 02 10 14");
    StrandGen2Size size{3, 0, {}};
    EXPECT_EQ(this->hub->getGen2Size(&size), E_OK);
    this->hub.written();
    const StrandCustomBuffer buffer = countingBuffer();
    EXPECT_EQ(this->hub->setEffectCustomize(15, &buffer), E_OK); // fan 2 of port 3
    EXPECT_EQ(this->hub.written(),
              "00 08 02 04 02 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A "
              "1B 1C 1D 1E "
              "1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A 3B | "
              "81 08 02 04 02 3C");
    EXPECT_EQ(this->hub->setEffectCustomize(14, &buffer), E_OK); // fan 1, 16 LEDs
    EXPECT_EQ(this->hub.written(), "80 08 02 04 01 " + counting(1, 48));
    EXPECT_EQ(this->hub->setEffectCustomize(16, &buffer), E_OK); // fan 3, unknown
    EXPECT_EQ(this->hub.written(), "80 08 02 04 04 " + counting(1, 12));
}

TYPED_TEST(StrandRequests, readCustomColorsFrameByFrame)
{
    this->hub.device->answer("80 06 01", "80 06 03 01 01 28"); // 40 LEDs: 120 bytes
    StrandGen1Size size{1, 0, 0};
    EXPECT_EQ(this->hub->getGen1Size(&size), E_OK);
    this->hub.written();
    this->hub.device->answer("00 08 01", "00 08 03 01 00 " + counting(0x21, 59));
    this->hub.device->answer("01 08 01", "01 08 03 01 00 " + counting(0x21 + 59, 59));
    this->hub.device->answer("82 08 01", "82 08 03 01 00 " + counting(0x21 + 118, 59));
    auto buffer = recordOf<StrandCustomBuffer>("E1 E2 E3 E4 " + times(180, "EE"));
    EXPECT_EQ(this->hub->getEffectCustomize(1, &buffer), E_OK);
    EXPECT_EQ(this->hub.written(), wire("00 08 01 01 00 | 01 08 01 01 00 | 82 08 01 01 00"));
    EXPECT_EQ(bytesOf(buffer), "E1 E2 E3 E4 " + counting(0x21, 120) + " " + times(60, "EE"));
}

TYPED_TEST(StrandRequests, endCustomColorsAtARefusedFrame)
{
    this->hub.device->answer("80 06 01", "80 06 03 01 01 28");
    StrandGen1Size size{1, 0, 0};
    EXPECT_EQ(this->hub->getGen1Size(&size), E_OK);
    this->hub.written();
    this->hub.device->answer("00 08", "00 08 03");
    this->hub.device->answer("01 08", "01 08 04 06");
    StrandCustomBuffer buffer = countingBuffer();
    EXPECT_EQ(this->hub->setEffectCustomize(1, &buffer), E_INVALID_GET);
    EXPECT_EQ(reports(this->hub.written()).size(), 2U);
    EXPECT_EQ(this->hub->getEffectCustomize(1, &buffer), E_INVALID_GET);
    EXPECT_EQ(this->hub.written(), wire("00 08 01 01 00 | 01 08 01 01 00"));
}

WAITING_TEST(StrandMissing, endsEachRequest)
{
    forModels(StrandModels(), []<class Model>() {
        std::vector<std::function<void()>> all;
        for (const Request& request : requests())
            all.emplace_back([&request] {
                HubOf<Model> hub;
                for (const char* operation : {" 01", " 02"})
                    hub.device->silence(request.head + std::string(operation));
                EXPECT_GE(
                    milliseconds([&] { EXPECT_EQ(request.call(*hub.host), E_INVALID_GET) << request.name; }),
                    1000);
                EXPECT_EQ(reports(hub.written()).size(), 1U) << request.name;
            });
        // The records are shared: one at a time.
        for (const auto& each : {all[0], all[3], all[12], all[15]})
            each();
    });
}

/// A frame that another first byte answers, and a refresh that nothing answers.
WAITING_TEST(StrandMissing, endsOperationsOfSeveralRequests)
{
    forModels(StrandModels(), []<class Model>() {
        HubOf<Model> hub;
        hub.device->answer("80 08", "81 08 03");
        StrandCustomBuffer buffer = countingBuffer();
        EXPECT_EQ(hub->setEffectCustomize(1, &buffer), E_INVALID_GET);
        EXPECT_EQ(hub->getEffectCustomize(1, &buffer), E_INVALID_GET);
        hub.written();
        hub.device->silence("80 B2");
        EXPECT_EQ(hub->setARGBType(1, 1), E_OK);
        EXPECT_EQ(hub.written(), "80 0B 02 01 01 | 80 B2 02 01");
    });
}

} // namespace
} // namespace pyrux::test
