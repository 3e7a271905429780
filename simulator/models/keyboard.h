#pragma once

#include "simulator/models/echo_firmware.h"

/// @file
/// Firmware models of the keyboards whose lights run from an effect memory: QW210, QW220.
///
/// The device is composite: interface 0 is the boot keyboard, interface 1 takes the commands.
///
/// Bytes below are payload bytes, counted from 0. An accepted command is answered by its bytes 0 to 3, after
/// them zeros or, for a read, what was asked for; 42, C0 and 56 42 are taken without a word. Everything else
/// is met with silence: unknown commands, values out of range, commands in the wrong state.
///
///     41 m                  the state becomes m: 00 off, 01 maintenance, 02 collecting, 03 host, 80
///                           configuration. 41 01 ends a preview, 41 00 the host's frames.
///     42 00 .. .. p .. .. e p 1: profile changes are reported, e 1: effect changes. Any state, as 43, 56.
///     42 10                 acknowledges a change report
///     43 00 .. .. v         v 1: keys are reported
///     50 10 .. .. v         maintenance: reset; v 00 the current profile; FF everything, also what is stored
///     50 55                 maintenance: the effects of all profiles are stored
///     51/52 00              4: current profile, 0 to 4. This and the rest of 51, 52 and 53 is taken in the
///                           states configuration, collecting and host.
///     51 20 key a b c       what a key does; a 00: b and c are its value in the key map, low byte first
///     51/52 21 page         4-35: 16 values of the key map, low byte first; 16 pages
///     51/52 18 macro        4-6: header {key low, mode and key high, unused}; FF 3F: empty place. Written,
///                           it points the cursor at the macro's area.
///     51/52 19 macro        4-19: name
///     51/52 28              4: effect 0 to 20; FF: the preview is shown, until another effect or profile
///     51 98 b               a bit each of the current profile goes back: 1 effects, 2 keys, 4 macros
///     53 00/01 n            n (0 to 15) macro events of 4 bytes from byte 4, into the area under the cursor:
///                           00 from its beginning, wiping it; 01 after the ones before
///     53 10/11 n            reading likewise
///     56 14/15 effect       descriptor. Read: 4 frames, 5 extra words, 6, 7 header pointer; written: the
///                           same and 8-11 the effect's word
///     56 20/21 page         4-63: a page of the image, 0 to 32
///     56 81                 4 effect, 8 frames, 12-15 word: begins a preview. Its header is at offset 0 and
///                           has no extra words.
///     56 83 page            4-63: a page of the preview, 0 to 51
///     56 42 .. .. 02 n k    status frame: n (to 18) LEDs from number k on, three bytes each from byte 8
///     C0 F0 .. .. 1         host state: the frames that follow are shown
///     C0 00 .. .. r g b     frame: all LEDs
///     C0 01 n               frame: n (to 15) LEDs from byte 4 on, each number, red, green, blue; the others
///                           keep theirs
///
/// Effect memory. A pointer is an offset in the image in units of 4 bytes. A descriptor points at a header:
/// the extra words; with more than one frame a word with the pointer of the masks, twice; then an entry
/// {record pointer, frame number, 0} for each frame. Masks stand one after the other, one per frame, with a
/// bit for each LED. Frames are shown one over the other: a later one covers what is under its mask.
///
/// What a record shows: 00 01 one color (8-10) at a brightness (11); 80 01 a color for each LED (from 16 on)
/// at a brightness; 10 00 nothing; 04 F0 the status frame. All others move: standing still they are one color
/// as 00 01.
///
/// Each of the five profiles has its own keys, macros, effects and current effect. Keys, macros and the
/// current profile outlast a power cut as they are, effects only when they were stored.
///
/// Factory settings: effect 0; all effects white at full brightness on black, speed 3; the layers and zones
/// empty, the custom colors black; keys with their own function (00FF); no macros.

namespace pyrux::sim {

class KeyboardFirmware final : public EchoFirmware {
public:
    /// Events "profile N": the profile key makes profile 0 to 4 current; "effect MODE": the effect key makes
    /// effect 0 to 20 current; "key NUMBER STATE": key NUMBER of the key reports goes up (0) or down (1),
    /// another STATE stands in the report as it is. The zones of the picture are "row 1" and so on, from the
    /// top down.
    ///
    /// LEDs are numbered down the columns of `rows`; `maskBytes` is the size of one mask. `frames` counts
    /// status frames and the host's.
    KeyboardFirmware(const char* name, std::uint16_t pid, std::size_t rows, std::size_t maskBytes);

