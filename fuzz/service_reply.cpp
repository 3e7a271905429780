#include "services/resident_service.h"
#include "services/system_record.h"

#include <algorithm>
#include <cstdlib>

using namespace pyrux::resident;

/// Replies come from another process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view reply(reinterpret_cast<const char*>(data), size);
    const NumberPair pair = readNumberPair(reply);
    const bool separated = std::ranges::count(reply, ';') > 0;
    if (!separated && pair.found != NumberPair::Found::tooFewFields)
        std::abort();
    if (pair.found == NumberPair::Found::both && readNumber<std::int32_t>(reply) != pair.first)
        std::abort();
    readNumber<float>(reply);
    // All of a record, or nothing.
    SysDetailRecord record{};
    record.unused[0] = 1;
    const bool failed = !pyrux::readSystemRecord(reply, record).empty();
    const bool read = record.unused[0] == 0;
    if (read && (failed || std::ranges::count(reply, ';') < 14))
        std::abort();
    return 0;
}
