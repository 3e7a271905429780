#pragma once

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

/// @file
/// The wired mice with lights, for tests that hold for all of them.

namespace pyrux::test {

struct RD215Model : ModelOf<&rd215> {
    static constexpr const char* modes = "00 01 02 04 B0 FE";
};
struct RD230Model : ModelOf<&rd230> {
    static constexpr const char* modes = "00 01 02 04 B0 FE";
};
struct RD240Model : ModelOf<&rd240> {
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
};
struct RD110Model : ModelOf<&rd110> {
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
};

using LedMouseModels = testing::Types<RD215Model, RD230Model, RD240Model, RD110Model>;

} // namespace pyrux::test
