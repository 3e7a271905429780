#include "lighting.h"
#include "models.h"

#include "pyrux/strandhub.h"

namespace pyrux::ctl {

template <>
struct Layout<StrandEffectParam> {
    using R = StrandEffectParam;
    static constexpr Field fields[]{FIELD(effect),     FIELD(speed), FIELD(parameterA),
                                    FIELD(parameterB), FIELD(red),   FIELD(green),
                                    FIELD(blue),       FIELD(port),  FIELD(subPort)};
};

template <>
struct Layout<StrandStoredEffect> {
    using R = StrandStoredEffect;
    static constexpr Field fields[]{FIELD(effect), FIELD(speed), FIELD(parameterA), FIELD(red),
                                    FIELD(green),  FIELD(blue),  FIELD(parameterB), FIELD(flagA)};
};

template <>
struct Layout<StrandEffectTable> {
    using R = StrandEffectTable;
    static constexpr Field fields[]{FIELD(port), FIELD(subPort), FIELD(effects)};
};

template <>
struct Layout<StrandCustomBuffer> {
    using R = StrandCustomBuffer;
    static constexpr Field fields[]{FIELD(leds)};
};

template <>
struct Layout<StrandGen1Size> {
    using R = StrandGen1Size;
    static constexpr Field fields[]{FIELD(port), FIELD(chainLength), FIELD(leds)};
};

template <>
struct Layout<StrandGen2Size> {
    using R = StrandGen2Size;
    static constexpr Field fields[]{FIELD(port), FIELD_COUNTED(leds, count)};
};

template <>
struct Layout<StrandRemapPair> {
    using R = StrandRemapPair;
    static constexpr Field fields[]{FIELD(discovered), FIELD(wanted)};
};

template <>
struct Layout<StrandRemap> {
    using R = StrandRemap;
    static constexpr Field fields[]{FIELD(port), FIELD(pairs)};
};

template <>
struct Layout<StrandOverlayParam> {
    using R = StrandOverlayParam;
    static constexpr Field fields[]{FIELD(port), FIELD(parameters), FIELD(last)};
};

namespace {

template <class Interface>
Model strandController(std::string_view command, std::string_view summary, Identity identity)
{
    return {
        .command = command,
        .summary = summary,
        .identities = {identity},
        .events = {},
        .operations =
            {
                OP(setLightingInit),
                OP(setLightingUninit),
                portColorOperation<Interface, StrandPortColor>(),
                ledFrameOperation<Interface>(),
                OP(setLightingTurnOff),
                OP(setEffectParameter, in("effect")),
                OP(getEffectParameter, inout("effect", {"port", "subPort"})),
                OP(getAnyEffectParameter, inout("effect", {"effect", "port", "subPort"})),
                OP(getAllEffectParameter, inout("table", {"port", "subPort"})),
                OP(setEffectCustomize, in("zone"), in("buffer")),
                OP(getEffectCustomize, in("zone"), out("buffer")),
                OP(setGen1Size, in("size")),
                OP(getGen1Size, inout("size", {"port"})),
                OP(getGen2Size, inout("size", {"port"})),
                OP(remapGen2SubPort, in("remap")),
                OP(setUID, in("port"), in<32>("id")),
                OP(getUID, out<32>("id")),
                OP(setIdentify, in("port"), in("subPort")),
                OP(saveConfig),
                OP(resetConfig, in("value")),
                OP(resetData),
                OP(getVersion, out("version")),
                OP(setARGBType, in("port"), in("type")),
                OP(getARGBType, in("port"), out("type")),
                OP(refreshPortInfo, in("port")),
                OP(setMultilayerMode, in("value")),
                OP(getMultilayerMode, out("value")),
                OP(setEffectMode, inout("place", {"port", "subPort"}), in("effect")),
                OP(getEffectMode, inout("place", {"port", "subPort"}), out("effect")),
                OP(setOverlayMode, in("value")),
                OP(getOverlayMode, out("value")),
                OP(setOverlayEffectParameter, in("overlay")),
                OP(getOverlayEffectParameter, inout("overlay", {"port"})),
                OP(getOverlayEffectParameterAll, out<3>("overlays")),
                OP(exit_device, in("unplugged")),
            },
        .calls = hostCalls<Interface>(),
    };
}

} // namespace

std::vector<Model> models_of::strandControllers()
{
    return {
        strandController<PYRUX_STRANDHUB_Base>("strandhub", "Strand controller STRANDHUB",
                                               {"STRANDHUB", 0x3A7E, 0x0173}),
        strandController<PYRUX_STRANDHUBV2_Base>("strandhubv2", "Strand controller STRANDHUBV2",
                                                 {"STRANDHUBV2", 0x3A7E, 0x01C9}),
    };
}

} // namespace pyrux::ctl
