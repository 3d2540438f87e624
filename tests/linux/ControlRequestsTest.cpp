#include "platform/linux/ControlRequests.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

#include "platform/linux/VideoNode.h"

namespace platform {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::map<std::string, int> codes{
    {"set", UVC_SET_CUR},   {"get", UVC_GET_CUR}, {"min", UVC_GET_MIN},
    {"max", UVC_GET_MAX},   {"res", UVC_GET_RES}, {"len", UVC_GET_LEN},
    {"info", UVC_GET_INFO}, {"def", UVC_GET_DEF}, {"odd", 0x99}};

/// A node that keeps controls as the kernel's driver does, with its checks of an argument's form.
class FakeNode : public Ioctl {
  public:
    std::map<std::uint32_t, v4l2_query_ext_ctrl> descriptions;
    std::map<std::uint32_t, std::int32_t> values;
    std::uint32_t modes = 0;                 // a bit for each item of the exposure modes' menu
    std::map<unsigned, Bytes> vendorValues;  // of unit 16, by selector
    v4l2_capability capability{};
    int signals = 0;  // how many calls a signal breaks off
    int error = 0;    // what all others fail with
    int calls = 0;

    int call(unsigned long request, void* argument) override {
        ++calls;
        if (signals-- > 0 || error != 0)
            return signals >= 0 ? EINTR : error;
        if (request == UVCIOC_CTRL_QUERY)
            return query(*static_cast<uvc_xu_control_query*>(argument));
        if (request == VIDIOC_QUERYMENU)
            return modes >> static_cast<v4l2_querymenu*>(argument)->index & 1U ? 0 : EINVAL;
        if (request == VIDIOC_QUERY_EXT_CTRL) {
            auto& control = *static_cast<v4l2_query_ext_ctrl*>(argument);
            control = descriptions.at(control.id);
        } else if (request == VIDIOC_QUERYCAP) {
            *static_cast<v4l2_capability*>(argument) = capability;
        } else if (request == VIDIOC_REQBUFS) {
            const auto& buffers = *static_cast<v4l2_requestbuffers*>(argument);
            EXPECT_EQ(buffers.count + buffers.type, V4L2_BUF_TYPE_VIDEO_CAPTURE);
        } else {
            EXPECT_TRUE(request == VIDIOC_S_EXT_CTRLS || request == VIDIOC_G_EXT_CTRLS) << request;
            const auto& all = *static_cast<v4l2_ext_controls*>(argument);
            EXPECT_EQ(all.which, static_cast<std::uint32_t>(V4L2_CTRL_WHICH_CUR_VAL));
            for (auto* one = all.controls; one != all.controls + all.count; ++one)
                (request == VIDIOC_S_EXT_CTRLS ? values.at(one->id) : one->value) =
                    request == VIDIOC_S_EXT_CTRLS ? one->value : values.at(one->id);
        }
        return 0;
    }

