#include "transport/audio_devices.h"

#include "tests/support/debug_capture.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

using namespace pyrux;
using namespace pyrux::test;
using platform::PlugAndPlayStatus;
using platform::UsbDevice;
using Texts = std::vector<std::string>;

class AudioDevices : public testing::Test {
protected:
    AudioDevices()
    {
        mediaSource().devices = [this] { return devices; };
        mediaSource().status = [this](const std::string& name) {
            asked.push_back(name);
            return status;
        };
    }
    ~AudioDevices() override { mediaSource() = {}; }

    std::pair<int, int> stateOf(std::uint16_t pid)
    {
        const AudioState state = audioStateOf(0x3A7E, pid);
        return {state.driverOk, state.statusOk};
    }

    std::vector<UsbDevice> devices;
    PlugAndPlayStatus status{.failure = {}, .code = 0, .text = "OK"};
    Texts asked;
};

using State = std::pair<int, int>;

TEST_F(AudioDevices, countsADeviceAsGoodWhileItsAudioFunctionIsNotThere)
{
    EXPECT_EQ(stateOf(0x010D), (State{1, 1}));
    devices = {{"MEDIA", R"(USB\VID_3A7E&PID_0113&REV_0100)", "Tessel Works"},
               {"USB", R"(USB\VID_0D8C&PID_0012&REV_0100)", "x"},
               {"media", R"(USB\VID_0D8C&PID_0012&REV_0100)", "x"},
               {"MEDIA", R"(USB\VID_0D8C&PID_001)", "x"},
               {"MEDIA", "", "x"}};
    EXPECT_EQ(stateOf(0x010D), (State{1, 1}));
    EXPECT_TRUE(asked.empty());
}

TEST_F(AudioDevices, looksAtTheDriversMakerAndAtTheState)
{
    devices = {{"MEDIA", R"(USB\VID_0D8C&PID_0012&REV_0100&MI_00)", "C-MEDIA Inc."}};
    EXPECT_EQ(stateOf(0x010D), (State{1, 1}));
    EXPECT_EQ(asked, Texts{"USB Audio Device"});
    devices[0].manufacturer = "C-Media Inc.";
    status.text = "Error";
    EXPECT_EQ(stateOf(0x010D), (State{0, 0}));
    status.text = "ok";
    EXPECT_EQ(stateOf(0x010D), (State{0, 0}));
}

TEST_F(AudioDevices, knowsEachHeadsetByItsChip)
{
    devices = {{"MEDIA", R"(USB\VID_3A7E&PID_0129&REV_0100)", "Tessel Works"},
               {"MEDIA", R"(USB\VID_3A7E&PID_0113&REV_0100)", "other"},
               {"MEDIA", R"(USB\VID_3A7E&PID_01C7&REV_0100)", "Tessel Works"}};
    EXPECT_EQ(stateOf(0x0111), (State{1, 1}));
    EXPECT_EQ(stateOf(0x0113), (State{0, 1}));
    EXPECT_EQ(stateOf(0x01C7), (State{1, 1}));
    EXPECT_EQ(stateOf(0x0093), (State{1, 1})); // HS310 is not in the table
    EXPECT_EQ(asked, (Texts{"HS210", "HS220", "HS110"}));
}

TEST_F(AudioDevices, marksRecordsAndLeavesOthersAlone)
{
    devices = {{"MEDIA", R"(USB\VID_3A7E&PID_0129&REV_0100)", "other"}};
    std::vector<DevInfoRecord> records(2);
    for (DevInfoRecord& record : records) {
        record.vid = 0x3A7E;
        record.driverOk = 1;
        record.statusOk = 1;
    }
    records[0].pid = 0x0111;
    records[1].pid = 0x012F;
    status.text = "Degraded";
    markAudioDevices(records);
    EXPECT_EQ(+records[0].driverOk, 0U);
    EXPECT_EQ(+records[0].statusOk, 0U);
    EXPECT_EQ(+records[1].driverOk, 1U);
    EXPECT_EQ(+records[1].statusOk, 1U);
}

TEST_F(AudioDevices, writesWhatGoesWrong)
{
    DebugCapture capture;
    for (const char* step : {"fail CoCreateInstance", "fail ConnectServer", "fail ExecQuery"}) {
        status = {.failure = step, .code = 0x8004100E, .text = {}};
        EXPECT_EQ(pyrux::plugAndPlayStatus("HS210"), "Error");
    }
    status = {};
    EXPECT_EQ(pyrux::plugAndPlayStatus("HS210"), "");
    EXPECT_EQ(capture.texts(),
              (Texts{"[PYRUX]fail CoCreateInstance", "[PYRUX]error code = 0x8004100e",
                     "[PYRUX]fail ConnectServer", "[PYRUX]error code = 0x8004100e", "[PYRUX]fail ExecQuery",
                     "[PYRUX]error code = 0x8004100e", "[PYRUX]No device found"}));
}

TEST(PresentUsbDevices, canBeListedAndAskedFor)
{
    for (const UsbDevice& device : platform::presentUsbDevices())
        EXPECT_TRUE(device.hardwareId.empty() || device.hardwareId.starts_with("USB\\")) << device.hardwareId;
    const PlugAndPlayStatus status = platform::plugAndPlayStatus("no such device of anybody's");
    EXPECT_FALSE(status.text);
}

} // namespace
