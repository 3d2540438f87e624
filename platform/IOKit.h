#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/IOReturn.h"
#include "platform/IOUSBTypes.h"

namespace platform {
class UsbDevice;
class UsbInterface;
class UsbNode;
}  // namespace platform

// Numbers and dictionaries, as far as the matching of USB services needs them.

/// The kinds of number; a 32-bit signed one is all that matching takes.
enum CFNumberType { kCFNumberSInt32Type };

struct CFNumber {
    std::int32_t value = 0;
};

/// Makes a number of the type.
CFNumber CFNumberCreate(CFNumberType type, std::int32_t value);

/// What a service must be: its class, and the numbers that its properties must equal.
struct IOMatchingDictionary {
    std::string className;
    std::vector<std::pair<std::string, CFNumber>> properties;
};

/// Sets `key` of `dictionary`, in place of a number set before.
void CFDictionarySetValue(IOMatchingDictionary& dictionary, std::string_view key, CFNumber number);

// Universally unique identifiers of plug-in and interface types.

using CFUUIDBytes = std::array<std::uint8_t, 16>;

/// Asked of a plug-in for a device (9DC7B780-9EC0-11D4-A54F-000A27052861).
inline constexpr CFUUIDBytes kIOUSBDeviceUserClientTypeID{
    0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4, 0xA5, 0x4F, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
/// Asked of a plug-in for an interface (2D9786C6-9EF3-11D4-AD51-000A27052861).
inline constexpr CFUUIDBytes kIOUSBInterfaceUserClientTypeID{
    0x2D, 0x97, 0x86, 0xC6, 0x9E, 0xF3, 0x11, 0xD4, 0xAD, 0x51, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
/// The plug-in's own interface (C244E858-109C-11D4-91D4-0050E4C6426F).
inline constexpr CFUUIDBytes kIOCFPlugInInterfaceID{0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4,
                                                    0x91, 0xD4, 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F};
/// A device's interface (5C8187D0-9EF3-11D4-8B45-000A27052861).
inline constexpr CFUUIDBytes kIOUSBDeviceInterfaceID{
    0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4, 0x8B, 0x45, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
/// An interface's interface (73C97AE8-9EF3-11D4-B1D0-000A27052861).
inline constexpr CFUUIDBytes kIOUSBInterfaceInterfaceID{
    0x73, 0xC9, 0x7A, 0xE8, 0x9E, 0xF3, 0x11, 0xD4, 0xB1, 0xD0, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};

// Services: USB devices and their interfaces, as the bus knows them.

/// A service, or null for none. Dropping it is releasing it.
using io_service_t = std::shared_ptr<platform::UsbNode>;

/// Walks over services that were found once; dropping it is releasing it.
class io_iterator_t {
  public:
    io_iterator_t() = default;
    explicit io_iterator_t(std::vector<io_service_t> services) : services_(std::move(services)) {}

  private:
    friend io_service_t IOIteratorNext(io_iterator_t& iterator);

    std::vector<io_service_t> services_;
    std::size_t next_ = 0;
};

/// The one port through which services are asked for.
enum mach_port_t { kIOMasterPortDefault };

/// Returns a dictionary that matches every service of the class; "IOUSBDevice" is the one known.
IOMatchingDictionary IOServiceMatching(std::string_view className);

/// Returns the first matching service, or null.
io_service_t IOServiceGetMatchingService(mach_port_t port, const IOMatchingDictionary& matching);

/// Returns an iterator over all matching services, in the system's order.
io_iterator_t IOServiceGetMatchingServices(mach_port_t port, const IOMatchingDictionary& matching);

/// Returns the next service, or null at the end.
io_service_t IOIteratorNext(io_iterator_t& iterator);

/// Releases a service: the reference is null afterwards.
IOReturn IOObjectRelease(io_service_t& service);

// Plug-ins and the interfaces that they give out.

/// A USB device's operations. Dropping it is releasing it.
class IOUSBDeviceStruct942 {
  public:
    explicit IOUSBDeviceStruct942(std::shared_ptr<platform::UsbDevice> device);

    /// Stores the device's location id: bus number in the top byte, then a nibble for each port.
    IOReturn GetLocationID(std::uint32_t& locationID) const;

    /// Stores an iterator over the device's interfaces that fit `request`; 0, or an errno value.
    IOReturn CreateInterfaceIterator(const IOUSBFindInterfaceRequest& request,
                                     io_iterator_t& iterator) const;

  private:
    std::shared_ptr<platform::UsbDevice> device_;
};

/// The operations of one interface of a USB device. Dropping it is releasing it.
class IOUSBInterfaceStruct190 {
  public:
    explicit IOUSBInterfaceStruct190(std::shared_ptr<platform::UsbInterface> interface);

    /// Opens the interface for requests; 0, or an errno value.
    IOReturn USBInterfaceOpen();

    /// Sends `request` on `pipe` and waits for its end; 0, or an errno value. Only pipe 0, the
    /// default control pipe, takes such requests.
    IOReturn ControlRequest(std::uint8_t pipe, IOUSBDevRequest& request);

    /// Closes the interface; 0, or an errno value.
    IOReturn USBInterfaceClose();

  private:
    std::shared_ptr<platform::UsbInterface> interface_;
};

/// The go-between that turns a service into an interface. Dropping it is releasing it.
class IOCFPlugInInterface {
  public:
    IOCFPlugInInterface(io_service_t service, const CFUUIDBytes& type);

    /// Stores the interface that `wanted` names: 0, or an errno value and null.
    IOReturn QueryInterface(const CFUUIDBytes& wanted,
                            std::unique_ptr<IOUSBDeviceStruct942>& interface) const;
    IOReturn QueryInterface(const CFUUIDBytes& wanted,
                            std::unique_ptr<IOUSBInterfaceStruct190>& interface) const;

  private:
    io_service_t service_;
    CFUUIDBytes type_;
};

/// Stores a plug-in of the type `plugInType` for `service`: 0, or an errno value and null (ENODEV:
/// there is no service). `score` tells how well the plug-in fits; there is never more than one.
IOReturn IOCreatePlugInInterfaceForService(const io_service_t& service,
                                           const CFUUIDBytes& plugInType,
                                           const CFUUIDBytes& interfaceType,
                                           std::unique_ptr<IOCFPlugInInterface>& plugIn,
                                           std::int32_t& score);
