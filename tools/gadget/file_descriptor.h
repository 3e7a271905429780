#pragma once

#include <unistd.h>
#include <utility>

namespace pyrux::gadget {

/// Owns a file descriptor.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int owned) : number(owned) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(number, other.number);
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }
    void reset()
    {
        if (number >= 0)
            close(number);
        number = -1;
    }

private:
    int number = -1;
};

} // namespace pyrux::gadget
