#include "tests/support/CameraFixture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <utility>

#include "camera/OpenCamera.h"
#include "camera/UVCCameraControl.h"
#include "platform/backend/Backends.h"

std::string wireText(const virtualcam::RequestRecord& record) {
    return fmt::format("{:02x} {:02x} {:04x} {:04x} {}{}{:02x}{}", record.bmRequestType,
                       record.bRequest, record.wValue, record.wIndex, record.wLength,
                       record.data.empty() ? "" : " | ", fmt::join(record.data, " "),
                       record.result == 0 ? "" : " !");
}

void setInCamera(virtualcam::VirtualCamera& camera, virtualcam::ControlId control,
                 std::vector<std::uint8_t> value) {
    IOUSBDevRequest request{0x21, SET_CUR};  // from the host, to the interface
    request.wValue = static_cast<std::uint16_t>(control.selector << 8U);
    request.wIndex = static_cast<std::uint16_t>(control.unit << 8U);
    request.wLength = static_cast<std::uint16_t>(value.size());
    request.pData = value.data();
    if (camera.controlRequest(request) != 0)
        throw std::runtime_error("the camera refuses the value");
    camera.clearRequests();
}

CameraFixture::CameraFixture(virtualcam::CameraModel model)
    : camera_(std::make_shared<virtualcam::VirtualCamera>(std::move(model))) {
    platform::installBackends({&bus_.usb(), &bus_.capture(), &log_});
    bus_.plug(camera_);
}

CameraFixture::~CameraFixture() {
    g_uvcCamera.reset();
    g_dataBuffer = nullptr;
    g_length = 0;
    platform::installBackends({});
}

std::shared_ptr<virtualcam::VirtualCamera> CameraFixture::plugAnother(const std::string& name) {
    virtualcam::CameraModel model = camera_->model();
    model.name = name;
    model.locationID += 0x00010000;
    model.productID = static_cast<std::uint16_t>(model.productID + 1);
    auto another = std::make_shared<virtualcam::VirtualCamera>(std::move(model));
    bus_.plug(another);
    return another;
}

void CameraFixture::open() {
    ASSERT_EQ(OpenCameraByUniqueID(virtualcam::uniqueIDOf(camera_->model())), 0);
    log_.take();
    camera_->clearRequests();
}

std::vector<std::string> CameraFixture::requests() {
    std::vector<std::string> texts;
    for (const auto& record : camera_->requests())
        texts.push_back(wireText(record));
    camera_->clearRequests();
    return texts;
}
