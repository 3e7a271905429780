#include "simulator/models/table_firmware.h"

#include <iterator>

namespace pyrux::sim {

bool Head::fits(Bytes command) const
{
    for (std::size_t i = 0; i < count; ++i) {
        const int byte = (i < command.size() ? command[i] : 0) & places[i].mask;
        if (byte != places[i].value && byte != places[i].other)
            return false;
    }
    return true;
}

std::vector<std::uint8_t> Command::bytes(std::size_t from, std::size_t count) const
{
    std::vector<std::uint8_t> taken(count);
    copy(from, taken);
    return taken;
}

void Command::copy(std::size_t from, std::span<std::uint8_t> to) const
{
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] = (*this)[from + i];
}

Answer carried(bool write, const Command& command, std::size_t from, std::span<std::uint8_t> setting)
{
    if (!write)
        return {.kind = Answer::Kind::accepted, .data = joined(setting), .from = from};
    command.copy(from, setting);
    return accepted();
}

void TableFirmware::takes(std::vector<Row> more)
{
    rows.insert(rows.begin(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

void TableFirmware::takes(const Channel& on, std::vector<Row> more)
{
    for (Row& row : more)
        row.on = on;
    takes(std::move(more));
}

void TableFirmware::does(std::vector<Event> more)
{
    std::ranges::move(more, std::back_inserter(happenings));
}

void TableFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    frameCount = 0;
    restart();
}

void TableFirmware::outputOn(const Channel& on, Bytes payload)
{
    const Command command(on, payload);
    Answer answer;
    {
        const std::lock_guard lock(mutex);
        const auto row = std::ranges::find_if(rows, [&](const Row& one) {
            return one.in & stateBit && one.on.value_or(on) == on && one.head.fits(command.all());
        });
        if (row != rows.end())
            answer = row->take(command);
    }
    for (const auto& one : formed(answer, &command))
        emit(answer.on.value_or(on), one);
}

bool TableFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    const auto row = std::ranges::find(happenings, event, &Event::name);
    const auto within = [](int value, const Value& range) {
        return value >= range.least && value <= range.most;
    };
    if (row == happenings.end() || !std::ranges::equal(values, row->values, within))
        return false;
    Answer answer;
    {
        const std::lock_guard lock(mutex);
        answer = row->take(values);
    }
    for (const auto& one : formed(answer, nullptr))
        emit(answer.on.value_or(controlChannel(self)), one);
    return answer.kind != Answer::Kind::refused;
}

/// The reports of an answer, in the form of the protocol.
std::vector<std::vector<std::uint8_t>> TableFirmware::formed(const Answer& answer,
                                                             const Command* command) const
{
    const bool refusal = answer.kind == Answer::Kind::refused;
    if (!command || !(answer.kind == Answer::Kind::accepted || (refusal && form.refusal != 0)))
        return answer.reports;
    std::vector<std::uint8_t> report = command->bytes(0, form.echoed);
    report[0] = std::uint8_t(report[0] + form.added);
    if (refusal)
        return {joined(report, form.refusal, answer.code)};
    report.push_back(form.success);
    const std::size_t from = answer.from != 0 ? answer.from : form.dataFrom;
    report.resize(std::max(report.size(), from + answer.data.size()));
    std::ranges::copy(answer.data, report.begin() + std::ptrdiff_t(from));
    return {report};
}

std::vector<std::string> TableFirmware::events() const
{
    std::vector<std::string> all;
    for (const Event& event : happenings) {
        all.emplace_back(event.name);
        for (const Value& value : event.values)
            all.back() += std::string(" ") + value.name;
    }
    return all;
}

Picture TableFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    return drawn();
}

void Transfer::begin(std::size_t bytes)
{
    end();
    data.resize(bytes);
    running = true;
}

bool Transfer::add(std::uint8_t number, Bytes piece)
{
    if (!running || number != next) {
        end();
        return false;
    }
    ++next;
    piece = piece.first(std::min(piece.size(), data.size() - got));
    std::ranges::copy(piece, data.begin() + std::ptrdiff_t(got));
    got += piece.size();
    return true;
}

Identity identityOf(const char* product, std::uint16_t pid, std::uint16_t release,
                    std::vector<Collection> collections, int controlInterface, const char* serialName)
{
    std::string serial = serialName ? serialName : product;
    std::erase(serial, ' ');
    return {.pid = pid,
            .release = release,
            .serial = serial + "-000001",
            .product = product,
            .collections = std::move(collections),
            .controlInterface = controlInterface};
}

std::vector<Collection> besideMouse()
{
    return {{.interface = 0, .usagePage = 0x0001, .usage = 0x0002}, {.interface = 1}};
}

std::vector<Collection> besideKeyboard()
{
    return {{.interface = 0, .usagePage = 0x0001, .usage = 0x0006}, {.interface = 1}};
}

std::vector<Collection> besideVendorPage()
{
    return {{.interface = 0}, {.interface = 1, .usagePage = 0xFF01}};
}

} // namespace pyrux::sim
