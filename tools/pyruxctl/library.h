#pragma once

#include "loader.h"

#include "pyrux/pyrux.h"

#include <string>

namespace pyrux::ctl {

/// The PYRUX library, loaded at run time, and its plain exports.
class Library {
    SharedLibrary library;

    template <class Function>
    Function get(const char* name) const
    {
        return reinterpret_cast<Function>(getSymbol(name));
    }
    void* getSymbol(const char* name) const;

public:
    /// Loads the library: the file of PYRUX_LIBRARY, or beside the program, in the library folder of its
    /// installation, or in its build tree. Throws Failure.
    Library();

    /// An export by its name, such as a factory. Throws Failure when there is none.
    void* factory(std::string_view name) const { return getSymbol(std::string(name).c_str()); }

    const std::filesystem::path& file() const { return library.file(); }

#define EXPORT(name) const decltype(&::name) name = get<decltype(&::name)>(#name)
    EXPORT(pyrux_init);
    EXPORT(pyrux_exit);
    EXPORT(pyrux_background);
    EXPORT(pyrux_version);
    EXPORT(devNums);
    EXPORT(devInfo);
    EXPORT(registerDevNotify);
    EXPORT(getBTVersion);
    EXPORT(getDGVersion);
    EXPORT(getDriverVersion);
#undef EXPORT
};

} // namespace pyrux::ctl
