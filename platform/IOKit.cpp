#include "platform/IOKit.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include "platform/backend/Backends.h"
#include "platform/backend/UsbBackend.h"

namespace {

using platform::UsbDevice;
using platform::UsbInterface;

std::optional<std::int32_t> property(const UsbDevice& device, std::string_view key) {
    if (key == "idVendor")
        return device.vendorID();
    if (key == "idProduct")
        return device.productID();
    return std::nullopt;
}

bool matches(const UsbDevice& device, const IOMatchingDictionary& matching) {
    return std::ranges::all_of(matching.properties, [&](const auto& wanted) {
        return property(device, wanted.first) == wanted.second.value;
    });
}

std::vector<io_service_t> matchingServices(const IOMatchingDictionary& matching) {
    std::vector<io_service_t> found;
    platform::UsbBackend* usb = platform::backends().usb;
    if (usb == nullptr || matching.className != "IOUSBDevice")
        return found;
    for (auto& device : usb->devices())
        if (matches(*device, matching))
            found.push_back(std::move(device));
    return found;
}

bool fits(std::uint16_t wanted, std::uint8_t value) {
    return wanted == kIOUSBFindInterfaceDontCare || wanted == value;
}

bool fits(const IOUSBFindInterfaceRequest& request, const UsbInterface::Descriptor& descriptor) {
    return fits(request.bInterfaceClass, descriptor.interfaceClass) &&
           fits(request.bInterfaceSubClass, descriptor.interfaceSubClass) &&
           fits(request.bInterfaceProtocol, descriptor.interfaceProtocol) &&
           fits(request.bAlternateSetting, descriptor.alternateSetting);
}

/// The step that both kinds of QueryInterface share; `Node` is what `Interface` operates on.
template <class Node, class Interface>
IOReturn query(const io_service_t& service, bool typesAgree,
               std::unique_ptr<Interface>& interface) {
    interface.reset();
    const auto node = std::dynamic_pointer_cast<Node>(service);
    if (!node || !typesAgree)
        return ENOTSUP;
    const IOReturn status = node->queryInterface();
    if (status == kIOReturnSuccess)
        interface = std::make_unique<Interface>(node);
    return status;
}

}  // namespace

CFNumber CFNumberCreate(CFNumberType /*type*/, std::int32_t value) {
    return {value};
}

void CFDictionarySetValue(IOMatchingDictionary& dictionary, std::string_view key, CFNumber number) {
    std::erase_if(dictionary.properties, [&](const auto& entry) { return entry.first == key; });
    dictionary.properties.emplace_back(key, number);
}

IOMatchingDictionary IOServiceMatching(std::string_view className) {
    return {std::string(className), {}};
}

io_service_t IOServiceGetMatchingService(mach_port_t port, const IOMatchingDictionary& matching) {
    io_iterator_t iterator = IOServiceGetMatchingServices(port, matching);
    return IOIteratorNext(iterator);
}

io_iterator_t IOServiceGetMatchingServices(mach_port_t /*port*/,
                                           const IOMatchingDictionary& matching) {
    return io_iterator_t(matchingServices(matching));
}

io_service_t IOIteratorNext(io_iterator_t& iterator) {
    const bool atEnd = iterator.next_ == iterator.services_.size();
    return atEnd ? nullptr : iterator.services_[iterator.next_++];
}

IOReturn IOObjectRelease(io_service_t& service) {
    service.reset();
    return kIOReturnSuccess;
}

IOUSBDeviceStruct942::IOUSBDeviceStruct942(std::shared_ptr<UsbDevice> device)
    : device_(std::move(device)) {}

IOReturn IOUSBDeviceStruct942::GetLocationID(std::uint32_t& locationID) const {
    locationID = device_->locationID();
    return kIOReturnSuccess;
}

IOReturn IOUSBDeviceStruct942::CreateInterfaceIterator(const IOUSBFindInterfaceRequest& request,
                                                       io_iterator_t& iterator) const {
    std::vector<std::shared_ptr<UsbInterface>> interfaces;
    const IOReturn status = device_->interfaces(interfaces);
    std::vector<io_service_t> found;
    for (auto& interface : interfaces)
        if (status == kIOReturnSuccess && fits(request, interface->descriptor()))
            found.push_back(std::move(interface));
    iterator = io_iterator_t(std::move(found));
    return status;
}

IOUSBInterfaceStruct190::IOUSBInterfaceStruct190(std::shared_ptr<UsbInterface> interface)
    : interface_(std::move(interface)) {}

IOReturn IOUSBInterfaceStruct190::USBInterfaceOpen() {
    return interface_->open();
}

IOReturn IOUSBInterfaceStruct190::ControlRequest(std::uint8_t pipe, IOUSBDevRequest& request) {
    return pipe == 0 ? interface_->controlRequest(request) : EINVAL;
}

IOReturn IOUSBInterfaceStruct190::USBInterfaceClose() {
    return interface_->close();
}

IOCFPlugInInterface::IOCFPlugInInterface(io_service_t service, const CFUUIDBytes& type)
    : service_(std::move(service)), type_(type) {}

IOReturn IOCFPlugInInterface::QueryInterface(
    const CFUUIDBytes& wanted, std::unique_ptr<IOUSBDeviceStruct942>& interface) const {
    const bool typesAgree =
        type_ == kIOUSBDeviceUserClientTypeID && wanted == kIOUSBDeviceInterfaceID;
    return query<UsbDevice>(service_, typesAgree, interface);
}

IOReturn IOCFPlugInInterface::QueryInterface(
    const CFUUIDBytes& wanted, std::unique_ptr<IOUSBInterfaceStruct190>& interface) const {
    const bool typesAgree =
        type_ == kIOUSBInterfaceUserClientTypeID && wanted == kIOUSBInterfaceInterfaceID;
    return query<UsbInterface>(service_, typesAgree, interface);
}

IOReturn IOCreatePlugInInterfaceForService(const io_service_t& service,
                                           const CFUUIDBytes& plugInType,
                                           const CFUUIDBytes& interfaceType,
                                           std::unique_ptr<IOCFPlugInInterface>& plugIn,
                                           std::int32_t& score) {
    plugIn.reset();
    score = 0;
    if (!service)
        return ENODEV;
    if (interfaceType != kIOCFPlugInInterfaceID)
        return ENOTSUP;
    const IOReturn status = service->createPlugIn();
    if (status == kIOReturnSuccess)
        plugIn = std::make_unique<IOCFPlugInInterface>(service, plugInType);
    return status;
}
