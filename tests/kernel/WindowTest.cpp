// The program's window on the kernel's driver: what it sends over the wire and shows of a camera,
// and a camera on a loose cable, pulled out at any moment and plugged in many times.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "tests/kernel/KernelWindow.h"
#include "tests/support/Exchanges.h"
#include "tests/support/Footprint.h"
#include "tests/support/Pixels.h"
#include "virtualcam/camera/DemoBus.h"

namespace {

using virtualcam::studioCamera;

constexpr const char* requestFailed = "CameraControl Error: ";
constexpr const char* previewFailed = "ERROR: trying to open camera: ";

/// Whether the driver makes the request of itself, at times of its own: it reads the limits of a
/// standard control before it first writes it, the values that a mode governs after it has written
/// the mode, and from unit 0 why a request was refused.
bool isDriversOwn(const virtualcam::RequestRecord& record) {
    const virtualcam::ControlId id{static_cast<std::uint8_t>(record.wIndex >> 8),
                                   static_cast<std::uint8_t>(record.wValue >> 8)};
    const auto& rows = virtualcam::studioControls();
    const auto row = std::ranges::find(rows, id, &virtualcam::ControlRow::id);
    if (id.unit == virtualcam::interfaceUnit || row == rows.end())
        return true;
    return id.unit != extensionUnitID && record.bRequest != SET_CUR &&
           (record.bRequest != GET_CUR || (row->info & virtualcam::infoAutoUpdate) != 0);
}

class Window : public testing::Test, public KernelWindow {
  protected:
    /// Opens a camera that is sane again, looks at it and pulls it out.
    void expectSane() {
        auto plugged = plug(studioCamera(), 0);
        const int failed = log.count(requestFailed);
        clickOpen();
        EXPECT_EQ(log.count(requestFailed), failed);
        EXPECT_EQ(shown("m_lableVersion"), "v3 V9.2.4");
        awaitPicture();
        plugged.reset();
        EXPECT_TRUE(waitForCameras(0));
    }

    /// Performs an exchange on the window and the camera that it shows.
    void performOn(virtualcam::VirtualCamera& camera, const Exchange& exchange) {
        perform(exchange, {*this, camera, log, [this] { clickOpen(); }, isDriversOwn});
    }

    static std::set<std::string> videoNodes() {
        std::set<std::string> names;
        for (const auto& node : std::filesystem::directory_iterator("/sys/class/video4linux"))
            names.insert(node.path().filename());
        return names;
    }

    /// The latest picture's last colour. What a decoder rounds off is rounded as well.
    static std::uint32_t colour() {
        return (pixelsOf(*g_captureSession->latestFrame()).back() + 0x040404U) & 0xFFF8F8F8U;
    }
};

}  // namespace

