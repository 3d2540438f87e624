#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <semaphore>

#include "platform/linux/devices/VideoNode.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/Preview.h"
#include "platform/linux/preview/PreviewMode.h"
#include "tests/linux/FakeMachine.h"
#include "tests/linux/Rows.h"
#include "tests/support/Pixels.h"

// GLib leaves the first table of its interned strings behind when it makes a larger one. What
// allocates it is run by the loader, as only a whole backtrace shows.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ld-linux\n";
}

namespace platform {
namespace {

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
    void frame(VideoFrame frame) override {
        frames.push_back(std::move(frame));
        shown.release();
    }
    void noted(std::string remark) override { said.push_back(std::move(remark)); }
    void failed(std::string reason) override {
        said.push_back(reason.substr(0, reason.find(':')));
        ended.release();
    }
    std::vector<VideoFrame> frames;
    Lines said;
    std::counting_semaphore<> shown{0}, ended{0};
};

/// What keeps the machine's camera from being used.
std::string whyNot() {
    return whyNotUsable("/dev/video10");
}

/// The elements that `description` names, with one pad; null for none.
GstElement* elements(const std::string& description) {
    return description.empty()
               ? nullptr
               : gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                     GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
}

struct Preview : testing::Test {
    void SetUp() override {
        fakeMachine.reset();
        std::filesystem::current_path(QUELVO_LINUX_TESTS);
        ASSERT_EQ(loadGStreamer(), "");
        g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);  // what GLib calls wrong is wrong
    }
    void TearDown() override { EXPECT_TRUE(closing->waitForAll(std::chrono::minutes(1))); }

    /// A preview of the machine's camera at that path, or of these elements.
    std::unique_ptr<VideoSource> preview(const std::string& origin) {
        if (origin.starts_with('/'))
            return openPreview(origin, closing);
        return makePreview({[=] { return elements(origin); }, whyNot}, closing);
    }

    const std::shared_ptr<ClosingPreviews> closing = std::make_shared<ClosingPreviews>();
    const std::string endless = "videotestsrc ! capsfilter caps=video/x-raw,width=160,height=120";
};

TEST_F(Preview, TakesAModeAsLargeAsTheLimitsThenSmoothThenEasyToDecode) {
    checkRows("modes.txt", [](const Lines& modes) {
        const GstCapsPtr caps(gst_caps_from_string(joined(modes, ";").c_str()));
        const PreviewMode mode = choosePreviewMode(caps.get(), {640, 480});
        if (!mode.caps)
            return Lines{mode.kind == nullptr ? "none" : "a kind without a mode"};
        const g_autofree char* chosen = gst_caps_to_string(mode.caps.get());
        EXPECT_THAT(chosen, testing::StartsWith(mode.kind->mediaType));
        return Lines{chosen};
    });
}

TEST_F(Preview, ShowsPicturesThatFitAndSaysOnceWhyItEnded) {
    checkRows("previews.txt", [this](const Lines& given) {
        fakeMachine.reset();
        std::string origin = joined(given, " ");
        if (origin.starts_with("/dev/video10")) {
            fakeMachine.change(given[0]);
            origin.erase(0, given[0].size() + 1);
        }
        Recorder recorder;
        auto source = preview(origin);
        source->start({640, 480}, recorder);
        recorder.ended.acquire();
        source.reset();
        Lines shown;
        for (const VideoFrame& frame : recorder.frames) {
            // At an odd width the test source gives the last one but half of its colour. What a
            // decoder rounds off is rounded as well.
            const auto pixel = (pixelsOf(frame).end()[-2] + 0x040404U) & 0xFFF8F8F8U;
            shown.push_back(fmt::format("{}x{} {:08x}", frame.width, frame.height, pixel));
        }
        shown.insert(shown.end(), recorder.said.begin(), recorder.said.end());
        return shown;
    });
}

TEST_F(Preview, StopsAtOnceAndForGood) {
    const auto source = preview(endless);
    for (const bool isShown : {true, false, true}) {  // or stopped while it may still be starting
        Recorder recorder;
        source->start({640, 480}, recorder);
        if (isShown)
            recorder.shown.acquire();
        source->stop();
        const std::size_t pictures = recorder.frames.size();
        source->stop();
        TearDown();
        EXPECT_EQ(recorder.frames.size(), pictures);
        EXPECT_THAT(recorder.said, testing::IsEmpty());
    }
}

TEST_F(Preview, NobodyWaitsForACameraThatHangs) {
    std::binary_semaphore hanging{0}, over{0};
    std::atomic<int> opened = 0;
    const auto makeElement = [&]() -> GstElement* {
        if (++opened > 1)
            return elements(endless);
        hanging.release();
        over.acquire();
        return nullptr;  // for which nobody is left to be told
    };
    const PreviewOrigin origin{makeElement, whyNot, "a camera"};
    Recorder first, next, other;
    auto source = makePreview(origin, closing);
    source->start({640, 480}, first);
    hanging.acquire();
    // Those that follow take their turn behind it, but for those that are given up as well.
    for (int i = 0; i < 20; ++i) {
        source = makePreview(origin, closing);
        source->start({640, 480}, next);
    }
    EXPECT_FALSE(closing->waitForAll(std::chrono::milliseconds(1)));
    const auto elsewhere = preview(endless);
    elsewhere->start({640, 480}, other);
    other.shown.acquire();
    EXPECT_EQ(opened, 1);
    over.release();
    next.shown.acquire();
    EXPECT_EQ(opened, 2);
    source.reset();
    EXPECT_TRUE(first.said.empty() && next.said.empty());
}

}  // namespace
}  // namespace platform
