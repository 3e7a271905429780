#include "core/debug_console.h"
#include "core/log.h"
#include "fuzz/support/input.h"
#include "fuzz/support/surroundings.h"
#include "platform/pipe.h"

#include <cstdlib>

using namespace pyrux;

namespace {

/// A client whose bytes come in pieces: each a length and so many bytes.
class PieceByPiece final : public platform::PipeServer {
public:
    explicit PieceByPiece(fuzz::Bytes pieces) : pieces(pieces) {}

    bool accept() override { return true; }
    std::optional<std::size_t> read(std::span<char> buffer) override
    {
        const fuzz::Bytes piece = pieces.take(std::min<std::size_t>(pieces.byte(), buffer.size()));
        std::ranges::copy(fuzz::textOf(piece), buffer.begin());
        return piece.empty() ? std::nullopt : std::optional(piece.size());
    }
    void disconnect() override {}

private:
    fuzz::Input pieces;
};

void interpret(std::string_view command)
{
    const ConsoleEffect effect = interpretConsoleCommand(command, {1, 1});
    const bool changes = effect.enabled || effect.type;
    if (changes && !effect.reply)
        std::abort();
    if (effect.enabled && *effect.enabled != 0 && *effect.enabled != 1)
        std::abort();
    if (effect.type && *effect.type != 1 && *effect.type != 2)
        std::abort();
}

} // namespace

/// Commands come from whoever opens the console's pipe.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    [[maybe_unused]] static const bool ready = (fuzz::beAlone(), true);
    interpret(fuzz::textOf({data, size}));
    PieceByPiece client({data, size});
    serveConsoleClient(client);
    if (debugEnabled != 0 && debugEnabled != 1)
        std::abort();
    debugEnabled = 0;
    debugType = 1;
    return 0;
}
