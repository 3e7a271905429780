#pragma once

#include "simulator/models/table_firmware.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// @file
/// What the mice and keyboards have in common whose commands are answered by their first four bytes: settings
/// that are written with 51 and read with 52, and macro events after 53. Bytes are payload bytes, counted
/// from 0.

namespace pyrux::sim {

/// One macro event, as on the wire.
using MacroEvent = std::array<std::uint8_t, 4>;

/// Puts the same event into all places of an area.
void fillWith(const MacroEvent& event, std::span<std::uint8_t> area);

class EchoFirmware : public TableFirmware {
protected:
    static constexpr std::size_t dataFrom = 4; ///< Of the reports that carry more than a byte.

    /// How a device keeps its macros.
    struct MacroRules {
        MacroEvent end;            ///< The event that stands where nothing was written.
        MacroEvent beyond;         ///< What is read past the end of an area.
        std::uint8_t leastWritten; ///< Events of one report.
    };

    /// Where the next chunk of macro events goes to or comes from.
    struct Cursor {
        std::size_t area = 0;
        std::size_t event = 0;
    };

    EchoFirmware(Identity identity, const MacroRules& rules)
        : TableFirmware(std::move(identity), echoForm), rules(rules)
    {
    }

    /// A setting of the commands 51 and 52.
    static Answer carry(const Command& command, std::size_t from, std::span<std::uint8_t> setting)
    {
        return carried(command[0] == 0x51, command, from, setting);
    }
    static Answer carry(const Command& command, std::size_t from, std::uint8_t& setting)
    {
        return carry(command, from, std::span(&setting, 1));
    }

    /// The commands of macro events: 53 00/01 n writes n of them from byte 4 into the area under the cursor,
    /// 00 from its beginning, wiping it, 01 after the ones before; 53 10/11 n reads likewise.
    std::vector<Row> macroRows(States taken);
    virtual std::span<std::uint8_t> macroArea(std::size_t area) = 0;

    /// The report that key `values[0]` goes up (0) or down (1); another state stands in it as it is.
    static Answer keyReport(const std::vector<int>& values);

    std::optional<Cursor> cursor;

private:
    Answer writeEvents(const Command& command);
    Answer readEvents(const Command& command);

    const MacroRules rules;
};

} // namespace pyrux::sim
