// The camera and its bus, as far as the application's tests do not see them.

#include <gmock/gmock.h>

#include <cerrno>
#include <condition_variable>

#include "tests/support/Pixels.h"
#include "virtualcam/DemoBus.h"

namespace virtualcam {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

/// Sends one request; `data` becomes what the camera answers. Returns the reason of a refusal.
RequestError send(VirtualCamera& camera, std::uint8_t code, ControlId id, Bytes& data) {
    const std::uint8_t type = code == SET_CUR ? 0x21 : 0xA1;
    IOUSBDevRequest request{type,
                            code,
                            static_cast<std::uint16_t>(id.selector << 8),
                            static_cast<std::uint16_t>(id.unit << 8),
                            static_cast<std::uint16_t>(data.size()),
                            data.data(),
                            0};
    if (camera.controlRequest(request) == EPIPE) {
        Bytes error(1);
        send(camera, GET_CUR, {kInterfaceUnit, VC_REQUEST_ERROR_CODE_CONTROL}, error);
        return RequestError{error[0]};
    }
    data.resize(request.bRequest == SET_CUR ? data.size() : request.wLenDone);
    return RequestError::none;
}

Bytes read(VirtualCamera& camera, ControlId id, std::uint8_t code = GET_CUR) {
    Bytes data(32);
    send(camera, code, id, data);
    return data;
}

TEST(CameraTest, TakesWhatIsLegalAndRefusesAllElse) {
    using enum RequestError;
    VirtualCamera camera(studioCamera());
    for (auto& [code, unit, selector, data, outcome] :
         std::vector<std::tuple<int, int, int, Bytes, RequestError>>{
             {SET_CUR, 3, 2, {0xFF, 0x00}, none},
             {SET_CUR, 3, 2, {0x01, 0xFF}, none},
             {SET_CUR, 3, 2, {0x00, 0x01}, outOfRange},
             {SET_CUR, 3, 2, {0x00, 0xFF}, outOfRange},
             {SET_CUR, 3, 2, {1, 0, 0}, invalidRequest},
             {GET_CUR, 3, 2, Bytes(1), invalidRequest},
             {GET_LEN, 3, 2, Bytes(2), invalidRequest},
             {SET_CUR, 3, 12, {1, 0}, invalidControl},
             {SET_CUR, 2, 2, {1, 0}, invalidUnit},
             {SET_CUR, 3, 10, {0xF0, 0x0A}, wrongState},  // while the white balance is automatic
             {SET_CUR, 1, 2, {4}, outOfRange},            // a mode that it does not have
             {SET_CUR, 1, 2, {1 | 8}, outOfRange},        // two modes at once
             {SET_CUR, 1, 13, {0x10, 0x0E, 0, 0, 0xE0, 0xE3, 0xFF, 0xFF}, none},
             {SET_CUR, 1, 13, {1, 0, 0, 0, 0, 0, 0, 0}, outOfRange},  // between two steps
             {SET_CUR, 16, XU_RGAIN, {0xF6, 0xFF}, none},
             {SET_CUR, 16, XU_RGAIN, {0xFD, 0x00}, outOfRange},  // 253, not -3
             {SET_CUR, 16, XU_RESTORE, {0}, outOfRange}}) {
        const ControlId id{static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(selector)};
        const Bytes before = read(camera, id);
        const Bytes written = data;
        EXPECT_EQ(send(camera, static_cast<std::uint8_t>(code), id, data), outcome)
            << unit << ", " << selector << testing::PrintToString(data);
        EXPECT_EQ(read(camera, id), outcome == none ? written : before);
    }
    EXPECT_EQ(camera.picture().pan, 3600);
    EXPECT_EQ(camera.picture().tilt, -7200);
    VirtualCamera classic(classicCamera());
    Bytes zoom(2);
    EXPECT_EQ(send(classic, GET_CUR, {kCameraTerminal, CT_ZOOM_ABSOLUTE_CONTROL}, zoom),
              invalidControl);
}

TEST(CameraTest, AutomaticModesMoveWhatTheyHold) {
    VirtualCamera camera(studioCamera());
    const ControlId focus{kCameraTerminal, CT_FOCUS_ABSOLUTE_CONTROL};
    const Bytes before = read(camera, focus);
    for (int picture = 0; picture < 30; ++picture)
        camera.nextPicture();
    EXPECT_NE(read(camera, focus), before);
    EXPECT_EQ(read(camera, focus, GET_INFO)[0] & kInfoDisabled, kInfoDisabled);
}

/// Writes down what comes and goes, with the length of the list then, and counts pictures.
class Witness : public platform::CaptureListener, public platform::VideoSink {
  public:
    using Device = std::shared_ptr<platform::CaptureDevice>;

