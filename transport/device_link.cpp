#include "transport/device_link.h"

#include "core/log.h"

#include <utility>

namespace pyrux {

namespace {

ExchangeRules exchangeRules(const LinkRules& rules)
{
    return {.wait = rules.wait,
            .timeoutText = rules.timeoutText,
            .logCategory = rules.model.logCategory,
            .reportSize = rules.reportSize,
            .runningMatchCount = rules.runningMatchCount,
            .gap = rules.gap};
}

ReaderRules readerRules(const LinkRules& rules)
{
    return {.reportSize = rules.reportSize,
            .survivedFailures = rules.survivedFailures,
            .failureText = rules.failureText.empty() ? std::string(rules.model.model).append(" USB fail")
                                                     : std::string(rules.failureText),
            .logCategory = rules.failureLogged ? std::optional(rules.model.logCategory) : std::nullopt};
}

} // namespace

DeviceLink::DeviceLink(const std::string& path, const LinkRules& rules, Clock& clock)
    : channel(path), exchange(channel, exchangeRules(rules), clock), reportSize(rules.reportSize),
      usable(channel.open(rules.mode)), reader(channel, readerRules(rules))
{
    if (!usable || !rules.paceMs)
        return;
    frames.emplace(clock);
    frames->paceDelayMs = *rules.paceMs;
    frames->packetSize = rules.reportSize;
    frames->setChannel(&channel);
}

void DeviceLink::start(std::function<void(const Reply&)> take)
{
    usable = reader.start(std::move(take), [this] { exchange.endReplies(); });
}

void DeviceLink::write(std::initializer_list<Report> commands)
{
    for (const Report& command : commands)
        write(command);
}

void DeviceLink::setUnplugged(bool unplugged)
{
    gone = unplugged;
    if (unplugged && frames)
        frames->stopWithin(std::chrono::milliseconds(0)); // frames that wait are not sent any more
}

bool DeviceLink::endThreads(std::chrono::steady_clock::time_point deadline)
{
    if (frames)
        frames->stopWithin(std::chrono::milliseconds(0));
    const bool readerEnded = reader.stopWithin(timeUntil(deadline));
    channel.closeChannel();
    return (!frames || frames->stopWithin(timeUntil(deadline))) && readerEnded;
}

} // namespace pyrux
