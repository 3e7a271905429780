#include "platform/thread_messages.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>
#include <windows.h>

namespace pyrux::platform {
namespace {

using Clock = std::chrono::steady_clock;

/// What stands in the system's queues of those messages of which the newest counts.
struct Standing {
    struct Message {
        ThreadMessage posted; ///< As the system has it.
        ThreadMessage newest;
        std::size_t sender;
    };
    std::mutex mutex;
    std::map<ThreadId, std::vector<Message>> byThread;
};

Standing& standing()
{
    // Never destroyed: threads may post while the process ends.
    static auto& all = *new Standing;
    return all;
}

bool post(ThreadId to, const ThreadMessage& message)
{
    return PostThreadMessageW(to, message.number, message.first, static_cast<LPARAM>(message.second)) !=
           FALSE;
}

bool postNewest(ThreadId to, const ThreadMessage& message, std::size_t sender)
{
    Standing& all = standing();
    const std::lock_guard lock(all.mutex);
    const auto thread = all.byThread.find(to);
    if (thread == all.byThread.end())
        return post(to, message); // a queue that is not opened here
    auto& messages = thread->second;
    const auto older = std::ranges::find_if(messages, [&](const Standing::Message& one) {
        return one.posted.number == message.number && one.sender == sender;
    });
    if (older != messages.end()) {
        older->newest = message;
        return true;
    }
    if (messages.size() >= mostMessages || !post(to, message))
        return false;
    messages.push_back({message, message, sender});
    return true;
}

/// What a message of the system's queue has become since it was posted.
ThreadMessage newestOf(const ThreadMessage& taken)
{
    Standing& all = standing();
    const std::lock_guard lock(all.mutex);
    const auto thread = all.byThread.find(GetCurrentThreadId());
    if (thread == all.byThread.end())
        return taken;
    auto& messages = thread->second;
    const auto found = std::ranges::find_if(messages, [&](const Standing::Message& one) {
        return one.posted.number == taken.number && one.posted.first == taken.first &&
               one.posted.second == taken.second;
    });
    if (found == messages.end())
        return taken;
    const ThreadMessage newest = found->newest;
    messages.erase(found);
    return newest;
}

class SystemQueue final : public ThreadMessages {
public:
    SystemQueue()
    {
        // The first look makes the thread's queue.
        MSG message;
        PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
        Standing& all = standing();
        const std::lock_guard lock(all.mutex);
        all.byThread[thread];
    }
    ~SystemQueue() override
    {
        Standing& all = standing();
        const std::lock_guard lock(all.mutex);
        all.byThread.erase(thread);
    }
    SystemQueue(const SystemQueue&) = delete;
    SystemQueue& operator=(const SystemQueue&) = delete;

    std::optional<ThreadMessage> wait(std::chrono::milliseconds limit) override
    {
        const auto deadline = Clock::now() + limit;
        for (;;) {
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
                if (!message.hwnd)
                    return newestOf(
                        {message.message, message.wParam, static_cast<std::uintptr_t>(message.lParam)});
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

private:
    const ThreadId thread = GetCurrentThreadId();
};

} // namespace

ThreadId currentThreadId()
{
    return GetCurrentThreadId();
}

bool postThreadMessage(ThreadId to, const ThreadMessage& message, Post how, std::size_t sender)
{
    return how == Post::newest ? postNewest(to, message, sender) : post(to, message);
}

std::unique_ptr<ThreadMessages> ThreadMessages::open()
{
    return std::make_unique<SystemQueue>();
}

} // namespace pyrux::platform