// All on one camera: to plug one in takes long.
TEST_F(Window, SendsTheExchangesOfBothPages) {
    const auto plugged = plug(studioCamera(), 0);
    setInCamera(plugged->camera(), {1, CT_FOCUS_AUTO_CONTROL}, {0});
    setInCamera(plugged->camera(), {1, CT_AE_MODE_CONTROL}, {1});
    setInCamera(plugged->camera(), {3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
    clickOpen();
    for (const auto& exchange : readExchanges({"standard-page.txt", "vendor-page.txt"}, "kernel")) {
        plugged->camera().clearRequests();
        log.take();
        performOn(plugged->camera(), exchange);
    }
}

TEST_F(Window, OfSeveralCamerasTheChosenOneIsOpenedWithItsValuesAndItsPicture) {
    const auto classic = plug(virtualcam::classicCamera(), 2);
    const auto studio = plug(studioCamera(), 1);
    const auto twin = plug(studioCamera(), 0);  // the first of the two by its name on the bus
    clickOpen();
    EXPECT_FALSE(isEnabled("m_sliderZoom"));
    EXPECT_EQ(shown("m_lableVersion"), "v1 SOC:V1.0.5");
    choose("m_cbxDevice", "Quelvo Studio Camera");
    log.take();
    performOn(studio->camera(), readExchanges({"page-load.txt"}, "kernel").at(0));
    awaitPicture();
    EXPECT_EQ(colour(), 0xFF808080);
    clickOpen();  // once more, while it streams
    awaitPicture();
    EXPECT_EQ(log.count("ERROR"), 0);
    moveSlider("m_sliderBright", 255);  // of the camera that the preview shows, too
    EXPECT_TRUE(waitUntil([] { return colour() == 0xFFC8C8C8; }));
    EXPECT_THAT(twin->camera().requests(), testing::IsEmpty());
}

// Pictures that are broken come among those of a clip.
TEST_F(Window, ShowsEveryFormatInItsColoursAndSaysWhenThereIsNoneThatItKnows) {
    for (const auto& [format, awaited] :
         {std::pair{"MJPEG", 0xFF2060C0U}, std::pair{"H264", 0xFFC06020U}}) {
        SCOPED_TRACE(format);
        EXPECT_TRUE(waitForCameras(0));
        const auto plugged = plug(studioCamera(), 0, format);
        clickOpen();
        awaitPicture();
        EXPECT_TRUE(waitUntil([awaited = awaited] { return colour() == awaited; }));
        EXPECT_EQ(log.count("ERROR"), 0);
        g_captureSession->stopRunning();
    }
    EXPECT_EQ(log.count("The camera has sent a damaged picture"), 1);
    EXPECT_EQ(log.count("The camera has sent a picture far larger than announced"), 1);
    EXPECT_TRUE(waitForCameras(0));
    const auto plugged = plug(studioCamera(), 0, "BY8");
    clickOpen();
    EXPECT_TRUE(waitUntil([&] {
        return log.count("ERROR: trying to open camera: The camera has no picture format") == 1;
    }));
}

// Its driver lets go of it, it is forbidden, another program shows it.
TEST_F(Window, ACameraThatCannotBeUsedForAWhileWorksOnceItCan) {
    const auto plugged = plug(studioCamera(), 0);
    clickOpen();
    awaitPicture();
    const std::filesystem::path driver = "/sys/bus/usb/drivers/uvcvideo";
    const auto node = "/sys/class/video4linux/" + *videoNodes().begin() + "/device";
    const auto interface = std::filesystem::canonical(node).filename().string();
    std::ofstream(driver / "unbind") << interface;
    EXPECT_TRUE(waitForCameras(0));
    EXPECT_TRUE(waitUntil([&] { return log.count(previewFailed) == 1; }));
    moveSlider("m_sliderBright", 4);
    EXPECT_EQ(log.count(requestFailed), 1);
    std::ofstream(driver / "bind") << interface;
    EXPECT_TRUE(waitForCameras(1));

    log.take();
    ASSERT_EQ(seteuid(65534), 0);  // nobody
    clickOpen();
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(log.count("ERROR: trying to open camera: There is no permission"), 1);
    EXPECT_EQ(shown("m_lableVersion"), "Get device info failed!");

    const int other = open(("/dev/" + *videoNodes().begin()).c_str(), O_RDWR | O_CLOEXEC);
    v4l2_requestbuffers buffers{1, V4L2_BUF_TYPE_VIDEO_CAPTURE, V4L2_MEMORY_MMAP, 0, 0, {}};
    ASSERT_EQ(ioctl(other, VIDIOC_REQBUFS, &buffers), 0);
    clickOpen();
    EXPECT_TRUE(waitUntil([&] { return log.count(previewFailed) == 2; }));
    EXPECT_EQ(shown("m_lableVersion"), "v3 V9.2.4");
    close(other);
    clickOpen();
    awaitPicture();
    EXPECT_EQ(log.count(previewFailed), 2);
}

// Of its own time-outs, the driver lets the window wait for two at the most.
TEST_F(Window, WhereverACameraFallsSilentInAnOpenTheWindowIsBackSoonAndTheNextOpenWorks) {
    const auto plugged = plug(studioCamera(), 0);
    auto& camera = plugged->camera();
    std::atomic<int> answered = 0;
    camera.setWait([&](std::chrono::milliseconds) {
        if (--answered == 0)
            camera.setFaults({.delay = virtualcam::controlTimeout});
    });
    for (const int after : {1, 3, 9, 20}) {
        SCOPED_TRACE(testing::Message() << "after " << after << " requests");
        answered = after;
        camera.setFaults({.delay = std::chrono::milliseconds(1)});
        const auto start = std::chrono::steady_clock::now();
        clickOpen();
        EXPECT_LT(std::chrono::steady_clock::now() - start, 3 * virtualcam::controlTimeout);
        EXPECT_THAT(log.take(requestFailed),
                    testing::Contains(testing::HasSubstr("request failed: 0000006e")));
        camera.setFaults({});
        endRest();
        clickOpen();
        EXPECT_EQ(log.count(requestFailed), 0);
        awaitPicture();
    }
}

// The next one in the port is another camera, of which the open channel knows nothing.
TEST_F(Window, PulledOutDuringADragItIsToldOnceAndTheNextOneIsNotTouched) {
    auto plugged = plug(studioCamera(), 0);
    clickOpen();
    awaitPicture();
    const auto nodes = videoNodes();
    slider("m_sliderGama").setSliderDown(true);
    moveSlider("m_sliderGama", 100);
    plugged.reset();
    moveSlider("m_sliderGama", 101);
    EXPECT_TRUE(waitForCameras(0));
    EXPECT_TRUE(waitUntil([&] { return log.count(previewFailed) > 0; }));
    g_captureSession->stopRunning();
    EXPECT_TRUE(waitForPreviews());
    const auto next = plug(studioCamera(), 0);
    EXPECT_EQ(videoNodes(), nodes) << "nothing keeps the number of the one that left";
    const int failed = log.count(requestFailed);
    moveSlider("m_sliderGama", 102);
    slider("m_sliderGama").setSliderDown(false);
    EXPECT_GT(log.count(requestFailed), failed);
    EXPECT_THAT(next->camera().requests(), testing::IsEmpty());
}

// From the first request, over the preview's start and the page load, to the moves of a slider.
TEST_F(Window, PulledOutAtAnyMomentItIsToldAndLeavesNothingBehindAndTheNextOpenWorks) {
    Footprint before;
    for (unsigned answered = 0; answered <= 140; answered += 10) {
        SCOPED_TRACE(testing::Message() << "after " << answered << " requests");
        const auto plugged = plug(studioCamera(), 0);
        log.take();
        plugged->camera().setFaults({.vanishesAfter = answered});
        clickOpen();
        for (int i = 0; i <= 140 && log.count(requestFailed) == 0; ++i)
            moveSlider("m_sliderBright", i % 2 == 0 ? 3 : 9);
        EXPECT_GT(log.count(requestFailed), 0);
        EXPECT_TRUE(waitForCameras(0));
        expectSane();
        EXPECT_TRUE(waitUntil([&] { return log.count(previewFailed) > 0; }));
        EXPECT_EQ(log.count("processRemoveDeviceEventWithNotification"), 2);
        // The pull ends the preview at a time of its own, a stop within the wait.
        g_captureSession->stopRunning();
        EXPECT_TRUE(waitForPreviews());
        if (answered == 100)
            before = Footprint::now();
    }
    log.take();
    const Footprint after = Footprint::now();
    before.threads += 2;  // GLib keeps threads without work for a while
    // A picture may still be on its way to the window.
    EXPECT_TRUE(after.isBackAt(before, std::size_t{48} * 1024)) << after << "; before: " << before;
}
