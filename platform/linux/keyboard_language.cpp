#include "platform/linux/keyboard_language.h"

#include "platform/dynamic_library.h"
#include "platform/keyboard_language.h"
#include "platform/linux/system_files.h"

#include <memory>

namespace pyrux::platform {
namespace {

// The X library, of a fixed interface; a system without X need not have it.
namespace x {
struct Display;
using Atom = unsigned long;
using Window = unsigned long;
/// XkbStateRec, with room to spare: the effective group is its first byte.
struct State {
    unsigned char group;
    unsigned char rest[63];
};
using OpenDisplay = Display*(const char* name);
using CloseDisplay = int(Display*);
using DefaultRootWindow = Window(Display*);
using InternAtom = Atom(Display*, const char* name, int onlyIfThere);
using GetWindowProperty = int(Display*, Window, Atom property, long offset, long length, int remove,
                              Atom wantedType, Atom* type, int* format, unsigned long* count,
                              unsigned long* left, unsigned char** data);
using Free = int(void*);
using GetState = int(Display*, unsigned int keyboard, State*);

constexpr unsigned int coreKeyboard = 0x100;
constexpr Atom text = 31;
constexpr long mostWords = 1024;
} // namespace x

/// One of the texts of a list; empty after its end.
std::string item(std::string_view list, std::size_t index, char separator)
{
    for (; index > 0; --index) {
        const auto end = list.find(separator);
        if (end == std::string_view::npos)
            return {};
        list.remove_prefix(end + 1);
    }
    return std::string(list.substr(0, list.find(separator)));
}

} // namespace

std::string layoutOfGroup(std::string_view rulesNames, std::size_t group)
{
    return item(item(rulesNames, 2, '\0'), group, ',');
}

std::string serverKeyboardLayout(const char* library)
{
    const DynamicLibrary xlib(library);
    auto* const open = xlib.find<x::OpenDisplay>("XOpenDisplay");
    auto* const close = xlib.find<x::CloseDisplay>("XCloseDisplay");
    auto* const rootWindow = xlib.find<x::DefaultRootWindow>("XDefaultRootWindow");
    auto* const intern = xlib.find<x::InternAtom>("XInternAtom");
    auto* const property = xlib.find<x::GetWindowProperty>("XGetWindowProperty");
    auto* const release = xlib.find<x::Free>("XFree");
    auto* const stateOf = xlib.find<x::GetState>("XkbGetState");
    if (!open || !close || !rootWindow || !intern || !property || !release || !stateOf)
        return {};
    const std::unique_ptr<x::Display, x::CloseDisplay*> display(open(nullptr), close);
    if (!display)
        return {};
    x::State state{};
    const x::Atom name = intern(display.get(), "_XKB_RULES_NAMES", 1);
    if (name == 0 || stateOf(display.get(), x::coreKeyboard, &state) != 0)
        return {};
    x::Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    if (property(display.get(), rootWindow(display.get()), name, 0, x::mostWords, 0, x::text, &type, &format,
                 &count, &left, &data) != 0 ||
        !data)
        return {};
    const std::unique_ptr<void, x::Free*> owned(data, release);
    const std::string_view names(reinterpret_cast<const char*>(data), format == 8 ? count : 0);
    return layoutOfGroup(names, state.group);
}

ThreadId windowThread(void*)
{
    return 0;
}

std::uint16_t keyboardLanguage(ThreadId)
{
    const std::string layout = serverKeyboardLayout("libX11.so.6");
    return languageOfLayout(layout.empty() ? systemKeyboardLayout("/") : layout);
}

} // namespace pyrux::platform
