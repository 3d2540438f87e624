#include "platform/linux/devices/NodeFacts.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace platform {
namespace {

constexpr unsigned largestBus = 0xFF;
constexpr unsigned largestPort = 0xF;

/// Takes a decimal number from the start of `text`.
std::optional<unsigned> takeNumber(std::string_view& text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Tells a node from the others that share its location and ids; empty for the usual one.
std::string distinction(const NodeFacts& facts) {
    const UsbLocation location = usbLocation(facts.usb->sysname);
    std::string text;
    if (!location.exact)
        text += fmt::format("@{}:", facts.usb->sysname);
    if (facts.usb->function != 0 || facts.index != 0)
        text += fmt::format("{:02x}{:02x}", facts.usb->function, facts.index);
    return text;
}

}  // namespace

UsbLocation usbLocation(std::string_view sysname) {
    const bool rootHub = takePrefix(sysname, "usb");
    const auto bus = takeNumber(sysname);
    if (!bus || *bus > largestBus)
        return {};
    UsbLocation location{*bus << 24, true};
    if (rootHub)
        return sysname.empty() ? location : UsbLocation{};
    if (!takePrefix(sysname, "-"))
        return {};
    int shift = 20;
    do {
        const auto port = takeNumber(sysname);
        if (!port || *port == 0)
            return {};
        location.exact = location.exact && *port <= largestPort && shift >= 0;
        if (shift >= 0)
            location.id |= std::min(*port, largestPort) << shift;
        shift -= 4;
    } while (takePrefix(sysname, "."));
    return sysname.empty() ? location : UsbLocation{};
}

bool NodeFacts::operator==(const NodeFacts& other) const {
    return syspath == other.syspath && uniqueIdentifier(*this) == uniqueIdentifier(other) &&
           displayName(*this) == displayName(other);
}

std::string uniqueIdentifier(const NodeFacts& facts) {
    // These end in letters that no reader of two hexadecimal ids takes for those of a USB device.
    if (!facts.hasVideo)
        return fmt::format("{}:{}:sound", facts.parent, facts.index);
    if (!facts.usb)
        return fmt::format("{}:{}:video4linux", facts.parent, facts.index);
    return fmt::format("0x{:08x}{}{:04x}{:04x}", usbLocation(facts.usb->sysname).id,
                       distinction(facts), facts.usb->vendorID, facts.usb->productID);
}

std::string displayName(const NodeFacts& facts) {
    const std::string_view product = facts.usb ? trimmed(facts.usb->product) : std::string_view();
    const std::string_view driver = trimmed(facts.driverName);
    const bool isFunction = facts.usb && facts.usb->function != 0;
    std::string_view name = isFunction ? trimmed(facts.usb->interfaceName) : std::string_view();
    if (name.empty())
        name = !product.empty() ? product : driver;
    if (name.empty())
        return facts.sysname;
    const bool further = isFunction || facts.index != 0;
    return further ? fmt::format("{} ({})", name, facts.sysname) : std::string(name);
}

}  // namespace platform
