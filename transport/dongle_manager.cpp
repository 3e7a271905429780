#include "transport/dongle_manager.h"

#include "core/catalogue.h"
#include "core/log.h"
#include "transport/device_path.h"
#include "transport/enumeration.h"

#include <algorithm>
#include <utility>

namespace pyrux {

namespace {

constexpr std::array<std::string_view, 2> keyboardReceivers{"QW310_UNIVERSAL_DONGLE",
                                                            "QX310_UNIVERSAL_DONGLE"};

ReceiverKind kindOf(std::string_view receiver)
{
    return std::ranges::count(keyboardReceivers, receiver) ? ReceiverKind::keyboard : ReceiverKind::mouse;
}

const DeviceRow* receiverRow(std::uint16_t vid, std::uint16_t pid)
{
    const auto row = std::ranges::find_if(deviceCatalogue, [&](const DeviceRow& one) {
        return one.vid == vid && one.pid == pid && (one.flags & RowFlag::receiver);
    });
    return row == deviceCatalogue.end() ? nullptr : &*row;
}

std::string keyOf(std::string_view path)
{
    return upperCased(withoutDongleMark(path));
}

std::uint32_t identityWord(std::uint16_t vid, std::uint16_t pid)
{
    return std::uint32_t{vid} << 16 | pid;
}

/// Numbers that a mouse's receiver has for its mice.
constexpr std::uint32_t mouseProducts = 3;

/// The two kinds' words, for a receiver that cannot be asked.
constexpr std::array<std::string_view, 2> notAsked{"RD245_obj == NULL, connect_device=0",
                                                   "QW310_obj == NULL, connect_device=0"};

} // namespace

DongleDeviceManger& DongleDeviceManger::instance()
{
    static auto& manager = *new DongleDeviceManger;
    return manager;
}

DongleDeviceManger::DongleDeviceManger()
    : dongleToDevice{{"RD245_DONGLE", "RD245"}, {"RD220_DONGLE", "RD220"}, {"RD115_DONGLE", "RD115"}},
      universalDongles{{"UNIVERSAL_DONGLE", {"RD245", "RD220", "RD115"}},
                       {"QW310_UNIVERSAL_DONGLE", {"QW310", "QX310"}},
                       {"QX310_UNIVERSAL_DONGLE", {"QW310", "QX310"}}}
{
}

void DongleDeviceManger::setLinkMaker(ReceiverKind kind, ReceiverLinkMaker maker)
{
    const std::lock_guard lock(mutex);
    makers[std::size_t(kind)] = std::move(maker);
}

std::vector<std::string> DongleDeviceManger::modelsOf(std::string_view receiver) const
{
    if (const auto one = dongleToDevice.find(receiver); one != dongleToDevice.end())
        return {one->second};
    const auto several = universalDongles.find(receiver);
    return several == universalDongles.end() ? std::vector<std::string>{} : several->second;
}

std::uint32_t DongleDeviceManger::askForProduct(ReceiverKind kind, std::string_view path)
{
    ReceiverLinkMaker maker;
    {
        const std::lock_guard lock(mutex);
        maker = makers[std::size_t(kind)];
    }
    const std::string marked = std::string(withoutDongleMark(path)).append(dongleMark);
    const std::unique_ptr<ReceiverLink> link = maker ? maker(marked) : nullptr;
    if (!link) {
        debugText(notAsked[std::size_t(kind)]);
        return 0;
    }
    return link->linkedProduct();
}

void DongleDeviceManger::store(std::string_view path, std::uint32_t identity)
{
    const std::lock_guard lock(mutex);
    const std::string key = keyOf(path);
    linkState[key] = identity == 0;
    linkedDevice[key] = identity;
}

void DongleDeviceManger::GetMutiDeviceLinkStatus(std::string_view receiver, std::string_view path)
{
    debugText("GetMutiDeviceLinkStatus");
    const std::vector<std::string> models = modelsOf(receiver);
    std::uint32_t product = askForProduct(kindOf(receiver), path);
    // The receiver of one mouse counts as linked with it, whichever of the mice it tells.
    if (models.size() == 1 && product >= 1 && product <= mouseProducts)
        product = 1;
    std::uint16_t vid = 0;
    std::uint16_t pid = 0;
    if (product >= 1 && product <= models.size())
        findVidPidByName(models[product - 1], vid, pid);
    store(path, identityWord(vid, pid));
}

int DongleDeviceManger::ChangeDonglePidVidToDevicePidVid(std::uint16_t& vid, std::uint16_t& pid, bool removal,
                                                         std::string_view path)
{
    debugText("DongleDeviceManger::ChangeDonglePidVidToDevicePidVid");
    const DeviceRow* row = receiverRow(vid, pid);
    if (!row)
        return 0;
    if (!removal)
        GetMutiDeviceLinkStatus(row->name, path);
    const std::lock_guard lock(mutex);
    const auto linked = linkedDevice.find(keyOf(path));
    if (linked != linkedDevice.end() && linked->second != 0) {
        vid = std::uint16_t(linked->second >> 16);
        pid = std::uint16_t(linked->second);
    }
    return 1;
}

void DongleDeviceManger::scanReceivers(std::string_view except)
{
    {
        const std::lock_guard lock(mutex);
        if (std::exchange(scanned, true))
            return;
    }
    const std::string exceptKey = keyOf(except);
    for (const HidEntry& entry : enumerateHid(0, 0)) {
        const DeviceRow* row = receiverRow(entry.vid, entry.pid);
        if (!row || row->interface != entry.interface)
            continue;
        const std::string key = keyOf(entry.path);
        {
            const std::lock_guard lock(mutex);
            if (key == exceptKey || linkState.contains(key))
                continue;
        }
        GetMutiDeviceLinkStatus(row->name, entry.path);
    }
}

void DongleDeviceManger::correctRecords(std::vector<DevInfoRecord>& records)
{
    std::map<std::string, std::uint32_t, std::less<>> words;
    // A device without a receiver, and the partner of one that is not linked.
    for (const DevInfoRecord& record : records)
        if (!receiverRow(record.vid, record.pid))
            words.try_emplace(findNameByVidPid(record.vid, record.pid), std::uint32_t{record.release} << 16);
    for (DevInfoRecord& record : records) {
        const DeviceRow* row = receiverRow(record.vid, record.pid);
        if (!row)
            continue;
        ChangeDonglePidVidToDevicePidVid(record.vid, record.pid, false, record.path);
        const bool linked = identityWord(record.vid, record.pid) != identityWord(row->vid, row->pid);
        std::string partner;
        if (linked)
            partner = findNameByVidPid(record.vid, record.pid);
        else if (const auto one = dongleToDevice.find(row->name); one != dongleToDevice.end())
            partner = one->second;
        const auto release = words.find(partner);
        const std::uint32_t word =
            record.release | (release == words.end() ? 0 : release->second & 0xFFFF0000U);
        words[row->name] = word;
        if (!partner.empty())
            words[partner] = word;
        const std::string path = std::string(record.path).append(dongleMark);
        if (linked && path.size() < sizeof record.path)
            std::ranges::copy(path, record.path);
    }
    const std::lock_guard lock(mutex);
    versions = std::move(words);
}

std::uint32_t DongleDeviceManger::versionWord(const std::string& name) const
{
    const std::lock_guard lock(mutex);
    const auto word = versions.find(name);
    return word == versions.end() ? 0 : word->second;
}

std::uint32_t DongleDeviceManger::linkEntry(std::string_view path) const
{
    const std::lock_guard lock(mutex);
    const auto entry = linkState.find(keyOf(path));
    return entry == linkState.end() ? 0 : entry->second;
}

bool DongleDeviceManger::setLink(std::string_view path, std::uint16_t vid, std::uint16_t pid)
{
    const PathIdentity receiver = identityOf(withoutDongleMark(path));
    const DeviceRow* row = receiverRow(receiver.vid, receiver.pid);
    const std::string model = findNameByVidPid(vid, pid);
    if (!row)
        return false;
    const std::vector<std::string> models = modelsOf(row->name);
    const bool possible = std::ranges::count(models, model) > 0;
    if (possible)
        store(path, identityWord(vid, pid));
    return possible;
}

void DongleDeviceManger::removeLink(std::string_view path)
{
    store(path, 0);
}

void DongleDeviceManger::forget(std::string_view path)
{
    const std::lock_guard lock(mutex);
    const std::string key = keyOf(path);
    linkState.erase(key);
    linkedDevice.erase(key);
}

} // namespace pyrux
