#include "fuzz/support/outside_device.h"

#include "simulator/bus.h"

#include <algorithm>
#include <array>

namespace pyrux::fuzz {

namespace {

constexpr std::size_t reportBytes = 64;
constexpr int mostUnasked = 32; // a device keeps 64 for whoever reads

} // namespace

OutsideDevice::OutsideDevice(std::shared_ptr<sim::Firmware> behind) : model(std::move(behind))
{
    model->connect(Sink([this](const sim::Channel& from, sim::Bytes payload) {
        if (honest)
            emit(from, payload);
    }));
}

const std::string& OutsideDevice::plug()
{
    // The bus keeps the device to the end of the process.
    ownPath = sim::plug(std::shared_ptr<Firmware>(std::shared_ptr<void>(), this));
    paths = sim::pathsOf(ownPath);
    std::stable_partition(paths.begin(), paths.end(),
                          [&](const std::string& path) { return path == ownPath; });
    return ownPath;
}

void OutsideDevice::answerFrom(Input next)
{
    const std::lock_guard lock(mutex);
    reports = next;
    honest = false;
}

void OutsideDevice::sendRest()
{
    const std::lock_guard lock(mutex);
    for (int sent = 0; !reports.empty() && sent < mostUnasked; ++sent)
        sendNext({});
}

void OutsideDevice::outputOn(const sim::Channel& channel, sim::Bytes payload)
{
    if (honest) {
        model->outputOn(channel, payload);
        return;
    }
    const std::lock_guard lock(mutex);
    for (int sent = 0; sent < mostUnasked && sendNext(payload); ++sent)
        payload = {};
}

std::optional<std::vector<std::uint8_t>> OutsideDevice::inputReport(const sim::Channel& channel)
{
    if (honest)
        return model->inputReport(channel);
    const std::lock_guard lock(mutex);
    const Bytes bytes = reports.take(reports.byte() % (reportBytes + 1));
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

bool OutsideDevice::happen(const std::string& event, const std::vector<int>& values)
{
    return model->happen(event, values);
}

/// With `mutex` held.
/// @return whether another one is to follow at once
bool OutsideDevice::sendNext(Bytes command)
{
    if (reports.empty())
        return false;
    const std::uint8_t head = reports.byte();
    if (head & how::silence)
        return false;
    const Bytes bytes = reports.take(reports.byte() % (reportBytes + 1));
    std::array<std::uint8_t, reportBytes> report{};
    std::ranges::copy(bytes, report.begin());
    const std::size_t repeated = std::min<std::size_t>(head & how::repeats, command.size());
    std::copy_n(command.begin(), repeated, report.begin());
    const std::size_t length = head & how::cut ? std::max(bytes.size(), repeated) : report.size();
    sim::inject(paths[(head & how::path) / 0x10 % paths.size()],
                {report.begin(), report.begin() + std::ptrdiff_t(length)});
    return head & how::more;
}

} // namespace pyrux::fuzz
