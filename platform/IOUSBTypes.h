#pragma once

#include <cstdint>

/// One request on a device's default control pipe (USB 2.0, 9.3, Setup Data).
struct IOUSBDevRequest {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;   ///< Bytes at pData; a reply never takes more.
    void* pData = nullptr;       ///< The data to send or the room for the reply; not owned.
    std::uint32_t wLenDone = 0;  ///< Bytes that were transferred.
};

/// Stands for "any" in an `IOUSBFindInterfaceRequest`.
inline constexpr std::uint16_t kIOUSBFindInterfaceDontCare = 0xFFFF;

/// Which interfaces of a device to iterate over; each field is a value or "any".
struct IOUSBFindInterfaceRequest {
    std::uint16_t bInterfaceClass = kIOUSBFindInterfaceDontCare;
    std::uint16_t bInterfaceSubClass = kIOUSBFindInterfaceDontCare;
    std::uint16_t bInterfaceProtocol = kIOUSBFindInterfaceDontCare;
    std::uint16_t bAlternateSetting = kIOUSBFindInterfaceDontCare;
};
