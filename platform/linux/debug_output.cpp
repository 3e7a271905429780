#include "platform/debug_output.h"

#include "platform/linux/broken_pipe_signal.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <syslog.h>
#include <unistd.h>

namespace pyrux::platform {
namespace {

/// Where the texts go. Holds nothing that is ever destroyed: threads may write while the process ends.
struct Sink {
    enum class Kind { systemLog, descriptor, none } kind = Kind::systemLog;
    int descriptor = -1;
};

Sink chooseSink()
{
    const char* variable = std::getenv("PYRUX_DEBUG_OUTPUT");
    const std::string_view choice = variable ? variable : "";
    if (choice.empty() || choice == "syslog")
        return {};
    if (choice == "none")
        return {Sink::Kind::none, -1};
    if (choice == "stderr")
        return {Sink::Kind::descriptor, STDERR_FILENO};
    // Not blocking: a named pipe without a reader, or with a slow one, loses texts and holds no device up.
    const int file = open(variable, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    return {file < 0 ? Sink::Kind::none : Sink::Kind::descriptor, file};
}

void writeLine(int descriptor, std::string line)
{
    if (!line.ends_with('\n'))
        line += '\n';
    const BrokenPipeSignalBlocked blocked;
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = write(descriptor, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void writeSystemLog(std::string_view text)
{
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    syslog(LOG_USER | LOG_DEBUG, "%.*s", static_cast<int>(text.size()), text.data());
}

} // namespace

void debugOutput(const std::string& text)
{
    static const Sink sink = chooseSink();
    switch (sink.kind) {
    case Sink::Kind::systemLog:
        writeSystemLog(text);
        break;
    case Sink::Kind::descriptor:
        writeLine(sink.descriptor, text);
        break;
    case Sink::Kind::none:
        break;
    }
}

} // namespace pyrux::platform
