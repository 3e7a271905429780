#pragma once

/// Marks an export of the library: C linkage, the platform's C calling convention, an undecorated name.
#if defined(_WIN32)
#define PYRUX_API extern "C"
#else
#define PYRUX_API extern "C" __attribute__((visibility("default")))
#endif

/// The assembler's name of a C function.
#define PYRUX_ASM_NAME(name) PYRUX_ASM_NAME_(__USER_LABEL_PREFIX__, name)
#define PYRUX_ASM_NAME_(prefix, name) PYRUX_ASM_TEXT(prefix) name
#define PYRUX_ASM_TEXT(text) #text
