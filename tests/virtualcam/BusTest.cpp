// The bus of the built-in cameras, as the platform's layer sees it: what comes and goes, who may
// use a camera, and what is left of it when it has gone.

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "tests/support/CameraFixture.h"
#include "virtualcam/camera/VirtualBus.h"

namespace virtualcam {
namespace {

using platform::CaptureDevice;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

/// Writes down what comes and goes, with how many capture devices there then are.
class Listener : public platform::CaptureListener {
  public:
    explicit Listener(VirtualBus& bus) : bus_(bus) { bus_.capture().setListener(this); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() override { bus_.capture().setListener(nullptr); }

    void arrived(std::shared_ptr<CaptureDevice> device) override { note('+', *device); }
    void left(std::shared_ptr<CaptureDevice> device) override { note('-', *device); }
    Strings take() { return std::exchange(heard_, {}); }

  private:
    void note(char what, const CaptureDevice& device) {
        heard_.push_back(what + device.uniqueID() + (device.hasVideo() ? " " : " sound ") +
                         std::to_string(bus_.capture().devices().size()));
    }

    VirtualBus& bus_;
    Strings heard_;
};

/// Writes down the sizes of the pictures, and why they ended.
class Sink : public platform::VideoSink {
  public:
    void frame(platform::VideoFrame frame) override {
        tell(std::to_string(frame.width) + "x" + std::to_string(frame.height));
    }
    void noted(std::string /*remark*/) override {}
    void failed(std::string reason) override { tell(std::move(reason)); }

    /// Waits until it hears this, and forgets all until then.
    bool hears(const std::string& what) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(20), [&] {
            const auto found = std::ranges::find(heard_, what);
            const bool heard = found != heard_.end();
            heard_.erase(heard_.begin(), heard ? found + 1 : found);
            return heard;
        });
    }

