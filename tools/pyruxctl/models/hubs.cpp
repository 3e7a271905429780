#include "lighting.h"
#include "models.h"

#include "pyrux/glow_hub.h"
#include "pyrux/glow_hub2.h"
#include "pyrux/play_dock.h"
#include "pyrux/tint_hub.h"

namespace pyrux::ctl {

template <>
struct Layout<ArgbEffectParam> {
    using R = ArgbEffectParam;
    static constexpr Field fields[]{FIELD(port),       FIELD(mode), FIELD(colorSource), FIELD(speed),
                                    FIELD(brightness), FIELD(red),  FIELD(green),       FIELD(blue)};
};

template <>
struct Layout<ArgbCustomBuffer> {
    using R = ArgbCustomBuffer;
    static constexpr Field fields[]{FIELD(leds)};
};

template <>
struct Layout<GlowHub2Effect> {
    using R = GlowHub2Effect;
    static constexpr Field fields[]{FIELD(effect), FIELD(param), FIELD(speed), FIELD(flag)};
};

template <>
struct Layout<TintMultiColor> {
    using R = TintMultiColor;
    static constexpr Field fields[]{FIELD(ports), FIELD(brightness)};
};

template <>
struct Layout<TintLayer> {
    using R = TintLayer;
    static constexpr Field fields[]{FIELD(mode), FIELD(speed), FIELD(red), FIELD(green), FIELD(blue)};
};

template <>
struct Layout<TintMultilayer> {
    using R = TintMultilayer;
    static constexpr Field fields[]{FIELD(layers), FIELD(red), FIELD(green), FIELD(blue), FIELD(last)};
};

template <>
struct Layout<PlayDockEffect> {
    using R = PlayDockEffect;
    static constexpr Field fields[]{
        FIELD(effect), FIELD(speed),      FIELD(rate),       FIELD(red),         FIELD(green),
        FIELD(blue),   FIELD(colorCount), FIELD(effectData), FIELD(effectExtra), FIELD(effectTail)};
};

// The value of an event is the effect that was chosen, or the colour that was set.

template <>
struct EventOf<ArgbEffectNotify> {
    static std::uint32_t event(const ArgbEffectNotify& record) { return record.channel; }
    static std::uint32_t value(const ArgbEffectNotify& record) { return record.mode; }
};

template <>
struct EventOf<GlowHub2Notify> {
    static std::uint32_t event(const GlowHub2Notify& record) { return record.kind; }
    static std::uint32_t value(const GlowHub2Notify& record)
    {
        return record.kind == 0 ? record.effect : record.rgbMode;
    }
};

template <>
struct EventOf<PlayDockNotify> {
    static std::uint32_t event(const PlayDockNotify& record) { return record.kind; }
    static std::uint32_t value(const PlayDockNotify& record)
    {
        const PlayDockEffect& effect = record.effect;
        return record.kind == 0 ? effect.effect
                                : std::uint32_t(effect.red << 16 | effect.green << 8 | effect.blue);
    }
};

namespace {

/// Operations of `DEV_LIGHTING` of a device with so many zones.
template <class Interface, std::size_t zones>
std::vector<Operation> lightingOperations()
{
    return {
        OP(setLightingInit),
        OP(setLightingUninit),
        portColorOperation<Interface, LightingPortColorOf<zones>>(),
        ledFrameOperation<Interface>(),
        OP(setLightingTurnOff),
    };
}

/// The frames of this hub's LEDs, which it does not have.
_error doNothing(PYRUX_TINT_Base& host)
{
    return host.setSyncLightingData({});
}

std::vector<Operation> join(std::vector<Operation> all, const std::vector<Operation>& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

Model glow_hub()
{
    using Interface = PYRUX_GLOW_Base;
    return {
        .command = "glow_hub",
        .summary = "Lighting controller GLOW HUB",
        .identities = {{"GLOWHUB", 0x3A7E, 0x1011}},
        .events = {{0, "effect of the ports changed"}, {1, "effect of the strip changed"}},
        .operations = join(lightingOperations<Interface, 5>(),
                           {
                               OP(setEffectParameter, in("record")),
                               OP(getEffectParameter, inout("record", {"port"})),
                               OP(setEffectCustomize, in("port"), in("buffer")),
                               OP(getEffectCustomize, in("port"), out("buffer")),
                               OP(setRgbLightingEffectParameter, in("record")),
                               OP(getRgbLightingEffectParameter, out("record")),
                               OP(setLEDSize, in("port"), in("a"), in("b")),
                               OP(getLEDSize, in("port"), out("a"), out("b")),
                               OP(setUID, in<32>("bytes")),
                               OP(getUID, out<32>("bytes")),
                               OP(setIdentify, in("value")),
                               OP(saveConfig),
                               OP(resetConfig, in("value")),
                               OP(resetData),
                               OP(getVersion, out("version")),
                               OP(setMultilayerMode, in("value")),
                               OP(getMultilayerMode, out("value")),
                               OP(setEffectMode, in("port"), in("mode")),
                               OP(getEffectMode, in("port"), out("mode")),
                               OP(setRgbEffectMode, in("port"), in("mode")),
                               OP(getRgbEffectMode, in("port"), out("mode")),
                               OP(exit_device, in("unplugged")),
                           }),
        .calls = hostCalls<Interface>(),
    };
}

Model glow2()
{
    using Interface = PYRUX_GLOW2_Base;
    return {
        .command = "glow2",
        .summary = "Lighting controller GLOW HUB II",
        .identities = {{"GLOWHUB2", 0x3A7E, 0x1007}},
        .events = {{0, "effect of the ports changed"},
                   {1, "effect of the strip changed"},
                   {2, "audio changed"}},
        .operations = join(lightingOperations<Interface, 5>(),
                           {
                               OP(setARGBEffectParameter, in("port"), in("effect"), in("level")),
                               OP(getARGBEffectParameter, in("port"), out<5>("bytes")),
                               OP(setARGBCustomize, in("port"), in<36>("rgb")),
                               OP(getARGBCustomize, in("port"), out<36>("rgb")),
                               OP(setLayerSelect, in("value")),
                               OP(setRGBEffectParameter, in("mode"), in("param"), in("speed")),
                               OP(getRGBEffectParameter, out("mode"), out("param"), out("speed")),
                               OP(setRGBCustomize, in<3>("rgb")),
                               OP(getRGBCustomize, out<3>("rgb")),
                               OP(setRGBFollowParameter, in("source"), in("flag"), in("speed")),
                               OP(getRGBFollowParameter, out("source"), out("flag"), out("speed")),
                               OP(exit_device, in("unplugged")),
                           }),
        .calls = hostCalls<Interface>(),
    };
}

Model playdock()
{
    using Interface = PYRUX_PLAY_DOCK_Base;
    return {
        .command = "playdock",
        .summary = "Desk dock PLAY DOCK",
        .identities = {{"PLAY_DOCK", 0x3A7E, 0x0153}},
        .events = {{0, "effect of top and body changed"}, {1, "colour of the bottom changed"}},
        .operations = join(lightingOperations<Interface, 3>(),
                           {
                               OP(setEffectParameter, in("effect")),
                               OP(getEffectParameter, out("effect")),
                               OP(getAnyEffectParameter, inout("effect", {"effect"})),
                               OP(setEffectMode, in("zone"), in("effect")),
                               OP(getEffectMode, in("zone"), out("effect")),
                               OP(setBottomEffectParameter, in<3>("rgb")),
                               OP(getBottomEffectParameter, out<3>("rgb")),
                               OP(saveConfig),
                               OP(resetConfig, in("value")),
                               OP(resetData),
                               OP(getVersion, out("version")),
                               OP(exit_device, in("unplugged")),
                           }),
        .calls = hostCalls<Interface>(),
    };
}

Model tint_hub()
{
    using Interface = PYRUX_TINT_Base;
    return {
        .command = "tint_hub",
        .summary = "Lighting controller TINT HUB",
        .identities = {{"TINTHUB", 0x3A7E, 0x004F}},
        .events = {},
        .operations =
            join(lightingOperations<Interface, 4>(),
                 {
                     OP(setEffectParameter, in("mode"), in("speed"), in("brightness"), in<3>("rgb")),
                     OP(getEffectParameter, inout("mode"), out("speed"), out("brightness"), out<3>("rgb")),
                     OP(getEffectStandardMode, out("mode")),
                     OP(setPortMultiColor, in("colors")),
                     OP(getPortMultiColor, out("colors")),
                     OP(setEffectMultilayer, in("effect")),
                     OP(exit_device, in("unplugged")),
                 }),
        .calls = silentHostCalls<Interface, doNothing>(),
    };
}

} // namespace

std::vector<Model> models_of::hubs()
{
    return {glow_hub(), glow2(), playdock(), tint_hub()};
}

} // namespace pyrux::ctl
