// A slider's change on its way through the window to the camera, against the bare requests to the
// kernel's driver. Runs where a camera can be plugged in: in the kernel tests' machine.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QApplication>
#include <QTabWidget>
#include <memory>
#include <stdexcept>

#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "tests/kernel/KernelWindow.h"
#include "virtualcam/DemoBus.h"

namespace {

constexpr const char* kNode = "/dev/video0";

/// The bare requests, as a program without any window makes them.
class Node {
  public:
    Node() : descriptor_(::open(kNode, O_RDWR | O_CLOEXEC)) {}
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() { ::close(descriptor_); }

    /// Sets the brightness: one SET_CUR.
    void setBrightness(int number) {
        v4l2_control control{V4L2_CID_BRIGHTNESS, number};
        request(VIDIOC_S_CTRL, &control);
    }

    /// Sets the noise reduction of the vendor unit: GET_LEN, then SET_CUR.
    void setNoiseReduction(int number) {
        auto level = static_cast<std::uint8_t>(number);
        std::uint8_t length[2];
        query(UVC_GET_LEN, sizeof length, length);
        query(UVC_SET_CUR, sizeof level, &level);
    }

  private:
    void query(std::uint8_t code, std::uint16_t size, std::uint8_t* data) {
        uvc_xu_control_query query{virtualcam::kVendorUnit, virtualcam::XU_NR2D, code, size, data};
        request(UVCIOC_CTRL_QUERY, &query);
    }

    void request(unsigned long code, void* argument) {
        if (::ioctl(descriptor_, code, argument) != 0)
            throw std::runtime_error("the camera refuses");
    }

    int descriptor_;
};

/// One window with a camera open and not shown, for all benchmarks: plugging one in takes long.
class Bench {
  public:
    static Bench& get() {
        if (!bench_)
            bench_.reset(new Bench);
        return *bench_;
    }

    /// Ends it, while there is an application still.
    static void end() { bench_.reset(); }

    /// Moves a slider that is in sight, and waits until the camera has its value.
    void move(QSlider& slider, int page, int number) {
        window_.window().findChild<QTabWidget*>()->setCurrentIndex(page);
        slider.setValue(number);
        QCoreApplication::processEvents();  // paints
        QCoreApplication::processEvents();  // sends, as nothing else is left to do
    }

    QSlider& slider(const char* name) { return window_.slider(name); }
    std::size_t requests() { return plugged_.camera().requests().size(); }
    void forgetRequests() { plugged_.camera().clearRequests(); }

  private:
    Bench() : plugged_(window_.plug(virtualcam::studioCamera(), 0)) {
        window_.clickOpen();
        g_captureSession->stopRunning();
        QCoreApplication::processEvents();
    }

    static inline std::unique_ptr<Bench> bench_;
    KernelWindow window_;
    PluggedCamera plugged_;
};

/// Calls `change` with 1 and 2 by turns; each call must send `requests` requests.
template <class Change>
void measure(benchmark::State& state, std::size_t requests, Change change) {
    Bench& bench = Bench::get();
    change(0);  // the first use of a control asks the camera for more
    bench.forgetRequests();
    int number = 1;
    for ([[maybe_unused]] auto iteration : state) {
        number = 3 - number;
        change(number);
    }
    if (bench.requests() < requests * static_cast<std::size_t>(state.iterations()))
        state.SkipWithError("not the requests that were to be measured");
    bench.forgetRequests();
}

void windowBrightness(benchmark::State& state) {
    QSlider& slider = Bench::get().slider("m_sliderBright");
    measure(state, 1, [&](int number) { Bench::get().move(slider, 1, number); });
}

void bareBrightness(benchmark::State& state) {
    Bench::get();
    Node node;
    measure(state, 1, [&](int number) { node.setBrightness(number); });
}

void windowNoiseReduction(benchmark::State& state) {
    QSlider& slider = Bench::get().slider("m_SliderNR2D");
    measure(state, 2, [&](int number) { Bench::get().move(slider, 0, number); });
}

void bareNoiseReduction(benchmark::State& state) {
    Bench::get();
    Node node;
    measure(state, 2, [&](int number) { node.setNoiseReduction(number); });
}

BENCHMARK(windowBrightness)->UseRealTime();
BENCHMARK(bareBrightness)->UseRealTime();
BENCHMARK(windowNoiseReduction)->UseRealTime();
BENCHMARK(bareNoiseReduction)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    Bench::end();
}
