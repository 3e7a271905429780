#pragma once

#include "pyrux/records.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// A receiver that has been opened to be asked which device it is linked with.
class ReceiverLink {
public:
    virtual ~ReceiverLink() = default;

    /// The number of the linked product, 0 for none. Of a mouse's receiver: 1 RD245, 2 RD220, 3 RD115; of a
    /// keyboard's: 1 QW310, 2 QX310.
    virtual std::uint32_t linkedProduct() = 0;
};

/// What receivers speak.
enum class ReceiverKind { mouse, keyboard };

/// Opens a receiver by a path that ends in the receivers' mark; null when it cannot be opened or asked.
using ReceiverLinkMaker = std::function<std::unique_ptr<ReceiverLink>(const std::string& path)>;

/// Knows which wireless receiver belongs to which models, which model is linked at the moment, and the
/// releases of both, so that hosts see the device behind a receiver instead of the receiver. Safe from any
/// thread.
class DongleDeviceManger {
public:
    /// The library's one, made at its first use and never destroyed.
    static DongleDeviceManger& instance();
    DongleDeviceManger();

    /// Says how receivers of a kind are opened. Until then those count as not linked.
    void setLinkMaker(ReceiverKind kind, ReceiverLinkMaker maker);

    /// Gives a receiver the identity of the device that it is linked with.
    /// @param vid,pid  in and out; they stay where nothing is linked
    /// @param removal  the stored link decides; otherwise the receiver is asked
    /// @return 0: the identity is no receiver's; else 1 or more
    int ChangeDonglePidVidToDevicePidVid(std::uint16_t& vid, std::uint16_t& pid, bool removal,
                                         std::string_view path);

    /// Asks a receiver which device it is linked with and stores the answer.
    void GetMutiDeviceLinkStatus(std::string_view receiver, std::string_view path);

    /// Asks the attached receivers that have not been asked yet, except the one of a path. Looks at what is
    /// attached only the first time: those that come later are asked as they come.
    void scanReceivers(std::string_view except);

    /// Corrects the records of an enumeration: those of linked receivers become their devices', with the
    /// receivers' mark after the path. Takes down the releases of all.
    void correctRecords(std::vector<DevInfoRecord>& records);

    /// The releases under a model's name as of the last enumeration: low half the receiver's, high half the
    /// device's, 0 where one is missing.
    std::uint32_t versionWord(const std::string& name) const;

    /// The link entry of a receiver: 1 when it was seen without a linked device, else 0.
    std::uint32_t linkEntry(std::string_view path) const;

    /// Stores which device a receiver is linked with; an identity that it cannot be linked with is left out.
    /// @return whether it was stored
    bool setLink(std::string_view path, std::uint16_t vid, std::uint16_t pid);

    /// The receiver stays, without a linked device.
    void removeLink(std::string_view path);

    /// The receiver has gone.
    void forget(std::string_view path);

private:
    std::vector<std::string> modelsOf(std::string_view receiver) const;
    std::uint32_t askForProduct(ReceiverKind kind, std::string_view path);
    void store(std::string_view path, std::uint32_t identity);

    mutable std::mutex mutex;
    const std::map<std::string, std::string, std::less<>> dongleToDevice; ///< Receiver to model.
    /// Receiver to models, in the order of their product numbers from 1.
    const std::map<std::string, std::vector<std::string>, std::less<>> universalDongles;
    /// By the receiver's path in upper case without its mark: 1 while nothing is linked, 0 while something
    /// is.
    std::map<std::string, std::uint32_t, std::less<>> linkState;
    /// By the same key: vendor id in the high half, product id in the low half; 0 while nothing is linked.
    std::map<std::string, std::uint32_t, std::less<>> linkedDevice;
    std::map<std::string, std::uint32_t, std::less<>> versions; ///< By row name.
    std::array<ReceiverLinkMaker, 2> makers;                    ///< By kind.
    bool scanned = false;
};

} // namespace pyrux
