#include <gmock/gmock.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>

#include "virtualcam/DemoBus.h"
#include "virtualcam/FrameGenerator.h"

namespace virtualcam {
namespace {

using platform::CaptureDevice;
using platform::UsbInterface;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

constexpr platform::VideoLimits kPreview{640, 480};

/// Writes down what is announced, and what is in the list at that moment.
class Listener : public platform::CaptureListener {
  public:
    explicit Listener(VirtualBus& bus) : bus_(bus) { bus_.capture().setListener(this); }

    void arrived(std::shared_ptr<CaptureDevice> device) override { note("+", *device); }
    void left(std::shared_ptr<CaptureDevice> device) override { note("-", *device); }

    Names heard;

  private:
    void note(const char* sign, const CaptureDevice& device) {
        heard.push_back(sign + device.localizedName() + " of " +
                        std::to_string(bus_.capture().devices().size()));
    }

    VirtualBus& bus_;
};

/// Waits for frames and for the failure of a source.
class Sink : public platform::VideoSink {
  public:
    void frame(platform::VideoFrame frame) override {
        const std::lock_guard lock(mutex_);
        last_ = std::move(frame);
        ++frames_;
        changed_.notify_all();
    }

    void failed(std::string reason) override {
        const std::lock_guard lock(mutex_);
        reasons_.push_back(std::move(reason));
        changed_.notify_all();
    }

    /// The frame after `count` more of them.
    platform::VideoFrame awaitFrame(int count = 1) {
        std::unique_lock lock(mutex_);
        const int wanted = frames_ + count;
        changed_.wait(lock, [&] { return frames_ >= wanted; });
        return last_;
    }

    std::string awaitFailure() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return !reasons_.empty(); });
        return reasons_.front();
    }

    int frames() {
        const std::lock_guard lock(mutex_);
        return frames_;
    }

    std::size_t failures() {
        const std::lock_guard lock(mutex_);
        return reasons_.size();
    }

  private:
    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    platform::VideoFrame last_;
    int frames_ = 0;
    Names reasons_;
};

Names namesOf(platform::CaptureBackend& capture) {
    Names names;
    for (const auto& device : capture.devices())
        names.push_back(device->localizedName());
    return names;
}

class BusTest : public testing::Test {
  protected:
    std::shared_ptr<UsbInterface> control() {
        std::vector<std::shared_ptr<UsbInterface>> found;
        EXPECT_EQ(bus.usb().devices().at(0)->interfaces(found), 0);
        return found.at(0);
    }

    static IOReturn brightness(UsbInterface& interface) {
        std::array<std::uint8_t, 2> data{};
        IOUSBDevRequest request{0xA1, GET_CUR, 0x0200, 0x0300, 2, data.data(), 0};
        return interface.controlRequest(request);
    }

    std::unique_ptr<platform::VideoSource> openVideo() {
        std::string error;
        return bus.capture().devices().at(0)->open(error);
    }

    std::shared_ptr<VirtualCamera> camera = std::make_shared<VirtualCamera>(studioCamera());
    std::shared_ptr<VirtualCamera> other = std::make_shared<VirtualCamera>(classicCamera());
    VirtualBus bus;
    Sink sink;  // outlives the sources of the tests
};

TEST_F(BusTest, DemoOffersTwoCamerasAndAMicrophone) {
    DemoBus demo;
    EXPECT_THAT(
        namesOf(demo.capture()),
        ElementsAre("Quelvo Studio Camera", "Quelvo Desk Microphone", "Quelvo Classic Camera"));
    EXPECT_FALSE(demo.capture().devices().at(1)->hasVideo());
    EXPECT_EQ(demo.capture().devices().at(0)->uniqueID(), "0x14200000e7a14c10");
    const auto usb = demo.usb().devices();
    ASSERT_EQ(usb.size(), 2U);
    EXPECT_EQ(usb.at(1)->vendorID(), 0xe7a1);
    EXPECT_EQ(usb.at(1)->productID(), 0x1c05);
    EXPECT_EQ(usb.at(1)->locationID(), 0x14300000U);
}

