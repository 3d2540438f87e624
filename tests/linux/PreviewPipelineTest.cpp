#include "platform/linux/PreviewPipeline.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <vector>

#include "platform/linux/ClosingPreviews.h"

namespace platform {
namespace {

using testing::HasSubstr;

/// Keeps what a preview delivers, and lets the test wait for it.
class Recorder : public VideoSink {
  public:
    void frame(VideoFrame frame) override {
        const std::lock_guard lock(mutex_);
        frames_.push_back(std::move(frame));
        changed_.notify_all();
    }

    void failed(std::string reason) override {
        const std::lock_guard lock(mutex_);
        reasons_.push_back(std::move(reason));
        changed_.notify_all();
    }

    /// Waits for the preview's end and returns the one reason told for it.
    std::string reason() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [this] { return !reasons_.empty(); });
        EXPECT_EQ(reasons_.size(), 1U);
        return reasons_.empty() ? "" : reasons_.front();
    }

    /// Waits for a picture and returns the first.
    VideoFrame first() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [this] { return !frames_.empty(); });
        return frames_.empty() ? VideoFrame() : frames_.front();
    }

    VideoFrame last() {
        const std::lock_guard lock(mutex_);
        return frames_.empty() ? VideoFrame() : frames_.back();
    }

    std::size_t frames() {
        const std::lock_guard lock(mutex_);
        return frames_.size();
    }

    std::size_t failures() {
        const std::lock_guard lock(mutex_);
        return reasons_.size();
    }

  private:
    static constexpr std::chrono::seconds patience{30};

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<VideoFrame> frames_;
    std::vector<std::string> reasons_;
};

/// A preview whose pictures come from the elements that `description` names.
std::unique_ptr<VideoSource> preview(const std::string& description,
                                     const std::string& notUsable = "") {
    return makePreview({[description] {
                            return gst_parse_bin_from_description_full(
                                description.c_str(), TRUE, nullptr, GST_PARSE_FLAG_PLACE_IN_BIN,
                                nullptr);
                        },
                        [notUsable] { return notUsable; }});
}

/// Plain pictures in one colour, 0xRRGGBB.
std::string plain(int count, const std::string& caps, unsigned colour) {
    return "videotestsrc pattern=solid-color num-buffers=" + std::to_string(count) +
           " foreground-color=" + std::to_string(0xFF000000U | colour) +
           " ! capsfilter caps=" + caps;
}

/// The colours of a pixel in the middle, with the byte above them cleared.
std::uint32_t middle(const VideoFrame& frame) {
    const auto* row = frame.pixels + frame.height / 2 * frame.bytesPerLine;
    const auto byte = [&](int i) {
        return static_cast<std::uint32_t>(row[frame.width / 2 * 4 + i]);
    };
    return byte(0) | byte(1) << 8 | byte(2) << 16;
}

void expectColour(const VideoFrame& frame, std::uint32_t colour) {
    ASSERT_NE(frame.pixels, nullptr);
    for (const int shift : {0, 8, 16})
        EXPECT_NEAR(static_cast<int>(middle(frame) >> shift & 0xFF),
                    static_cast<int>(colour >> shift & 0xFF), 16)
            << std::hex << middle(frame);
}

constexpr const char* small = "video/x-raw,format=YUY2,width=160,height=120,framerate=30/1";

/// Lets what is still being closed end before the process does.
class Ending : public testing::Environment {
  public:
    void TearDown() override {
        EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    }
};

[[maybe_unused]] const auto* const ending = testing::AddGlobalTestEnvironment(new Ending);

TEST(Preview, ShowsPlainPictures) {
    Recorder recorder;
    const auto source =
        preview(plain(3, "video/x-raw,format=YUY2,width=320,height=240,framerate=30/1", 0x2060C0));
    source->start({640, 480}, recorder);
    EXPECT_EQ(recorder.reason(), "The camera sends no more pictures.");
    source->stop();
    // The pictures outlive the preview.
    const VideoFrame frame = recorder.first();
    EXPECT_EQ(frame.width, 320);
    EXPECT_EQ(frame.height, 240);
    EXPECT_GE(frame.bytesPerLine, 320 * 4);
    expectColour(frame, 0x2060C0);
    EXPECT_EQ(recorder.frames(), 3U);
}

TEST(Preview, MakesLargePicturesFitAndKeepsTheirShape) {
    Recorder recorder;
    const auto source =
        preview(plain(1, "video/x-raw,format=NV12,width=1280,height=720,framerate=30/1", 0x00FF00));
    source->start({640, 480}, recorder);
    EXPECT_EQ(recorder.reason(), "The camera sends no more pictures.");
    EXPECT_EQ(recorder.first().width, 640);
    EXPECT_EQ(recorder.first().height, 360);
    expectColour(recorder.first(), 0x00FF00);
}

