#pragma once

#include "fuzz/support/input.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux::fuzz {

/// The models whose replies one target makes up. Its inputs: which model, which of its operations (the last
/// number: none), a byte that fills the operation's arguments, the number of first bytes of these that stand
/// literally, and those; then reports as of `OutsideDevice`. What the operation leaves of these is sent
/// unasked.
///
/// The host objects live as long as the process, so that what one input does to their state the next one
/// finds.
class Family {
public:
    explicit Family(std::string_view name);
    ~Family();

    void run(Bytes input);

    struct Seeds {
        /// Inputs that say what the firmware models say to each operation, and by themselves.
        std::vector<std::vector<std::uint8_t>> replies;
        /// What the operations say to the firmware models, as inputs of the target for these.
        std::vector<std::vector<std::uint8_t>> commands;
    };
    Seeds seeds();

    /// The names of all families.
    static std::vector<std::string_view> all();

    /// Models that pyruxctl knows and no family has.
    static std::vector<std::string> strays();

private:
    class Host;

    std::vector<std::unique_ptr<Host>> hosts;
};

} // namespace pyrux::fuzz

/// A target for the replies of a family.
#define FUZZ_FAMILY(name)                                                                                    \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)                        \
    {                                                                                                        \
        static pyrux::fuzz::Family& family = *new pyrux::fuzz::Family(name);                                 \
        family.run({data, size});                                                                            \
        return 0;                                                                                            \
    }
