// The bus of the built-in cameras, as the platform's layer sees it: who may use a camera, and what
// is left of it when it has gone.

#include <gmock/gmock.h>

#include <cerrno>
#include <future>

#include "tests/support/CameraFixture.h"
#include "virtualcam/camera/VirtualBus.h"

namespace virtualcam {
namespace {

/// A program that shows a camera's video.
class Viewer : public platform::VideoSink {
  public:
    explicit Viewer(platform::CaptureDevice& device) : source_(device.open(error_)) {}

    /// Starts the video, and returns what comes first: a picture's width, or why there is none.
    std::string start(int width, int height) {
        source_->stop();
        came_ = false;
        first_ = {};
        source_->start({width, height}, *this);
        return first_.get_future().get();
    }
    void stop() { source_->stop(); }

    void frame(platform::VideoFrame frame) override { tell(std::to_string(frame.width)); }
    void noted(std::string /*remark*/) override {}
    void failed(std::string reason) override { tell(reason); }

  private:
    void tell(const std::string& what) {
        if (!std::exchange(came_, true))
            first_.set_value(what);
    }

    std::string error_;
    std::promise<std::string> first_;
    bool came_ = false;
    std::unique_ptr<platform::VideoSource> source_;  // which ends before all above
};

TEST(BusTest, OneProgramAtATimeHasTheVideo) {
    CameraFixture fixture;
    const auto device = fixture.bus().capture().devices().at(0);
    Viewer first(*device);
    Viewer second(*device);
    EXPECT_EQ(first.start(320, 400), "320");
    EXPECT_EQ(second.start(640, 480), "The camera is in use by another program.");
    first.stop();
    EXPECT_EQ(second.start(640, 479), "320");
    EXPECT_EQ(second.start(10, 10), "160") << "the smallest that there is";
    EXPECT_TRUE(fixture.bus().failVideo(fixture.cameraReference(), "Broken."));
    EXPECT_EQ(second.start(640, 480), "640") << "a failure is over with the next start";
    second.stop();
    EXPECT_FALSE(fixture.bus().failVideo(fixture.cameraReference(), "Nobody sees it."));
    fixture.bus().unplug(fixture.cameraReference());
    EXPECT_EQ(second.start(640, 480), "The camera has been unplugged.");
}

std::vector<std::shared_ptr<platform::UsbInterface>> interfacesOf(VirtualBus& bus) {
    std::vector<std::shared_ptr<platform::UsbInterface>> found;
    EXPECT_EQ(bus.usb().devices().at(0)->interfaces(found), 0);
    return found;
}

TEST(BusTest, OneHandleAtATimeHasAnInterfaceUntilTheCameraIsPulledOut) {
    CameraFixture fixture;
    VirtualBus& bus = fixture.bus();
    bus.plug(fixture.cameraReference());  // it is in already
    ASSERT_EQ(bus.usb().devices().size(), 1U);
    const auto device = bus.usb().devices()[0];
    const auto capture = bus.capture().devices().at(0);
    const auto first = interfacesOf(bus);
    auto second = interfacesOf(bus);
    IOUSBDevRequest request{};
    EXPECT_EQ(first[0]->controlRequest(request), EBADF);
    EXPECT_EQ(second[0]->open(), 0);
    EXPECT_EQ(second[0]->open(), EBUSY);
    EXPECT_EQ(first[0]->open(), EBUSY);
    EXPECT_EQ(first[1]->open(), 0) << "the other interface is free";
    EXPECT_EQ(first[0]->close(), 0) << "which is not open";
    EXPECT_EQ(first[0]->open(), EBUSY);
    second.clear();
    EXPECT_EQ(first[0]->open(), 0) << "a handle closes when it goes";

    bus.restart(fixture.cameraReference());
    std::string error;
    std::vector<std::shared_ptr<platform::UsbInterface>> none;
    EXPECT_THAT((std::array{first[0]->controlRequest(request), first[0]->close(), first[0]->open(),
                            device->createPlugIn(), device->interfaces(none)}),
                testing::Each(ENODEV));
    EXPECT_EQ(capture->open(error), nullptr);
    EXPECT_EQ(error, "The camera has been unplugged.");
    EXPECT_EQ(interfacesOf(bus).at(0)->open(), 0);
    // One that has fallen off by itself is out of the lists before the notice of it comes.
    fixture.camera().setFaults({.vanishesAfter = 0});
    EXPECT_EQ(fixture.camera().controlRequest(request), ENODEV);
    EXPECT_TRUE(bus.usb().devices().empty() && bus.capture().devices().empty());
}

TEST(BusTest, OfTheDemonstrationNothingIsLeftWhenItGoes) {
    std::shared_ptr<platform::UsbDevice> left;
    {
        DemoBus bus;
        left = bus.usb().devices().at(1);
        EXPECT_EQ(left->createPlugIn(), 0);
        std::string error;
        EXPECT_EQ(bus.capture().devices().at(1)->open(error), nullptr);
        EXPECT_EQ(error, "The device delivers no video.");
    }
    EXPECT_EQ(left->createPlugIn(), ENODEV);
}

}  // namespace
}  // namespace virtualcam
