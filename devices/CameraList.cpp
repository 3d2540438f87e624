// The list of attached cameras, kept in step with the devices that come and go.

#include "devices/CameraList.h"

#include <algorithm>
#include <string>

#include "app/ViewController.h"
#include "platform/AVCaptureDevice.h"
#include "platform/NSLog.h"
#include "platform/NSNotificationCenter.h"
#include "platform/Utf8.h"

std::vector<CameraEntry> g_deviceList;

namespace {

constexpr std::size_t entryTextSize = 63;

/// Makes the entry of a device, its texts cut to what an entry holds.
CameraEntry makeEntry(const AVCaptureDevice& device) {
    CameraEntry entry{};
    std::ranges::copy(entryUniqueID(device.uniqueID()), entry.uniqueID.begin());
    std::ranges::copy(entryName(device.localizedName()), entry.name.begin());
    return entry;
}

}  // namespace

std::string_view entryName(std::string_view localizedName) {
    return platform::utf8Prefix(localizedName, entryTextSize);
}

std::string_view entryUniqueID(std::string_view uniqueID) {
    return platform::utf8Suffix(uniqueID, entryTextSize);
}

void ViewController::RegisterHidEvent() {
    g_deviceList.clear();
    NSLog("kkk:%d", static_cast<std::int32_t>(AVCaptureDevice::devices().size()));
    for (const AVCaptureDevice& device : AVCaptureDevice::devices()) {
        if (!device.hasMediaType(AVMediaTypeVideo))
            continue;
        g_deviceList.push_back(makeEntry(device));
        m_cbxDevice.addItemWithObjectValue(g_deviceList.back().name.data());
    }
    if (!g_deviceList.empty())
        m_cbxDevice.selectItemAtIndex(0);

    NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    center.addObserver(*this, &ViewController::processAddDeviceEventWithNotification,
                       AVCaptureDeviceWasConnectedNotification, nullptr);
    center.addObserver(*this, &ViewController::processRemoveDeviceEventWithNotification,
                       AVCaptureDeviceWasDisconnectedNotification, nullptr);
}

void ViewController::processAddDeviceEventWithNotification(const NSNotification& notification) {
    NSLog("processAddDeviceEventWithNotification123\n");
    const AVCaptureDevice& device = notification.object.value();
    if (!device.hasMediaType(AVMediaTypeVideo))
        return;
    NSLog("%@", device.uniqueID());
    const CameraEntry entry = makeEntry(device);
    const int listedBefore = m_cbxDevice.numberOfItems();
    m_cbxDevice.addItemWithObjectValue(entry.name.data());
    if (listedBefore == 0)
        m_cbxDevice.selectItemAtIndex(0);
    g_deviceList.push_back(entry);
}

void ViewController::processRemoveDeviceEventWithNotification(const NSNotification& notification) {
    NSLog("processRemoveDeviceEventWithNotification\n");
    const AVCaptureDevice& device = notification.object.value();
    if (!device.hasMediaType(AVMediaTypeVideo))
        return;
    const std::string fullName = device.localizedName();
    NSLog("%@", fullName);
    // The first camera of that name goes, whichever of several equal ones left.
    const std::string_view name = entryName(fullName);
    const auto leaving = std::ranges::find_if(
        g_deviceList, [name](const CameraEntry& entry) { return entry.name.data() == name; });
    if (leaving == g_deviceList.end())
        return;
    m_cbxDevice.removeItemAtIndex(static_cast<int>(leaving - g_deviceList.begin()));
    m_cbxDevice.setStringValue("");
    g_deviceList.erase(leaving);
}

void ViewController::OnCbxDeviceChanged(const NSComboBox& /*sender*/) {}
