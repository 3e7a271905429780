#pragma once

#include "core/models.h"
#include "devices/keyboards/effect_image.h"
#include "devices/keyboards/effect_memory.h"
#include "devices/keyboards/keyboard_layout.h"
#include "devices/keyboards/profiles.h"
#include "devices/keyboards/status_effect.h"
#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "transport/device_link.h"

#include <cstdint>
#include <mutex>

namespace pyrux {

/// A keyboard's effects: the copy that hosts see, the device's memory behind it, and which of them is shown.
/// Operations wait for each other; each that hosts call first reads a stale copy anew.
class Effects {
public:
    /// @param model   whose category the log lines have
    /// @param status  the status effect; null: there is none among the effects
    Effects(DeviceLink& link, const ModelRow& model, const EffectLayout& layout, ProfileState& state,
            StatusEffect* status);

    /// Reads the copy and the current effect. Without either the keyboard works too.
    void load();

    _error setMode(std::uint8_t id);
    _error getMode(std::uint8_t* id);
    _error setGeneral(const EffectRecord* effect);
    _error getGeneral(std::uint8_t id, EffectRecord* effect);
    _error getGeneralAll(EffectRecord* all);
    _error setCustom(EffectRecord* effect, const std::uint8_t* matrix);
    _error getCustom(EffectRecord* effect, std::uint8_t* matrix);
    _error setMultilayer(const EffectRecord* layers);
    _error getMultilayer(EffectRecord* layers);
    _error setMultizone(const EffectRecord* zones, const std::uint8_t* zoneMatrix);
    _error getMultizone(EffectRecord* zones, std::uint8_t* zoneMatrix);

    /// Writes the copy to the device and lets it keep everything for good.
    _error save();

    /// Shows the current effect out of the copy. Deliberate: a stale one too.
    _error showAgain();

private:
    template <class Work>
    _error fresh(Work work);

    // With `mutex` held:
    _error reload();
    EffectMemory::Loaded readCopy();
    std::uint8_t readMode();
    _error select(std::uint8_t id);
    _error preview(std::uint8_t effect, const EffectData& data);

    DeviceLink& link;
    const ModelRow& model;
    const EffectLayout& layout;
    ProfileState& state;
    StatusEffect* const status;
    EffectMemory memory;
    std::mutex mutex; ///< Guards `copy`; held while it is read, shown or written.
    EffectCache copy;
};

} // namespace pyrux
