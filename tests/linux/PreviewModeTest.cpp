#include "platform/linux/PreviewMode.h"

#include <gmock/gmock.h>

namespace platform {
namespace {

/// What is chosen for 640 x 480 from `offered`, as "kind width x height @ rate".
std::string choice(const std::string& offered) {
    EXPECT_EQ(loadGStreamer(), "");
    const GstCapsPtr caps(gst_caps_from_string(offered.c_str()));
    const PreviewMode mode = choosePreviewMode(caps.get(), {640, 480});
    if (mode.kind == nullptr)
        return "none";
    const GstStructure* chosen = gst_caps_get_structure(mode.caps.get(), 0);
    EXPECT_STREQ(gst_structure_get_name(chosen), mode.kind->mediaType);
    int numbers[4] = {0, 0, 0, 1};
    gst_structure_get_int(chosen, "width", &numbers[0]);
    gst_structure_get_int(chosen, "height", &numbers[1]);
    gst_structure_get_fraction(chosen, "framerate", &numbers[2], &numbers[3]);
    return std::string(mode.kind->mediaType) + " " + std::to_string(numbers[0]) + "x" +
           std::to_string(numbers[1]) + "@" + std::to_string(numbers[2] / numbers[3]);
}

std::string raw(const std::string& size, const std::string& rates) {
    return "video/x-raw,format=YUY2," + size + ",framerate=" + rates + ";";
}

std::string jpeg(const std::string& size, const std::string& rates) {
    return "image/jpeg," + size + ",framerate=" + rates + ";";
}

const std::string vga = "width=640,height=480";
const std::string quarter = "width=320,height=240";
const std::string hd = "width=1280,height=720";
const std::string fullHd = "width=1920,height=1080";

TEST(PreviewModes, FillTheLimits) {
    EXPECT_EQ(choice(raw(fullHd, "30/1") + raw(quarter, "30/1") + raw(vga, "{30/1,15/1}")),
              "video/x-raw 640x480@30");
    EXPECT_EQ(choice(raw(quarter, "30/1") + raw(fullHd, "30/1")), "video/x-raw 320x240@30");
    EXPECT_EQ(choice("video/x-raw,format=YUY2,width=[16,4096],height=[16,2160],framerate=[1/1,"
                     "120/1]"),
              "video/x-raw 640x480@30");
}

TEST(PreviewModes, TakeTheSmallestWhenAllAreTooLarge) {
    EXPECT_EQ(choice(jpeg(fullHd, "30/1") + jpeg(hd, "30/1")), "image/jpeg 1280x720@30");
    EXPECT_EQ(choice(raw(hd, "10/1") + jpeg(hd, "30/1")), "image/jpeg 1280x720@30");
}

TEST(PreviewModes, MoveSmoothlyWithTheLeastWork) {
    EXPECT_EQ(choice(jpeg(vga, "30/1") + raw(vga, "30/1")), "video/x-raw 640x480@30");
    EXPECT_EQ(choice(raw(vga, "15/1") + jpeg(vga, "30/1")), "image/jpeg 640x480@30");
    EXPECT_EQ(choice(raw(vga, "5/1") + raw(quarter, "30/1")), "video/x-raw 320x240@30");
    EXPECT_EQ(choice("video/x-h264," + vga + ",framerate=30/1;" + jpeg(vga, "30/1")),
              "image/jpeg 640x480@30");
    EXPECT_EQ(choice(raw(vga, "{60/1,30/1,15/1}")), "video/x-raw 640x480@30");
}

TEST(PreviewModes, AreOnlyWhatCanBeShown) {
    EXPECT_EQ(choice("video/x-h264," + fullHd + ",framerate=30/1"), "video/x-h264 1920x1080@30");
    EXPECT_EQ(choice("video/x-bayer,format=bggr," + vga + ",framerate=30/1"), "none");
    EXPECT_EQ(choice("video/x-raw,format=unheard-of," + vga + ",framerate=30/1"), "none");
    EXPECT_EQ(choice("video/x-raw(memory:DMABuf),format=YUY2," + vga + ",framerate=30/1"), "none");
    EXPECT_EQ(choice("video/x-raw,format=YUY2,width=0,height=480,framerate=30/1"), "none");
    EXPECT_EQ(choice("image/jpeg"), "none");
    EXPECT_EQ(choice("ANY"), "none");
    EXPECT_EQ(choice("EMPTY"), "none");
}

}  // namespace
}  // namespace platform
