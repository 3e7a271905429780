#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace pyrux::peer {

/// What the resident service replies to a request.
class Answers {
public:
    std::string temperatures = "45;60"; ///< Processor and graphics card, degrees Celsius.
    std::string cores = "8;16";
    std::string record = "3.6;8;1.2;45;38;1.5;62;2.5;55;60;1200;900;850;700;4";
    std::string version = "3.86";

    /// Safe from any thread. Texts that ask for nothing, such as the commands in JSON, are acknowledged.
    std::string to(std::string_view request);

private:
    std::mutex mutex;
    int simulated = 0; ///< Degrees Celsius of the simulated temperature; 0: it is off.
};

} // namespace pyrux::peer
