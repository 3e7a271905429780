#include "fuzz/support/device_family.h"

#include "fuzz/support/impatient_clock.h"
#include "fuzz/support/outside_device.h"
#include "fuzz/support/surroundings.h"
#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "tools/pyruxctl/events.h"
#include "tools/pyruxctl/models.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace pyrux::fuzz {

namespace {

struct Row {
    std::string_view family;
    std::string_view model; ///< Of pyruxctl and of the simulator.
    void* factory;
};

#define MODEL(export) #export, reinterpret_cast < void*>(&::export)
const Row rows[]{
    {"mouse_replies", MODEL(rd210)},      {"led_mouse_replies", MODEL(rd110)},
    {"led_mouse_replies", MODEL(rd215)},  {"led_mouse_replies", MODEL(rd230)},
    {"led_mouse_replies", MODEL(rd240)},  {"keyboard_replies", MODEL(qw210)},
    {"keyboard_replies", MODEL(qw220)},   {"hub_replies", MODEL(glow_hub)},
    {"hub_replies", MODEL(glow2)},        {"hub_replies", MODEL(tint_hub)},
    {"strand_replies", MODEL(strandhub)}, {"strand_replies", MODEL(strandhubv2)},
    {"dock_replies", MODEL(playdock)},    {"supply_replies", MODEL(voltgrid)},
    {"supply_replies", MODEL(psuCtrl)},
};
#undef MODEL

[[noreturn]] void fail(const std::string& text)
{
    std::fprintf(stderr, "%s\n", text.c_str());
    std::abort();
}

ImpatientClock& clockOfAll()
{
    static ImpatientClock& clock = []() -> ImpatientClock& {
        beAlone();
        auto& made = *new ImpatientClock;
        Clock::replace(made);
        return made;
    }();
    return clock;
}

/// The end of a device cannot be told from the end of the process here.
bool endsTheDevice(const ctl::Operation& operation)
{
    return operation.name == "exit_device" || operation.name == "destroy";
}

/// The arguments of a call, each in memory of its own, so that a byte too many shows.
class Arguments {
public:
    Arguments(const ctl::Operation& operation, std::uint8_t filling, Bytes first) : operation(operation)
    {
        Input literal(first);
        for (const ctl::Argument& argument : operation.arguments) {
            const std::size_t size = argument.type->size;
            auto& block = memory.emplace_back(std::make_unique<std::byte[]>(size));
            std::fill_n(block.get(), size, std::byte(filling));
            const Bytes bytes = literal.take(size);
            std::ranges::transform(bytes, block.get(), [](std::uint8_t byte) { return std::byte(byte); });
            if (argument.type->kind == ctl::Type::Kind::text)
                block[size - 1] = std::byte(0);
            blocks.push_back(block.get());
        }
    }

    void call(void* host) { operation.call(host, blocks.data()); }

    /// What pyruxctl would print.
    std::string results() const
    {
        std::string text;
        for (std::size_t i = 0; i < blocks.size(); ++i)
            if (operation.arguments[i].isOutput())
                text += ctl::toText(ctl::toJson(*operation.arguments[i].type, blocks[i]));
        return text;
    }

private:
    const ctl::Operation& operation;
    std::vector<std::unique_ptr<std::byte[]>> memory;
    std::vector<std::byte*> blocks;
};

void forgetEvents()
{
    while (ctl::events().pop(ctl::EventQueue::Clock::time_point::min())) {
    }
}

/// The length of a report and its bytes up to the zeros at its end, the first one in any case.
void append(std::vector<std::uint8_t>& seed, std::vector<std::uint8_t> report)
{
    while (report.size() > 1 && report.back() == 0)
        report.pop_back();
    seed.push_back(std::uint8_t(report.size()));
    seed.insert(seed.end(), report.begin(), report.end());
}

} // namespace

/// A model's host object on its device.
class Family::Host {
public:
    explicit Host(const Row& row) : row(row), model(*ctl::findModel(row.model)) {}

    void run(Input input)
    {
        open();
        const std::size_t number = input.byte() % (model.operations.size() + 1);
        const std::uint8_t filling = input.byte();
        const Bytes literal = input.take(input.byte());
        device->answerFrom(input);
        if (number < model.operations.size() && !endsTheDevice(model.operations[number])) {
            Arguments arguments(model.operations[number], filling, literal);
            arguments.call(host);
            arguments.results();
        }
        device->sendRest();
        sim::awaitReader(*path);
        device->answerFrom(Input()); // a queue may still write when the input has gone
        forgetEvents();
    }

