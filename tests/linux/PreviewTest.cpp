#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <semaphore>
#include <vector>

#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/PreviewMode.h"
#include "platform/linux/preview/PreviewPipeline.h"
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
        EXPECT_TRUE(expected.starts_with(mode.kind ? mode.kind->mediaType : "EMPTY")) << offered;
        EXPECT_TRUE(!mode.caps || gst_caps_is_equal(mode.caps.get(), right.get())) << offered;
    }
    EXPECT_EQ(expected, "EMPTY");
}

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
    Recorder() = default;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() override {  // what is still being closed ends before the process does
        EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    }
    void frame(VideoFrame frame) override {
        frames.push_back(std::move(frame));
        shown.release();
    }
    void noted(std::string remark) override { remarks.push_back(std::move(remark)); }
    void failed(std::string reason) override {
        reasons.push_back(std::move(reason));
        ended.release();
    }
    std::vector<VideoFrame> frames;
    std::vector<std::string> remarks;
    std::vector<std::string> reasons;
    std::counting_semaphore<> shown{0};
    std::counting_semaphore<> ended{0};
};

/// Makes 20 pictures unreadable, more than a decoder bears by itself, marks the next one, has the
/// one after it say that it comes in several scans, and the third that it is far larger. The fourth
/// is sound, but lacks the usual Huffman tables, as many cameras' do.
GstPadProbeReturn damage(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer /*unused*/) {
    GstBuffer* buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    const auto number = GST_BUFFER_PTS(buffer) / (33 * GST_MSECOND);
    std::string image(gst_buffer_get_size(buffer), '\xFF');
    if (number >= 20)
        gst_buffer_extract(buffer, 0, image.data(), image.size());
    const auto size = image.find("\xFF\xC0") + 5;
    const auto tables = image.find("\xFF\xC4");
    const auto scan = image.find("\xFF\xDA");
    if (number == 20)
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_CORRUPTED);
    else if (number == 21)
        image.replace(scan, 14, "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00", 10);
    else if (number == 22)
        image.replace(size, 4, "\x06\x00\x06\x00", 4);
    else if (number == 23)
        image.erase(tables, scan - tables);
    gst_buffer_fill(buffer, 0, image.data(), image.size());
    gst_buffer_set_size(buffer, static_cast<gssize>(image.size()));
    return GST_PAD_PROBE_OK;
}

const std::string endless = "videotestsrc ! capsfilter caps=video/x-raw,width=160,height=120";

/// The elements that `description` names, with one pad.
GstElement* elements(const std::string& description) {
    GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                          GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
    const GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
    if (description.ends_with("damaged"))
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, damage, nullptr, nullptr);
    return bin;
}

/// A preview whose pictures come from these elements.
std::unique_ptr<VideoSource> preview(const std::string& description,
                                     const std::string& notUsable = "") {
    return makePreview({[=] { return description.empty() ? nullptr : elements(description); },
                        [=] { return notUsable; }});
}

/// Each line of previews.txt is a stream, why it is not usable, why it ends, and the pictures' size
/// and number. All are of one colour.
TEST(Preview, ShowsPicturesThatFitAndSaysOnceWhyItEnded) {
    std::ifstream rows(QUELVO_LINUX_TESTS "/previews.txt");
    std::string stream, notUsable, reason;
    VideoFrame expected;
    std::size_t pictures = 1;
    while (rows >> std::quoted(stream) >> std::quoted(notUsable) >> std::quoted(reason) >>
           expected.width >> expected.height >> pictures) {
        SCOPED_TRACE(stream);
        Recorder recorder;
        auto source = preview(stream, notUsable);
        source->start({640, 480}, recorder);
        recorder.ended.acquire();
        source.reset();
        EXPECT_THAT(recorder.reasons, ElementsAre(HasSubstr(reason)));
        EXPECT_EQ(recorder.frames.size(), pictures);
        EXPECT_EQ(recorder.remarks.size(), stream.ends_with("damaged") ? 1U : 0U);
        for (const VideoFrame& frame : recorder.frames) {
            EXPECT_EQ(frame.width, expected.width);
            EXPECT_EQ(frame.height, expected.height);
            // At an odd width the test source gives the last one but half of its colour.
            const auto pixel = pixelsOf(frame).end()[-2];
            for (const auto& [shift, part] :
                 {std::pair{24, 0xFF}, {16, 0x20}, {8, 0x60}, {0, 0xC0}})
                EXPECT_NEAR(static_cast<int>(pixel >> shift & 0xFFU), part, 4);
        }
    }
    EXPECT_EQ(pictures, 0U);
}

TEST(Preview, StopsAtOnceAndForGood) {
    const auto source = preview(endless);
    for (int round = 0; round < 3; ++round) {
        Recorder recorder;
        source->start({640, 480}, recorder);
        if (round != 1)  // stopped while it may still be starting
            recorder.shown.acquire();
        source->stop();
        const std::size_t pictures = recorder.frames.size();
        source->stop();
        EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
        EXPECT_EQ(recorder.frames.size(), pictures);
        EXPECT_THAT(recorder.reasons, ElementsAre());
    }
}

TEST(Preview, NobodyWaitsForACameraThatHangs) {
    std::binary_semaphore hanging{0}, over{0};
    std::atomic<int> opened = 0;
    const auto makeElement = [&]() -> GstElement* {
        if (++opened > 1)
            return elements(endless);
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
    const auto elsewhere = preview(endless);
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
