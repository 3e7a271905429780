#include "interfaces.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <span>
#include <utility>

namespace pyrux::gadget {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Three buttons, two axes, a wheel; the first three bytes are the boot protocol's.
constexpr std::uint8_t mouseReport[]{
    0x09, 0x01, // Usage (Pointer)
    0xA1, 0x00, // Collection (Physical)
    0x05, 0x09, //   Usage Page (Button)
    0x19, 0x01, //   Usage Minimum (1)
    0x29, 0x03, //   Usage Maximum (3)
    0x15, 0x00, //   Logical Minimum (0)
    0x25, 0x01, //   Logical Maximum (1)
    0x75, 0x01, //   Report Size (1)
    0x95, 0x03, //   Report Count (3)
    0x81, 0x02, //   Input (Data, Variable, Absolute)
    0x75, 0x05, //   Report Size (5)
    0x95, 0x01, //   Report Count (1)
    0x81, 0x01, //   Input (Constant)
    0x05, 0x01, //   Usage Page (Generic Desktop)
    0x09, 0x30, //   Usage (X)
    0x09, 0x31, //   Usage (Y)
    0x09, 0x38, //   Usage (Wheel)
    0x15, 0x81, //   Logical Minimum (-127)
    0x25, 0x7F, //   Logical Maximum (127)
    0x75, 0x08, //   Report Size (8)
    0x95, 0x03, //   Report Count (3)
    0x81, 0x06, //   Input (Data, Variable, Relative)
    0xC0,       // End Collection
};

/// The boot protocol's report: modifiers, a reserved byte, six keys.
constexpr std::uint8_t keyboardReport[]{
    0x05, 0x07, // Usage Page (Keyboard)
    0x19, 0xE0, // Usage Minimum (Left Control)
    0x29, 0xE7, // Usage Maximum (Right GUI)
    0x15, 0x00, // Logical Minimum (0)
    0x25, 0x01, // Logical Maximum (1)
    0x75, 0x01, // Report Size (1)
    0x95, 0x08, // Report Count (8)
    0x81, 0x02, // Input (Data, Variable, Absolute)
    0x75, 0x08, // Report Size (8)
    0x95, 0x01, // Report Count (1)
    0x81, 0x01, // Input (Constant)
    0x19, 0x00, // Usage Minimum (0)
    0x29, 0x65, // Usage Maximum (101)
    0x25, 0x65, // Logical Maximum (101)
    0x95, 0x06, // Report Count (6)
    0x81, 0x00, // Input (Data, Array)
};

/// Volume and player keys.
constexpr std::uint8_t consumerReport[]{
    0x15, 0x00,       // Logical Minimum (0)
    0x26, 0xFF, 0x03, // Logical Maximum (1023)
    0x19, 0x00,       // Usage Minimum (0)
    0x2A, 0xFF, 0x03, // Usage Maximum (1023)
    0x75, 0x10,       // Report Size (16)
    0x95, 0x01,       // Report Count (1)
    0x81, 0x00,       // Input (Data, Array)
};

/// What a collection has that has no reports of its own. Reports without an id are one per direction and
/// interface, so that further collections could only lengthen them: theirs is a feature byte.
constexpr std::uint8_t featureReport[]{
    0x15, 0x00,       // Logical Minimum (0)
    0x26, 0xFF, 0x00, // Logical Maximum (255)
    0x75, 0x08,       // Report Size (8)
    0x95, 0x01,       // Report Count (1)
    0x09, 0x01,       // Usage (1)
    0xB1, 0x02,       // Feature (Data, Variable, Absolute)
};

/// Collections with reports of their own kind.
struct Kind {
    std::uint16_t usagePage;
    std::uint16_t usage;
    std::uint8_t subclass;
    std::uint8_t protocol;
    std::uint8_t reportLength;
    std::span<const std::uint8_t> reports;
};

constexpr Kind kinds[]{
    {0x0001, 0x0002, 1, 2, 4, mouseReport},
    {0x0001, 0x0006, 1, 1, 8, keyboardReport},
    {0x000C, 0x0001, 0, 0, 2, consumerReport},
};

/// An interface number that the model leaves out: nothing goes in or out.
constexpr std::uint16_t placeHolderPage = 0xFFFF;

constexpr std::uint16_t firstVendorPage = 0xFF00;

/// Null: one of the maker's own, with the reports that the model tells of.
const Kind* kindOf(const sim::Collection& collection)
{
    const auto* const found = std::ranges::find_if(kinds, [&](const Kind& kind) {
        return kind.usagePage == collection.usagePage && kind.usage == collection.usage;
    });
    return collection.reports.empty() && found != std::end(kinds) ? found : nullptr;
}

bool isVendorPage(const sim::Collection& collection)
{
    return collection.usagePage >= firstVendorPage;
}

void append(Bytes& to, std::span<const std::uint8_t> bytes)
{
    to.insert(to.end(), bytes.begin(), bytes.end());
}

/// A short item of one or two data bytes: `tag` is the one with one byte.
void appendItem(Bytes& to, std::uint8_t tag, std::uint16_t value)
{
    if (value <= 0xFF)
        append(to, std::initializer_list<std::uint8_t>{tag, std::uint8_t(value)});
    else
        append(to, std::initializer_list<std::uint8_t>{std::uint8_t(tag + 1), std::uint8_t(value),
                                                       std::uint8_t(value >> 8)});
}

void appendCollection(Bytes& to, const sim::Collection& collection, std::span<const std::uint8_t> reports)
{
    appendItem(to, 0x05, collection.usagePage);
    appendItem(to, 0x09, collection.usage);
    append(to, std::initializer_list<std::uint8_t>{0xA1, 0x01}); // Collection (Application)
    append(to, reports);
    to.push_back(0xC0); // End Collection
}

/// The items of one direction: the count, where it is another than before, a usage, and the main item.
void appendDirection(Bytes& to, std::size_t count, std::size_t& countBefore, std::uint8_t usage,
                     std::uint8_t main)
{
    if (count == 0)
        return;
    if (std::exchange(countBefore, count) != count)
        appendItem(to, 0x95, std::uint16_t(count));
    append(to, std::initializer_list<std::uint8_t>{0x09, usage, main, 0x02}); // Data, Variable, Absolute
}

/// Reports of bytes.
Bytes itemsOf(std::span<const sim::ReportPair> reports)
{
    Bytes items{0x15, 0x00,       // Logical Minimum (0)
                0x26, 0xFF, 0x00, // Logical Maximum (255)
                0x75, 0x08};      // Report Size (8)
    std::size_t count = 0;
    for (const sim::ReportPair& pair : reports) {
        if (pair.id != 0)
            append(items, std::initializer_list<std::uint8_t>{0x85, pair.id}); // Report ID
        appendDirection(items, pair.input, count, 1, 0x81);
        appendDirection(items, pair.output, count, 2, 0x91);
    }
    return items;
}

/// Gives an interface a collection with these reports.
void add(HidInterface& to, const sim::Collection& collection, std::span<const sim::ReportPair> reports)
{
    appendCollection(to.descriptor, collection, itemsOf(reports));
    for (const sim::ReportPair& pair : reports) {
        const std::size_t longest = std::max(pair.input, pair.output) + (pair.id != 0);
        to.reportLength = std::max(to.reportLength, std::uint16_t(longest));
        to.hasOutputEndpoint = to.hasOutputEndpoint || pair.output > 0;
        to.hasIds = to.hasIds || pair.id != 0;
    }
}

HidInterface placeHolderInterface()
{
    HidInterface result;
    result.reportLength = 1;
    appendCollection(result.descriptor, {.usagePage = placeHolderPage, .usage = 1}, featureReport);
    return result;
}

HidInterface interfaceWith(const sim::Identity& identity, std::span<const sim::Collection> collections)
{
    if (collections.empty())
        return placeHolderInterface();
    HidInterface result;
    result.number = collections.front().interface;
    for (const sim::Collection& one : collections)
        result.carriesModel = result.carriesModel || !sim::reportsOf(identity, one).empty();
    const bool stated =
        std::ranges::any_of(collections, [](const auto& one) { return !one.reports.empty(); });
    // Where the model tells of no reports, an interface with a vendor page is there for its commands,
    // whatever stands beside it.
    auto carrier = stated ? collections.end() : std::ranges::find_if(collections, isVendorPage);
    if (!stated && carrier == collections.end())
        carrier = collections.begin();
    for (auto one = collections.begin(); one != collections.end(); ++one) {
        const Kind* const kind = kindOf(*one);
        if (!one->reports.empty()) {
            add(result, *one, one->reports);
        } else if (one == carrier && !kind) {
            add(result, *one, std::array{sim::ReportPair()});
        } else if (one == carrier) {
            result.subclass = kind->subclass;
            result.protocol = kind->protocol;
            result.reportLength = kind->reportLength;
            appendCollection(result.descriptor, *one, kind->reports);
        } else {
            appendCollection(result.descriptor, *one, featureReport);
        }
    }
    return result;
}

std::size_t numberOf(int interface)
{
    return std::size_t(std::max(interface, 0));
}

} // namespace

std::vector<HidInterface> interfacesOf(const sim::Identity& identity)
{
    std::vector<std::vector<sim::Collection>> byNumber(controlInterfaceOf(identity) + 1);
    for (const sim::Collection& collection : identity.collections) {
        const std::size_t number = numberOf(collection.interface);
        byNumber.resize(std::max(byNumber.size(), number + 1));
        byNumber[number].push_back(collection);
    }
    std::vector<HidInterface> interfaces;
    for (const auto& collections : byNumber)
        interfaces.push_back(interfaceWith(identity, collections));
    return interfaces;
}

std::size_t controlInterfaceOf(const sim::Identity& identity)
{
    return numberOf(identity.controlInterface);
}

} // namespace pyrux::gadget
