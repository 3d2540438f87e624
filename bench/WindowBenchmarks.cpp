// What a person waits for on a camera whose every answer takes its time: a slider that is dragged,
// and the pages being filled.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMouseEvent>
#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <stdexcept>
#include <thread>

#include "tests/support/WindowFixture.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::milliseconds kAnswer{20};
constexpr std::chrono::milliseconds kStep{1};
constexpr int kPositions = 160;  // as many pixels as the slider is sure to have

/// Drags the slider's handle from its left end, a pixel at a time. The hand is a thread of its own
/// that posts the mouse's events, as it does not wait for the window either.
class Hand {
  public:
    explicit Hand(QSlider& slider) : slider_(slider), thread_([this] { drag(); }) {}

    /// When the hand was `step` pixels away from the start; for a step that the slider has seen.
    Clock::time_point timeOf(int step) const { return times_.at(static_cast<std::size_t>(step)); }

  private:
    void drag() {
        const auto start = Clock::now();
        post(QEvent::MouseButtonPress, 0, Qt::LeftButton);
        for (int step = 1; step <= kPositions; ++step) {
            std::this_thread::sleep_until(start + step * kStep);
            times_.at(static_cast<std::size_t>(step)) = Clock::now();
            post(QEvent::MouseMove, step, Qt::NoButton);
        }
        post(QEvent::MouseButtonRelease, kPositions, Qt::LeftButton);
    }

    void post(QEvent::Type type, int step, Qt::MouseButton button) {
        // The event itself is made on the main thread, as the toolkit's pointing device is there.
        const auto handle = [&slider = slider_, type, step, button] {
            const QPointF position(kGrip + step, slider.height() / 2.0);
            const Qt::MouseButtons held =
                type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
            QMouseEvent event(type, position, position, button, held, Qt::NoModifier);
            QCoreApplication::sendEvent(&slider, &event);
        };
        QMetaObject::invokeMethod(&slider_, handle, Qt::QueuedConnection);
    }

    static constexpr int kGrip = 7;  // within the handle at the left end
    QSlider& slider_;
    std::array<Clock::time_point, kPositions + 1> times_;
    std::jthread thread_;  // the last one: it uses the others
};

/// What became of one drag.
struct Drag {
    int moved = 0;           ///< positions of the slider
    int sent = 0;            ///< positions that the camera was asked for
    bool lastSent = false;   ///< the camera has the position at which the hand let go
    double lagAtEnd = 0;     ///< from there until the camera had it, in answer times
    double greatestLag = 0;  ///< from any position sent until the camera had it, in answer times
    int mostAnswers = 0;     ///< the answers within that time, its own included
};

/// Sees a drag from all three sides: the hand, the slider and the camera.
class DragWatch : public QObject {
  public:
    explicit DragWatch(WindowFixture& fixture)
        : fixture_(fixture), slider_(fixture.slider("m_sliderBright")) {
        fixture_.camera().setWait([this](std::chrono::milliseconds time) {
            std::this_thread::sleep_for(time);
            answered_.push_back(Clock::now());
        });
        slider_.setValue(slider_.minimum());
        QCoreApplication::processEvents();
        fixture_.requests();
        answered_.clear();
        slider_.installEventFilter(this);
        connect(&slider_, &QSlider::valueChanged, this, [this](int value) { step_[value] = now_; });
        // The window was connected first, and has sent the last position by then.
        connect(&slider_, &QSlider::sliderReleased, this, [this] { released_ = true; });
    }

    Drag run() {
        const Hand hand(slider_);
        if (!WindowFixture::waitUntil([this] { return released_; }))
            throw std::runtime_error("the drag does not end");
        Drag drag{.moved = static_cast<int>(step_.size())};
        for (const auto& request : fixture_.camera().requests()) {
            const auto answered = answered_.at(static_cast<std::size_t>(drag.sent++));
            const auto value =
                static_cast<std::int16_t>(request.data.at(0) | request.data.at(1) << 8);
            const auto moved = hand.timeOf(step_.at(value));
            const auto answers = std::ranges::count_if(
                answered_, [&](Clock::time_point at) { return at > moved && at <= answered; });
            drag.mostAnswers = std::max(drag.mostAnswers, static_cast<int>(answers));
            drag.greatestLag =
                std::max(drag.greatestLag, Milliseconds(answered - moved) / Milliseconds(kAnswer));
            drag.lastSent = value == slider_.value();
            drag.lagAtEnd =
                Milliseconds(answered - hand.timeOf(kPositions)) / Milliseconds(kAnswer);
        }
        return drag;
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseMove)
            ++now_;
        return QObject::eventFilter(watched, event);
    }

  private:
    WindowFixture& fixture_;
    QSlider& slider_;
    std::vector<Clock::time_point> answered_;
    std::map<int, int> step_;  // of the hand, for each position of the slider
    int now_ = 0;
    bool released_ = false;
};

void dragBrightness(benchmark::State& state) {
    WindowFixture fixture;
    fixture.pressOpen();
    fixture.camera().setFaults({.delay = kAnswer});
    Drag worst{.lastSent = true};
    for ([[maybe_unused]] auto iteration : state) {
        const Drag drag = DragWatch(fixture).run();
        worst.lastSent = worst.lastSent && drag.lastSent;
        worst.lagAtEnd = std::max(worst.lagAtEnd, drag.lagAtEnd);
        worst.greatestLag = std::max(worst.greatestLag, drag.greatestLag);
        worst.mostAnswers = std::max(worst.mostAnswers, drag.mostAnswers);
        worst.moved += drag.moved;
        worst.sent += drag.sent;
    }
    if (!worst.lastSent)
        state.SkipWithError("the camera did not get the last position");
    const auto mean = benchmark::Counter::kAvgIterations;
    state.counters["moved"] = benchmark::Counter(worst.moved, mean);
    state.counters["sent"] = benchmark::Counter(worst.sent, mean);
    state.counters["answers_until_sent"] = worst.mostAnswers;
    state.counters["lag_at_end"] = worst.lagAtEnd;
    state.counters["lag_at_most"] = worst.greatestLag;
}
BENCHMARK(dragBrightness)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);

/// From the click on the open button until both pages are filled. The counter `ratio` compares it
/// with the time in which the camera made its answers. It sends no pictures: the built-in camera
/// would draw them on this processor, and no real one does.
void openCamera(benchmark::State& state) {
    WindowFixture fixture;
    Milliseconds answers{0};
    fixture.camera().setWait([&answers](std::chrono::milliseconds time) {
        const auto start = Clock::now();
        std::this_thread::sleep_for(time);
        answers += Clock::now() - start;
    });
    fixture.camera().setFaults(
        {.delay = std::chrono::milliseconds(state.range(0)), .videoOpen = "It sends no pictures."});
    auto& openButton = fixture.button("OnBtnOpenCamera:");
    Milliseconds total{0};
    for ([[maybe_unused]] auto iteration : state) {
        const auto start = Clock::now();
        openButton.click();
        QCoreApplication::processEvents();
        total += Clock::now() - start;
    }
    state.counters["ratio"] = total / answers;
}
BENCHMARK(openCamera)->Arg(1)->Arg(5)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
