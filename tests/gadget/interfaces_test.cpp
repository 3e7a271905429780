#include "interfaces.h"

#include "simulator/models.h"

#include <gtest/gtest.h>

#include <utility>

namespace pyrux::gadget {

namespace {

using Bytes = std::vector<std::uint8_t>;

sim::Identity device(std::vector<sim::Collection> collections, int controlInterface = 0)
{
    sim::Identity identity;
    identity.collections = std::move(collections);
    identity.controlInterface = controlInterface;
    return identity;
}

Bytes joined(std::initializer_list<Bytes> pieces)
{
    Bytes all;
    for (const Bytes& piece : pieces)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

// Items as the HID class definition has them.
const Bytes reports64{0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x40,
                      0x09, 0x01, 0x81, 0x02, 0x09, 0x02, 0x91, 0x02};
const Bytes featureByte{0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x01, 0x09, 0x01, 0xB1, 0x02};
const Bytes end{0xC0};

TEST(Interfaces, vendorPageHasReportsOf64BytesInBothDirections)
{
    const auto interfaces = interfacesOf(device({{.interface = 0, .usagePage = 0xFF00, .usage = 1}}));
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].subclass, 0);
    EXPECT_EQ(interfaces[0].protocol, 0);
    EXPECT_EQ(interfaces[0].reportLength, 64);
    EXPECT_TRUE(interfaces[0].hasOutputEndpoint);
    EXPECT_EQ(interfaces[0].descriptor, joined({{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01}, reports64, end}));
}

TEST(Interfaces, longUsagesTakeTwoBytes)
{
    const auto interfaces = interfacesOf(device({{.interface = 0, .usagePage = 0xFF93, .usage = 0x0102}}));
    EXPECT_EQ(interfaces.at(0).descriptor,
              joined({{0x06, 0x93, 0xFF, 0x0A, 0x02, 0x01, 0xA1, 0x01}, reports64, end}));
}

TEST(Interfaces, bootMouseHasAPlainMouseReport)
{
    const auto interfaces = interfacesOf(device(
        {{.interface = 0, .usagePage = 1, .usage = 2}, {.interface = 1, .usagePage = 0xFF00, .usage = 1}},
        1));
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0].subclass, 1);
    EXPECT_EQ(interfaces[0].protocol, 2);
    EXPECT_EQ(interfaces[0].reportLength, 4);
    EXPECT_FALSE(interfaces[0].hasOutputEndpoint);
    EXPECT_EQ(interfaces[0].descriptor,
              (Bytes{0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00, 0x05, 0x09, 0x19,
                     0x01, 0x29, 0x03, 0x15, 0x00, 0x25, 0x01, 0x75, 0x01, 0x95, 0x03, 0x81, 0x02,
                     0x75, 0x05, 0x95, 0x01, 0x81, 0x01, 0x05, 0x01, 0x09, 0x30, 0x09, 0x31, 0x09,
                     0x38, 0x15, 0x81, 0x25, 0x7F, 0x75, 0x08, 0x95, 0x03, 0x81, 0x06, 0xC0, 0xC0}));
    EXPECT_EQ(interfaces[1].reportLength, 64);
}

TEST(Interfaces, bootKeyboardHasItsProtocol)
{
    const auto interfaces = interfacesOf(device({{.interface = 0, .usagePage = 1, .usage = 6}}));
    EXPECT_EQ(interfaces.at(0).subclass, 1);
    EXPECT_EQ(interfaces[0].protocol, 1);
    EXPECT_EQ(interfaces[0].reportLength, 8);
}

// Without report ids an interface has one report per direction: a second collection with reports would
// lengthen it.
TEST(Interfaces, oneCollectionOfAnInterfaceCarriesTheReports)
{
    const auto interfaces = interfacesOf(device({{.interface = 0, .usagePage = 0x000C, .usage = 1},
                                                 {.interface = 0, .usagePage = 0xFF00, .usage = 1},
                                                 {.interface = 0, .usagePage = 0xFF01, .usage = 2}}));
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].reportLength, 64);
    EXPECT_TRUE(interfaces[0].hasOutputEndpoint);
    EXPECT_EQ(interfaces[0].descriptor, joined({{0x05, 0x0C, 0x09, 0x01, 0xA1, 0x01},
                                                featureByte,
                                                end,
                                                {0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01},
                                                reports64,
                                                end,
                                                {0x06, 0x01, 0xFF, 0x09, 0x02, 0xA1, 0x01},
                                                featureByte,
                                                end}));
}