/// Spoils the first pictures that pass, each in another way.
GstPadProbeReturn spoil(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer counter) {
    GstBuffer* buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    const gsize size = gst_buffer_get_size(buffer);
    switch ((*static_cast<int*>(counter))++) {
        case 0:
            gst_buffer_set_size(buffer, static_cast<gssize>(size / 2));
            break;
        case 1:
            gst_buffer_memset(buffer, 0, 0x55, size);
            break;
        case 2:
            gst_buffer_memset(buffer, size / 2, 0xFF, 40);
            break;
        case 3:
            GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_CORRUPTED);
            break;
        case 4:
            gst_buffer_set_size(buffer, 0);
            break;
        default:
            break;
    }
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    return GST_PAD_PROBE_OK;
}

TEST(Preview, GoesOnAfterBrokenJpegs) {
    Recorder recorder;
    int pictures = 0;
    const auto makeElement = [&pictures] {
        GstElement* bin = gst_parse_bin_from_description_full(
            (plain(8,
                   "video/x-raw,format=I420,colorimetry=1:4:0:0,width=640,height=480,"
                   "framerate=30/1 ! jpegenc",
                   0xC04020))
                .c_str(),
            TRUE, nullptr, GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
        const GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, spoil, &pictures, nullptr);
        return bin;
    };
    const auto source = makePreview({makeElement, [] { return std::string(); }});
    source->start({640, 480}, recorder);
    EXPECT_EQ(recorder.reason(), "The camera sends no more pictures.");
    source->stop();
    EXPECT_EQ(pictures, 8);
    // The half one and the one with a hole may be shown or not.
    EXPECT_GE(recorder.frames(), 3U);
    EXPECT_LE(recorder.frames(), 5U);
    expectColour(recorder.last(), 0xC04020);
}

TEST(Preview, StopsAtOnceAndForGood) {
    Recorder recorder;
    const auto source = preview(plain(-1, small, 0x0000FF));
    for (int round = 0; round < 2; ++round) {
        Recorder fresh;
        source->start({640, 480}, fresh);
        expectColour(fresh.first(), 0x0000FF);
        source->stop();
        const std::size_t delivered = fresh.frames();
        source->stop();
        EXPECT_EQ(fresh.frames(), delivered);
        EXPECT_EQ(fresh.failures(), 0U);
    }
    // Stopped while it may still be starting, and by its end.
    source->start({640, 480}, recorder);
    source->stop();
    source->start({640, 480}, recorder);
}

TEST(Preview, NobodyWaitsForACameraThatHangs) {
    std::promise<void> hanging;
    std::promise<void> over;
    std::atomic<int> opened = 0;
    const auto makeElement = [&, released = over.get_future().share()]() -> GstElement* {
        if (++opened == 1) {
            hanging.set_value();
            released.wait();
            return nullptr;  // for which nobody is left to be told
        }
        return gst_parse_bin_from_description_full(plain(-1, small, 0x00FF00).c_str(), TRUE,
                                                   nullptr, GST_PARSE_FLAG_PLACE_IN_BIN, nullptr);
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
    const auto elsewhere = preview(plain(1, small, 0x0000FF));
    elsewhere->start({640, 480}, other);
    expectColour(other.first(), 0x0000FF);
    over.set_value();
    expectColour(next.first(), 0x00FF00);
    EXPECT_EQ(opened, 2);
    source.reset();
    EXPECT_TRUE(ClosingPreviews::all().waitForAll(std::chrono::minutes(1)));
    EXPECT_EQ(first.failures() + next.failures(), 0U);
}

TEST(Preview, SaysWhyItEnded) {
    struct Case {
        std::string description;
        std::string notUsable;
        std::string expected;
    };
    const Case cases[] = {
        {plain(-1, small, 0) + " ! identity error-after=3", "", "The preview has stopped: "},
        // What is known of the camera tells more than the pipeline's own words.
        {plain(-1, small, 0) + " ! identity error-after=3", "The camera is gone.",
         "The camera is gone."},
        {plain(1, "video/x-raw,format=GRAY8,width=16,height=16 ! pngenc", 0), "",
         "no picture format"},
        {"v4l2src device=/nonexistent/video0", "", "The preview has stopped: "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.description);
        Recorder recorder;
        const auto source = preview(c.description, c.notUsable);
        source->start({640, 480}, recorder);
        EXPECT_THAT(recorder.reason(), HasSubstr(c.expected));
        source->stop();
        EXPECT_EQ(recorder.failures(), 1U);
    }
    Recorder recorder;
    const auto lacking =
        makePreview({[]() -> GstElement* { return nullptr; }, [] { return std::string(); }});
    lacking->start({640, 480}, recorder);
    EXPECT_EQ(recorder.reason(), "GStreamer lacks the video source.");
}

TEST(Preview, OfACameraThatIsGoneSaysSo) {
    Recorder recorder;
    const auto source = openPreview("/nonexistent/video0");
    source->start({640, 480}, recorder);
    EXPECT_EQ(recorder.reason(), "The camera at /nonexistent/video0 is gone.");
}

}  // namespace
}  // namespace platform
