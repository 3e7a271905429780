#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace pyrux::test {

/// Collects what the library hands to the debug output while the object lives.
class DebugCapture {
public:
    DebugCapture();
    ~DebugCapture();
    DebugCapture(const DebugCapture&) = delete;
    DebugCapture& operator=(const DebugCapture&) = delete;

    /// The texts so far.
    std::vector<std::string> texts();

    /// Waits until a text has come; false when it has not within `limit`.
    bool waitFor(const std::string& text, std::chrono::milliseconds limit = std::chrono::seconds(10));

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace pyrux::test
