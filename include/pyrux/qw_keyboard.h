#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/keyboard_records.h"
#include "pyrux/records.h"

#include <cstdint>
#include <vector>

/// @file
/// The keyboards with a status effect. The models and their factories stand at the end. The first call of a
/// factory takes as long as the keyboard's effects take to be read: 54 commands, or about 18 s for a device
/// that does not answer.

/// Slots 0 to 34 of the keyboards: five profiles, key maps, twenty macros, effects that the device plays out
/// of a memory of its own, a status effect that shows the computer's load or sound, and frames of a host.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry. The model's own interface goes on after them.
///
/// Lights (slots 0 to 4): the operations of `DEV_LIGHTING` in its order, with the keyboards' own arguments.
/// Frames go through a queue: the calls return at once, a frame that the device has no time for is replaced
/// by the next, and frames are 1 ms apart after slot 0 while the host is fast. Slots 2 and 3 are meant for
/// frame rate and write no log.
///
/// Effects (slots 18 to 28): the library keeps a copy of the device's effects, read when the object is made.
/// A set shows the effect at once, as a preview, and changes the copy; `saveConfig` writes the copy to the
/// device. A profile change, on the device or by slot 5, slot 7, and part 0 of slot 8 make the copy stale:
/// the next call of slots 18 to 28 or 34 reads it anew before anything else (21 times 56 14, 33 times 56 20,
/// then 41 80 | 52 28). When a reply of 56 14 or 56 20 is missing that call ends with the failure, the copy
/// stays as it is, and the next call reads again.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run, and E_NOT_OPEN
/// when the channel closes while it waits. A set gives E_INVALID_SET, a get E_INVALID_GET, for a null pointer
/// or a value out of range, before anything of its own is sent. Both give E_INVALID_GET for a reply that does
/// not come in time.
///
/// Time: each command waits up to 3 s for its reply, and up to 1 s before that for a device that does not
/// take it. Frames do not wait.
///
/// Threads: any thread may call; calls may overlap; operations on effects wait for each other. Callbacks of
/// `registerNotify` run on the object's reader thread: an operation that waits for a reply must not be called
/// there.
///
/// Wire: bytes are given as payload of a 64-byte report with unnamed bytes 0. A reply begins with the
/// command's first two bytes unless another number is named. 41 80 (the device accepts configuration) ahead
/// of a command has its reply waited for but not looked at.
struct QW_KEYBOARD_Base {
    /// Slot 0. Takes the lights over: what is queued is dropped, the device's own effects end, all lights go
    /// dark.
    /// @return E_OK; E_NOT_OPEN or E_WRITE_TIMEOUT of the first report that was not taken
    /// @note Wire: 41 03 | C0 F0 00 00 01 | C0 00, none of them waits for a reply
    /// @note Waits at most 3 s.
    virtual _error setLightingInit() = 0;

    /// Slot 1. Gives the lights back: what is queued is dropped, the device's effects go on.
    /// @note Wire: 41 00
    /// @note Waits at most 4 s, 3 s for a device that answers nothing.
    virtual _error setLightingUninit() = 0;

    /// Slot 2. Paints the whole keyboard in one color.
    /// @param rgb  three bytes
    /// @note Wire: C0 00 00 00 red green blue, through the queue. Before the first `setLightingInit` the
    ///       report has no command yet, 00 00 00 00 red green blue.
    /// @note Does not wait.
    virtual _error setLightingPortColor(const std::uint8_t* rgb) = 0;

    /// Slot 3. Paints keys one by one; keys that are not listed go black. Of a key that is listed twice the
    /// first entry counts.
    /// @return E_OK, also for an empty list, which does nothing
    /// @note Wire: the list in reports of up to 15 entries, C0 01 count 00 and four bytes for each, LED red
    ///       green blue; an entry whose LED the keyboard does not have, or that was listed before, keeps its
    ///       place with four zero bytes. Then, in reports of their own, the keys that are left, black. All
    ///       of them go through the queue as one group.
    /// @note Does not wait.
    virtual _error setSyncLightingData(const std::vector<DirectKeyColor>& list) = 0;

    /// Slot 4. Drops what is queued and turns all lights off.
    /// @return E_OK; E_NOT_OPEN; E_WRITE_TIMEOUT
    /// @note Wire: C0 00, does not wait for a reply
    /// @note Waits at most 1 s.
    virtual _error setLightingTurnOff() = 0;

    /// Slot 5. Makes a profile the current one.
    /// @param id  0 to 4
    /// @note Wire: 41 80 | 51 00 00 00 id
    /// @note Waits at most 8 s, 6 s for a device that answers nothing.
    virtual _error changeProfileId(std::uint8_t id) = 0;

