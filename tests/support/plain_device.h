#pragma once

#include "simulator/bus.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace pyrux::test {

/// A device that is only there: it takes every report and says nothing.
class PlainDevice final : public sim::Firmware {
public:
    explicit PlainDevice(sim::Identity identity) : own(std::move(identity)) {}

    const sim::Identity& identity() const override { return own; }
    void output(sim::Bytes) override {}
    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

private:
    sim::Identity own;
};

/// One of the maker's, with collections on one interface.
inline std::shared_ptr<sim::Firmware> plainDevice(std::uint16_t pid, int interface, int collections = 1)
{
    sim::Identity identity;
    identity.pid = pid;
    identity.collections.assign(std::size_t(collections), {.interface = interface});
    identity.controlInterface = interface;
    return std::make_shared<PlainDevice>(std::move(identity));
}

} // namespace pyrux::test
