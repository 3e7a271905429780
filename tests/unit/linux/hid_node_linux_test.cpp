#include "platform/linux/hid_node.h"

#include "platform/linux/access_watch.h"
#include "platform/linux/name_memory.h"
#include "platform/linux/notice_socket.h"
#include "tests/support/surroundings.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace pyrux::platform;
using Bytes = std::vector<std::uint8_t>;
using Pages = std::vector<std::uint16_t>;

/// A mouse with a pointer inside, such as every boot mouse has.
const Bytes mouse{0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00, 0x05, 0x09,
                  0x19, 0x01, 0x29, 0x05, 0x15, 0x00, 0x25, 0x01, 0x81, 0x02, 0xC0, 0xC0};
const Bytes vendorReport{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x95,
                         0x40, 0x75, 0x08, 0x81, 0x02, 0x91, 0x02, 0xC0};

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(TopLevelUsagePages, countOnlyTheOutermostCollections)
{
    EXPECT_EQ(topLevelUsagePages(mouse), Pages{0x0001});
    EXPECT_EQ(topLevelUsagePages(joined({mouse, vendorReport, vendorReport})),
              (Pages{0x0001, 0xFF00, 0xFF00}));
    EXPECT_EQ(topLevelUsagePages({}), Pages{});
}

TEST(TopLevelUsagePages, takeThePageOfALongUsageAndOfAPushedOne)
{
    EXPECT_EQ(topLevelUsagePages(Bytes{0x05, 0x01, 0x0B, 0x01, 0x00, 0x60, 0xFF, 0xA1, 0x01, 0xC0}),
              Pages{0xFF60});
    EXPECT_EQ(topLevelUsagePages(Bytes{0x05, 0x01, 0xA4, 0x05, 0x0C, 0xB4, 0x09, 0x06, 0xA1, 0x01, 0xC0}),
              Pages{0x0001});
}

TEST(TopLevelUsagePages, comeThroughWhatIsMalformed)
{
    for (std::size_t length = 0; length < vendorReport.size(); ++length)
        EXPECT_LE(topLevelUsagePages(std::span(vendorReport).first(length)).size(), 1U);
    EXPECT_EQ(topLevelUsagePages(Bytes{0xC0, 0xB4, 0xFE, 0x10, 0x00}), Pages{});
    EXPECT_EQ(topLevelUsagePages(joined({Bytes{0xFE, 0x01, 0x00, 0xA1}, vendorReport})), Pages{0xFF00});
    EXPECT_EQ(topLevelUsagePages(Bytes(10000, 0xA0)).size(), 1U);
}

HidNode node(std::int32_t interface, std::int32_t interfaces, Bytes descriptor)
{
    return {.name = "hidraw3",
            .vid = 0x3A7E,
            .pid = 0x012F,
            .interface = interface,
            .interfaces = interfaces,
            .reportDescriptor = std::move(descriptor)};
}

TEST(InterfacesOf, nameTheInterfaceOfACompositeDevice)
{
    const auto interfaces = interfacesOf(node(1, 2, vendorReport));
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].name,
              R"(\\?\HID#VID_3A7E&PID_012F&MI_01#hidraw3#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(interfaces[0].interface, 1);
    EXPECT_EQ(interfaces[0].usagePage, 0xFF00);
}

TEST(InterfacesOf, nameNoneOfADeviceWithOneInterface)
{
    const auto interfaces = interfacesOf(node(0, 1, vendorReport));
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].name,
              R"(\\?\HID#VID_3A7E&PID_012F#hidraw3#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(interfaces[0].interface, -1);
}

TEST(InterfacesOf, nameEachCollectionWhereThereAreSeveral)
{
    const auto interfaces = interfacesOf(node(3, 4, joined({mouse, vendorReport})));
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0].name,
              R"(\\?\HID#VID_3A7E&PID_012F&MI_03&Col01#hidraw3#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(interfaces[1].name,
              R"(\\?\HID#VID_3A7E&PID_012F&MI_03&Col02#hidraw3#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(interfaces[0].usagePage, 0x0001);
    EXPECT_EQ(interfaces[1].usagePage, 0xFF00);
    EXPECT_EQ(interfacesOf(node(0, 1, joined({mouse, vendorReport})))[1].name,
              R"(\\?\HID#VID_3A7E&PID_012F&Col02#hidraw3#{4d1e55b2-f16f-11cf-88cb-001111000030})");
}

