#pragma once

/// The calling convention of an object's operations: the platform's own for member functions, which is the C
/// one except on 32-bit Windows.
#if defined(_WIN32) && defined(__i386__)
#define PYRUX_MEMBER_CALL __attribute__((thiscall))
// It stands on the type of a function that is no member, which g++ takes and finds odd.
#pragma GCC diagnostic ignored "-Wattributes"
#else
#define PYRUX_MEMBER_CALL
#endif