  private:
    int query(uvc_xu_control_query& query) {
        Bytes& value = vendorValues[query.selector];
        Bytes answer = value;
        if (query.query == UVC_GET_LEN)
            answer = {static_cast<std::uint8_t>(value.size()), 0};
        else if (query.query == UVC_GET_INFO)
            answer = {UVC_CONTROL_CAP_GET | UVC_CONTROL_CAP_SET};
        if (query.unit != 16 || query.size != answer.size())
            return query.unit != 16 ? ENOENT : ENOBUFS;
        if (query.query == UVC_SET_CUR)
            value.assign(query.data, query.data + query.size);
        else
            std::ranges::copy(answer, query.data);
        return 0;
    }
};

class ControlRequests : public testing::Test {
  protected:
    /// Sends a request, "get 3 2 cccc": unit 3, selector 2, and the bytes that are its data or its
    /// room. Returns what is then there, with a bar behind what is done; of a request that failed
    /// the error's name. The sanitizer sees what is written beside the bytes.
    std::string ask(const std::string& text) {
        std::istringstream words(text);
        std::string code;
        int unit = 0;
        int selector = 0;
        std::string hex;
        words >> code >> unit >> selector >> hex;
        Bytes data(hex.size() / 2);
        for (std::size_t i = 0; i < data.size(); ++i)
            data[i] = static_cast<std::uint8_t>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
        request.bmRequestType = code == "set" ? 0x21 : 0xA1;
        request.bRequest = static_cast<std::uint8_t>(codes.at(code));
        request.wValue = static_cast<std::uint16_t>(selector << 8);
        request.wIndex = static_cast<std::uint16_t>(unit << 8);
        request.wLength = static_cast<std::uint16_t>(data.size());
        request.pData = data.data();
        request.wLenDone = 77;
        node.calls = 0;
        const IOReturn status = performControlRequest(node, request);
        std::string there = fmt::format("{:02x}", fmt::join(data, ""));
        EXPECT_TRUE(status == 0 || (there == hex && request.wLenDone == 0)) << text;
        if (request.wLenDone != data.size())
            there.insert(std::size_t{2} * request.wLenDone, "|");
        return status == 0 ? there : strerrorname_np(status);
    }