    explicit Witness(VirtualBus& bus) : bus_(bus) { bus.capture().setListener(this); }

    void arrived(Device device) override { note("+", *device); }
    void left(Device device) override { note("-", *device); }

    void frame(platform::VideoFrame frame) override {
        note(std::to_string(frame.width));
        const std::lock_guard lock(mutex_);
        frames_.push_back(std::move(frame));
        seen_.push_back(pixelsOf(frames_.back()));
        EXPECT_EQ(pixelsOf(frames_.front()), seen_.front()) << "what is held is never drawn over";
    }
    void failed(std::string reason) override { note(reason); }

    /// Waits until the last note is this one.
    void await(const std::string& text) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return !notes_.empty() && notes_.back() == text; });
    }

    std::vector<std::string> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(notes_, {});
    }

  private:
    void note(const std::string& sign, const platform::CaptureDevice& device) {
        note(sign + device.localizedName() + std::to_string(bus_.capture().devices().size()));
    }
    void note(const std::string& text) {
        const std::lock_guard lock(mutex_);
        notes_.push_back(text);
        changed_.notify_all();
    }

    VirtualBus& bus_;
    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::vector<std::string> notes_;
    std::vector<platform::VideoFrame> frames_;
    std::vector<std::vector<std::uint32_t>> seen_;  // of each frame when it came
};

TEST(BusTest, AnnouncesEachDeviceOnceAndEndsPicturesWithThePlug) {
    const auto camera = std::make_shared<VirtualCamera>(studioCamera());
    VirtualBus bus;
    Witness witness(bus);
    std::string error;
    for (int times = 0; times < 2; ++times)
        bus.plug(camera);
    bus.plugMicrophone("mic", "Mic");
    EXPECT_THAT(witness.take(), ElementsAre("+Quelvo Studio Camera1", "+Mic2"));
    const auto device = bus.capture().devices()[0];
    const auto source = device->open(error);
    const auto late = device->open(error);
    source->start({500, 400}, witness);
    witness.await("320");
    late->start({500, 400}, witness);
    witness.await("The camera is in use by another program.");
    EXPECT_TRUE(bus.failVideo(camera, "Broken"));
    witness.await("Broken");
    source->start({640, 480}, witness);
    for (int pictures = 0; pictures < 3; ++pictures) {
        witness.take();
        witness.await("640");
    }
    std::vector<std::shared_ptr<platform::UsbInterface>> found;
    for (int handles = 0; handles < 2; ++handles)
        ASSERT_EQ(bus.usb().devices()[0]->interfaces(found), 0);
    const auto other = found.at(found.size() / 2);
    IOUSBDevRequest request{};
    EXPECT_EQ(found[0]->controlRequest(request), EBADF) << "it is not open";
    EXPECT_EQ(found[0]->open(), 0);
    EXPECT_EQ(other->open(), EBUSY);
    Bytes on{1};
    ASSERT_EQ(send(*camera, SET_CUR, {kVendorUnit, XU_AUDIO_SWITCH}, on), RequestError::none);
    EXPECT_EQ(bus.capture().devices().size(), 2U) << "streams switch when the camera starts";
    bus.unplug(camera);
    source->stop();
    witness.take();
    EXPECT_EQ(device->open(error), nullptr);
    bus.restart(camera);  // with a microphone of its own by now
    EXPECT_THAT(witness.take(), ElementsAre("+Quelvo Studio Camera2", "+Quelvo Studio Camera3"));
    EXPECT_EQ(found[0]->controlRequest(request), ENODEV) << "a handle dies with the plug";
    EXPECT_EQ(other->open(), ENODEV);
}

}  // namespace
}  // namespace virtualcam
