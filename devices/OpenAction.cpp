// The open action: the control channel, the live preview, and both pages.

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "app/ViewController.h"
#include "camera/OpenCamera.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "pages/vendor/VendorPage.h"
#include "platform/AVCaptureDevice.h"
#include "platform/AVCaptureSession.h"
#include "platform/NSColor.h"
#include "platform/NSLog.h"

std::shared_ptr<AVCaptureSession> g_captureSession;

namespace {

/// Returns the unique identifier to open for the text that the combo box shows: that of the first
/// camera of this name, else the text itself, so that an identifier can be typed there.
std::string keyOf(const std::string& shownText) {
    const auto entry = std::ranges::find_if(g_deviceList, [&](const CameraEntry& listed) {
        return listed.name.data() == entryName(shownText);
    });
    return entry == g_deviceList.end() ? shownText : std::string(entry->uniqueID.data());
}

std::optional<AVCaptureDevice> videoDevice(const std::string& key) {
    for (const AVCaptureDevice& device : AVCaptureDevice::devices())
        if (entryUniqueID(device.uniqueID()) == entryUniqueID(key) &&
            device.hasMediaType(AVMediaTypeVideo))
            return device;
    return std::nullopt;
}

/// Gives the view a new base layer with a preview layer of `g_captureSession` on it.
void showPreview(const NSImageView& view) {
    const auto base = CALayer::layer();
    view.setWantsLayer(true);
    view.setLayer(base);
    base->setBackgroundColor(NSColor::colorWithRed(0.6, 0.6, 0.6, 1.0).CGColor());
    view.setNeedsDisplay(true);
    NSLog("viewLayer = %@", base->description());
    const auto preview = AVCaptureVideoPreviewLayer::initWithSession(g_captureSession);
    preview->setFrame(view.bounds());
    preview->setAutoresizingMask(kCALayerWidthSizable + kCALayerHeightSizable);
    base->addSublayer(preview);
}

}  // namespace

void ViewController::OnBtnOpenCamera(const NSButton& /*sender*/) {
    if (g_captureSession)
        g_captureSession->stopRunning();
    g_captureSession = std::make_shared<AVCaptureSession>();
    const std::string key = keyOf(m_cbxDevice.stringValue());
    OpenCameraByUniqueID(key);
    ReadConfig_UVC();
    if (const auto device = videoDevice(key)) {
        g_captureSession->setSessionPreset(AVCaptureSessionPresetMedium);
        showPreview(m_previewWnd);
        NSError error;
        auto input = AVCaptureDeviceInput::deviceInputWithDevice(*device, error);
        if (input)
            g_captureSession->addInput(std::move(input));
        else
            NSLog("ERROR: trying to open camera: %@", error.description);
        g_captureSession->startRunning();
    }
    InitXUPage(*this);
    InitUVCPage();
}
