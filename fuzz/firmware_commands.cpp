#include "fuzz/support/input.h"
#include "simulator/models.h"

#include <memory>
#include <string>
#include <vector>

using namespace pyrux;

namespace {

/// The first two words of an input's head name the event; its values are what is left.
void letHappen(sim::Firmware& model, std::uint8_t number, std::uint8_t value)
{
    const std::vector<std::string> events = model.events();
    if (events.empty())
        return;
    const std::string& event = events[number % events.size()];
    model.happen(event.substr(0, event.find(' ')),
                 std::vector<int>(std::size_t(std::ranges::count(event, ' ')), std::int8_t(value)));
}

} // namespace

/// Reports from a host to the firmware models, which pyrux-gadget lets any computer send: which model, then
/// reports, each a length and so many bytes; after length 0 stand an event and its value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto& names = *new std::vector<std::string>(sim::firmwareNames());
    fuzz::Input input({data, size});
    const std::shared_ptr<sim::Firmware> model = sim::makeFirmware(names[input.byte() % names.size()]);
    std::size_t answered = 0;
    model->connect([&](sim::Bytes report) { answered += report.size(); });
    model->powerOn();
    while (!input.empty()) {
        const fuzz::Bytes report = input.take(input.byte() % 65);
        if (report.empty()) {
            const std::uint8_t event = input.byte();
            letHappen(*model, event, input.byte());
        } else {
            model->output(report);
        }
    }
    model->picture();
    model->powerOff();
    return 0;
}
