// What the files of a Linux system tell, from trees with fixed contents.

#include "platform/linux/system_files.h"

#include "platform/dynamic_library.h"
#include "platform/keyboard_language.h"
#include "platform/linux/keyboard_language.h"
#include "tests/fakes/system_fakes.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <map>

namespace {

using namespace pyrux::platform;
using namespace pyrux::test;
using Failure = HardwareFacts::Failure;
using Texts = std::vector<std::string>;

class SystemFiles : public testing::Test {
protected:
    void write(const std::string& file, const std::string& content)
    {
        const std::filesystem::path path = root() / file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

    const std::filesystem::path& root() const { return folder.path(); }

    HardwareFacts facts(Hardware part) { return hardwareFacts(part, root(), names); }

    void expectMissing(Hardware part)
    {
        const HardwareFacts found = facts(part);
        EXPECT_EQ(found.failure, Failure::query);
        EXPECT_EQ(found.code, static_cast<std::uint32_t>(ENOENT));
        EXPECT_EQ(found.texts, Texts{});
    }

    void expectTexts(Hardware part, const Texts& expected)
    {
        const HardwareFacts found = facts(part);
        EXPECT_EQ(found.failure, Failure::none);
        EXPECT_EQ(found.code, 0u);
        EXPECT_EQ(found.texts, expected);
    }

    void card(const std::string& address, const std::string& deviceClass, const std::string& modalias,
              const std::string& boot = "0")
    {
        const std::string device = "sys/bus/pci/devices/" + address + "/";
        write(device + "class", deviceClass + "\n");
        write(device + "modalias", modalias + "\n");
        write(device + "boot_vga", boot + "\n");
    }

    TemporaryFolder folder;
    std::map<std::string, std::string> properties; ///< Of the board's device in udev's database.
    std::map<std::string, std::string> hardware;   ///< "modalias property" to text.
    NameDatabase names{[this](const std::filesystem::path& device, const char* property) {
                           EXPECT_EQ(device, root() / "sys/class/dmi/id");
                           return properties[property];
                       },
                       [this](const std::string& modalias, const char* property) {
                           return hardware[modalias + " " + property];
                       }};
};

/// One SMBIOS structure of a memory module with manufacturer and part number as its texts 3 and 2.
std::string memoryDevice(const std::string& manufacturer, const std::string& part, std::uint16_t size,
                         std::uint32_t extended = 0)
{
    std::string fixed(0x20, '\0');
    fixed[0] = 17;
    fixed[1] = 0x20;
    fixed[0x0C] = static_cast<char>(size & 0xFF);
    fixed[0x0D] = static_cast<char>(size >> 8);
    fixed[0x17] = 3;
    fixed[0x1A] = 2;
    for (int i = 0; i < 4; ++i)
        fixed[0x1C + i] = static_cast<char>(extended >> (8 * i));
    const std::string end(1, '\0');
    return fixed + "DIMM A" + end + part + end + manufacturer + end + end;
}

const std::string withoutTexts{"\x01\x06\x00\x00\xAA\xBB\x00\x00", 8};
const std::string endOfTables{"\x7F\x04\x00\x00\x00\x00", 6};

} // namespace

TEST_F(SystemFiles, countTheTicksOfAllProcessors)
{
    EXPECT_FALSE(cpuTimes(root()));
    write("proc/stat", "cpu  100 20 30 4000 500 6 7 8 90 10\ncpu0 1 2 3 4 5 6 7 8 9 10\nintr 1\n");
    const auto times = cpuTimes(root());
    ASSERT_TRUE(times);
    EXPECT_EQ(times->total, 4671u);
    EXPECT_EQ(times->idle, 4500u);
    write("proc/stat", "cpu 1 2 3 4\n");
    EXPECT_EQ(cpuTimes(root())->total, 10u);
    EXPECT_EQ(cpuTimes(root())->idle, 4u);
    for (const char* text : {"", "cpu 1 2 3\n", "cpux 1 2 3 4 5\n", "intr 1 2 3 4\n"}) {
        write("proc/stat", text);
        EXPECT_FALSE(cpuTimes(root())) << text;
    }
}

TEST_F(SystemFiles, tellTheMemoryThatIsNotAvailable)
{
    EXPECT_EQ(memoryLoad(root()), 0u);
    write("proc/meminfo", "MemTotal:       1000 kB\nMemFree:         100 kB\nMemAvailable:    371 kB\n");
    EXPECT_EQ(memoryLoad(root()), 62u);
    write("proc/meminfo", "MemTotal: 1000 kB\nMemAvailable: 2000 kB\n");
    EXPECT_EQ(memoryLoad(root()), 0u);
    write("proc/meminfo", "MemTotal: 1000 kB\n");
    EXPECT_EQ(memoryLoad(root()), 100u);
}

TEST_F(SystemFiles, nameTheProcessor)
{
    expectMissing(Hardware::cpu);
    write("proc/cpuinfo", "processor\t: 0\nvendor_id\t: Maker\nmodel\t\t: 97\n"
                          "model name\t: Processor 3000 @ 3.00GHz\nstepping\t: 2\n\nmodel name\t: Second\n");
    expectTexts(Hardware::cpu, {"Processor 3000 @ 3.00GHz"});
    write("proc/cpuinfo", "processor\t: 0\n");
    expectTexts(Hardware::cpu, {""});
    write("proc/cpuinfo", "model name\t:\n");
    expectTexts(Hardware::cpu, {""});
}

TEST_F(SystemFiles, nameTheBoard)
{
    expectMissing(Hardware::board);
    write("sys/class/dmi/id/board_vendor", "Board Maker\n");
    write("sys/class/dmi/id/board_name", "B-1 PRO\n");
    expectTexts(Hardware::board, {"Board Maker", "B-1 PRO"});
    std::filesystem::remove(root() / "sys/class/dmi/id/board_name");
    expectTexts(Hardware::board, {"Board Maker", ""});
}

TEST_F(SystemFiles, nameTheFirstMemoryModule)
{
    expectMissing(Hardware::memory);
    const std::string tables = withoutTexts + memoryDevice("None", "None", 0) +
                               memoryDevice("Ram Maker", "R-1   ", 0x2000) + memoryDevice("Other", "R-2", 1);
    write("sys/firmware/dmi/tables/DMI", tables + endOfTables);
    expectTexts(Hardware::memory, {"Ram Maker", "R-1", "8589934592"});
}

TEST_F(SystemFiles, readTheSizeOfAModuleInItsUnits)
{
    const auto expectSize = [&](std::uint16_t size, std::uint32_t extended, const char* bytes) {
        write("sys/firmware/dmi/tables/DMI", memoryDevice("M", "P", size, extended) + endOfTables);
        expectTexts(Hardware::memory, {"M", "P", bytes});
    };
    expectSize(1, 0, "1048576");
    expectSize(0x7FFE, 0, "34357641216");
    expectSize(0x7FFF, 0x8000, "34359738368");
    expectSize(0x7FFF, 0x80010000, "68719476736"); // the highest bit is reserved
    expectSize(0x8400, 0, "1048576");              // KiB
    write("sys/firmware/dmi/tables/DMI", memoryDevice("M", "P", 0xFFFF) + endOfTables); // not known
    expectTexts(Hardware::memory, {});
}

TEST_F(SystemFiles, surviveTablesThatEndAnywhere)
{
    const std::string tables = withoutTexts + memoryDevice("Ram Maker", "R-1", 0x2000);
    for (std::size_t length = 1; length < tables.size(); ++length) {
        write("sys/firmware/dmi/tables/DMI", tables.substr(0, length));
        expectTexts(Hardware::memory, {});
    }
    write("sys/firmware/dmi/tables/DMI", tables);
    expectTexts(Hardware::memory, {"Ram Maker", "R-1", "8589934592"});
    // A length below the header's, after which nothing is to be found.
    write("sys/firmware/dmi/tables/DMI", std::string("\x01\x03\x00\x00\x00\x00", 6) + tables);
    expectTexts(Hardware::memory, {});
    // After the end of the table.
    write("sys/firmware/dmi/tables/DMI", endOfTables + tables);
    expectTexts(Hardware::memory, {});
    // A text's number above those that there are; an old, short structure.
    std::string lost = memoryDevice("Ram Maker", "R-1", 0x2000);
    lost[0x17] = 9;
    lost[0x1A] = 0;
    write("sys/firmware/dmi/tables/DMI", lost);
    expectTexts(Hardware::memory, {"", "", "8589934592"});
    std::string old = memoryDevice("", "", 0x2000).substr(0, 0x15) + std::string(2, '\0');
    old[1] = 0x15;
    write("sys/firmware/dmi/tables/DMI", old);
    expectTexts(Hardware::memory, {"", "", "8589934592"});
}

TEST_F(SystemFiles, takeTheMemoryFromUdevWhereTheTablesAreNotReadable)
{
    properties = {{"MEMORY_DEVICE_0_PRESENT", "0"},
                  {"MEMORY_DEVICE_1_SIZE", "17179869184"},
                  {"MEMORY_DEVICE_1_MANUFACTURER", "Ram Maker"},
                  {"MEMORY_DEVICE_1_PART_NUMBER", "R-1"},
                  {"MEMORY_DEVICE_2_SIZE", "1"}};
    expectTexts(Hardware::memory, {"Ram Maker", "R-1", "17179869184"});
}

TEST_F(SystemFiles, nameTheGraphicsCard)
{
    expectMissing(Hardware::gpu);
    card("0000:00:1f.0", "0x060100", "pci:bridge");
    expectTexts(Hardware::gpu, {});
    card("0000:02:00.0", "0x030200", "pci:second");
    card("0000:01:00.0", "0x030000", "pci:first");
    hardware = {{"pci:first ID_VENDOR_FROM_DATABASE", "Card Maker"},
                {"pci:first ID_MODEL_FROM_DATABASE", "Card 4000"},
                {"pci:second ID_VENDOR_FROM_DATABASE", "Other Maker"},
                {"pci:bridge ID_MODEL_FROM_DATABASE", "Bridge"}};
    expectTexts(Hardware::gpu, {"Card Maker Card 4000"});
    card("0000:02:00.0", "0x030200", "pci:second", "1"); // the system was started with it
    expectTexts(Hardware::gpu, {"Other Maker"});
    card("0000:02:00.0", "0x030200", "pci:unknown", "1");
    expectTexts(Hardware::gpu, {""});
}

TEST_F(SystemFiles, tellTheKeyboardLayout)
{
    EXPECT_EQ(systemKeyboardLayout(root()), "");
    write("etc/vconsole.conf", "KEYMAP=fr\nXKBLAYOUT=fr\n");
    EXPECT_EQ(systemKeyboardLayout(root()), "fr");
    write("etc/default/keyboard", "# KEYBOARD CONFIGURATION FILE\nXKBMODEL=\"pc105\"\nXKBLAYOUT=\"de,us\"\n");
    EXPECT_EQ(systemKeyboardLayout(root()), "de");
    write("etc/default/keyboard", "XKBLAYOUT='it'\n");
    EXPECT_EQ(systemKeyboardLayout(root()), "it");
    write("etc/default/keyboard", "XKBLAYOUT=\n");
    EXPECT_EQ(systemKeyboardLayout(root()), "fr");
}

TEST(KeyboardLayouts, belongToLanguages)
{
    const std::map<std::string, int> languages{
        {"us", 9},  {"gb", 9},  {"cn", 4},  {"tw", 4},  {"fr", 12}, {"de", 7},     {"it", 16},
        {"jp", 17}, {"kr", 18}, {"my", 62}, {"pt", 22}, {"br", 22}, {"ru", 25},    {"es", 10},
        {"th", 30}, {"tr", 31}, {"vn", 42}, {"se", 0},  {"", 0},    {"latam", 10}, {"de ", 0},
        {"au", 9},  {"at", 7},  {"ch", 7},  {"ca", 12},
    };
    for (const auto& [layout, language] : languages)
        EXPECT_EQ(languageOfLayout(layout), language) << layout;
}

TEST(KeyboardLayouts, areThoseOfTheServersCurrentGroup)
{
    SystemFakes& fakes = freshSystemFakes();
    constexpr char rules[] = "evdev\0pc105\0us,de,ru\0,nodeadkeys,\0grp:alt_shift_toggle";
    fakes.rules = rules;
    fakes.rulesLength = sizeof rules;
    const auto layout = [] { return serverKeyboardLayout(libraryFile("tw-hook").c_str()); };
    EXPECT_EQ(layout(), "us");
    fakes.group = 1;
    EXPECT_EQ(layout(), "de");
    fakes.group = 2;
    EXPECT_EQ(layout(), "ru");
    fakes.group = 3;
    EXPECT_EQ(layout(), "");
    EXPECT_EQ(fakes.open, 0);
}

TEST(KeyboardLayouts, areNotThereWhenAnyStepToTheServerFails)
{
    constexpr char rules[] = "evdev\0pc105\0us";
    const auto layoutWith = [&](const std::function<void(SystemFakes&)>& change) {
        SystemFakes& fakes = freshSystemFakes();
        fakes.rules = rules;
        fakes.rulesLength = sizeof rules;
        change(fakes);
        const std::string layout = serverKeyboardLayout(libraryFile("tw-hook").c_str());
        EXPECT_EQ(fakes.open, 0);
        return layout;
    };
    EXPECT_EQ(layoutWith([](SystemFakes&) {}), "us");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.display = false; }), "");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.atom = false; }), "");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.property = false; }), "");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.stateResult = 1; }), "");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.rulesLength = 0; }), "");
    EXPECT_EQ(layoutWith([](SystemFakes& fakes) { fakes.rulesLength = 8; }), "");
    EXPECT_EQ(serverKeyboardLayout("pyrux-no-such-library"), "");
}

TEST(KeyboardLayouts, areFoundByTheirGroup)
{
    const std::string_view names("evdev\0pc105\0us,,ru\0,nodeadkeys\0", 31);
    EXPECT_EQ(layoutOfGroup(names, 0), "us");
    EXPECT_EQ(layoutOfGroup(names, 1), "");
    EXPECT_EQ(layoutOfGroup(names, 2), "ru");
    EXPECT_EQ(layoutOfGroup(names, 3), "");
    EXPECT_EQ(layoutOfGroup("", 0), "");
    EXPECT_EQ(layoutOfGroup(names.substr(0, 11), 0), "");  // ends with the model
    EXPECT_EQ(layoutOfGroup(names.substr(0, 13), 0), "u"); // ends in the layouts
}

TEST(UdevNames, areEmptyForWhatIsNotThere)
{
    const NameDatabase names = udevNames();
    EXPECT_EQ(names.device("/sys/class/dmi/no-such-device", "MEMORY_DEVICE_0_SIZE"), "");
    EXPECT_EQ(names.hardware("pci:no-such-card", "ID_MODEL_FROM_DATABASE"), "");
}
