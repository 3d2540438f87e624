#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <ranges>
#include <semaphore>
#include <vector>

#include "platform/linux/ClosingPreviews.h"
#include "platform/linux/PreviewMode.h"
#include "platform/linux/PreviewPipeline.h"

// GLib leaves the first table of its interned strings behind when it makes a larger one. The table
// is known by the loader, whose file (a machine without symbols knows no more) runs the function
// that allocates it; only a whole backtrace shows that.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ld-linux\n";
}

namespace platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Each line of modes.txt is what a camera offers and, behind the bar, what is chosen of it.
TEST(PreviewModes, FillTheLimitsSmoothlyWithTheLeastWork) {
    ASSERT_EQ(loadGStreamer(), "");
    std::ifstream rows(QUELVO_LINUX_TESTS "/modes.txt");
    std::string offered, expected;
    while (std::getline(rows, offered, '|') && std::getline(rows, expected)) {
        const GstCapsPtr caps(gst_caps_from_string(offered.c_str()));
        const GstCapsPtr right(gst_caps_from_string(expected.c_str()));
        const PreviewMode mode = choosePreviewMode(caps.get(), {640, 480});
        EXPECT_EQ(mode.kind == nullptr, expected == "EMPTY") << offered;
        EXPECT_TRUE(mode.kind == nullptr || (gst_caps_is_equal(mode.caps.get(), right.get()) &&
                                             expected.starts_with(mode.kind->mediaType)))
            << offered;
    }
    EXPECT_EQ(expected, "EMPTY");
}

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
    ~Recorder() override {  // what is still being closed ends before the process does
        EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    }
    void frame(VideoFrame frame) override {
        frames.push_back(std::move(frame));
        shown.release();
    }
    void failed(std::string reason) override {
        reasons.push_back(std::move(reason));
        ended.release();
    }
    std::vector<VideoFrame> frames;
    std::vector<std::string> reasons;
    std::counting_semaphore<> shown{0};
    std::counting_semaphore<> ended{0};
};

/// Makes 20 pictures unreadable, more than a decoder bears by itself; damages the next two.
GstPadProbeReturn damage(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer /*unused*/) {
    GstBuffer* buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    const gsize length = gst_buffer_get_size(buffer);
    const auto number = GST_BUFFER_PTS(buffer) / (33 * GST_MSECOND);
    if (number <= 20)
        gst_buffer_memset(buffer, number < 20 ? 0 : length / 2, 0xFF, number < 20 ? length : 40);
    else if (number == 21)
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_CORRUPTED);
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    return GST_PAD_PROBE_OK;
}

const std::string plain = "videotestsrc pattern=solid-color foreground-color=0xFF2060C0 ";
const std::string small = plain + "! capsfilter caps=video/x-raw,format=YUY2,width=160,height=120 ";

/// The elements that `description` names, with one pad.
GstElement* elements(const std::string& description) {
    GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                          GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
    const GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
    if (description.ends_with("jpegenc"))
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, damage, nullptr, nullptr);
    return bin;
}

/// A preview whose pictures come from these elements.
std::unique_ptr<VideoSource> preview(const std::string& description, std::string notUsable = "") {
    return makePreview({[=] { return description.empty() ? nullptr : elements(description); },
                        [=] { return notUsable; }});
}

TEST(Preview, ShowsPicturesThatFitAndSaysOnceWhyItEnded) {
    const struct {
        std::string stream, notUsable, reason;
        int width, height;
        std::size_t pictures;
    } rows[] = {
        {plain + "num-buffers=1 ! capsfilter caps=video/x-raw,format=NV12,width=1280,height=720",
         "", "The camera sends no more pictures.", 640, 360, 1},
        // The camera itself sends the size that was chosen. Of the damaged pictures only the one
        // before the last may be shown.
        {plain + "num-buffers=26 ! video/x-raw,format=I420,colorimetry=1:4:0:0 ! jpegenc", "",
         "The camera sends no more pictures.", 640, 480, 4},
        {small + "! identity error-after=3", "", "The preview has stopped: ", 160, 120, 2},
        // What is known of the camera tells more than the pipeline's own words.
        {small + "! identity error-after=3", "The camera is gone.", "The camera is gone."},
        {plain + "! video/x-raw,format=GRAY8,width=16,height=16 ! pngenc", "", "no picture format"},
        {"v4l2src device=/nonexistent/video0", "", "The preview has stopped: "},
        {"", "", "GStreamer lacks the video source."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stream);
        Recorder recorder;
        auto source = preview(row.stream, row.notUsable);
        source->start({640, 480}, recorder);
        recorder.ended.acquire();
        source.reset();  // which the pictures outlive
        EXPECT_THAT(recorder.reasons, ElementsAre(HasSubstr(row.reason)));
        ASSERT_THAT(recorder.frames.size(), testing::AnyOf(row.pictures, row.pictures + 1));
        for (const VideoFrame& frame : recorder.frames | std::views::take(1)) {
            EXPECT_EQ(frame.width, row.width);
            EXPECT_EQ(frame.height, row.height);
            EXPECT_GE(frame.bytesPerLine, std::ptrdiff_t{4} * row.width);
            const std::byte* middle =
                frame.pixels + row.height / 2 * frame.bytesPerLine + std::ptrdiff_t{2} * row.width;
            for (const auto& [i, colour] : {std::pair{0, 0xC0}, {1, 0x60}, {2, 0x20}})
                EXPECT_NEAR(std::to_integer<int>(middle[i]), colour, 16);
        }
    }
}

TEST(Preview, StopsAtOnceAndForGood) {
    const auto source = preview(small);
    for (int round = 0; round < 3; ++round) {
        Recorder recorder;  // no picture may come that finds it gone
        source->start({640, 480}, recorder);
        if (round != 1)  // stopped while it may still be starting
            recorder.shown.acquire();
        source->stop();
        EXPECT_THAT(recorder.reasons, ElementsAre());
    }
}

TEST(Preview, NobodyWaitsForACameraThatHangs) {
    std::binary_semaphore hanging{0}, over{0};
    std::atomic<int> opened = 0;
    const auto makeElement = [&]() -> GstElement* {
        if (++opened > 1)
            return elements(small);
        hanging.release();
        over.acquire();
        return nullptr;  // for which nobody is left to be told
    };
    const PreviewOrigin origin{makeElement, [] { return std::string(); }, "a camera"};
    Recorder first, next, other;
    auto source = makePreview(origin);
    source->start({640, 480}, first);
    hanging.acquire();
    // Those that follow take their turn behind it, but for those that are given up as well.
    for (int i = 0; i < 20; ++i) {
        source = makePreview(origin);
        source->start({640, 480}, next);
    }
    EXPECT_FALSE(ClosingPreviews::all().waitForAll(std::chrono::milliseconds(1)));
    const auto elsewhere = preview(small);
    elsewhere->start({640, 480}, other);
    other.shown.acquire();
    EXPECT_EQ(opened, 1);
    over.release();
    next.shown.acquire();
    EXPECT_EQ(opened, 2);
    source.reset();
    EXPECT_THAT(first.reasons, ElementsAre());
    EXPECT_THAT(next.reasons, ElementsAre());
}

}  // namespace
}  // namespace platform