TEST(Interfaces, numbersWithoutACollectionAreFilled)
{
    const sim::Identity identity = device(
        {{.interface = 3, .usagePage = 0xFF00, .usage = 1}, {.interface = 1, .usagePage = 1, .usage = 2}}, 3);
    const auto interfaces = interfacesOf(identity);
    ASSERT_EQ(interfaces.size(), 4U);
    for (const std::size_t filled : {0, 2}) {
        EXPECT_FALSE(interfaces[filled].hasOutputEndpoint);
        EXPECT_EQ(interfaces[filled].reportLength, 1);
        EXPECT_EQ(interfaces[filled].descriptor,
                  joined({{0x06, 0xFF, 0xFF, 0x09, 0x01, 0xA1, 0x01}, featureByte, end}));
    }
    EXPECT_EQ(interfaces[1].protocol, 2);
    EXPECT_EQ(interfaces[3].reportLength, 64);
    EXPECT_EQ(controlInterfaceOf(identity), 3U);
}

TEST(Interfaces, aDeviceThatIsNotCompositeHasInterface0)
{
    const sim::Identity identity = device({{.interface = -1, .usagePage = 0xFF00, .usage = 1}}, -1);
    EXPECT_EQ(interfacesOf(identity).size(), 1U);
    EXPECT_EQ(controlInterfaceOf(identity), 0U);
}

TEST(Interfaces, haveTheLengthsOfTheirReports)
{
    const auto interfaces =
        interfacesOf(device({{.interface = 0, .reports = {{.output = 512, .input = 64}}},
                             {.interface = 1, .usagePage = 0x000C, .reports = {{.output = 0, .input = 5}}}}));
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0].reportLength, 512);
    EXPECT_TRUE(interfaces[0].hasOutputEndpoint);
    EXPECT_FALSE(interfaces[0].hasIds);
    EXPECT_EQ(interfaces[0].descriptor,
              (Bytes{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
                     0x95, 0x40, 0x09, 0x01, 0x81, 0x02, 0x96, 0x00, 0x02, 0x09, 0x02, 0x91, 0x02, 0xC0}));
    EXPECT_EQ(interfaces[1].reportLength, 5);
    EXPECT_FALSE(interfaces[1].hasOutputEndpoint);
    EXPECT_TRUE(interfaces[1].carriesModel);
    EXPECT_EQ(interfaces[1].descriptor, (Bytes{0x05, 0x0C, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF,
                                               0x00, 0x75, 0x08, 0x95, 0x05, 0x09, 0x01, 0x81, 0x02, 0xC0}));
}

TEST(Interfaces, numberTheirReports)
{
    const auto interfaces = interfacesOf(
        device({{.interface = 0,
                 .reports = {{.id = 6, .output = 20, .input = 20}, {.id = 7, .output = 32, .input = 0}}},
                {.interface = 0, .usagePage = 0xFF01, .reports = {{.id = 8, .output = 0, .input = 2}}}}));
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].reportLength, 33); // with the id
    EXPECT_TRUE(interfaces[0].hasIds);
    EXPECT_EQ(interfaces[0].descriptor,
              (Bytes{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x85,
                     0x06, 0x95, 0x14, 0x09, 0x01, 0x81, 0x02, 0x09, 0x02, 0x91, 0x02, 0x85, 0x07, 0x95, 0x20,
                     0x09, 0x02, 0x91, 0x02, 0xC0, 0x06, 0x01, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26,
                     0xFF, 0x00, 0x75, 0x08, 0x85, 0x08, 0x95, 0x02, 0x09, 0x01, 0x81, 0x02, 0xC0}));
}

TEST(Interfaces, ofPowerSuppliesHave16Bytes)
{
    for (const char* name : {"voltgrid", "psuCtrl"}) {
        const auto interfaces = interfacesOf(sim::makeFirmware(name)->identity());
        ASSERT_EQ(interfaces.size(), 1U);
        EXPECT_EQ(interfaces[0].reportLength, 16) << name;
        EXPECT_EQ(interfaces[0].number, -1);
        EXPECT_TRUE(interfaces[0].carriesModel);
    }
}

TEST(Interfaces, tellWhereTheModelSpeaks)
{
    const auto interfaces = interfacesOf(sim::makeFirmware("rd210")->identity());
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_FALSE(interfaces[0].carriesModel);
    EXPECT_TRUE(interfaces[1].carriesModel);
    EXPECT_EQ(interfaces[1].reportLength, 64);
}

} // namespace

} // namespace pyrux::gadget
