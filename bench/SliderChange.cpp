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

#include "camera/CameraFunctions.h"
#include "devices/CameraList.h"
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
        plugged_.camera().setFaults({.delay = std::max(time, std::chrono::milliseconds(1))});
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
        const std::size_t count = plugged_.camera().requests().size();
        plugged_.camera().clearRequests();
        return count;
    }

  private:
    Bench() : plugged_(window_.plug(virtualcam::studioCamera(), 0)) {
        OpenCameraByUniqueID(g_deviceList.at(0).uniqueID.data());
        plugged_.camera().setWait([this](std::chrono::milliseconds /*nominal*/) {
            std::this_thread::sleep_for(answer_.load());
            answered_ = Clock::now();
        });
    }

    static inline std::unique_ptr<Bench> bench_;
    std::atomic<std::chrono::milliseconds> answer_{};
    std::atomic<Clock::time_point> answered_{};
    KernelWindow window_;
    PluggedCamera plugged_;
};

/// Calls `change` with 1 and 2 by turns. Each call must send `requests` requests, and is timed
/// until the camera has answered the last one of them. Before each, `rest` lets the window do what
/// it does between two changes: the camera and the kernel have slept a while then. The counter
/// "median" is the median of all changes in seconds, which an interruption by others does not move.
template <class Rest, class Change>
void measure(benchmark::State& state, std::size_t requests, Rest rest, Change change) {
    Bench& bench = Bench::get();
    bench.answerAfter(std::chrono::milliseconds(state.range(0)));
    change(3);  // the first use of a control asks the camera for more
    int number = 1;
    std::vector<double> times;
    for ([[maybe_unused]] auto iteration : state) {
        number = 3 - number;
        rest(number);
        bench.requests();
        const auto start = Bench::Clock::now();
        change(number);
        times.push_back(std::chrono::duration<double>(bench.answered() - start).count());
        state.SetIterationTime(times.back());
        if (bench.requests() != requests)
            state.SkipWithError("not the requests that were to be measured");
    }
    std::ranges::sort(times);
    state.counters["median"] = times.at(times.size() / 2);
}

/// Changes the number of a slider in the window, which sends it.
void measureWindow(benchmark::State& state, std::size_t requests, QSlider& slider) {
    measure(
        state, requests, [](int /*number*/) { QCoreApplication::processEvents(); },
        [&](int number) {
            slider.setValue(number);
            QCoreApplication::processEvents();
        });
}

/// Sends a number with a bare request, while the same slider moves and sends nothing.
template <class Set>
void measureBare(benchmark::State& state, std::size_t requests, QSlider& slider, Set set) {
    Node node;
    measure(
        state, requests,
        [&](int number) {
            const QSignalBlocker quiet(slider);
            slider.setValue(number);
            QCoreApplication::processEvents();
        },
        [&](int number) { set(node, number); });
}

void windowBrightness(benchmark::State& state) {
    measureWindow(state, 1, Bench::get().slider("m_sliderBright", 1));
}

void bareBrightness(benchmark::State& state) {
    measureBare(state, 1, Bench::get().slider("m_sliderBright", 1),
                [](Node& node, int number) { node.setBrightness(number); });
}

void windowNoiseReduction(benchmark::State& state) {
    measureWindow(state, 2, Bench::get().slider("m_SliderNR2D", 0));
}

void bareNoiseReduction(benchmark::State& state) {
    measureBare(state, 2, Bench::get().slider("m_SliderNR2D", 0),
                [](Node& node, int number) { node.setNoiseReduction(number); });
}

BENCHMARK(windowBrightness)->Arg(0)->Arg(1)->Arg(5)->UseManualTime();
BENCHMARK(bareBrightness)->Arg(0)->Arg(1)->Arg(5)->UseManualTime();
BENCHMARK(windowNoiseReduction)->Arg(0)->Arg(1)->Arg(5)->UseManualTime();
BENCHMARK(bareNoiseReduction)->Arg(0)->Arg(1)->Arg(5)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    Bench::end();
}