    /// Slot 6. Reads the number of the current profile.
    /// @note Wire: 41 80 | 52 00, reply byte 4
    /// @note Waits at most 8 s, 6 s for a device that answers nothing.
    virtual _error getCurrProfileId(std::uint8_t* id) = 0;

    /// Slot 7. Restores factory settings.
    /// @param scope  not 0: all profiles; 0: the current one, which is then saved
    /// @note Wire: 41 01 | 50 10 00 00 FF | 41 00, or 41 01 | 50 10 00 00 00 | 50 55 | 41 00. The result is
    ///       that of 50 10.
    /// @note Waits at most 16 s, 12 s for a device that answers nothing.
    virtual _error resetProfile(std::uint8_t scope) = 0;

    /// Slot 8. Restores a part of the current profile's settings.
    /// @param part  0 to 2
    /// @note Wire: 41 80 | 51 98 and a byte with bit `part` set
    /// @note Waits at most 8 s, 6 s for a device that answers nothing.
    virtual _error resetPartial(std::uint8_t part) = 0;

    /// Slot 9. Gives keys their actions; the first failure ends it.
    /// @param count  number of entries; 0 sends 41 80 only
    /// @note Wire: 41 80 | for each entry 51 20 key action[3], whose reply repeats four bytes
    /// @note Waits at most 1024 s, 6 s for a device that answers nothing.
    virtual _error setKeyMapping(std::uint32_t count, const KeyMapEntry* entries) = 0;

    /// Slot 10. Gives all keys their actions; the first failure ends it.
    /// @note Wire: 41 80 | for each page 0 to 15: 51 21 page 00 and 16 values, low byte first, whose reply
    ///       repeats three bytes
    /// @note Waits at most 68 s, 6 s for a device that answers nothing.
    virtual _error setKeyMappingAll(const KeyMapTable* table) = 0;

    /// Slot 11. Reads the actions of all keys. The first failure ends it; pages that were read stay in the
    /// table.
    /// @note Wire: 41 80 | for each page 0 to 15: 52 21 page, reply bytes 4 to 35
    /// @note Waits at most 68 s, 6 s for a device that answers nothing.
    virtual _error getKeyMappingAll(KeyMapTable* table) = 0;

    /// Slot 12. The keyboard gets ready for the recording of a macro.
    /// @note Wire: 41 01
    /// @note Waits at most 4 s, 3 s for a device that answers nothing.
    virtual _error startRecordMacro() = 0;

    /// Slot 13. Ends that. The current profile's effect is shown again, out of the library's copy, since
    /// recording disturbs the lights.
    /// @return as the preview: E_INVALID_SET while the status effect is the current one, since it has none
    /// @note Wire: 41 80 | the preview as in slot 20
    /// @note Waits at most 176 s, 6 s for a device that answers nothing.
    virtual _error stopRecordMacro() = 0;

    /// Slot 14. Writes a macro; `triggerMode` 3 deletes it. Writes the end mark {0, 3, 0xFFFF} after the
    /// record's last event.
    /// @return E_OK, also when replies are missing; E_INVALID_SET: `index` above 19, `eventCount` above 198
    ///         or `triggerMode` above 3, nothing sent
    /// @note Wire: 41 80 | 51 18 index 00 A B | 51 19 index 00 name[16], whose reply repeats three bytes |
    ///       the events and the end mark in blocks of up to 15, the first by 53 00 count 00, the others by
    ///       53 01 count 00, and four bytes for each event. A count of events that divides by 15 is followed
    ///       by a block of 0. A is the low byte of `boundKey`, B its bits 8 and 9 and 3C, 5C or 7C by mode;
    ///       mode 3 writes FF 3F and nothing more. An event is: low byte of the code; high byte of the code
    ///       plus 5C for kind 0, 3C for kind 1, FC for others; twice the delay, low byte first. The wheel is
    ///       01 9E or FF 9E.
    /// @note Waits at most 68 s, 51 s for a device that answers nothing.
    virtual _error setMacro(MacroRecord* record) = 0;

    /// Slot 15. Reads a macro. An empty place gives `triggerMode` 3, `boundKey` 0 and an empty name, and
    /// leaves the events as they are. A read that fails leaves the record as it was.
    /// @param record  `index` filled in by the caller
    /// @return E_OK; E_INVALID_GET: `index` above 19, no reply, or more events than the record has places
    /// @note Wire: 41 80 | 52 18 index, reply bytes 4 to 6 | 52 19 index, reply bytes 4 to 19; a missing name
    ///       is empty | 51 18 index 00 and the three bytes | 53 10 0F for the first 15 events, then 53 11 0F,
    ///       and 53 11 05 after 195; the replies repeat three bytes, events stand from byte 4 on
    /// @note Waits at most 72 s, 6 s for a device that answers nothing.
    virtual _error getMacro(MacroRecord* record) = 0;

