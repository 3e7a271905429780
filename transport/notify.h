#pragma once

#include <mutex>
#include <utility>

namespace pyrux {

/// A callback that a device calls with its events. Once `set` has returned, the callback that was there
/// before is not called any more. The mutex is recursive, so that a callback can take itself away.
template <class Callback>
class Notify {
public:
    void set(Callback to)
    {
        const std::lock_guard lock(mutex);
        callback = to;
    }

    template <class... Arguments>
    void call(Arguments&&... arguments)
    {
        const std::lock_guard lock(mutex);
        if (callback)
            callback(std::forward<Arguments>(arguments)...);
    }

private:
    std::recursive_mutex mutex;
    Callback callback = nullptr;
};

} // namespace pyrux
