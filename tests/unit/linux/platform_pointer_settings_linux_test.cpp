#include "platform/pointer_settings.h"

#include "tests/support/surroundings.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace pyrux::platform;

namespace {

/// What the session offers is found out once in a process, so each test asks in a process of its own.
class PlatformPointerSettingsLinux : public testing::Test {
protected:
    PlatformPointerSettingsLinux() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void finish(bool asExpected) { std::exit(asExpected ? 0 : 1); }

    static bool gioIsLoaded() { return dlopen("libgio-2.0.so.0", RTLD_NOW | RTLD_NOLOAD) != nullptr; }

    pyrux::test::TemporaryFolder folder;
};

} // namespace

TEST_F(PlatformPointerSettingsLinux, withoutADesktopTheMiddleValuesAreKept)
{
    const auto asks = [] {
        finish(pointerSpeed() == 10 && doubleClickTimeMs() == 550 && setPointerSpeed(18) &&
               setDoubleClickTimeMs(270) && pointerSpeed() == 18 && doubleClickTimeMs() == 270 &&
               !gioIsLoaded());
    };
    EXPECT_EXIT(asks(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformPointerSettingsLinux, anotherDesktopIsLeftAlone)
{
    const auto asks = [] {
        setenv("XDG_CURRENT_DESKTOP", "KDE", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        finish(pointerSpeed() == 10 && !gioIsLoaded());
    };
    EXPECT_EXIT(asks(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformPointerSettingsLinux, aSessionWithoutABusIsLeftAlone)
{
    const auto asks = [] {
        setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
        finish(pointerSpeed() == 10 && !gioIsLoaded());
    };
    EXPECT_EXIT(asks(), testing::ExitedWithCode(0), "^$");
}

// The installed settings library hides its locks from the race detector.
#ifndef __SANITIZE_THREAD__

/// The settings library itself, with a file in place of the session's store.
TEST_F(PlatformPointerSettingsLinux, gnomeKeepsTheValues)
{
    if (!std::filesystem::exists("/usr/share/glib-2.0/schemas/org.gnome.desktop.peripherals.gschema.xml") ||
        !dlopen("libgio-2.0.so.0", RTLD_NOW))
        GTEST_SKIP() << "GNOME's settings are not installed";
    const auto asks = [this] {
        setenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        setenv("GSETTINGS_BACKEND", "keyfile", 1);
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        const bool defaults = pointerSpeed() == 10 && doubleClickTimeMs() == 400;
        bool readBack = true;
        for (int speed = 1; speed <= 20; ++speed)
            readBack = readBack && setPointerSpeed(speed) && pointerSpeed() == speed;
        const bool written = setPointerSpeed(1) && setDoubleClickTimeMs(690) && doubleClickTimeMs() == 690;
        std::ostringstream file;
        file << std::ifstream(folder.path() / "glib-2.0" / "settings" / "keyfile").rdbuf();
        const bool kept =
            file.str() == "[org/gnome/desktop/peripherals/mouse]\nspeed=-1.0\ndouble-click=690\n";
        std::fprintf(stderr, "%d%d%d%d", defaults, readBack, written, kept);
        finish(true);
    };
    EXPECT_EXIT(asks(), testing::ExitedWithCode(0), "^1111$");
}

#endif
