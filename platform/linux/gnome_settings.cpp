#include "platform/linux/gnome_settings.h"

#include "platform/linux/environment.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <string_view>

namespace pyrux::platform {
namespace {

// The library's types as far as they are used here: handles and C integers.
struct Schema;
struct SchemaSource;
struct Settings;
using Boolean = int;

template <class Function>
class Symbol {
public:
    Symbol(void* library, const char* name) : address(reinterpret_cast<Function*>(dlsym(library, name))) {}
    explicit operator bool() const { return address != nullptr; }
    template <class... Arguments>
    auto operator()(Arguments... arguments) const
    {
        return address(arguments...);
    }

private:
    Function* address;
};

/// libgio's functions. Never unloaded: it starts threads of its own.
struct Gio {
    void* library = dlopen("libgio-2.0.so.0", RTLD_NOW | RTLD_LOCAL);
    Symbol<SchemaSource*()> defaultSource{library, "g_settings_schema_source_get_default"};
    Symbol<Schema*(SchemaSource*, const char*, Boolean)> lookup{library, "g_settings_schema_source_lookup"};
    Symbol<Boolean(Schema*, const char*)> hasKey{library, "g_settings_schema_has_key"};
    Symbol<void(Schema*)> unrefSchema{library, "g_settings_schema_unref"};
    Symbol<Settings*(const char*)> open{library, "g_settings_new"};
    Symbol<double(Settings*, const char*)> getDouble{library, "g_settings_get_double"};
    Symbol<Boolean(Settings*, const char*, double)> setDouble{library, "g_settings_set_double"};
    Symbol<int(Settings*, const char*)> getInt{library, "g_settings_get_int"};
    Symbol<Boolean(Settings*, const char*, int)> setInt{library, "g_settings_set_int"};
    Symbol<void()> flush{library, "g_settings_sync"};
    Symbol<void(void*)> unref{library, "g_object_unref"};

    bool complete() const
    {
        return defaultSource && lookup && hasKey && unrefSchema && open && getDouble && setDouble && getInt &&
               setInt && flush && unref;
    }
};

const Gio& gio()
{
    static const Gio functions;
    return functions;
}

/// XDG_CURRENT_DESKTOP is a list, such as "ubuntu:GNOME".
bool isGnomeSession()
{
    const std::string desktops = ":" + std::string(environment("XDG_CURRENT_DESKTOP")) + ":";
    return desktops.find(":GNOME:") != std::string::npos;
}

bool hasSessionBus()
{
    if (*environment("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const std::filesystem::path folder = environment("XDG_RUNTIME_DIR");
    std::error_code ignored;
    return !folder.empty() && std::filesystem::is_socket(folder / "bus", ignored);
}

bool knows(const char* group, std::initializer_list<const char*> keys)
{
    SchemaSource* source = gio().defaultSource();
    Schema* schema = source ? gio().lookup(source, group, 1) : nullptr;
    if (!schema)
        return false;
    const bool all =
        std::ranges::all_of(keys, [&](const char* key) { return gio().hasKey(schema, key) != 0; });
    gio().unrefSchema(schema);
    return all;
}

/// A settings object serves one thread, so each access makes its own.
auto open(const std::string& group)
{
    const auto close = [](Settings* settings) { gio().unref(settings); };
    return std::unique_ptr<Settings, decltype(close)>(gio().open(group.c_str()), close);
}

} // namespace

const GnomeSettings* GnomeSettings::find(const char* group, std::initializer_list<const char*> keys)
{
    if (!isGnomeSession() || !hasSessionBus() || !gio().complete() || !knows(group, keys))
        return nullptr;
    return new GnomeSettings(group);
}

double GnomeSettings::getDouble(const char* key) const
{
    return gio().getDouble(open(group).get(), key);
}

bool GnomeSettings::setDouble(const char* key, double value) const
{
    const bool done = gio().setDouble(open(group).get(), key, value) != 0;
    gio().flush();
    return done;
}

int GnomeSettings::getInt(const char* key) const
{
    return gio().getInt(open(group).get(), key);
}

bool GnomeSettings::setInt(const char* key, int value) const
{
    const bool done = gio().setInt(open(group).get(), key, value) != 0;
    gio().flush();
    return done;
}

} // namespace pyrux::platform