TEST(NodeInName, isFoundInAnyCase)
{
    EXPECT_EQ(nodeInName(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#hidraw3#{c})"), "hidraw3");
    EXPECT_EQ(nodeInName(R"(\\?\hid#vid_3a7e&pid_012f&mi_01#hidraw12#{c})"), "hidraw12");
    EXPECT_EQ(nodeInName(R"(\\?\HID#VID_3A7E&PID_012F#HIDRAW0#{C})"), "hidraw0");
    for (const char* other :
         {"", "/dev/hidraw3", R"(\\?\HID#VID_3A7E&PID_012F&MI_01#sim-0001#{c})",
          R"(\\?\HID#VID_3A7E&PID_012F#hidraw#{c})", R"(\\?\HID#VID_3A7E&PID_012F#hidraw3x#{c})",
          R"(\\?\HID#VID_3A7E&PID_012F#hidraw/../x#{c})", R"(\\?\HID#VID_3A7E&PID_012F#hidraw1234567890#{c})",
          R"(\\?\HID#VID_3A7E&PID_012F)"})
        EXPECT_EQ(nodeInName(other), "") << other;
}

TEST(OpenablePath, isTheNodeOfADeviceThatIsThere)
{
    EXPECT_EQ(openablePath("/dev/hidraw3"), "/dev/hidraw3");
    EXPECT_EQ(openablePath(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#sim-0001#{c})"),
              R"(\\?\HID#VID_3A7E&PID_012F&MI_01#sim-0001#{c})");
    EXPECT_EQ(openablePath(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#hidraw99999#{c})"), "");
}

TEST(DeviceInterfaces, leaveOtherPathsAndTheirEntriesAlone)
{
    std::vector<ListedInterface> listed{{{"/somewhere", 2, 1}, 0}, {{"/somewhere", 2, 5}, 1}};
    const auto result = deviceInterfaces(listed);
    ASSERT_EQ(result.size(), 2U);
    EXPECT_EQ(result[1].interface.name, "/somewhere");
    EXPECT_EQ(result[1].interface.interface, 2);
    EXPECT_EQ(result[1].interface.usagePage, 5);
    EXPECT_EQ(result[1].source, 1U);
}

TEST(NameMemory, isKeptOnlyWhileSomebodyReadsIt)
{
    NameMemory memory;
    memory.remember("/sys/a", {"A"});
    EXPECT_TRUE(memory.places().empty());
    memory.begin();
    memory.remember("/sys/a", {"A", "B"});
    EXPECT_EQ(memory.recall("/sys/a"), (NameMemory::Names{"A", "B"}));
    EXPECT_EQ(memory.forget("/sys/a"), (NameMemory::Names{"A", "B"}));
    EXPECT_TRUE(memory.forget("/sys/a").empty());
    memory.remember("/sys/b", {"B"});
    memory.remember("/sys/b", {"half of B"});
    EXPECT_EQ(memory.recall("/sys/b"), NameMemory::Names{"B"});
    memory.end();
    EXPECT_TRUE(memory.places().empty());
}

TEST(NameMemory, remembersADeviceThatComesBackToItsPlace)
{
    NameMemory memory;
    memory.begin();
    memory.remember("/sys/a", {"A"});
    EXPECT_EQ(memory.forget("/sys/a"), NameMemory::Names{"A"});
    memory.remember("/sys/a", {"another A"});
    EXPECT_EQ(memory.recall("/sys/a"), NameMemory::Names{"another A"});
    EXPECT_EQ(memory.forget("/sys/a"), NameMemory::Names{"another A"});
    memory.remember("/sys/a", {"A"}, memory.mark()); // by an enumeration that begins now
    EXPECT_EQ(memory.recall("/sys/a"), NameMemory::Names{"A"});
}

TEST(NameMemory, dropsWhatWasReadBeforeTheDeviceWent)
{
    NameMemory memory;
    memory.begin();
    const NameMemory::Mark before = memory.mark();
    memory.remember("/sys/a", {"A"});
    memory.forget("/sys/a");
    memory.remember("/sys/a", {"A"}, before);
    EXPECT_TRUE(memory.places().empty());
    memory.remember("/sys/b", {"B"}, before);
    EXPECT_EQ(memory.places(), std::vector<std::string>{"/sys/b"});
    memory.forget("/sys/b");
    for (int i = 0; i < 100; ++i)
        memory.forget("/sys/other");
    memory.remember("/sys/a", {"A"}, before);
    memory.remember("/sys/b", {"B"}, before);
    EXPECT_TRUE(memory.places().empty());
    memory.remember("/sys/b", {"B"}, memory.mark());
    EXPECT_EQ(memory.recall("/sys/b"), NameMemory::Names{"B"});
}

TEST(ParseNotice, takesTwoVerbsAndAName)
{
    const auto added = parseNotice("add HID#X");
    ASSERT_TRUE(added);
    EXPECT_EQ(added->name, "HID#X");
    EXPECT_EQ(added->change, DeviceChange::arrival);
    const auto removed = parseNotice("remove HID#X Y");
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->name, "HID#X Y");
    EXPECT_EQ(removed->change, DeviceChange::removal);
    using namespace std::string_view_literals;
    for (const std::string_view other : {""sv, "add"sv, "add "sv, "Add x"sv, "removed x"sv, "add a\0b"sv})
        EXPECT_FALSE(parseNotice(other)) << other;
}

TEST(NoticeSocket, passesOverAnEmptyMessageAndEndsWithTheServer)
{
    const pyrux::test::TemporaryFolder folder;
    const std::string path = folder.path() / "notices";
    const pyrux::test::Variable variable("PYRUX_DEVICE_NOTICES", path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int listening = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listening, 1), 0);
    NoticeSocket notices;
    const int server = accept(listening, nullptr, nullptr);
    close(listening);
    ASSERT_EQ(send(server, "", 0, 0), 0);
    ASSERT_EQ(send(server, "add HID#X", 9, 0), 9);
    ASSERT_EQ(send(server, std::string(5000, 'x').data(), 5000, 0), 5000);
    ASSERT_EQ(send(server, "remove HID#X", 12, 0), 12);
    ASSERT_EQ(send(server, "", 0, 0), 0);
    close(server);
    EXPECT_FALSE(notices.take());
    const auto added = notices.take();
    ASSERT_TRUE(added);
    EXPECT_EQ(added->name, "HID#X");
    EXPECT_FALSE(notices.take());
    const auto removed = notices.take();
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->change, DeviceChange::removal);
    EXPECT_FALSE(notices.take());
    EXPECT_GE(notices.descriptor(), 0);
    EXPECT_FALSE(notices.take());
    EXPECT_EQ(notices.descriptor(), -1) << "the server has gone";
}

TEST(AccessWatch, tellsWhenAFileBecomesAccessible)
{
    if (geteuid() == 0 && setresuid(-1, 65534, -1) != 0)
        GTEST_SKIP() << "root has access to everything";
    struct Back {
        ~Back() { EXPECT_EQ(setresuid(-1, getuid(), -1), 0); }
    } back;
    char folder[] = "/tmp/pyrux-access-XXXXXX";
    ASSERT_TRUE(mkdtemp(folder));
    const std::string file = std::string(folder) + "/node";
    ASSERT_GE(close(open(file.c_str(), O_CREAT | O_WRONLY, 0000)), 0);
    AccessWatch watch;
    EXPECT_FALSE(watch.accessible(file, "place"));
    EXPECT_TRUE(watch.take().empty());
    ASSERT_EQ(chmod(file.c_str(), 0400), 0); // reading alone is not enough
    EXPECT_TRUE(watch.take().empty());
    ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    pollfd ready{watch.descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&ready, 1, 5000), 1);
    EXPECT_EQ(watch.take(), std::vector<std::string>{"place"});
    EXPECT_TRUE(watch.accessible(file, "place"));
    unlink(file.c_str());
    rmdir(folder);
}

} // namespace
