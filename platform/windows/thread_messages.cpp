#include "platform/thread_messages.h"

#include <algorithm>
#include <windows.h>

namespace pyrux::platform {
namespace {

using Clock = std::chrono::steady_clock;

class SystemQueue final : public ThreadMessages {
public:
    SystemQueue()
    {
        // The first look makes the thread's queue.
        MSG message;
        PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
    }

    std::optional<ThreadMessage> wait(std::chrono::milliseconds limit) override
    {
        const auto deadline = Clock::now() + limit;
        for (;;) {
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
                if (!message.hwnd)
                    return ThreadMessage{message.message, message.wParam,
                                         static_cast<std::uintptr_t>(message.lParam)};
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0)
                return {};
            MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(std::min<long long>(left, 3600'000)),
                                        QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        }
    }
};

} // namespace

ThreadId currentThreadId()
{
    return GetCurrentThreadId();
}

bool postThreadMessage(ThreadId to, const ThreadMessage& message)
{
    return PostThreadMessageW(to, message.number, message.first, static_cast<LPARAM>(message.second)) !=
           FALSE;
}

std::unique_ptr<ThreadMessages> ThreadMessages::open()
{
    return std::make_unique<SystemQueue>();
}

} // namespace pyrux::platform
