#include "tests/support/notifications.h"

#include "tests/support/scripted_device.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace pyrux::test {
namespace {

std::mutex mutex;
std::condition_variable arrived;
std::vector<NotifyRecord> records;

} // namespace

void Notifications::callback(NotifyRecord* record)
{
    const std::lock_guard lock(mutex);
    records.push_back(*record);
    arrived.notify_all();
}

void Notifications::clear()
{
    const std::lock_guard lock(mutex);
    records.clear();
}

std::string Notifications::await(std::size_t count)
{
    std::unique_lock lock(mutex);
    arrived.wait_for(lock, patience, [&] { return records.size() >= count; });
    std::string text;
    for (const NotifyRecord& record : records) {
        if (!text.empty())
            text += ' ';
        text += std::to_string(record.event) + ":" + std::to_string(record.value);
    }
    return text;
}

} // namespace pyrux::test
