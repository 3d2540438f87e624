#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <semaphore>
#include <thread>

#include "platform/linux/SystemLog.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/H264Size.h"
#include "platform/linux/preview/Preview.h"
#include "platform/linux/preview/PreviewLink.h"
#include "platform/linux/preview/PreviewMode.h"
#include "tests/linux/Session.h"
#include "tests/support/Pixels.h"

// GLib leaves the first table of its interned strings behind when it makes a larger one. What
// allocates it is run by the loader, as only a whole backtrace shows; one of ten calls is cheaper.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=10";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ld-linux\n";
}

namespace platform {
namespace {

std::string joined(const Lines& lines, const char* between) {
    return fmt::format("{}", fmt::join(lines, between));
}

/// Checks the rows of a file of this folder, with a blank line between them: what `outcome` makes
/// of a row's lines is what stands behind its arrows. Lines with "#" are for people.
void checkRows(const std::string& name, const std::function<Lines(const Lines&)>& outcome) {
    std::ifstream file(QUELVO_LINUX_TESTS "/" + name);
    ASSERT_TRUE(file) << name;
    for (std::string line; file;) {
        Lines given, expected;
        while (std::getline(file, line) && !line.empty()) {
            const std::size_t arrow = std::min(line.find("->"), line.size());
            if (line[0] == '#')
                continue;
            if (arrow > 0)
                given.push_back(line.substr(0, line.find_last_not_of(' ', arrow - 1) + 1));
            if (arrow < line.size())
                expected.push_back(line.substr(std::min(arrow + 3, line.size())));
        }
        const Lines made = expected.empty() ? Lines() : outcome(given);
        EXPECT_EQ(joined(made, "\n"), joined(expected, "\n")) << joined(given, "\n");
    }
}

TEST(Linux, DoesWhatTheScriptsSay) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    for (const char* scripts : {"captures.txt", "usb.txt", "opened.txt", "requests.txt"})
        checkRows(scripts, saidIn);
}

TEST(SystemLog, SendsEachLineAsItIs) {
    testing::internal::CaptureStderr();
    SystemLog().line(std::string_view("100 %s of it, and no more").substr(0, 12));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quelvo: 100 %s of it\n");
}

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
    void frame(VideoFrame frame) override {
        frames.push_back(std::move(frame));
        shown.release();
    }
    void noted(std::string remark) override {
        said.push_back(std::move(remark));
        remarked.release();
    }
    void failed(std::string reason) override {
        said.push_back(reason.substr(0, reason.find(':')));
        ended.release();
    }
    std::vector<VideoFrame> frames;
    Lines said;
    std::counting_semaphore<> shown{0}, remarked{0}, ended{0};
};

int toMark = 0;  // pictures that are still to come

/// Tells a picture's time, and marks the first ones as corrupted, as the kernel does.
void mark(GstElement* /*element*/, GstBuffer* picture, gpointer /*unused*/) {
    if (toMark-- > 0)
        GST_BUFFER_FLAG_SET(picture, GST_BUFFER_FLAG_CORRUPTED);
    GST_BUFFER_PTS(picture) = gst_util_get_timestamp();
}

/// The elements that `description` names, with one pad. One of these can be called "marking".
GstElement* elements(const std::string& description) {
    toMark = 3;
    GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                          GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
    if (description.find("marking") != std::string::npos)
        g_signal_connect(GstElementPtr(gst_bin_get_by_name(GST_BIN(bin), "marking")).get(),
                         "handoff", G_CALLBACK(mark), nullptr);
    return bin;
}

struct Preview : testing::Test {
    void SetUp() override {
        std::filesystem::current_path(QUELVO_LINUX_TESTS);
        fakeMachine = FakeMachine();
        ASSERT_EQ(loadGStreamer(), "");
        for (const char* plugin : {"coreelements", "debug", "jpeg", "multifile", "png",
                                   "videoconvertscale", "videotestsrc"})
            ASSERT_EQ(loadPlugin(plugin), "");
        EXPECT_EQ(gst_registry_find_plugin(gst_registry_get(), "playback"), nullptr)
            << "no others are loaded or looked at";
        g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);  // what GLib calls wrong is wrong
    }
    void TearDown() override { EXPECT_TRUE(closing->waitForAll(std::chrono::minutes(1))); }

    /// A preview of these elements, with all the patience that it takes to load a decoder into a
    /// program that is watched.
    std::unique_ptr<VideoSource> preview(const std::string& description) {
        const auto makeSource = [=](auto& /*failure*/) { return elements(description); };
        const auto hold = [error = fakeMachine.tree["/dev/video10"]["ioctl"]](auto& /*held*/) {
            return error;
        };
        return makePreview({makeSource, hold, "", std::chrono::minutes(1)}, closing);
    }

    const std::shared_ptr<ClosingPreviews> closing = std::make_shared<ClosingPreviews>();
};

