#pragma once

#include <utility>
#include <windows.h>

namespace pyrux::platform {

/// Owns a kernel object's handle; both of the system's values for "none" count as none.
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE owned) : value(owned) {}
    Handle(Handle&& other) noexcept : value(std::exchange(other.value, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(value, other.value);
        return *this;
    }
    ~Handle()
    {
        if (*this)
            CloseHandle(value);
    }

    HANDLE get() const { return value; }
    explicit operator bool() const { return value && value != INVALID_HANDLE_VALUE; }

private:
    HANDLE value = nullptr;
};

} // namespace pyrux::platform
