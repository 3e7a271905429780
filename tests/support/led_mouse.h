#pragma once

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

/// @file
/// The wired mice with lights, for tests that hold for all of them.

namespace pyrux::test {

struct RD215Model : ModelOf<&rd215> {
    static constexpr NamedModel own{"rd215", "RD215", 0x0101, 36};
    static constexpr const char* modes = "00 01 02 04 B0 FE";
};
struct RD230Model : ModelOf<&rd230> {
    static constexpr NamedModel own{"rd230", "RD230", 0x0141, 36};
    static constexpr const char* modes = "00 01 02 04 B0 FE";
};
struct RD240Model : ModelOf<&rd240> {
    static constexpr NamedModel own{"rd240", "RD240", 0x0165, 36};
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
};
struct RD110Model : ModelOf<&rd110> {
    static constexpr NamedModel own{"rd110", "RD110", 0x015F, 38};
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
};

/// Those without operations of their own, and what is named.
template <class... Others>
using PlainLedMouseModels = testing::Types<RD215Model, RD230Model, RD240Model, Others...>;
using LedMouseModels = PlainLedMouseModels<RD110Model>;

} // namespace pyrux::test
