#pragma once

#include "tests/support/mouse.h"
#include "tests/support/supply_texts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The power supplies, for tests that hold for both classes.

namespace pyrux::test {

struct VoltgridModel : ModelOf<&voltgrid> {
    using Fan = VoltgridFan;
    static constexpr bool isPsuCtrl = false;
};

struct PsuCtrlModel : ModelOf<&psuCtrl> {
    using Fan = PsuCtrlFan;
    static constexpr bool isPsuCtrl = true;
};

using SupplyModels = testing::Types<VoltgridModel, PsuCtrlModel>;

/// A supply that says nothing but what the test has laid down, and answers the question for its rail mode.
template <class Model>
class SupplyOf : public Opened<Model> {
public:
    /// The supply answers a text, each time with the next of the replies and with the last one for ever.
    void answers(const char* command, const std::vector<std::string>& replies)
    {
        std::vector<std::string> raw;
        for (const std::string& reply : replies)
            raw.push_back(ascii(reply));
        this->device->answers(ascii(command), raw);
    }
    void answer(const char* command, const char* reply) { answers(command, {reply}); }

    /// The supply sends texts, and the host has read them when this returns.
    void tell(const std::vector<std::string>& texts)
    {
        std::size_t unread = 0;
        for (const std::string& text : texts) {
            this->device->send(ascii(text));
            if (++unread % 32 == 0) // a device keeps 64 at most
                awaitRead();
        }
        awaitRead();
        this->asked();
    }

    /// What the host has sent since the last call.
    std::string asked(std::size_t atLeast = 0) { return takeTexts(this->path, atLeast); }

private:
    /// A reply comes after all that was sent before.
    void awaitRead()
    {
        std::uint8_t mode = 0;
        EXPECT_EQ(this->host->getMultiRail(&mode), E_OK);
    }
};

} // namespace pyrux::test
