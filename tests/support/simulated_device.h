#pragma once

#include "simulator/bus.h"
#include "simulator/models.h"
#include "tests/support/models.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace pyrux::test {

/// A model's firmware model that is plugged in and opened.
/// @tparam Firmware  its class, or the base that its family shares
template <class Firmware, class Model>
class Simulated : public testing::Test {
protected:
    Simulated() { open(); }

    ~Simulated() override { pull(); }

    void open()
    {
        path = sim::plug(device);
        host = Model::factory(path.c_str());
        ASSERT_NE(host, nullptr);
    }

    void pull()
    {
        sim::unplug(path);
        host->exit_device(1);
    }

    /// The host and the device part and meet again.
    void powerCycle()
    {
        pull();
        open();
    }

    /// Waits until the picture is this one.
    void awaitPicture(const sim::Picture& expected)
    {
        await([&] { return device->picture() == expected; });
        EXPECT_EQ(device->picture(), expected);
    }

    /// The same for the number of frames since power-on.
    void awaitFrames(int count)
    {
        await([&] { return device->frames() >= count; });
        EXPECT_EQ(device->frames(), count);
    }

    std::shared_ptr<Firmware> device =
        std::dynamic_pointer_cast<Firmware>(sim::makeFirmware(Model::facts().factoryName));
    std::string path;
    typename Model::Interface* host = nullptr;

private:
    template <class Condition>
    static void await(Condition condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (!condition() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
    }
};

} // namespace pyrux::test
