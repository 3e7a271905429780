#include "fuzz/support/input.h"
#include "services/resident_service.h"
#include "tools/resident/answers.h"

#include <cstdlib>

using namespace pyrux;

/// Requests to the stand-in of the resident services, one a line. Whatever was asked before, the library can
/// read what it answers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    peer::Answers answers;
    std::string_view requests = fuzz::textOf({data, size});
    for (;;) {
        const std::size_t end = requests.find('\n');
        if (answers.to(requests.substr(0, end)).empty())
            std::abort();
        if (end == std::string_view::npos)
            break;
        requests.remove_prefix(end + 1);
    }
    const resident::NumberPair temperatures = resident::readNumberPair(answers.to("temp"));
    if (temperatures.found != resident::NumberPair::Found::both || temperatures.first < 30 ||
        temperatures.second > 100)
        std::abort();
    return 0;
}
