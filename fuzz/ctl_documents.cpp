#include "fuzz/support/argument_types.h"
#include "fuzz/support/input.h"
#include "tools/pyruxctl/failure.h"

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

using namespace pyrux;

namespace {

/// A word gives a value; the value's JSON gives the same value.
void read(const ctl::Type& type, std::string_view word)
{
    const auto first = std::make_unique<std::byte[]>(type.size);
    const auto second = std::make_unique<std::byte[]>(type.size);
    ctl::fromWord(type, word, first.get(), "word");
    const ctl::Json json = ctl::toJson(type, first.get());
    ctl::fromJson(type, json, second.get(), "value");
    if (ctl::toText(ctl::toJson(type, second.get())) != ctl::toText(json))
        std::abort();
    ctl::toPrettyText(json);
}

} // namespace

/// Words and documents of the command line: the number of a type in two bytes, then the word.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input({data, size});
    const std::size_t number = std::size_t(input.byte() | input.byte() << 8);
    const ctl::Type& type = *fuzz::argumentTypes()[number % fuzz::argumentTypes().size()];
    try {
        read(type, fuzz::textOf(input.takeAll()));
    } catch (const ctl::UsageError& error) {
        if (*error.what() == '\0')
            std::abort();
    }
    return 0;
}