    void addSeeds(std::uint8_t index, Seeds& seeds)
    {
        open();
        for (std::size_t i = 0; i < model.operations.size(); ++i) {
            if (endsTheDevice(model.operations[i]))
                continue;
            // Most numbers of ports, profiles and effects are among these.
            for (const std::uint8_t filling : {0, 1, 2, 3}) {
                sim::takeTraffic(*path);
                Arguments(model.operations[i], filling, {}).call(host);
                sim::awaitReader(*path);
                addTraffic({index, std::uint8_t(i), filling, 0}, seeds);
            }
        }
        for (const std::string& event : device->events())
            addEvent(index, event, seeds);
    }

private:
    void open()
    {
        ImpatientClock& clock = clockOfAll();
        if (host) {
            clock.watch(*path);
            return;
        }
        auto firmware = sim::makeFirmware(std::string(row.model));
        if (!firmware)
            fail("no firmware model of " + std::string(row.model));
        device = new OutsideDevice(std::move(firmware));
        path = &device->plug();
        clock.watch(*path);
        host = model.calls.create(row.factory, path->c_str());
        if (!host)
            fail("cannot open " + *path);
        model.calls.listen(host, 0);
    }

    void addTraffic(std::vector<std::uint8_t> replies, Seeds& seeds)
    {
        using Direction = sim::WireRecord::Direction;
        const auto names = sim::firmwareNames();
        std::vector<std::uint8_t> commands{std::uint8_t(std::ranges::find(names, row.model) - names.begin())};
        const std::vector<sim::WireRecord> traffic = sim::takeTraffic(*path);
        for (std::size_t i = 0; i < traffic.size(); ++i) {
            const bool last = i + 1 == traffic.size() || traffic[i + 1].direction == Direction::toDevice;
            if (traffic[i].direction == Direction::toHost) {
                replies.push_back(last ? 0 : how::more);
                append(replies, traffic[i].bytes);
                continue;
            }
            if (last)
                replies.push_back(how::silence);
            append(commands, {traffic[i].bytes.begin() + 1, traffic[i].bytes.end()}); // without the report id
        }
        seeds.replies.push_back(std::move(replies));
        seeds.commands.push_back(std::move(commands));
    }

    /// An event such as "dpi LEVEL".
    void addEvent(std::uint8_t index, const std::string& event, Seeds& seeds)
    {
        const std::string name = event.substr(0, event.find(' '));
        const auto values = std::size_t(std::ranges::count(event, ' '));
        for (const int value : {0, 1, 2}) {
            sim::takeTraffic(*path);
            if (!device->happen(name, std::vector<int>(values, value)))
                continue;
            sim::awaitReader(*path);
            addTraffic({index, std::uint8_t(model.operations.size()), 0, 0}, seeds);
        }
    }

    const Row& row;
    const ctl::Model& model;
    OutsideDevice* device = nullptr; // device and host object live to the end of the process
    const std::string* path = nullptr;
    void* host = nullptr;
};

Family::Family(std::string_view name)
{
    for (const Row& row : rows)
        if (row.family == name)
            hosts.push_back(std::make_unique<Host>(row));
    if (hosts.empty())
        fail("no family " + std::string(name));
}

Family::~Family() = default;

void Family::run(Bytes input)
{
    if (input.empty())
        return;
    hosts[input.front() % hosts.size()]->run(Input(input.subspan(1)));
}

Family::Seeds Family::seeds()
{
    Seeds seeds;
    for (std::size_t i = 0; i < hosts.size(); ++i)
        hosts[i]->addSeeds(std::uint8_t(i), seeds);
    return seeds;
}

std::vector<std::string_view> Family::all()
{
    std::vector<std::string_view> names;
    for (const Row& row : rows)
        if (!std::ranges::count(names, row.family))
            names.push_back(row.family);
    return names;
}

std::vector<std::string> Family::strays()
{
    std::vector<std::string> names;
    for (const ctl::Model& model : ctl::models())
        if (!model.identities.empty() && !std::ranges::count(rows, model.command, &Row::model))
            names.emplace_back(model.command);
    return names;
}

} // namespace pyrux::fuzz
