#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <regex>
#include <semaphore>
#include <sstream>
#include <vector>

#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/Preview.h"
#include "platform/linux/preview/PreviewMode.h"
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

using testing::ElementsAre;
using testing::HasSubstr;

/// Makes GStreamer's words of those of modes.txt.
GstCapsPtr capsOf(std::string modes) {
    for (const auto& [word, type] :
         {std::pair("yuy2", "video/x-raw,format=YUY2"), std::pair("jpeg", "image/jpeg"),
          std::pair("h264", "video/x-h264")})
        modes = std::regex_replace(modes, std::regex(fmt::format(R"({} (\d+)x(\d+) (\d+))", word)),
                                   fmt::format("{},width=$1,height=$2,framerate=$3/1", type));
    return GstCapsPtr(gst_caps_from_string(modes.c_str()));
}

TEST(PreviewModes, AreAsLargeAsTheLimitsThenSmoothThenEasyToDecode) {
    ASSERT_EQ(loadGStreamer(), "");
    g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);  // what GLib calls wrong is wrong
    std::ifstream rows(QUELVO_LINUX_TESTS "/modes.txt");
    for (std::string row; std::getline(rows, row);) {
        const std::size_t arrow = row.find(" -> ");
        if (arrow == std::string::npos)
            continue;
        const GstCapsPtr offered = capsOf(row.substr(0, arrow));
        const GstCapsPtr right = capsOf(row.substr(arrow + 4));
        const PreviewMode mode = choosePreviewMode(offered.get(), {640, 480});
        EXPECT_EQ(mode.kind == nullptr, gst_caps_is_empty(right.get())) << row;
        EXPECT_TRUE(!mode.caps || gst_caps_is_equal(mode.caps.get(), right.get())) << row;
        EXPECT_TRUE(!mode.caps || gst_structure_has_name(gst_caps_get_structure(right.get(), 0),
                                                         mode.kind->mediaType))
            << row;
    }
}

const auto closing = std::make_shared<ClosingPreviews>();

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
    Recorder() = default;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() override {  // what is still being closed ends before the process does
        EXPECT_TRUE(closing->waitForAll(std::chrono::minutes(1)));
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

bool isDamaged(const std::string& description) {
    return description.find("name=damaged") != std::string::npos;
}

/// The elements that `description` names, with one pad.
GstElement* elements(const std::string& description) {
    GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                          GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
    const GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
    if (isDamaged(description))
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, damage, nullptr, nullptr);
    return bin;
}

/// A preview whose pictures come from these elements.
std::unique_ptr<VideoSource> preview(const std::string& description,
                                     const std::string& notUsable = "") {
    return makePreview({[=] { return description.empty() ? nullptr : elements(description); },
                        [=] { return notUsable; }},
                       closing);
}

/// Takes the elements out of a row of previews.txt, and why the camera is not usable.
std::pair<std::string, std::string> readStream(const Row& row) {
    constexpr std::string_view colour = "colour";
    constexpr std::string_view unusable = "unusable: ";
    std::string stream, reason;
    for (const std::string& line : row.given)
        if (line.starts_with(unusable))
            reason = line.substr(unusable.size());
        else
            stream += line + ' ';
    if (stream.starts_with(colour))
        stream.replace(0, colour.size(),
                       "videotestsrc pattern=solid-color foreground-color=0xFF2060C0");
    return {stream, reason};
}

TEST(Preview, ShowsPicturesThatFitAndSaysOnceWhyItEnded) {
    for (const Row& row : readRows("previews.txt")) {
        const auto [stream, notUsable] = readStream(row);
        SCOPED_TRACE(stream);
        std::istringstream outcome(row.expected.at(0));
        std::size_t pictures = 0;
        VideoFrame expected;
        std::string reason;
        outcome >> pictures >> expected.width >> expected.height >> std::ws;
        std::getline(outcome, reason);
        Recorder recorder;
        auto source = preview(stream, notUsable);
        source->start({640, 480}, recorder);
        recorder.ended.acquire();
        source.reset();
        EXPECT_THAT(recorder.reasons, ElementsAre(HasSubstr(reason)));
        EXPECT_EQ(recorder.frames.size(), pictures);
        EXPECT_EQ(recorder.remarks.size(), isDamaged(stream) ? 1U : 0U);
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
        EXPECT_TRUE(closing->waitForAll(std::chrono::minutes(1)));
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
    EXPECT_THAT(first.reasons, ElementsAre());
    EXPECT_THAT(next.reasons, ElementsAre());
}

}  // namespace
}  // namespace platform
