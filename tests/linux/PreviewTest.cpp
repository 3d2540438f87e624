#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>
#include <semaphore>
#include <vector>

#include "platform/linux/ClosingPreviews.h"
#include "platform/linux/PreviewMode.h"
#include "platform/linux/PreviewPipeline.h"
#include "tests/support/Pixels.h"

namespace platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string raw = "video/x-raw,format=YUY2";
const std::string jpeg = "image/jpeg";
const std::string h264 = "video/x-h264";

/// The rest of a mode's description, and of a list of them.
std::string size(int width, int height, const std::string& rate = "30/1") {
    return fmt::format(",width={},height={},framerate={};", width, height, rate);
}

TEST(PreviewModes, FillTheLimitsSmoothlyWithTheLeastWork) {
    ASSERT_EQ(loadGStreamer(), "");
    const std::string ranges = ",width=[16,4096],height=[16,2160],framerate=[1/1,120/1]";
    const std::pair<std::string, std::string> rows[] = {
        {raw + size(1920, 1080) + raw + size(320, 240) + raw + size(640, 480),
         raw + size(640, 480)},
        {raw + size(320, 240) + raw + size(1920, 1080), raw + size(320, 240)},
        {raw + size(640, 960) + raw + size(1280, 480) + raw + size(320, 240), raw + size(320, 240)},
        {raw + ranges, raw + size(640, 480)},
        {jpeg + size(1920, 1080) + jpeg + size(1280, 720), jpeg + size(1280, 720)},
        {raw + size(1280, 720, "10/1") + jpeg + size(1280, 720), jpeg + size(1280, 720)},
        {jpeg + size(640, 480) + raw + size(640, 480), raw + size(640, 480)},
        {raw + size(640, 480, "15/1") + jpeg + size(640, 480), jpeg + size(640, 480)},
        {raw + size(640, 480, "5/1") + raw + size(320, 240), raw + size(320, 240)},
        {raw + size(640, 480, "{60/1,30/1,15/1}"), raw + size(640, 480)},
        {h264 + size(640, 480) + jpeg + size(640, 480), jpeg + size(640, 480)},
        {h264 + size(1920, 1080), h264 + size(1920, 1080)},
        {"video/x-bayer,format=bggr" + size(640, 480), ""},
        {"video/x-raw,format=unheard-of" + size(640, 480), ""},
        {"video/x-raw(memory:DMABuf),format=YUY2" + size(640, 480), ""},
        {raw + size(0, 480), ""},
        {jpeg, ""},
        {"ANY", ""},
        {"EMPTY", ""},
    };
    for (const auto& [offered, expected] : rows) {
        const GstCapsPtr caps(gst_caps_from_string(offered.c_str()));
        const GstCapsPtr right(gst_caps_from_string(expected.empty() ? "EMPTY" : expected.c_str()));
        const PreviewMode mode = choosePreviewMode(caps.get(), {640, 480});
        EXPECT_EQ(mode.kind == nullptr, expected.empty()) << offered;
        EXPECT_TRUE(mode.kind == nullptr || gst_caps_is_equal(mode.caps.get(), right.get()))
            << offered;
        EXPECT_TRUE(mode.kind == nullptr || expected.starts_with(mode.kind->mediaType)) << offered;
    }
}

/// Keeps what a preview delivers, to be read when it has stopped, and lets the test wait for it.
struct Recorder : VideoSink {
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

/// A preview whose pictures come from the elements that `description` names.
std::unique_ptr<VideoSource> preview(const std::string& description,
                                     const std::string& notUsable = "") {
    const auto makeElement = [description]() -> GstElement* {
        if (description.empty())
            return nullptr;
        GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr,
                                                              GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
        const GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
        if (description.ends_with("jpegenc"))
            gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, damage, nullptr, nullptr);
        return bin;
    };
    return makePreview({makeElement, [notUsable] { return notUsable; }});
}

const std::string plain = "videotestsrc pattern=solid-color foreground-color=0xFF2060C0 ";
const std::string small =
    "! capsfilter caps=video/x-raw,format=YUY2,width=160,height=120,framerate=30/1 ";