TEST_F(BusTest, AnnouncesWhatComesAndGoes) {
    Listener listener(bus);
    bus.plug(camera);
    bus.plug(camera);
    bus.plug(other);
    bus.plugMicrophone("mic", "Mic");
    bus.unplug(camera);
    bus.unplug(camera);
    bus.unplugMicrophone("mic");
    EXPECT_THAT(listener.heard,
                ElementsAre("+Quelvo Studio Camera of 1", "+Quelvo Classic Camera of 2",
                            "+Mic of 3", "-Quelvo Studio Camera of 2", "-Mic of 1"));
    bus.capture().setListener(nullptr);
    bus.unplug(other);
    EXPECT_EQ(listener.heard.size(), 5U);
}

TEST_F(BusTest, OwnMicrophoneComesWithTheAudioStreamAfterARestart) {
    bus.plug(camera);
    std::array<std::uint8_t, 1> on{1};
    IOUSBDevRequest request{0x21, SET_CUR, XU_AUDIO_SWITCH << 8, kVendorUnit << 8, 1, on.data(), 0};
    ASSERT_EQ(camera->controlRequest(request), 0);
    EXPECT_EQ(bus.capture().devices().size(), 1U);
    bus.restart(camera);
    ASSERT_EQ(bus.capture().devices().size(), 2U);
    EXPECT_FALSE(bus.capture().devices().at(1)->hasVideo());
}

TEST_F(BusTest, TakesRequestsOnlyThroughAnOpenInterface) {
    bus.plug(camera);
    const auto first = control();
    EXPECT_EQ(first->descriptor().interfaceClass, 14);
    EXPECT_EQ(first->descriptor().interfaceSubClass, 1);
    EXPECT_EQ(brightness(*first), EBADF);
    EXPECT_EQ(first->open(), 0);
    EXPECT_EQ(brightness(*first), 0);
    EXPECT_EQ(control()->open(), EBUSY) << "one handle at a time";
    EXPECT_EQ(first->close(), 0);
    EXPECT_EQ(control()->open(), 0);
}

TEST_F(BusTest, HandlesDieWithThePlug) {
    bus.plug(camera);
    const auto device = bus.usb().devices().at(0);
    const auto interface = control();
    ASSERT_EQ(interface->open(), 0);
    bus.restart(camera);
    EXPECT_EQ(brightness(*interface), ENODEV);
    EXPECT_EQ(device->createPlugIn(), ENODEV);
    EXPECT_EQ(control()->open(), 0) << "the new handle is not blocked by the dead one";
}

TEST_F(BusTest, FailsEachStepOfOpening) {
    bus.plug(camera);
    const auto device = bus.usb().devices().at(0);
    const auto interface = control();
    std::vector<std::shared_ptr<UsbInterface>> found;
    camera->setFaults({.deviceCreatePlugIn = EACCES});
    EXPECT_EQ(device->createPlugIn(), EACCES);
    EXPECT_EQ(device->queryInterface(), 0);
    camera->setFaults({.deviceQueryInterface = EIO});
    EXPECT_EQ(device->queryInterface(), EIO);
    camera->setFaults({.deviceInterfaces = EIO});
    EXPECT_EQ(device->interfaces(found), EIO);
    camera->setFaults({.interfaceCreatePlugIn = EBUSY});
    EXPECT_EQ(interface->createPlugIn(), EBUSY);
    camera->setFaults({.interfaceQueryInterface = EIO});
    EXPECT_EQ(interface->queryInterface(), EIO);
    camera->setFaults({.interfaceOpen = EACCES});
    EXPECT_EQ(interface->open(), EACCES);
    camera->setFaults({.noVideoControl = true});
    EXPECT_EQ(device->interfaces(found), 0);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.at(0)->descriptor().interfaceSubClass, 2);
}

