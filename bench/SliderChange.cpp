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
#include <QSignalBlocker>
#include <QTabWidget>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "camera/OpenCamera.h"
#include "devices/CameraList.h"
#include "tests/kernel/KernelWindow.h"
#include "virtualcam/camera/DemoBus.h"

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
        uvc_xu_control_query query{extensionUnitID, XU_NR2D, code, size, data};
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
    using Clock = std::chrono::steady_clock;

    static Bench& get() {
        if (!bench_)
            bench_.reset(new Bench);
        return *bench_;
    }

    /// Ends it, while there is an application still.
    static void end() { bench_.reset(); }

    /// Lets the camera take so long for each answer from now on.
    void answerAfter(std::chrono::milliseconds time) {
        answer_ = time;
        // Even one that answers at once tells when it is asked.
        plugged_->camera().setFaults({.delay = std::max(time, std::chrono::milliseconds(1))});
    }

    /// Shows a page, and returns a slider of it.
    QSlider& slider(const char* name, int page) {
        window_.window().findChild<QTabWidget*>()->setCurrentIndex(page);
        QCoreApplication::processEvents();
        return window_.slider(name);
    }

    /// When the camera had answered the latest request.
    Clock::time_point answered() const { return answered_; }

    /// How many requests the camera had since the last call.
    std::size_t requests() {
        const std::size_t count = plugged_->camera().requests().size();
        plugged_->camera().clearRequests();
        return count;
    }

  private:
    Bench() : plugged_(window_.plug(virtualcam::studioCamera(), 0)) {
        OpenCameraByUniqueID(g_deviceList.at(0).uniqueID.data());
        plugged_->camera().setWait([this](std::chrono::milliseconds /*nominal*/) {
            std::this_thread::sleep_for(answer_.load());
            answered_ = Clock::now();
        });
    }

    static inline std::unique_ptr<Bench> bench_;
    std::atomic<std::chrono::milliseconds> answer_{};
    std::atomic<Clock::time_point> answered_{};
    KernelWindow window_;
    std::unique_ptr<UsbipCamera> plugged_;
};

/// The seconds that `change` takes until the camera has answered the last of `requests` requests.
/// The slider's row is redrawn and the window comes to rest first: the camera and the kernel have
/// slept for a while then, and as long for each way to change it.
template <class Change>
double timeOf(Change change, const QSlider& slider, std::size_t requests) {
    Bench& bench = Bench::get();
    slider.parentWidget()->update(0, slider.y(), slider.parentWidget()->width(), slider.height());
    for (int turn = 0; turn < 3; ++turn)
        QCoreApplication::processEvents();
    bench.requests();
    const auto start = Bench::Clock::now();
    change();
    const auto taken = std::chrono::duration<double>(bench.answered() - start).count();
    if (bench.requests() != requests)
        throw std::runtime_error("not the requests that were to be measured");
    return taken;
}

/// The middle one, which an interruption by others does not move.
double medianOf(std::vector<double> times) {
    std::ranges::sort(times);
    return times.at(times.size() / 2);
}

/// Changes the number of a slider in the window, which sends it, and by turns with that the
/// camera's by `setBare`, while the same slider moves and sends nothing. Each takes `requests`
/// requests. The counters "window" and "bare" are the medians in seconds: what else the machine
/// does meets both alike.
template <class Set>
void measure(benchmark::State& state, QSlider& slider, std::size_t requests, Set setBare) {
    Bench::get().answerAfter(std::chrono::milliseconds(state.range(0)));
    Node node;
    setBare(node, 3);  // the first use of a control asks the camera for more
    const auto setInWindow = [&] {
        slider.setValue(1);
        QCoreApplication::processEvents();
    };
    const auto setInCamera = [&] {
        setBare(node, 2);
        const QSignalBlocker quiet(slider);
        slider.setValue(2);
        QCoreApplication::processEvents();
    };
    std::vector<double> window;
    std::vector<double> bare;
    for ([[maybe_unused]] auto iteration : state) {
        window.push_back(timeOf(setInWindow, slider, requests));
        bare.push_back(timeOf(setInCamera, slider, requests));
    }
    state.counters["window"] = medianOf(std::move(window));
    state.counters["bare"] = medianOf(std::move(bare));
}

void brightness(benchmark::State& state) {
    measure(state, Bench::get().slider("m_sliderBright", 0), 1,
            [](Node& node, int number) { node.setBrightness(number); });
}

void noiseReduction(benchmark::State& state) {
    measure(state, Bench::get().slider("m_SliderNR2D", 1), 2,
            [](Node& node, int number) { node.setNoiseReduction(number); });
}

BENCHMARK(brightness)->Arg(0)->Arg(1)->Arg(5)->Iterations(200);
BENCHMARK(noiseReduction)->Arg(0)->Arg(1)->Arg(5)->Iterations(200);

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    Bench::end();
}