TEST(Preview, ShowsPicturesThatFitAndOutliveIt) {
    const struct {
        std::string stream;
        int width, height;
        std::size_t least, most;
    } rows[] = {
        {plain + "num-buffers=3 " + small, 160, 120, 3, 3},
        {plain + "num-buffers=1 ! capsfilter caps=video/x-raw,format=NV12,width=1280,height=720",
         640, 360, 1, 1},
        // The camera itself sends the size that was chosen.
        {plain + "num-buffers=1", 640, 480, 1, 1},
        // Of the damaged ones only the one before the last may be shown.
        {plain + "num-buffers=26 ! video/x-raw,format=BGRx ! videoconvert ! "
                 "video/x-raw,format=I420,colorimetry=1:4:0:0,width=640,height=480 ! jpegenc",
         640, 480, 4, 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stream);
        Recorder recorder;
        auto source = preview(row.stream);
        source->start({640, 480}, recorder);
        recorder.ended.acquire();
        source.reset();
        EXPECT_THAT(recorder.reasons, ElementsAre("The camera sends no more pictures."));
        ASSERT_GE(recorder.frames.size(), row.least);
        EXPECT_LE(recorder.frames.size(), row.most);
        const VideoFrame& frame = recorder.frames[0];
        EXPECT_EQ(frame.width, row.width);
        EXPECT_EQ(frame.height, row.height);
        const std::uint32_t middle =
            pixelsOf(frame)[static_cast<std::size_t>((row.height + 1) * row.width / 2)];
        for (const auto& [shift, colour] : {std::pair{24, 0xFF}, {16, 0x20}, {8, 0x60}, {0, 0xC0}})
            EXPECT_NEAR(static_cast<int>(middle >> shift & 0xFFU), colour, 4);
    }
}

TEST(Preview, StopsAtOnceAndForGood) {
    Recorder last;
    const auto source = preview(plain + small);
    for (int round = 0; round < 2; ++round) {
        Recorder recorder;
        source->start({640, 480}, recorder);
        recorder.shown.acquire();
        source->stop();
        const std::size_t delivered = recorder.frames.size();
        source->stop();
        EXPECT_EQ(recorder.frames.size(), delivered);
        EXPECT_THAT(recorder.reasons, ElementsAre());
    }
    // Stopped while it may still be starting, and by its end.
    source->start({640, 480}, last);
    source->stop();
    source->start({640, 480}, last);
}

/// Lets what is still being closed end before the process does.
class Ending : public testing::Environment {
  public:
    void TearDown() override {
        EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    }
};
[[maybe_unused]] const auto* const ending = testing::AddGlobalTestEnvironment(new Ending);

TEST(Preview, NobodyWaitsForACameraThatHangs) {
    std::promise<void> hanging;
    std::promise<void> over;
    std::atomic<int> opened = 0;
    const auto makeElement = [&, released = over.get_future().share()]() -> GstElement* {
        if (++opened > 1)
            return gst_parse_bin_from_description((plain + small).c_str(), TRUE, nullptr);
        hanging.set_value();
        released.wait();
        return nullptr;  // for which nobody is left to be told
    };
    const PreviewOrigin origin{makeElement, [] { return std::string(); }, "a camera"};
    Recorder first;
    auto source = makePreview(origin);
    source->start({640, 480}, first);
    hanging.get_future().wait();
    source->stop();
    // Those that follow take their turn behind it, but for those that are given up as well.
    Recorder next;
    for (int i = 0; i < 20; ++i) {
        source = makePreview(origin);
        source->start({640, 480}, next);
    }
    EXPECT_FALSE(ClosingPreviews::all().waitForAll(std::chrono::milliseconds(1)));
    EXPECT_EQ(opened, 1);
    Recorder other;
    const auto elsewhere = preview(plain + small);
    elsewhere->start({640, 480}, other);
    other.shown.acquire();
    over.set_value();
    next.shown.acquire();
    EXPECT_EQ(opened, 2);
    source.reset();
    EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    EXPECT_THAT(first.reasons, ElementsAre());
    EXPECT_THAT(next.reasons, ElementsAre());
}

TEST(Preview, SaysOnceWhyItEnded) {
    const struct {
        std::string stream, notUsable, expected;
    } rows[] = {
        {plain + small + "! identity error-after=3", "", "The preview has stopped: "},
        // What is known of the camera tells more than the pipeline's own words.
        {plain + small + "! identity error-after=3", "The camera is gone.", "The camera is gone."},
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
        source.reset();
        EXPECT_THAT(recorder.reasons, ElementsAre(HasSubstr(row.expected)));
    }
}

}  // namespace
}  // namespace platform