  private:
    void tell(std::string what) {
        const std::lock_guard lock(mutex_);
        heard_.push_back(std::move(what));
        changed_.notify_all();
    }

    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    Strings heard_;
};

std::vector<std::shared_ptr<platform::UsbInterface>> interfacesOf(VirtualBus& bus) {
    std::vector<std::shared_ptr<platform::UsbInterface>> found;
    EXPECT_EQ(bus.usb().devices().at(0)->interfaces(found), 0);
    return found;
}

TEST(BusTest, AnnouncesWhatComesAndGoesInOrder) {
    DemoBus bus;
    Listener listener(bus);
    EXPECT_EQ(bus.usb().devices().size(), 2U);
    EXPECT_EQ(bus.capture().devices().size(), 3U);
    EXPECT_EQ(bus.capture().devices().at(1)->localizedName(), "Quelvo Desk Microphone");
    CameraModel model = studioCamera();
    model.locationID = 0x1000000;
    const auto camera = std::make_shared<VirtualCamera>(model);
    bus.plug(camera);
    bus.plug(camera);  // it is in already
    EXPECT_THAT(listener.take(), ElementsAre("+0x01000000e7a14c10 4"));
    EXPECT_EQ(bus.usb().devices().size(), 3U);
    setInCamera(*camera, {16, XU_AUDIO_SWITCH}, {1});
    EXPECT_FALSE(camera->hasAudio()) << "not before it has restarted";
    bus.restart(camera);
    EXPECT_THAT(listener.take(), ElementsAre("-0x01000000e7a14c10 3", "+0x01000000e7a14c10 4",
                                             "+0x01000000e7a14c10:audio sound 5"));
    camera->setFaults({.vanishesAfter = 0});
    IOUSBDevRequest request{};
    EXPECT_EQ(camera->controlRequest(request), ENODEV);
    EXPECT_EQ(bus.capture().devices().size(), 3U);
    EXPECT_EQ(bus.usb().devices().size(), 2U);
    EXPECT_THAT(listener.take(), testing::IsEmpty()) << "the notice comes later";
    bus.announceVanished();
    EXPECT_THAT(listener.take(),
                ElementsAre("-0x01000000e7a14c10 3", "-0x01000000e7a14c10:audio sound 3"));
    bus.unplug(camera);
    EXPECT_THAT(listener.take(), testing::IsEmpty());
    bus.plug(camera);
    EXPECT_EQ(camera->controlRequest(request), EPIPE) << "it answers again";
    EXPECT_EQ(listener.take().size(), 2U);
}

TEST(BusTest, OneHandleAtATimeHasAnInterface) {
    CameraFixture fixture;
    const auto first = interfacesOf(fixture.bus());
    auto second = interfacesOf(fixture.bus());
    ASSERT_EQ(first.size(), 2U);
    EXPECT_EQ(first[0]->descriptor().interfaceSubClass, SC_VIDEOCONTROL);
    EXPECT_EQ(first[1]->descriptor().interfaceSubClass, SC_VIDEOSTREAMING);
    IOUSBDevRequest request{};
    EXPECT_EQ(first[0]->controlRequest(request), EBADF);
    EXPECT_EQ(first[0]->open(), 0);
    EXPECT_EQ(first[0]->open(), EBUSY);
    EXPECT_EQ(second[0]->open(), EBUSY);
    EXPECT_EQ(second[1]->open(), 0) << "the other interface is free";
    EXPECT_EQ(second[0]->close(), 0) << "which is not open";
    EXPECT_EQ(second[0]->open(), EBUSY);
    EXPECT_EQ(first[0]->close(), 0);
    EXPECT_EQ(second[0]->open(), 0);
    second.clear();
    EXPECT_EQ(first[0]->open(), 0) << "a handle closes when it goes";
    setInCamera(fixture.camera(), {16, XU_AUDIO_SWITCH}, {1});
    fixture.bus().restart(fixture.cameraReference());
    EXPECT_EQ(interfacesOf(fixture.bus()).size(), 4U) << "with those of the microphone";
}

TEST(BusTest, HandlesOfACameraThatWasPulledOutStayDead) {
    CameraFixture fixture;
    const auto device = fixture.bus().usb().devices().at(0);
    const auto interface = interfacesOf(fixture.bus()).at(0);
    const auto capture = fixture.bus().capture().devices().at(0);
    EXPECT_EQ(interface->open(), 0);
    fixture.bus().unplug(fixture.cameraReference());
    fixture.bus().plug(fixture.cameraReference());
    IOUSBDevRequest request{};
    std::vector<std::shared_ptr<platform::UsbInterface>> none;
    EXPECT_THAT(
        (std::array{interface->controlRequest(request), interface->close(), interface->open(),
                    interface->queryInterface(), device->createPlugIn(), device->interfaces(none)}),
        testing::Each(ENODEV));
    std::string error;
    EXPECT_EQ(capture->open(error), nullptr);
    EXPECT_EQ(error, "The camera has been unplugged.");
    EXPECT_EQ(interfacesOf(fixture.bus()).at(0)->open(), 0);
    // A camera that is pulled out while the bus goes cannot be reached either.
    std::shared_ptr<platform::UsbDevice> left;
    {
        DemoBus bus;
        left = bus.usb().devices().at(0);
    }
    EXPECT_EQ(left->createPlugIn(), ENODEV);
}

TEST(BusTest, OneSourceAtATimeHasTheVideo) {
    CameraFixture fixture;
    const auto device = fixture.bus().capture().devices().at(0);
    std::string error;
    const auto first = device->open(error);
    const auto second = device->open(error);
    Sink seen;
    Sink refused;
    first->start({320, 400}, seen);
    EXPECT_TRUE(seen.hears("320x240"));
    second->start({640, 480}, refused);
    EXPECT_TRUE(refused.hears("The camera is in use by another program."));
    first->stop();
    second->start({640, 479}, refused);
    EXPECT_TRUE(refused.hears("320x240"));
    second->start({10, 10}, refused);
    EXPECT_TRUE(refused.hears("160x120")) << "the smallest that there is";
    EXPECT_TRUE(fixture.bus().failVideo(fixture.cameraReference(), "Broken."));
    EXPECT_TRUE(refused.hears("Broken."));
    second->start({640, 480}, refused);
    EXPECT_TRUE(refused.hears("640x480")) << "a failure is over with the next start";
    second->stop();
    EXPECT_FALSE(fixture.bus().failVideo(fixture.cameraReference(), "Nobody sees it."));
    second->start({320, 240}, refused);
    fixture.bus().unplug(fixture.cameraReference());
    EXPECT_TRUE(refused.hears("The camera has been unplugged."));
    second->start({320, 240}, refused);
    EXPECT_TRUE(refused.hears("The camera has been unplugged."));
    DemoBus demo;
    EXPECT_EQ(demo.capture().devices().at(1)->open(error), nullptr);
    EXPECT_EQ(error, "The device delivers no video.");
}

}  // namespace
}  // namespace virtualcam