TEST_F(Preview, TakesASmoothModeThenOneAsLargeAsTheLimitsThenOneEasyToDecode) {
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

TEST(H264Test, StatesItsSizeInParametersOfEveryForm) {
    checkRows("sizes.txt", [](const Lines& digits) {
        const QByteArray bytes = QByteArray::fromHex(joined(digits, "").c_str());
        const std::vector<std::uint8_t> stream(bytes.begin(), bytes.end());
        const auto size = statedH264Size(stream);
        return Lines{size ? fmt::format("{}x{}", size->width, size->height) : "none"};
    });
}

TEST_F(Preview, ShowsPicturesThatFitAndSaysOnceWhyItEnded) {
    checkRows("previews.txt", [this](const Lines& given) {
        fakeMachine = FakeMachine();
        Session session;
        Lines description;
        std::unique_ptr<VideoSource> source;
        std::string error;
        for (const std::string& line : given)
            if (line.starts_with('/'))
                fakeMachine.change(line);
            else if (line == "open camera")
                source = session.capture.devices().at(0)->open(error);
            else
                description.push_back(line);
        Recorder recorder;
        if (!source)
            source = preview(joined(description, " "));
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

// Of a camera that hangs three times, until pictures come and at last until a single one does.
TEST(PreviewLinkTest, SaysOnceThatNoPictureComesAndOnceThatTheyComeNow) {
    Recorder recorder;
    PreviewLink link(recorder, std::chrono::seconds(1));
    std::thread watch([&] { link.watch(); });
    for (const bool goesOn : {true, true, false}) {
        recorder.remarked.acquire();
        link.deliver({});
        if (goesOn) {
            link.deliver({});
            recorder.remarked.acquire();
        }
    }
    link.report("It is over.");
    watch.join();
    const std::string none = "No picture comes from the camera.";
    const std::string come = "Pictures come from the camera now.";
    EXPECT_THAT(recorder.said, testing::ElementsAre(none, come, none, come, none, "It is over."));
}

TEST_F(Preview, StopsAtOnceAndForGoodAndWaitsForNoOtherCameraThatHangs) {
    const std::string endless = "videotestsrc ! capsfilter caps=video/x-raw,width=160,height=120";
    std::binary_semaphore hanging{0}, over{0};
    std::atomic<int> opened = 0;
    const auto makeSource = [&](auto& /*failure*/) -> GstElement* {
        if (++opened > 1)
            return elements(endless);
        hanging.release();
        over.acquire();
        return nullptr;  // for which nobody is left to be told
    };
    Recorder recorder, other;
    const auto elsewhere = preview(endless);
    const auto free = [](auto& /*held*/) { return ""; };
    const auto source =
        makePreview({makeSource, free, "a camera", std::chrono::milliseconds(1)}, closing);
    source->start({640, 480}, recorder);
    hanging.acquire();
    recorder.remarked.acquire();  // that no picture comes
    // Those that follow take their turn behind it, but for those that are given up as well.
    for (int i = 0; i < 20; ++i)
        source->start({640, 480}, recorder);
    EXPECT_FALSE(closing->waitForAll(std::chrono::milliseconds(1)));
    elsewhere->start({640, 480}, other);
    other.shown.acquire();
    EXPECT_EQ(opened, 1);
    over.release();
    recorder.shown.acquire();
    EXPECT_EQ(opened, 2);
    for (const bool isShown : {true, false, true}) {  // or stopped while it may still be starting
        Recorder again;
        source->start({640, 480}, again);
        if (isShown)
            again.shown.acquire();
        source->stop();
        const std::size_t pictures = again.frames.size();
        source->stop();
        TearDown();
        EXPECT_EQ(again.frames.size(), pictures);
        EXPECT_FALSE(recorder.ended.try_acquire() || again.ended.try_acquire());
    }
}

}  // namespace
}  // namespace platform
