#include "library.h"

#include "failure.h"

namespace pyrux::ctl {

namespace {

std::vector<std::filesystem::path> candidates()
{
    const auto here = programFolder();
    return {
        here / PYRUX_LIBRARY_NAME,
        here / PYRUX_LIBRARY_FOLDER / PYRUX_LIBRARY_NAME, // the installed tree
        here / "../lib" / PYRUX_LIBRARY_NAME,
        here / ".." / PYRUX_LIBRARY_NAME, // the build tree
        PYRUX_LIBRARY_NAME,
    };
}

} // namespace

Library::Library() : library(loadFirst("PYRUX_LIBRARY", candidates())) {}

void* Library::getSymbol(const char* name) const
{
    void* const symbol = library.find(name);
    if (!symbol)
        throw Failure(Exit::notLoaded, library.file().string() + " has no export \"" + name + "\"");
    return symbol;
}

} // namespace pyrux::ctl
