#pragma once

#include "fuzz/support/input.h"

#include <filesystem>

namespace pyrux::fuzz {

/// A file in memory, for parsers that open theirs by name.
class MemoryFile {
public:
    MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void hold(Bytes bytes) const;
    const std::filesystem::path& path() const { return name; }

private:
    int descriptor; ///< To the end of the process.
    std::filesystem::path name;
};

} // namespace pyrux::fuzz
