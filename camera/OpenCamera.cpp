#include <optional>
#include <string>
#include <utility>

#include "camera/OpenCamera.h"
#include "camera/StatusText.h"
#include "camera/UVCCameraControl.h"
#include "platform/NSLog.h"

std::unique_ptr<UVCCameraControl> g_uvcCamera;

namespace {

/// The video-control interface, of any protocol and any alternate setting.
constexpr IOUSBFindInterfaceRequest videoControlInterface{
    CC_VIDEO, SC_VIDEOCONTROL, kIOUSBFindInterfaceDontCare, kIOUSBFindInterfaceDontCare};

/// How far the opening of a device came.
enum OpenResult : std::int32_t { opened = 0, noPlugIn = 1, noDeviceInterface = 2 };

/// Stores the device interface of `service`; logs why when there is none.
OpenResult openDevice(const io_service_t& service,
                      std::unique_ptr<IOUSBDeviceStruct942>& deviceInterface) {
    std::unique_ptr<IOCFPlugInInterface> plugIn;
    std::int32_t score = 0;
    const IOReturn created = IOCreatePlugInInterfaceForService(
        service, kIOUSBDeviceUserClientTypeID, kIOCFPlugInInterfaceID, plugIn, score);
    if (created != kIOReturnSuccess) {
        NSLog("CameraControl Error: IOCreatePlugInInterfaceForService returned 0x%08x.",
              statusBits(created));
        return noPlugIn;
    }
    const IOReturn queried = plugIn->QueryInterface(kIOUSBDeviceInterfaceID, deviceInterface);
    if (queried != kIOReturnSuccess) {
        NSLog("CameraControl Error: QueryInterface returned %d.\n", queried);
        return noDeviceInterface;
    }
    return opened;
}

/// Splits off the last `count` characters of `text`; nothing when there are fewer.
std::optional<std::string> takeLastCharacters(std::string_view& text, int count) {
    std::size_t start = text.size();
    while (count > 0 && start > 0) {
        --start;
        const bool continues = (static_cast<unsigned char>(text[start]) & 0xC0U) == 0x80U;
        count -= continues ? 0 : 1;
    }
    if (count > 0)
        return std::nullopt;
    std::string taken(text.substr(start));
    text = text.substr(0, start);
    return taken;
}

}  // namespace

std::int32_t HexToInt(const char* text) {
    std::uint32_t accumulator = 0;
    for (; *text != '\0'; ++text) {
        const int c = static_cast<std::int8_t>(*text);  // NOLINT(bugprone-signed-char-misuse)
        const int zero = c >= 'A' && c <= 'F' ? 'A' - 10 : c >= 'a' && c <= 'f' ? 'a' - 10 : '0';
        accumulator = accumulator * 16U + static_cast<std::uint32_t>(c - zero);
    }
    return static_cast<std::int32_t>(accumulator);
}

std::int64_t OpenCameraByUniqueID(std::string_view uniqueID) {
    std::string_view rest = uniqueID;
    const auto product = takeLastCharacters(rest, 4);
    const auto vendor = takeLastCharacters(rest, 4);
    std::int32_t result = opened;
    std::unique_ptr<UVCCameraControl> camera;
    if (product && vendor) {
        camera = UVCCameraControl::initWithVendorID(HexToInt(vendor->c_str()),
                                                    HexToInt(product->c_str()), result);
    } else {
        NSLog("CameraControl Error: \"%@\" does not end in a vendor and a product id.", uniqueID);
        result = noPlugIn;
        camera = std::make_unique<UVCCameraControl>();
    }
    // The previous camera is released, and its interface closed, once the new one is in place.
    const auto previous = std::exchange(g_uvcCamera, std::move(camera));
    return result;
}

std::unique_ptr<UVCCameraControl> UVCCameraControl::initWithVendorID(std::int64_t vendorID,
                                                                     std::int64_t productID,
                                                                     std::int32_t& ret) {
    auto camera = std::make_unique<UVCCameraControl>();
    IOMatchingDictionary matching = IOServiceMatching("IOUSBDevice");
    CFDictionarySetValue(matching, "idVendor",
                         CFNumberCreate(kCFNumberSInt32Type, static_cast<std::int32_t>(vendorID)));
    CFDictionarySetValue(matching, "idProduct",
                         CFNumberCreate(kCFNumberSInt32Type, static_cast<std::int32_t>(productID)));
    std::unique_ptr<IOUSBDeviceStruct942> deviceInterface;
    ret = openDevice(IOServiceGetMatchingService(kIOMasterPortDefault, matching), deviceInterface);
    if (ret == opened)
        camera->interface = getControlInferaceWithDeviceInterface(*deviceInterface);
    return camera;
}

std::unique_ptr<UVCCameraControl> UVCCameraControl::initWithLocationID(std::uint32_t locationID) {
    auto camera = std::make_unique<UVCCameraControl>();
    io_iterator_t services =
        IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceMatching("IOUSBDevice"));
    while (const io_service_t service = IOIteratorNext(services)) {
        std::unique_ptr<IOUSBDeviceStruct942> deviceInterface;
        if (openDevice(service, deviceInterface) != opened)
            continue;
        std::uint32_t found = 0;
        deviceInterface->GetLocationID(found);
        if (found == locationID) {
            camera->interface = getControlInferaceWithDeviceInterface(*deviceInterface);
            break;
        }
    }
    return camera;
}

std::unique_ptr<IOUSBInterfaceStruct190> UVCCameraControl::getControlInferaceWithDeviceInterface(
    const IOUSBDeviceStruct942& deviceInterface) {
    io_iterator_t interfaces;
    if (deviceInterface.CreateInterfaceIterator(videoControlInterface, interfaces) !=
        kIOReturnSuccess)
        return nullptr;
    io_service_t first = IOIteratorNext(interfaces);
    if (!first)
        return nullptr;

    std::unique_ptr<IOCFPlugInInterface> plugIn;
    std::int32_t score = 0;
    const IOReturn created = IOCreatePlugInInterfaceForService(
        first, kIOUSBInterfaceUserClientTypeID, kIOCFPlugInInterfaceID, plugIn, score);
    IOObjectRelease(first);
    if (created != kIOReturnSuccess) {
        NSLog("CameraControl Error: Unable to create a plug-in (%08x)\n", statusBits(created));
        return nullptr;
    }
    std::unique_ptr<IOUSBInterfaceStruct190> found;
    const IOReturn queried = plugIn->QueryInterface(kIOUSBInterfaceInterfaceID, found);
    if (queried != kIOReturnSuccess) {
        NSLog(
            "CameraControl Error: Couldn\u2019t create a device interface for the interface (%08x)",
            statusBits(queried));
        return nullptr;
    }
    return found;
}

UVCCameraControl::~UVCCameraControl() {
    if (interface)
        interface->USBInterfaceClose();
}
