// The bus of the built-in cameras, as the platform's layer sees it: who may use a camera, and what
// is left of it when it has gone.

#include <gmock/gmock.h>

#include <cerrno>

#include "platform/AVCaptureSession.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowFixture.h"

namespace virtualcam {
namespace {

TEST(BusTest, OneProgramAtATimeHasTheVideo) {
    WindowFixture fixture;
    fixture.pressOpen();
    fixture.awaitPicture();
    NSError none;
    AVCaptureSession other;
    other.addInput(
        AVCaptureDeviceInput::deviceInputWithDevice(AVCaptureDevice::devices().at(0), none));
    other.startRunning();
    EXPECT_TRUE(WindowFixture::waitUntil([&] {
        return fixture.log().count("ERROR: trying to open camera: The camera is in use") == 1;
    }));
}

TEST(BusTest, OneHandleAtATimeHasAnInterfaceUntilTheCameraIsPulledOut) {
    CameraFixture fixture;
    const auto device = fixture.bus().usb().devices().at(0);
    const auto capture = fixture.bus().capture().devices().at(0);
    std::vector<std::shared_ptr<platform::UsbInterface>> first;
    std::vector<std::shared_ptr<platform::UsbInterface>> second;
    EXPECT_EQ(device->interfaces(first) + device->interfaces(second), 0);
    IOUSBDevRequest request{};
    EXPECT_EQ(first[0]->controlRequest(request), EBADF);
    EXPECT_EQ(second[0]->open(), 0);
    EXPECT_EQ(second[0]->open(), EBUSY);
    EXPECT_EQ(first[0]->close(), 0) << "which is not open";
    EXPECT_EQ(first[0]->open(), EBUSY);
    EXPECT_EQ(first[1]->open(), 0) << "the other interface is free";
    second.clear();
    EXPECT_EQ(first[0]->open(), 0) << "a handle closes when it goes";

    fixture.bus().restart(fixture.cameraReference());
    std::string error;
    EXPECT_THAT((std::array{first[0]->controlRequest(request), first[0]->close(), first[0]->open(),
                            device->createPlugIn(), device->interfaces(second)}),
                testing::Each(ENODEV));
    EXPECT_EQ(capture->open(error), nullptr);
    EXPECT_EQ(error, "The camera has been unplugged.");
}

}  // namespace
}  // namespace virtualcam
