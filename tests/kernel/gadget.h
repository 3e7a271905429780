#pragma once

#include "tests/kernel/program.h"

/// @file
/// A pyrux-gadget that a test runs.

namespace pyrux::test {

/// The reports that it shows are kept apart: `line` passes over them.
class Gadget : public Program {
public:
    explicit Gadget(const std::vector<std::string>& arguments);

    /// Gives a command and waits for its answer.
    std::string command(const std::string& words);

    /// The reports to the device since the last call, in the form "41 80 | 51 00 00 00 04". All those are
    /// there whose reply the host has got.
    std::string takeWritten();

    /// Waits until a report to the device is there that equals `report`; those before it are forgotten.
    bool waitForWritten(const std::string& report);

private:
    void take(std::string one) override;

    std::vector<std::string> written;
};

} // namespace pyrux::test