    FakeNode node;
    IOUSBDevRequest request{};
};

TEST_F(ControlRequests, ReachEveryStandardControlByItsV4l2Control) {
    const struct {
        std::string control, wire;
        std::map<std::uint32_t, std::int32_t> values;
    } rows[] = {
        {"1 2 ", "01", {{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL}}},
        {"1 2 ", "02", {{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_AUTO}}},
        {"1 2 ", "04", {{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_SHUTTER_PRIORITY}}},
        {"1 2 ", "08", {{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY}}},
        {"1 4 ", "10270000", {{V4L2_CID_EXPOSURE_ABSOLUTE, 10000}}},
        {"1 6 ", "ffff", {{V4L2_CID_FOCUS_ABSOLUTE, 65535}}},
        {"1 8 ", "01", {{V4L2_CID_FOCUS_AUTO, 1}}},
        {"1 11 ", "6400", {{V4L2_CID_ZOOM_ABSOLUTE, 100}}},
        {"1 13 ",
         "a08c0000e0e3ffff",
         {{V4L2_CID_PAN_ABSOLUTE, 36000}, {V4L2_CID_TILT_ABSOLUTE, -7200}}},
        {"3 1 ", "0200", {{V4L2_CID_BACKLIGHT_COMPENSATION, 2}}},
        {"3 2 ", "f6ff", {{V4L2_CID_BRIGHTNESS, -10}}},
        {"3 3 ", "0080", {{V4L2_CID_CONTRAST, 32768}}},
        {"3 4 ", "0700", {{V4L2_CID_GAIN, 7}}},
        {"3 5 ", "02", {{V4L2_CID_POWER_LINE_FREQUENCY, V4L2_CID_POWER_LINE_FREQUENCY_60HZ}}},
        {"3 6 ", "0080", {{V4L2_CID_HUE, -32768}}},
        {"3 7 ", "4000", {{V4L2_CID_SATURATION, 64}}},
        {"3 8 ", "0300", {{V4L2_CID_SHARPNESS, 3}}},
        {"3 9 ", "2c01", {{V4L2_CID_GAMMA, 300}}},
        {"3 10 ", "8813", {{V4L2_CID_WHITE_BALANCE_TEMPERATURE, 5000}}},
        {"3 11 ", "01", {{V4L2_CID_AUTO_WHITE_BALANCE, 1}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.control);
        node.values = row.values;
        for (auto& [id, value] : node.values)
            node.descriptions[id].maximum = std::exchange(value, 99);
        EXPECT_EQ(ask("set " + row.control + row.wire), row.wire);
        EXPECT_EQ(node.calls, 1);  // also for two controls, so that no half is ever alone
        EXPECT_EQ(node.values, row.values);
        EXPECT_EQ(ask("get " + row.control + std::string(row.wire.size(), 'c')), row.wire);
        EXPECT_EQ(node.calls, 1);
        EXPECT_EQ(ask("len " + row.control + "cccc"), fmt::format("{:02x}00", row.wire.size() / 2));
    }
}

TEST_F(ControlRequests, AnswerIntoTheCallersRoomOrSayWhyNot) {
    node.descriptions[V4L2_CID_BRIGHTNESS] = {
        .minimum = -64, .maximum = 64, .step = 2, .default_value = -1};
    node.descriptions[V4L2_CID_CONTRAST] = {.flags = V4L2_CTRL_FLAG_DISABLED};
    node.descriptions[V4L2_CID_HUE] = {.flags = V4L2_CTRL_FLAG_READ_ONLY};
    node.descriptions[V4L2_CID_SHARPNESS] = {.flags = V4L2_CTRL_FLAG_WRITE_ONLY};
    node.descriptions[V4L2_CID_GAIN] = {.flags = V4L2_CTRL_FLAG_INACTIVE};
    node.descriptions[V4L2_CID_PAN_ABSOLUTE] = {.minimum = -36000,
                                                .flags = V4L2_CTRL_FLAG_VOLATILE};
    node.descriptions[V4L2_CID_TILT_ABSOLUTE] = {.minimum = -7200};
    // The upper half of an unsigned word comes with a sign.
    node.descriptions[V4L2_CID_EXPOSURE_ABSOLUTE] = {.maximum = -1};
    node.descriptions[V4L2_CID_EXPOSURE_AUTO] = {.default_value = V4L2_EXPOSURE_APERTURE_PRIORITY};
    node.modes = 1 << V4L2_EXPOSURE_MANUAL | 1 << V4L2_EXPOSURE_APERTURE_PRIORITY;
    node.values = {{V4L2_CID_BRIGHTNESS, 32768}, {V4L2_CID_CONTRAST, 65536},
                   {V4L2_CID_HUE, -32769},       {V4L2_CID_SHARPNESS, -1},
                   {V4L2_CID_GAIN, 0x1234},      {V4L2_CID_EXPOSURE_AUTO, 4}};
    node.vendorValues = {{9, {'v', '1'}}, {11, {0, 0}}};
    std::istringstream exchanges(R"(
        min 3 2 cccc = c0ff     max 3 2 cccc = 4000      res 3 2 cccc = 0200    def 3 2 cccc = ffff
        max 1 4 cccccccc = ffffffff                min 1 13 cccccccccccccccc = 6073ffffe0e3ffff
        res 1 2 cc = 09         def 1 2 cc = 08          min 1 2 cc = EBADRQC   max 1 2 cc = EBADRQC
        info 3 2 cccc = 03|cc   info 3 3 cccc = EINVAL   info 3 6 cccc = 01|cc
        info 3 8 cccc = 02|cc   info 3 4 cccc = 07|cc    info 1 13 cccc = 0b|cc
        get 3 2 cccc = ERANGE   get 3 3 cccc = ERANGE    get 3 6 cccc = ERANGE  get 3 8 cccc = ERANGE
        get 1 2 cc = EINVAL     get 1 3 cc = EINVAL      get 3 4 cc = 34        get 3 4 cccccc = 3412|cc
        set 3 4 01 = ENOBUFS    set 3 4 010000 = ENOBUFS set 1 13 00000000 = ENOBUFS
        set 3 12 00 = EINVAL    set 1 2 00 = EINVAL      set 1 2 03 = EINVAL
        set 1 4 00000080 = ERANGE                        odd 3 4 cccc = EBADRQC
        len 16 9 cccccc = 0200|cc    len 16 9 cc = 02         len 17 9 cccc = ENOENT
        info 16 9 cccc = 03|cc  get 16 9 cccc = 7631     get 16 9 cc = ENOBUFS
        set 16 11 f9ff = f9ff   get 16 11 cccc = f9ff)");
    std::string code, unit, selector, sent, sign, answer;
    while (exchanges >> code >> unit >> selector >> sent >> sign >> answer) {
        const std::string text = fmt::format("{} {} {} {}", code, unit, selector, sent);
        EXPECT_EQ(ask(text), answer) << text;
    }
    node.modes = 0;
    EXPECT_EQ(ask("res 1 2 cc"), "EINVAL");
    request.bRequest = UVC_SET_CUR;
    EXPECT_EQ(performControlRequest(node, request), EBADRQC);
    request.bRequest = UVC_GET_CUR;
    request.pData = nullptr;
    EXPECT_EQ(performControlRequest(node, request), EFAULT);
}

TEST_F(ControlRequests, PassTheDriversErrorsOnAndTryAgainAfterASignal) {
    for (const char* text :
         {"set 3 4 0000", "get 3 4 cccc", "len 3 4 cccc", "max 3 4 cccc", "res 1 2 cc",
          "set 16 9 0000", "get 16 9 cc", "len 16 9 cc", "info 16 9 cc"})
        for (const int error : {EACCES, EIO, ENODEV, EPIPE}) {
            node.signals = 2;
            node.error = error;
            EXPECT_EQ(ask(text), strerrorname_np(error)) << text;
        }
}

TEST(VideoNodes, AreCaptureNodesByTheirOwnCapabilities) {
    constexpr std::uint32_t device =
        V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_DEVICE_CAPS;
    FakeNode node;
    std::string card;
    for (const auto& [all, own, delivers] : {std::tuple{device, V4L2_CAP_VIDEO_CAPTURE, true},
                                             {device, V4L2_CAP_VIDEO_CAPTURE_MPLANE, true},
                                             {device, V4L2_CAP_META_CAPTURE, false},
                                             {std::uint32_t{V4L2_CAP_VIDEO_CAPTURE}, 0, true}}) {
        node.capability.capabilities = all;
        node.capability.device_caps = static_cast<std::uint32_t>(own);
        std::ranges::fill(node.capability.card, 'x');
        std::ranges::fill(node.capability.bus_info, 'y');
        EXPECT_EQ(capturesVideo(node, card), delivers) << own;
        EXPECT_EQ(card, std::string(sizeof node.capability.card, 'x'));
    }
    node.error = ENODEV;
    EXPECT_FALSE(capturesVideo(node, card));
}

TEST(VideoNodes, SayWhyTheyCannotBeUsed) {
    FakeNode node;
    for (const int status : {0, EBUSY, EINVAL}) {
        node.error = status;
        EXPECT_EQ(checkUnused(node), status == EBUSY ? EBUSY : 0);
    }
    EXPECT_THAT(openFailure("/dev/video0", EACCES), testing::HasSubstr("permission"));
    EXPECT_THAT(openFailure("/dev/video0", EBUSY), testing::HasSubstr("another program"));
    EXPECT_THAT(openFailure("/dev/video0", ENODEV), testing::HasSubstr("is gone"));
    EXPECT_THAT(openFailure("/dev/video0", EIO), testing::HasSubstr("Input/output error"));
}

TEST(VideoNodes, HoldTheDeviceThatIsMeantAndNoOther) {
    const auto lowestFree = [] {
        const int descriptor = ::dup(STDERR_FILENO);
        ::close(descriptor);
        return descriptor;
    };
    struct stat null {};
    ASSERT_EQ(::stat("/dev/null", &null), 0);
    const int before = lowestFree();
    {
        VideoNode node;
        EXPECT_EQ(node.open("/dev/null", null.st_rdev + 1), ENODEV);
        EXPECT_EQ(node.call(VIDIOC_QUERYCAP, nullptr), EBADF);
        EXPECT_EQ(lowestFree(), before);
        EXPECT_EQ(node.open("/nonexistent/video0"), ENODEV);
        EXPECT_EQ(node.open("/dev/null", null.st_rdev), 0);
        EXPECT_EQ(node.open("/dev/null"), 0);
    }
    EXPECT_EQ(lowestFree(), before);
}

}  // namespace
}  // namespace platform
