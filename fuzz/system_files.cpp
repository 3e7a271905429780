#include "platform/linux/system_files.h"

#include "fuzz/support/memory_file.h"

#include <cstdlib>

using namespace pyrux;
namespace fs = std::filesystem;

namespace {

/// A root folder in which every file that is looked for is the same one.
class Root {
public:
    Root()
    {
        std::string name = (fs::temp_directory_path() / "pyrux-root-XXXXXX").string();
        if (!mkdtemp(name.data()))
            std::abort();
        folder = name;
        for (const char* const path :
             {"proc/stat", "proc/meminfo", "proc/cpuinfo", "etc/default/keyboard", "etc/vconsole.conf",
              "sys/class/dmi/id/board_vendor", "sys/class/dmi/id/board_name", "sys/firmware/dmi/tables/DMI",
              "sys/bus/pci/devices/0000:00:02.0/class", "sys/bus/pci/devices/0000:00:02.0/boot_vga",
              "sys/bus/pci/devices/0000:00:02.0/modalias"}) {
            fs::create_directories((folder / path).parent_path());
            fs::create_symlink(input.path(), folder / path);
        }
        std::atexit([] { fs::remove_all(instance().folder); });
    }

    static Root& instance()
    {
        static Root& root = *new Root;
        return root;
    }

    fs::path folder;
    fuzz::MemoryFile input;
};

void useFacts(platform::Hardware part, const fs::path& root)
{
    const auto echo = [](const auto& key, const char*) { return fs::path(key).string(); };
    for (const std::string& text : platform::hardwareFacts(part, root, {echo, echo}).texts)
        if (text.find('\n') != std::string::npos)
            std::abort();
}

} // namespace

/// Files of /proc, /sys and /etc, of other makes and versions of a system than are known.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Root& root = Root::instance();
    if (size == 0)
        return 0;
    root.input.hold({data + 1, size - 1});
    switch (data[0] % 4) {
    case 0:
        if (const auto times = platform::cpuTimes(root.folder); times && times->total < times->idle)
            return 0; // numbers that do not fit into 64 bits any more when they are added
        if (platform::memoryLoad(root.folder) > 100)
            std::abort();
        break;
    case 1:
        platform::languageOfLayout(platform::systemKeyboardLayout(root.folder));
        break;
    case 2:
        useFacts(platform::Hardware::cpu, root.folder);
        useFacts(platform::Hardware::board, root.folder);
        break;
    default:
        platform::hardwareFacts(platform::Hardware::memory, root.folder,
                                {[](const fs::path&, const char*) { return std::string(); }, {}});
        break;
    }
    return 0;
}