    /// Slot 16. Reads all macros that there are, up to the first that fails. Always E_OK.
    /// @note Wire: 41 02 | for each index as slot 15 with 41 03 in place of 41 80 | 41 00
    /// @note Waits at most 1448 s, 12 s for a device that answers nothing.
    virtual _error getMacroAll(MacroList* list) = 0;

    /// Slot 17. Deletes a macro, or all of them. Always E_OK.
    /// @param index  0 to 19; 255: all; others do nothing
    /// @note Wire: for each 41 80 | 51 18 index 00 FF 3F
    /// @note Waits at most 160 s, 120 s for a device that answers nothing.
    virtual _error clearMacro(std::uint8_t index) = 0;

    /// Slot 18. Chooses the effect of the current profile.
    /// @param id  effect number, passed to the device unchecked; 20 also begins the status effect with the
    ///            parameters that were set last
    /// @note Wire: 41 80 | 51 28 00 00 id. QW220 ends a status effect with id 4, as by slot 29 with type 2,
    ///       ahead of these.
    /// @note Waits at most 232 s, 6 s for a device that answers nothing.
    virtual _error setEffectMode(std::uint8_t id) = 0;

    /// Slot 19. Reads the effect of the current profile: what was set last when the device shows a preview or
    /// does not answer. Always E_OK, but for a stale copy that cannot be read.
    /// @note Wire: 41 80 | 52 28, reply byte 4
    /// @note Waits at most 232 s, 6 s for a device that answers nothing.
    virtual _error getEffectMode(std::uint8_t* id) = 0;

    /// Slot 20. Shows a general effect and makes it the current one.
    /// @return E_INVALID_SET: an effect that is not general (4, 18, 19, 20 and above)
    /// @note Wire: a preview: 56 81 00 00 effect 00 00 00 frames 00 00 00 and the effect's word, four bytes |
    ///       56 83 page 00 and 60 bytes of the image, for the pages 0 to size / 60 | 41 80 |
    ///       51 28 00 00 FF. The replies of the 56 commands repeat three bytes; the last two results are not
    ///       looked at.
    /// @note Waits at most 240 s, 3 s for a device that answers nothing.
    virtual _error setGeneralEffect(const EffectRecord* effect) = 0;

    /// Slot 21. Gives the copy of a general effect.
    /// @return E_INVALID_GET: an effect that is not general
    /// @note Waits at most 224 s, 3 s for a device that answers nothing.
    virtual _error getGeneralEffect(std::uint8_t id, EffectRecord* effect) = 0;

    /// Slot 22. Gives the copies of the effects 0 to 17.
    /// @param effects  room for 18 records
    /// @note Waits at most 224 s, 3 s for a device that answers nothing.
    virtual _error getGeneralEffectAll(EffectRecord* effects) = 0;

    /// Slot 23. Shows one color per LED and makes that the current effect. Writes 4 into the caller's
    /// `effectId`.
    /// @param matrix  red, green and blue of each of the 168 LEDs: 504 bytes
    /// @note Wire: a preview as in slot 20
    /// @note Waits at most 272 s, 3 s for a device that answers nothing.
    virtual _error setCustomEffect(EffectRecord* effect, const std::uint8_t* matrix) = 0;

    /// Slot 24. Gives the copy of the custom effect.
    /// @param matrix  room for 504 bytes
    /// @note Waits at most 224 s, 3 s for a device that answers nothing.
    virtual _error getCustomEffect(EffectRecord* effect, std::uint8_t* matrix) = 0;

    /// Slot 25. Shows four effects on top of each other and makes that the current effect. Effect 0 is the
    /// ground of the others.
    /// @param effects  four records
    /// @return E_INVALID_SET: a layer with effect 18, 19, 21 or above
    /// @note Wire: a preview as in slot 20
    /// @note Waits at most 388 s, 3 s for a device that answers nothing.
    virtual _error setMultilayerEffect(const EffectRecord* effects) = 0;

    /// Slot 26. Gives the copies of the layers.
    /// @param effects  room for four records
    /// @note Waits at most 224 s, 3 s for a device that answers nothing.
    virtual _error getMultilayerEffect(EffectRecord* effects) = 0;