    static constexpr int profileCount = 5;
    static constexpr int keyCount = 256;
    static constexpr int ledCount = 168;
    static constexpr int macroCount = 20;
    static constexpr int macroEvents = 200;
    static constexpr int effectCount = 21;
    static constexpr std::size_t pageSize = 60;
    static constexpr std::size_t imagePages = 33;
    static constexpr std::size_t previewPages = 52;
    static constexpr std::uint8_t previewMode = 0xFF;
    static constexpr int fnKey = 60; ///< Number of the Fn key in key reports.

    enum State : States { off = 1, maintenance = 2, collecting = 4, host = 8, configuration = 16 };

    using Lights = std::array<Light, ledCount>; ///< By LED number.
    using Image = std::array<std::uint8_t, pageSize * imagePages>;

    struct Descriptor {
        std::uint8_t frames = 0;
        std::uint8_t extraWords = 0;
        std::uint16_t header = 0;
        std::array<std::uint8_t, 4> word{};
        bool operator==(const Descriptor&) const = default;
    };

    struct Effects {
        std::uint8_t mode = 0;
        std::array<Descriptor, effectCount> descriptors{};
        Image image{};
        bool operator==(const Effects&) const = default;
    };

    struct Macro {
        std::array<std::uint8_t, 3> header{0xFF, 0x3F, 0};
        std::array<std::uint8_t, 16> name{};
        std::array<std::uint8_t, std::size_t(4 * macroEvents)> events{};
        bool operator==(const Macro&) const = default;
    };

    struct Keys {
        std::array<std::uint16_t, keyCount> map{};
        std::array<std::array<std::uint8_t, 3>, keyCount> actions{}; ///< Bytes 3 to 5 of 51 20.
        bool operator==(const Keys&) const = default;
    };

    // What the device holds; the working memory unless said otherwise. Callable from any thread.
    State state() const { return State(stateNow()); }
    int profile() const { return copyOf(currentProfile); }
    Effects effects(int profile) const { return copyOf(profiles.at(std::size_t(profile)).effects); }
    Effects savedEffects(int profile) const { return copyOf(stored.at(std::size_t(profile))); }
    Keys keys(int profile) const { return copyOf(profiles.at(std::size_t(profile)).keys); }
    Macro macro(int profile, int number) const;
    bool driven() const { return copyOf(now.hostDrives); }       ///< The host drives the lights.
    bool previewing() const { return copyOf(now.previewShown); } ///< The preview is shown.
    Lights lights() const;                                       ///< What the picture shows, by LED number.
    int acknowledgements() const { return copyOf(now.acks); } ///< Since power-on, with that of the start-up.
    int saves() const { return copyOf(now.saves); }           ///< Since power-on.

private:
    struct Settings {
        Keys keys;
        std::array<Macro, macroCount> macros;
        Effects effects;
    };

    struct Preview {
        std::uint8_t frames = 0;
        std::array<std::uint8_t, pageSize * previewPages> image{};
    };

    /// What lasts as long as the power.
    struct Session {
        Preview preview;
        bool previewShown = false;
        Lights status{};
        Lights fromHost{};
        bool hostDrives = false;
        bool profileReports = false;
        bool effectReports = false;
        bool keyReports = false;
        int acks = 0;
        int saves = 0;
    };

    std::vector<Row> stateRows();
    std::vector<Row> settingRows(States taken);
    std::vector<Row> effectRows();
    std::vector<Row> lightRows();
    std::vector<Event> keyEvents();
    void restart() override;
    Picture drawn() const override;

    void enter(State next);
    void reset();
    void useProfile(int number);
    Answer setKeyPage(const Command& command);
    Answer getKeyPage(const Command& command) const;
    Answer setMode(std::uint8_t mode);
    void resetParts(std::uint8_t bits);
    Answer carryPage(const Command& command, std::span<std::uint8_t> image);
    void takeStatus(const Command& command);
    void takeLeds(const Command& command);

    Settings factory() const;
    Settings& current() { return profiles[currentProfile]; }
    const Settings& current() const { return profiles[currentProfile]; }
    std::span<std::uint8_t> macroArea(std::size_t area) override { return current().macros[area].events; }
    Lights shown() const;
    Lights played(std::span<const std::uint8_t> image, const Descriptor& effect) const;
    void paint(Lights& lights, std::span<const std::uint8_t> record,
               std::span<const std::uint8_t> mask) const;

    const std::size_t rows;
    const std::size_t maskBytes;
    std::array<Settings, profileCount> profiles;
    std::array<Effects, profileCount> stored;
    std::uint8_t currentProfile = 0;
    Session now;
};

} // namespace pyrux::sim
