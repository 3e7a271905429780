#pragma once

#include <initializer_list>
#include <string>

namespace pyrux::platform {

/// One group of the settings of a GNOME session, by the session's own library, which is loaded when it is
/// asked for the first time and stays.
class GnomeSettings {
public:
    /// Null unless the session is GNOME's, has a bus, and knows the group with all these keys: a headless
    /// machine never gets as far as loading the library. What is returned lives to the end of the process.
    static const GnomeSettings* find(const char* group, std::initializer_list<const char*> keys);

    double getDouble(const char* key) const;
    bool setDouble(const char* key, double value) const;
    int getInt(const char* key) const;
    bool setInt(const char* key, int value) const;

private:
    explicit GnomeSettings(const char* name) : group(name) {}

    std::string group;
};

} // namespace pyrux::platform
