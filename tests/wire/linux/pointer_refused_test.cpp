// A desktop that does not take pointer settings.

#include "tests/support/debug_log.h"
#include "tests/support/isolated.h"
#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

// The installed settings library hides its locks from the race detector.
#ifndef __SANITIZE_THREAD__

namespace pyrux::test {

ISOLATED_TEST(RD210SetPerformance, succeedsWhereTheSystemRefusesPointerSettings)
{
    if (!std::filesystem::exists("/usr/share/glib-2.0/schemas/org.gnome.desktop.peripherals.gschema.xml") ||
        !dlopen("libgio-2.0.so.0", RTLD_NOW))
        GTEST_SKIP() << "GNOME's settings are not installed";
    setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    setenv("GSETTINGS_BACKEND", "null", 1); // refuses every write
    Mouse mouse;
    PerformanceRecord record{};
    record.levelEnabled[0] = 1;
    const Lines lines = debugLinesOf([&] { EXPECT_EQ(mouse->setPerformance(&record), E_OK); });
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1], "[PYRUX][RD210]the system refuses pointer speed and double-click time");
    EXPECT_NE(mouse.written().find("| 51 10"), std::string::npos); // the device has taken everything
}

} // namespace pyrux::test

#endif
