#include "transport/audio_devices.h"

#include "core/catalogue.h"
#include "core/log.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>

namespace pyrux {

namespace {

/// The number in the four hexadecimal digits after a key; 0 without such digits.
std::uint16_t idBehind(std::string_view hardwareId, std::string_view key)
{
    constexpr std::size_t digits = 4;
    const std::size_t place = hardwareId.find(key);
    if (place == std::string_view::npos)
        return 0;
    const std::string_view text = hardwareId.substr(place + key.size(), digits);
    std::uint16_t id = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), id, 16).ptr;
    return text.size() == digits && end == text.data() + text.size() ? id : std::uint16_t{0};
}

bool isAudioDevice(std::uint16_t vid, std::uint16_t pid)
{
    return std::ranges::any_of(audioDeviceTable,
                               [&](const AudioDeviceRow& row) { return row.vid == vid && row.pid == pid; });
}

/// The present audio functions.
std::vector<platform::UsbDevice> mediaDevices()
{
    std::vector<platform::UsbDevice> devices = mediaSource().devices();
    std::erase_if(devices, [](const platform::UsbDevice& one) { return one.deviceClass != "MEDIA"; });
    return devices;
}

AudioState stateAmong(const std::vector<platform::UsbDevice>& media, std::uint16_t vid, std::uint16_t pid)
{
    AudioState state;
    for (const platform::UsbDevice& device : media) {
        const std::uint16_t chipVid = idBehind(device.hardwareId, "VID_");
        const std::uint16_t chipPid = idBehind(device.hardwareId, "PID_");
        for (const AudioDeviceRow& row : audioDeviceTable) {
            if (row.vid != vid || row.pid != pid || row.chipVid != chipVid || row.chipPid != chipPid)
                continue;
            state.driverOk = device.manufacturer == row.manufacturer;
            state.statusOk = plugAndPlayStatus(row.friendlyName) == "OK";
        }
    }
    return state;
}

} // namespace

MediaSource& mediaSource()
{
    static auto& source = *new MediaSource;
    return source;
}

std::string plugAndPlayStatus(const std::string& friendlyName)
{
    const platform::PlugAndPlayStatus status = mediaSource().status(friendlyName);
    if (!status.failure.empty()) {
        debugText(status.failure);
        std::ostringstream code;
        code << "error code = 0x" << std::hex << status.code;
        debugText(code.str());
        return "Error";
    }
    if (!status.text)
        debugText("No device found");
    return status.text.value_or("");
}

AudioState audioStateOf(std::uint16_t vid, std::uint16_t pid)
{
    return isAudioDevice(vid, pid) ? stateAmong(mediaDevices(), vid, pid) : AudioState{};
}

void markAudioDevices(std::vector<DevInfoRecord>& records)
{
    const auto isAudio = [](const DevInfoRecord& record) { return isAudioDevice(record.vid, record.pid); };
    // The system's listing takes its time, so it is only asked for where it can say something.
    if (std::ranges::none_of(records, isAudio))
        return;
    const std::vector<platform::UsbDevice> media = mediaDevices();
    for (DevInfoRecord& record : records) {
        if (!isAudio(record))
            continue;
        const AudioState state = stateAmong(media, record.vid, record.pid);
        record.driverOk = state.driverOk;
        record.statusOk = state.statusOk;
    }
}

} // namespace pyrux
