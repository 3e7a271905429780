#pragma once

#include "simulator/models/echo_firmware.h"

/// @file
/// Firmware model of the wired mouse RD210.
///
/// The device is composite: interface 0 is a boot mouse, interface 1 takes the commands.
///
/// Bytes below are payload bytes, counted from 0. An accepted command is answered by its bytes 0 to 3, after
/// them zeros or, for a read, what was asked for. Everything else is met with silence: unknown commands,
/// values out of range, commands in the wrong state.
///
///     41 80, 41 01, 41 00   the state becomes configuration, maintenance, off. These, 42, 43 and the end of
///                           the learning are taken in any state; reset and save in the maintenance state;
///                           51 22 there too, where it begins a macro recording; all else in configuration.
///     42 00 kind, 43 00     start-up: the host asks for reports. They come anyway.
///     42 10 kind            acknowledgement of an event of that kind: 00 profile, 40 DPI level
///     50 10 .. .. v         reset: v 00 the current profile; FF everything, also the stored copy
///     50 55                 working memory to the stored copy, with which the next power-on begins
///     51/52 00              4: current profile, 0 to 4
///     51/52 10              2-63: bank. 12: button that shifts the others, FF none; 16: a setting
///     51/52 18 button       4-6: macro assignment {area low, mode and area high, unused}; FF 3F none.
///                           Written or read, it points the cursor at the area.
///     51/52 19 button       4-43: name
///     51/52 20 address page 4-5: code of a button, low byte first
///     51/52 22              4-5: wheel tilt, left as the host told it
///     51/52 40              4-63: performance. 4: place of the current level; 5: number of enabled levels;
///                           6-12 y, 13-19 x, 20-26 multipliers, in sorted order; 27 polling; 28 options;
///                           29, 30 surface
///     51/52 9B              4-10: order table, the level number of each place; FF at 4: no order
///     51 98 b b b b         reset of parts of the current profile, a bit each: 1 macros, 2 buttons,
///                           4 performance
///     51/52 F0              4: a setting
///     53 00/01 n            n (1 to 15) macro events of 4 bytes from byte 4, into the area under the cursor:
///                           00 from its beginning, wiping it; 01 after the ones before
///     53 10/11 n            reading likewise
///     80 00                 4: 1 while the device learns its surface, else 0
///     80 01 .. .. v         learning: v 1 begin, 0 end without a result
///
/// Layout of the memory. Each of the five profiles has all of the settings, the macros included. A button has
/// an address and a page; its macro area is known by the number address + 256 * page, 10 bits, as an
/// assignment holds it. There are areas for the addresses B0 to BF of pages 0 and 1, of 200 events each;
/// where nothing was written there are end events, also after an area's end. Address D8 of page 0 is the
/// code that the shifting button has for itself. An event is {code low, class and code high, delay}.
///
/// Factory settings: no order table, seven levels from 400 to 16000 DPI, the second of them current; buttons
/// with their own function (code 00FF); no macros, no shifting button; wheel tilt on (C0 C0); F0 at 1 and the
/// setting in the bank at 3.

namespace pyrux::sim {

class RD210Firmware : public EchoFirmware {
public:
    static constexpr int profileCount = 5;
    static constexpr int buttonCount = 13;
    static constexpr int levelCount = 7;
    static constexpr int macroEvents = 200;

    /// `live`: the host drives the lights; only of mice that have some.
    enum State : States { off = 1, maintenance = 2, live = 4, configuration = 8 };

    using MacroArea = std::array<std::uint8_t, 4 * macroEvents>;

    /// The settings of one profile, as bytes of the reports that carry them.
    struct Settings {
        std::array<std::uint8_t, levelCount> order{}; ///< Bytes 4 to 10 of 9B.
        std::array<std::uint8_t, 60> performance{};   ///< Bytes 4 to 63 of 40.
        std::array<std::uint8_t, 1> settingF0{};      ///< Byte 4 of F0.
        std::array<std::uint8_t, 62> bank{};          ///< Bytes 2 to 63 of 10.
        std::array<std::uint8_t, 2> wheel{};          ///< Bytes 4 and 5 of 22.
        std::array<std::uint16_t, 32> keys{};         ///< By page * 16 + low digit of the address.
        std::uint16_t shiftKey = 0;                   ///< Address D8.
        std::array<std::array<std::uint8_t, 3>, buttonCount> assignments{}; ///< Bytes 4 to 6 of 18.
        std::array<std::array<std::uint8_t, 40>, buttonCount> names{};      ///< Bytes 4 to 43 of 19.
        std::array<MacroArea, 32> macros{};                                 ///< Placed as `keys`.

        bool operator==(const Settings&) const = default;
    };

    /// Events "dpi LEVEL": the DPI button makes level 0 to 6 current, which must be enabled; "profile N": the
    /// profile button makes profile 0 to 4 current; "key NUMBER STATE": key NUMBER of the key reports goes up
    /// (0) or down (1), another STATE stands in the report as it is; "surface A B": the learning of the
    /// surface ends with a result.
    RD210Firmware() : RD210Firmware(identityOf("RD210", 0x012F, 0x0103, besideMouse(), 1)) {}

    // What the device holds. Callable from any thread; working memory and current profile unless said
    // otherwise.
    State state() const { return State(stateNow()); }
    bool configurable() const { return state() == configuration; }
    int profile() const { return copyOf(working.profile); }
    int savedProfile() const { return copyOf(saved.profile); }
    Settings settings(int profile) const { return copyOf(working.profiles.at(std::size_t(profile))); }
    Settings savedSettings(int profile) const { return copyOf(saved.profiles.at(std::size_t(profile))); }
    int level() const; ///< Current DPI level, by its number.
    std::uint16_t key(int button) const;
    MacroArea macro(int button) const; ///< The button's own area, whatever is assigned to it.
    bool recording() const { return copyOf(now.recording); } ///< The host has begun a macro recording.
    bool learning() const { return copyOf(now.learning); }   ///< The surface is being learned.
    /// Since power-on, with that of the start-up.
    int profileAcknowledgements() const { return copyOf(now.profileAcks); }
    int dpiAcknowledgements() const { return copyOf(now.dpiAcks); } ///< Likewise.
    int saves() const { return copyOf(now.saves); }                 ///< Since power-on.

protected:
    explicit RD210Firmware(Identity identity);

    void restart() override;
    virtual void enter(State next);
    virtual void resetProfile();
    virtual void resetEverything();
    virtual void save();
    std::uint8_t currentProfile() const { return working.profile; }
    bool setProfile(int profile);

private:
    struct Memory {
        std::uint8_t profile = 0;
        std::array<Settings, profileCount> profiles;
    };

    /// What lasts as long as the power.
    struct Session {
        bool recording = false;
        bool learning = false;
        int profileAcks = 0;
        int dpiAcks = 0;
        int saves = 0;
    };

    static Memory factoryMemory();
    std::vector<Row> stateRows();
    std::vector<Row> settingRows();
    std::vector<Event> buttonEvents();

    Settings& current() { return working.profiles[working.profile]; }
    const Settings& current() const { return working.profiles[working.profile]; }
    std::uint16_t* keyAt(std::uint8_t address, std::uint8_t page);
    int levelAtPlace(std::size_t place) const;
    std::span<std::uint8_t> macroArea(std::size_t area) override { return current().macros[area]; }

    Answer carryKey(const Command& command);
    Answer carryAssignment(const Command& command);
    void resetParts(std::uint8_t bits);
    Answer pressDpi(int level);

    Memory working;
    Memory saved;
    Session now;
};

} // namespace pyrux::sim
