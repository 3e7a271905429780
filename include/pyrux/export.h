#pragma once

/// Marks an export of the library: C linkage, the platform's C calling convention, an undecorated name.
#if defined(_WIN32)
#define PYRUX_API extern "C"
#else
#define PYRUX_API extern "C" __attribute__((visibility("default")))
#endif

/// On a declaration: the exported name, where it differs, and the number of the format of a printf, for the compilers
/// that know such a thing. PYRUX_API_NAMES tells that this one does.
#if !defined(_MSC_VER)
#define PYRUX_API_NAMES
#define PYRUX_API_NAME(name) __asm__(PYRUX_ASM_NAME_(__USER_LABEL_PREFIX__, name))
#define PYRUX_API_FORMAT(number) __attribute__((format(printf, number, number + 1)))
#define PYRUX_ASM_NAME_(prefix, name) PYRUX_ASM_TEXT_(prefix) name
#define PYRUX_ASM_TEXT_(text) #text
#endif