TEST_F(BusTest, DeliversPicturesThatFitUntilItIsStopped) {
    bus.plug(camera);
    const auto source = openVideo();
    source->start(kPreview, sink);
    const platform::VideoFrame frame = sink.awaitFrame();
    EXPECT_EQ(frame.width, 640);
    EXPECT_EQ(frame.height, 480);
    EXPECT_EQ(frame.bytesPerLine, 640 * 4);
    sink.awaitFrame(6);  // more than there are buffers
    source->stop();
    const int frames = sink.frames();
    source->stop();
    source->start({500, 400}, sink);
    EXPECT_EQ(sink.awaitFrame().width, 320);
    source->stop();
    EXPECT_GT(sink.frames(), frames);
    EXPECT_EQ(sink.failures(), 0U);
}

TEST_F(BusTest, HeldPicturesAreNeverDrawnOver) {
    bus.plug(camera);
    const auto source = openVideo();
    source->start(kPreview, sink);
    const platform::VideoFrame held = sink.awaitFrame();
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(held.pixels);
    const std::vector<std::uint32_t> before(pixels, pixels + std::ptrdiff_t{640} * 480);
    sink.awaitFrame(6);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), pixels));
}

TEST_F(BusTest, VideoIsForOneProgramAtATime) {
    bus.plug(camera);
    const auto first = openVideo();
    const auto waiting = openVideo();
    first->start(kPreview, sink);
    sink.awaitFrame();
    std::string error;
    EXPECT_EQ(bus.capture().devices().at(0)->open(error), nullptr);
    EXPECT_EQ(error, "The camera is in use by another program.");
    Sink late;
    waiting->start(kPreview, late);
    EXPECT_EQ(late.awaitFailure(), "The camera is in use by another program.");
    waiting->stop();
    first->stop();
    EXPECT_NE(openVideo(), nullptr);

    camera->setFaults({.videoOpen = "The camera is broken."});
    EXPECT_EQ(bus.capture().devices().at(0)->open(error), nullptr);
    EXPECT_EQ(error, "The camera is broken.");
}

TEST_F(BusTest, RunningVideoFailsOnceWhenThePlugIsPulled) {
    bus.plug(camera);
    const auto device = bus.capture().devices().at(0);
    const auto source = openVideo();
    EXPECT_FALSE(bus.failVideo(camera, "too early"));
    source->start(kPreview, sink);
    sink.awaitFrame();
    bus.unplug(camera);
    EXPECT_EQ(sink.awaitFailure(), "The camera has been unplugged.");
    const int frames = sink.frames();
    source->stop();
    EXPECT_EQ(sink.frames(), frames);
    EXPECT_EQ(sink.failures(), 1U);
    std::string error;
    EXPECT_EQ(device->open(error), nullptr);
    EXPECT_EQ(error, "The camera has been unplugged.");
}

TEST_F(BusTest, RunningVideoCanFailByItselfAndStartAgain) {
    bus.plug(camera);
    const auto source = openVideo();
    source->start(kPreview, sink);
    sink.awaitFrame();
    EXPECT_TRUE(bus.failVideo(camera, "The stream broke off."));
    EXPECT_EQ(sink.awaitFailure(), "The stream broke off.");
    source->stop();
    source->start(kPreview, sink);
    sink.awaitFrame();
    EXPECT_EQ(sink.failures(), 1U);
}

TEST_F(BusTest, CameraThatVanishesLeavesTheListsAtOnceAndIsAnnouncedLater) {
    Listener listener(bus);
    bus.plug(camera);
    const auto source = openVideo();
    source->start(kPreview, sink);
    sink.awaitFrame();
    const auto interface = control();
    ASSERT_EQ(interface->open(), 0);
    camera->setFaults({.vanishesAfter = 0});
    listener.heard.clear();
    EXPECT_EQ(brightness(*interface), ENODEV);
    EXPECT_THAT(bus.usb().devices(), IsEmpty());
    EXPECT_THAT(bus.capture().devices(), IsEmpty());
    EXPECT_THAT(listener.heard, IsEmpty()) << "not in the middle of a request";
    EXPECT_EQ(sink.awaitFailure(), "The camera has been unplugged.");
    bus.announceVanished();
    bus.plug(camera);
    EXPECT_THAT(listener.heard,
                ElementsAre("-Quelvo Studio Camera of 0", "+Quelvo Studio Camera of 1"));
    EXPECT_EQ(control()->open(), 0);
}

}  // namespace
}  // namespace virtualcam
