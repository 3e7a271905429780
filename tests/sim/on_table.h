#pragma once

#include "simulator/firmware.h"
#include "tests/sim/hex.h"

#include <gtest/gtest.h>

#include <concepts>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace pyrux::sim {

/// A model on the table, without a bus.
template <class Model>
class OnTable : public testing::Test {
protected:
    /// @param made  the firmware model, where the class alone does not tell all of it
    explicit OnTable(std::shared_ptr<Firmware> made = whole())
        : owned(std::dynamic_pointer_cast<Model>(std::move(made))), device(owned ? *owned : throw "no model")
    {
        device.connect([this](Bytes report) {
            if (!said.empty())
                said += " | ";
            said += textOf(report);
        });
    }

    /// What the device says to a payload, each report without the zeros at its end, with " | " between them;
    /// empty: nothing.
    std::string ask(const std::string& payload)
    {
        said.clear();
        device.output(bytesOf(payload));
        return said;
    }

    /// The same for an event.
    std::string happen(const std::string& event, const std::vector<int>& values)
    {
        said.clear();
        EXPECT_TRUE(device.happen(event, values)) << event;
        return said;
    }

    /// The colors of a zone: "010203 040506"; with one color for all LEDs only that one and their number:
    /// "010203 x48".
    std::string zone(const std::string& name) const { return zoneOf(device.picture(), name); }

    static std::string zoneOf(const Picture& picture, const std::string& name)
    {
        for (const LightZone& zone : picture) {
            if (zone.name != name)
                continue;
            std::string text;
            bool alike = zone.leds.size() > 1;
            for (const Light& led : zone.leds) {
                char digits[8];
                std::snprintf(digits, sizeof digits, "%02X%02X%02X", led.red, led.green, led.blue);
                text += (text.empty() ? "" : " ") + std::string(digits);
                alike = alike && led == zone.leds.front();
            }
            return alike ? text.substr(0, 6) + " x" + std::to_string(zone.leds.size()) : text;
        }
        return "no zone " + name;
    }

    /// `count` bytes that count up from `first`, as text.
    static std::string counting(std::uint8_t first, std::size_t count)
    {
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < count; ++i)
            bytes.push_back(std::uint8_t(first + i));
        std::string text;
        for (const std::uint8_t byte : bytes)
            text += (text.empty() ? "" : " ") + hexOf(byte);
        return text;
    }

    static std::string hexOf(std::uint8_t byte)
    {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        return digits;
    }

    static std::shared_ptr<Firmware> whole()
    {
        if constexpr (std::default_initializable<Model>)
            return std::make_shared<Model>();
        return nullptr;
    }

    const std::shared_ptr<Model> owned;
    Model& device;
    std::string said;
};

} // namespace pyrux::sim
