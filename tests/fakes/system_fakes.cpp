#include "tests/fakes/system_fakes.h"

#include <cstdlib>
#include <cstring>

using pyrux::test::SystemFakes;
using Step = SystemFakes::GpuStep;

namespace {

SystemFakes fakes;
char first;
char second;

int failing(Step step)
{
    return fakes.failing == step ? -1 : 0;
}

// NVAPI's functions, which have no names of their own.

std::int32_t nvapiStart()
{
    return failing(Step::start);
}

std::int32_t nvapiList(void** cards, std::uint32_t* count)
{
    if (failing(Step::list))
        return -1;
    cards[0] = &first;
    cards[1] = &second;
    *count = fakes.failing == Step::empty ? 0 : 2;
    return 0;
}

std::int32_t nvapiLoad(void* card, std::uint32_t* words)
{
    if (failing(Step::load) || card != &first || words[0] != 0x10088)
        return -1;
    for (int i = 1; i < 34; ++i)
        words[i] = 0xEEEEEE00 + static_cast<std::uint32_t>(i);
    words[3] = 0xABCDEF00 | fakes.gpuLoad;
    return 0;
}

} // namespace

PYRUX_FAKE SystemFakes* pyrux::test::systemFakes()
{
    return &fakes;
}

PYRUX_FAKE void installTWInjectHook(std::uint32_t thread, void* window, int kind)
{
    ++fakes.hookCalls;
    fakes.hookThread = thread;
    fakes.hookWindow = window;
    fakes.hookKind = kind;
}

PYRUX_FAKE void* nvapi_QueryInterface(std::uint32_t number)
{
    if (number == fakes.missing)
        return nullptr;
    switch (number) {
    case 0x0150E828:
        return reinterpret_cast<void*>(nvapiStart);
    case 0xE5AC921F:
        return reinterpret_cast<void*>(nvapiList);
    case 0x189A1FDF:
        return reinterpret_cast<void*>(nvapiLoad);
    default:
        return nullptr;
    }
}

PYRUX_FAKE int nvmlInit_v2()
{
    if (failing(Step::start))
        return 9;
    ++fakes.gpuStarts;
    return 0;
}

PYRUX_FAKE int nvmlShutdown()
{
    --fakes.gpuStarts;
    return 0;
}

PYRUX_FAKE int nvmlDeviceGetHandleByIndex_v2(unsigned int index, void** card)
{
    *card = index == 0 ? &first : &second;
    return failing(Step::list) || fakes.failing == Step::empty ? 2 : 0;
}

PYRUX_FAKE int nvmlDeviceGetUtilizationRates(void* card, unsigned int* rates)
{
    rates[0] = card == &first ? fakes.gpuLoad : 99;
    rates[1] = 98;
    return failing(Step::load) ? 3 : 0;
}

PYRUX_FAKE void* XOpenDisplay(const char*)
{
    return fakes.display ? (++fakes.open, &first) : nullptr;
}

PYRUX_FAKE int XCloseDisplay(void*)
{
    return --fakes.open;
}

PYRUX_FAKE unsigned long XDefaultRootWindow(void*)
{
    return 77;
}

PYRUX_FAKE unsigned long XInternAtom(void*, const char* name, int)
{
    return fakes.atom && std::strcmp(name, "_XKB_RULES_NAMES") == 0 ? 5 : 0;
}

PYRUX_FAKE int XGetWindowProperty(void*, unsigned long window, unsigned long property, long, long, int,
                                  unsigned long, unsigned long* type, int* format, unsigned long* count,
                                  unsigned long* left, unsigned char** data)
{
    if (!fakes.property || window != 77 || property != 5)
        return 1;
    *type = 31;
    *format = 8;
    *count = fakes.rulesLength;
    *left = 0;
    *data = static_cast<unsigned char*>(std::malloc(fakes.rulesLength + 1));
    std::memcpy(*data, fakes.rules, fakes.rulesLength);
    (*data)[fakes.rulesLength] = 0;
    ++fakes.open;
    return 0;
}

PYRUX_FAKE int XFree(void* block)
{
    std::free(block);
    return --fakes.open;
}

PYRUX_FAKE int XkbGetState(void*, unsigned int, unsigned char* state)
{
    *state = fakes.group;
    return fakes.stateResult;
}
