#include "platform/debug_output.h"

#include "platform/linux/bounded_write.h"
#include "platform/linux/environment.h"
#include "platform/linux/system_log.h"

#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace pyrux::platform {
namespace {

/// Where the texts go. What does not read loses texts and holds no device up.
class Sink {
public:
    Sink()
    {
        const char* const variable = environment("PYRUX_DEBUG_OUTPUT");
        const std::string_view choice = variable;
        if (choice.empty() || choice == "syslog")
            kind = Kind::systemLog;
        else if (choice == "stderr")
            descriptor = STDERR_FILENO;
        else if (choice != "none")
            descriptor = open(variable, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    }

    void put(const std::string& text)
    {
        if (kind == Kind::systemLog)
            losses.put(text, [&](std::string_view one) {
                if (one.ends_with('\n'))
                    one.remove_suffix(1);
                return log.write(one);
            });
        else if (descriptor >= 0)
            losses.put(text, [&](std::string_view one) {
                const Written written = lines.put(descriptor, one, std::chrono::milliseconds(0));
                return written == Written::all || written == Written::lost;
            });
    }

private:
    enum class Kind { descriptor, systemLog } kind = Kind::descriptor;
    int descriptor = -1; ///< -1: nowhere.
    SystemLog log;
    LineWriter lines;
    Losses losses;
};

} // namespace

void debugOutput(const std::string& text)
{
    // Never destroyed: threads may write while the process ends.
    static auto& sink = *new Sink;
    sink.put(text);
}

} // namespace pyrux::platform
