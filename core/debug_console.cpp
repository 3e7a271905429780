#include "core/debug_console.h"

#include "core/boundary.h"
#include "core/log.h"
#include "platform/pipe.h"
#include "platform/threads.h"

#include <array>
#include <chrono>
#include <thread>

namespace pyrux {
namespace {

constexpr std::string_view pipeName = "mypip";
constexpr std::size_t bufferSize = 128; // one byte of it is the text's end

constexpr std::string_view typeSetting = "debugtype=";

/// Types 1 and 2 alone: the log file cannot be chosen here.
ConsoleEffect setType(char digit)
{
    if (digit == '1' || digit == '2')
        return {{}, digit - '0', std::string("Set debug type=") + digit};
    return {{}, {}, std::string("Set debug type fail, input type=") + digit};
}

void runCommand(std::string_view command)
{
    const ConsoleEffect effect = interpretConsoleCommand(command, {debugEnabled, debugType});
    if (effect.enabled)
        debugEnabled = *effect.enabled;
    if (effect.type)
        debugType = *effect.type;
    if (effect.reply)
        debugText("[Debug]" + *effect.reply);
    else
        consoleLine("Command not found");
}

/// Runs detached. What it uses, the log's settings and sinks, is never destroyed.
void consoleThread()
{
    std::unique_ptr<platform::PipeServer> server;
    attempt([&] { server = platform::PipeServer::create(pipeName, bufferSize); });
    if (!server)
        return;
    for (;;) {
        if (server->accept())
            attempt([&] { serveConsoleClient(*server); });
        else
            std::this_thread::sleep_for(std::chrono::seconds(1)); // no descriptors left, or the like
        server->disconnect();
    }
}

} // namespace

ConsoleEffect interpretConsoleCommand(std::string_view command, ConsoleSettings now)
{
    if (command == "debug?")
        return {{}, {}, "Debug=" + std::to_string(now.enabled)};
    if (command.starts_with("debug=1"))
        return {1, {}, "Debug ON"};
    if (command.starts_with("debug=0"))
        return {0, {}, "Debug OFF"};
    if (command == "debugtype?")
        return {{}, {}, "Debug type=" + std::to_string(now.type)};
    if (command.starts_with(typeSetting) && command.size() > typeSetting.size()) {
        const char digit = command[typeSetting.size()];
        if (digit >= '0' && digit <= '9')
            return setType(digit);
    }
    return {};
}

void serveConsoleClient(platform::PipeServer& server)
{
    std::array<char, bufferSize> buffer;
    while (const auto length = server.read(std::span(buffer).first(bufferSize - 1))) {
        buffer[*length] = '\0';
        // A client may send its text's end too; the text ends there, the length counts it.
        const std::string_view command = buffer.data();
        consoleLine("received:" + std::string(command) + ", len:" + std::to_string(*length));
        runCommand(command);
    }
}

bool startDebugConsole()
{
    std::thread thread = platform::startThread(consoleThread);
    if (!thread.joinable())
        return false;
    thread.detach();
    return true;
}

} // namespace pyrux
