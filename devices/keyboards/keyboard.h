#pragma once

#include "devices/keyboards/effect_image.h"
#include "devices/keyboards/effect_memory.h"
#include "devices/keyboards/keyboard_layout.h"
#include "devices/keyboards/status_effect.h"
#include "devices/linked_device.h"
#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "pyrux/records.h"
#include "transport/notify.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pyrux {

/// The protocol of the wired keyboards: commands that wait for their reply, frames of a host that do not, and
/// the effects, of which there is a copy. Operations are those of the host interfaces, whose headers tell
/// arguments, results and bytes.
class Keyboard : public NotifyingDevice<NotifyCallback> {
public:
    Keyboard(const std::string& path, const KeyboardLayout& layout);
    ~Keyboard() override;

    void noteClosed() override;
    void sayGoodbye() override;
    bool endThreads(std::chrono::steady_clock::time_point deadline) override;

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const std::uint8_t* rgb);
    _error setSyncLightingData(const std::vector<DirectKeyColor>& list);
    _error setLightingTurnOff();

    _error changeProfileId(std::uint8_t id);
    _error getCurrProfileId(std::uint8_t* id);
    _error resetProfile(std::uint8_t scope);
    _error resetPartial(std::uint8_t part);
    _error setKeyMapping(std::uint32_t count, const KeyMapEntry* entries);
    _error setKeyMappingAll(const KeyMapTable* table);
    _error getKeyMappingAll(KeyMapTable* table);

    _error startRecordMacro();
    _error stopRecordMacro();
    _error setMacro(MacroRecord* record);
    _error getMacro(MacroRecord* record);
    _error getMacroAll(MacroList* list);
    _error clearMacro(std::uint8_t index);

    _error setEffectMode(std::uint8_t id);
    _error getEffectMode(std::uint8_t* id);
    _error setGeneralEffect(const EffectRecord* effect);
    _error getGeneralEffect(std::uint8_t id, EffectRecord* effect);
    _error getGeneralEffectAll(EffectRecord* effects);
    _error setCustomEffect(EffectRecord* effect, const std::uint8_t* matrix);
    _error getCustomEffect(EffectRecord* effect, std::uint8_t* matrix);
    _error setMultilayerEffect(const EffectRecord* effects);
    _error getMultilayerEffect(EffectRecord* effects);
    _error setMultizoneEffect(const EffectRecord* effects, const std::uint8_t* zoneMatrix);
    _error getMultizoneEffect(EffectRecord* effects, std::uint8_t* zoneMatrix);
    _error setSystemStatusEffect(const SystemStatusEffect* params);
    _error registerSystemStatusNotify(SystemStatusCallback callback);
    _error unRegisterSystemStatusNotify();
    _error saveConfig();

private:
    static constexpr std::size_t profiles = 5;
    static constexpr std::size_t plainMatch = DeviceLink::plainMatch; ///< A reply repeats the command,
    static constexpr std::size_t numberedMatch = 3;                   ///< its index or page too,
    static constexpr std::size_t mappingMatch = 4;                    ///< or the first byte of an action.

    _error get(const Report& command, Reply& reply, std::size_t matchLength = plainMatch);
    _error set(const Report& command, std::size_t matchLength = plainMatch);
    _error send(const Report& report) { return link.send(report); }
    void endEdit();

    _error readMacro(const Report& mode, MacroRecord& record);
    _error readMacroEvents(MacroRecord& record);
    _error deleteMacro(std::uint8_t index);

    // Effects. What is not a host operation wants `effectsLock` held.
    template <class Work>
    _error withEffects(Work work);
    _error reload();
    EffectMemory::Loaded loadEffects();
    std::uint8_t activeEffect() const;
    void setActiveEffect(std::uint8_t effect);
    std::uint8_t readEffectMode();
    _error selectEffect(std::uint8_t id);
    _error preview(std::uint8_t effect, const EffectData& data);

    _error beginStatusEffect(const SystemStatusEffect& params);
    _error prepareStatusFrames();
    void askService(std::uint32_t type);
    std::optional<std::uint32_t> statusShown() const;
    void showStatus(std::span<const std::uint8_t> frame);

    void take(const Reply& reply);
    bool takeChange(const Reply& reply);
    void takeKey(std::uint8_t number, std::uint8_t state);

    const KeyboardLayout& layout;
    EffectMemory effectMemory;
    Notify<SystemStatusCallback> statusNotify;

    std::atomic<std::uint8_t> currentProfile{0};
    std::array<std::atomic<std::uint8_t>, profiles> activeEffects{};
    std::atomic<std::uint32_t> statusEffectType{0};
    std::atomic<std::uint32_t> statusCompanion{0};
    std::atomic<bool> reloadNeeded{false}; ///< The device has other effects than `effects`.
    std::mutex effectsLock;                ///< Guards `effects`; held while they are read, shown or written.
    EffectCache effects;

    std::mutex frameLock; ///< Guards `lightingReport`.
    Report lightingReport;
    std::unique_ptr<StatusEffect> statusEffect; // goes before the link that it writes to
};

} // namespace pyrux
