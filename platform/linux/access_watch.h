#pragma once

#include "platform/linux/file_descriptor.h"

#include <map>
#include <string>
#include <vector>

namespace pyrux::platform {

/// Waits for files to become readable and writable for this process. The system lets nobody watch a file that
/// he may not read, so the files' folders are watched.
class AccessWatch {
public:
    AccessWatch();

    /// Whether a file may be opened now; if not, it is watched under `key`.
    bool accessible(const std::string& file, const std::string& key);
    void forget(const std::string& key);

    int descriptor() const { return notify.get(); }

    /// The keys of the files that have become accessible; they are watched no more.
    std::vector<std::string> take();

private:
    void watchFolderOf(const std::string& file);

    FileDescriptor notify;
    std::map<std::string, int> folders;            ///< Watched folders and their watches.
    std::map<std::string, std::string> waitingFor; ///< Files by key.
};

} // namespace pyrux::platform
