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
                OP(setLightingInit).waiting(0, 1),
                OP(setLightingUninit).waiting(0, 1),
                portColorOperation<Interface, StrandPortColor>(),
                ledFrameOperation<Interface>(),
                OP(setLightingTurnOff),
                OP(setEffectParameter, in("effect")).waiting(1),
                OP(getEffectParameter, inout("effect", {"port", "subPort"})).waiting(1),
                OP(getAnyEffectParameter, inout("effect", {"effect", "port", "subPort"})).waiting(1),
                OP(getAllEffectParameter, inout("table", {"port", "subPort"})).waiting({2, 0}, {1, 0}),
                OP(setEffectCustomize, in("zone"), in("buffer")).waiting({4, 0}, {1, 0}),
                OP(getEffectCustomize, in("zone"), out("buffer")).waiting({4, 0}, {1, 0}),
                OP(setGen1Size, in("size")).waiting(1),
                OP(getGen1Size, inout("size", {"port"})).waiting(1),
                OP(getGen2Size, inout("size", {"port"})).waiting(1),
                OP(remapGen2SubPort, in("remap")).waiting(1),
                OP(setUID, in("port"), in<32>("id")).waiting(1),
                OP(getUID, out<32>("id")).waiting(1),
                OP(setIdentify, in("port"), in("subPort")).waiting(1),
                OP(saveConfig).waiting(1),
                OP(resetConfig, in("value")).waiting(1),
                OP(resetData).waiting(1),
                OP(getVersion, out("version")).waiting(1),
                OP(setARGBType, in("port"), in("type")).waiting({2, 0}, {1, 0}),
                OP(getARGBType, in("port"), out("type")).waiting(1),
                OP(refreshPortInfo, in("port")).waiting(1),
                OP(setMultilayerMode, in("value")).waiting(1),
                OP(getMultilayerMode, out("value")).waiting(1),
                OP(setEffectMode, inout("place", {"port", "subPort"}), in("effect")).waiting({2, 0}, {1, 0}),
                OP(getEffectMode, inout("place", {"port", "subPort"}), out("effect")).waiting(1),
                OP(setOverlayMode, in("value")).waiting(1),
                OP(getOverlayMode, out("value")).waiting(1),
                OP(setOverlayEffectParameter, in("overlay")).waiting({2, 0}, {1, 0}),
                OP(getOverlayEffectParameter, inout("overlay", {"port"})).waiting(1),
                OP(getOverlayEffectParameterAll, out<3>("overlays")).waiting({3, 0}, {1, 0}),
                OP(exit_device, in("unplugged")),
            },
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 1000, .gapMs = 32},
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