    /// Slot 27. Shows four effects side by side and makes that the current effect.
    /// @param effects     four records
    /// @param zoneMatrix  for each zone one byte per LED, of which bit 0 tells whether the LED belongs to it;
    ///                    the model's interface tells the number of bytes
    /// @return E_INVALID_SET: a zone with effect 18, 19, 21 or above
    /// @note Wire: a preview as in slot 20
    /// @note Waits at most 396 s, 3 s for a device that answers nothing.
    virtual _error setMultizoneEffect(const EffectRecord* effects, const std::uint8_t* zoneMatrix) = 0;

    /// Slot 28. Gives the copies of the zones.
    /// @param effects     room for four records
    /// @param zoneMatrix  room for the matrix; 0 and 1 when it comes from the device
    /// @note Waits at most 224 s, 3 s for a device that answers nothing.
    virtual _error getMultizoneEffect(EffectRecord* effects, std::uint8_t* zoneMatrix) = 0;

    /// Slot 29. Begins a chart of the processor load or of the sound's spectrum, and makes the status effect
    /// (20) the current one. An application's library asks the resident service to paint the keyboard, sends
    /// nothing itself, and hands the frames to the callback of slot 30. The service's library, in background
    /// mode, paints the keyboard.
    /// @return E_OK, also when the resident service is not there; E_INVALID_SET: another type, nothing sent
    ///         (QW220: sent, E_OK, and the current effect becomes 255); in background mode also a keyboard
    ///         that does not get ready
    /// @note Wire, in background mode: 56 81 00 00 01 00 00 00 01 00 00 00 BB 0B 55 55 |
    ///       56 83 00 00 01 00 00 00 04 F0 00 C1 | 41 80 | 51 28 00 00 FF; then for each frame 56 42 00 00 02
    ///       count first 00 and three bytes for each LED, without waiting
    /// @note Does not wait.
    virtual _error setSystemStatusEffect(const SystemStatusEffect* params) = 0;

    /// Slot 30. Sets the callback for the frames of the status effect.
    /// @return E_INVALID_SET: null
    virtual _error registerSystemStatusNotify(SystemStatusCallback callback) = 0;

    /// Slot 31. Takes it away.
    virtual _error unRegisterSystemStatusNotify() = 0;

    /// Slot 32. Sets the callback for the events of `KeyboardEvent`; null takes it away.
    virtual _error registerNotify(NotifyCallback callback) = 0;

    /// Slot 33. Takes it away; once this has returned it is not called any more.
    virtual _error unRegisterNotify() = 0;

    /// Slot 34. Writes the library's copy of the effects to the device and lets it keep everything for good.
    /// @note Wire: 56 15 effect 00 frames extra header[2] word[4], for the effects 0 to 20 | 56 21 page 00
    ///       and 60 bytes of the image, for the pages 0 to 32; the replies repeat three bytes, and the first
    ///       that is missing ends these | slot 18 with the current effect | 41 01 | 50 55 | 41 00. The
    ///       result is that of 50 55.
    /// @note Waits at most 460 s, 18 s for a device that answers nothing.
    virtual _error saveConfig() = 0;

protected:
    ~QW_KEYBOARD_Base() = default;
};

/// Slots 0 to 35: the interface of a keyboard with nothing of its own.
struct PLAIN_QW_KEYBOARD_Base : QW_KEYBOARD_Base {
    /// Slot 35. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 |
    ///                   41 00 | 41 00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    /// @note The goodbye waits at most 12 s, 9 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PLAIN_QW_KEYBOARD_Base() = default;
};

/// QW210 has 139 LEDs in direct lighting (0 to 138) and 168 in a custom effect; a zone matrix has 192 bytes per
/// zone, 768 in all.
struct PYRUX_QW210_Base : PLAIN_QW_KEYBOARD_Base {
protected:
    ~PYRUX_QW210_Base() = default;
};
/// @note Waits at most 238 s, 18 s for a device that answers nothing: the effects are read, by 54 commands.
PYRUX_API PYRUX_QW210_Base* qw210(const char* path);

/// QW220 has 137 LEDs in direct lighting (0 to 136) and 168 in a custom effect; a zone matrix has 160 bytes per
/// zone, 640 in all.
struct PYRUX_QW220_Base : PLAIN_QW_KEYBOARD_Base {
protected:
    ~PYRUX_QW220_Base() = default;
};
/// @note Waits at most 238 s, 18 s for a device that answers nothing: the effects are read, by 54 commands.
PYRUX_API PYRUX_QW220_Base* qw220(const char* path);
