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

// The value of an event is the effect that was chosen, or the color that was set.

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

/// Operations of `DEV_LIGHTING` of a device with so many zones, and what each but the frames waits for.
template <class Interface, std::size_t zones>
std::vector<Operation> lightingOperations(Steps init, Steps uninit, Steps portColor = {}, Steps turnOff = {})
{
    return {
        OP(setLightingInit).waiting(init, init),
        OP(setLightingUninit).waiting(uninit, uninit),
        portColorOperation<Interface, LightingPortColorOf<zones>>().waiting(portColor, portColor),
        ledFrameOperation<Interface>(),
        OP(setLightingTurnOff).waiting(turnOff, turnOff),
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
        .operations = join(lightingOperations<Interface, 5>({0, 2}, {0, 2}),
                           {
                               OP(setEffectParameter, in("record")).waiting(0, 2),
                               OP(getEffectParameter, inout("record", {"port"})).waiting(2),
                               OP(setEffectCustomize, in("port"), in("buffer")).waiting(0, 1),
                               OP(getEffectCustomize, in("port"), out("buffer")).waiting({3, 0}, {1, 0}),
                               OP(setRgbLightingEffectParameter, in("record")).waiting(0, 2),
                               OP(getRgbLightingEffectParameter, out("record")).waiting(2),
                               OP(setLEDSize, in("port"), in("a"), in("b")).waiting(0, 1),
                               OP(getLEDSize, in("port"), out("a"), out("b")).waiting(1),
                               OP(setUID, in<32>("bytes")).waiting(0, 1),
                               OP(getUID, out<32>("bytes")).waiting(1),
                               OP(setIdentify, in("value")).waiting(0, 1),
                               OP(saveConfig).waiting(0, 1),
                               OP(resetConfig, in("value")).waiting(0, 1),
                               OP(resetData).waiting(2, 3),
                               OP(getVersion, out("version")).waiting(1),
                               OP(setMultilayerMode, in("value")).waiting(0, 1),
                               OP(getMultilayerMode, out("value")).waiting(1),
                               OP(setEffectMode, in("port"), in("mode")).waiting(0, 2),
                               OP(getEffectMode, in("port"), out("mode")).waiting(2),
                               OP(setRgbEffectMode, in("port"), in("mode")).waiting(0, 2),
                               OP(getRgbEffectMode, in("port"), out("mode")).waiting(2),
                               OP(exit_device, in("unplugged")),
                           }),
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 1000, .opening = {.all = {2, 0}, .unanswered = {2, 0}}},
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
        .operations = join(lightingOperations<Interface, 5>({}, {0, 1}),
                           {
                               OP(setARGBEffectParameter, in("port"), in("effect"), in("level")).waiting(1),
                               OP(getARGBEffectParameter, in("port"), out<5>("bytes")).waiting(1),
                               OP(setARGBCustomize, in("port"), in<36>("rgb")),
                               OP(getARGBCustomize, in("port"), out<36>("rgb")).waiting(1),
                               OP(setLayerSelect, in("value")).waiting(0, 1),
                               OP(setRGBEffectParameter, in("mode"), in("param"), in("speed")).waiting(1),
                               OP(getRGBEffectParameter, out("mode"), out("param"), out("speed")).waiting(1),
                               OP(setRGBCustomize, in<3>("rgb")).waiting(1, 1),
                               OP(getRGBCustomize, out<3>("rgb")).waiting(1),
                               OP(setRGBFollowParameter, in("source"), in("flag"), in("speed")).waiting(0, 1),
                               OP(getRGBFollowParameter, out("source"), out("flag"), out("speed")).waiting(1),
                               OP(exit_device, in("unplugged")).waiting(0, 1),
                           }),
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 1000, .opening = {.all = {0, 1}, .unanswered = {0, 1}}},
    };
}

Model playdock()
{
    using Interface = PYRUX_PLAY_DOCK_Base;
    return {
        .command = "playdock",
        .summary = "Desk dock PLAY DOCK",
        .identities = {{"PLAY_DOCK", 0x3A7E, 0x0153}},
        .events = {{0, "effect of top and body changed"}, {1, "color of the bottom changed"}},
        .operations = join(lightingOperations<Interface, 3>({1, 0}, {1, 0}),
                           {
                               OP(setEffectParameter, in("effect")).waiting(1),
                               OP(getEffectParameter, out("effect")).waiting(1),
                               OP(getAnyEffectParameter, inout("effect", {"effect"})).waiting(1),
                               OP(setEffectMode, in("zone"), in("effect")).waiting(1),
                               OP(getEffectMode, in("zone"), out("effect")).waiting(1),
                               OP(setBottomEffectParameter, in<3>("rgb")).waiting(1),
                               OP(getBottomEffectParameter, out<3>("rgb")).waiting(1),
                               OP(saveConfig).waiting(1),
                               OP(resetConfig, in("value")).waiting(1),
                               OP(resetData).waiting(1),
                               OP(getVersion, out("version")).waiting(1),
                               OP(exit_device, in("unplugged")),
                           }),
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 1000, .gapMs = 32},
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
        .operations = join(
            lightingOperations<Interface, 4>({0, 3}, {0, 1}, {0, 1}, {0, 1}),
            {
                OP(setEffectParameter, in("mode"), in("speed"), in("brightness"), in<3>("rgb")).waiting(0, 5),
                OP(getEffectParameter, inout("mode"), out("speed"), out("brightness"), out<3>("rgb"))
                    .waiting(1),
                OP(getEffectStandardMode, out("mode")).waiting(1),
                OP(setPortMultiColor, in("colors")).waiting(0, 5),
                OP(getPortMultiColor, out("colors")).waiting(2, 1),
                OP(setEffectMultilayer, in("effect")).waiting(0, 25),
                OP(exit_device, in("unplugged")).waiting(0, 2),
            }),
        .calls = silentHostCalls<Interface, doNothing>(),
        .timing = {.replyMs = 1500, .readerMs = 2900},
    };
}

} // namespace

std::vector<Model> models_of::hubs()
{
    return {glow_hub(), glow2(), playdock(), tint_hub()};
}

} // namespace pyrux::ctl
