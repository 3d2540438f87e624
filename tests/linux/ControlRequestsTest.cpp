#include "platform/linux/ControlRequests.h"

#include <gmock/gmock.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <array>
#include <vector>

#include "platform/linux/ControlRows.h"
#include "platform/linux/VideoNode.h"
#include "tests/linux/ScriptedNode.h"

namespace platform {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t setCur = 0x01;
constexpr std::uint8_t getCur = 0x81;
constexpr std::uint8_t getMin = 0x82;
constexpr std::uint8_t getMax = 0x83;
constexpr std::uint8_t getRes = 0x84;
constexpr std::uint8_t getLen = 0x85;
constexpr std::uint8_t getInfo = 0x86;
constexpr std::uint8_t getDef = 0x87;

/// Sends requests to a scripted node. The data is a heap block of exactly wLength bytes, so that
/// the sanitizer sees every byte written beside it.
class ControlRequests : public testing::Test {
  protected:
    IOReturn send(std::uint8_t code, unsigned unit, unsigned selector, Bytes bytes) {
        data = std::move(bytes);
        data.shrink_to_fit();
        request = {};
        request.bmRequestType = code == setCur ? 0x21 : 0xA1;
        request.bRequest = code;
        request.wValue = static_cast<std::uint16_t>(selector << 8);
        request.wIndex = static_cast<std::uint16_t>(unit << 8);
        request.wLength = static_cast<std::uint16_t>(data.size());
        request.pData = data.data();
        request.wLenDone = 77;
        return performControlRequest(node, request);
    }

    /// Expects one call that carries these controls; on a read, `values` are the answer.
    void expectControls(unsigned long call, const std::vector<std::uint32_t>& ids,
                        const std::vector<std::int32_t>& values, int status = 0) {
        node.expect<v4l2_ext_controls>(call, [=](v4l2_ext_controls& all) {
            EXPECT_EQ(all.which, static_cast<std::uint32_t>(V4L2_CTRL_WHICH_CUR_VAL));
            EXPECT_EQ(all.count, ids.size());
            for (std::size_t i = 0; i < std::min<std::size_t>(all.count, ids.size()); ++i) {
                EXPECT_EQ(all.controls[i].id, ids[i]);
                EXPECT_EQ(all.controls[i].size, 0U);
                if (call == VIDIOC_S_EXT_CTRLS)
                    EXPECT_EQ(all.controls[i].value, values[i]);
                else
                    all.controls[i].value = values[i];
            }
            return status;
        });
    }

    void expectDescription(std::uint32_t id, v4l2_query_ext_ctrl answer, int status = 0) {
        node.expect<v4l2_query_ext_ctrl>(VIDIOC_QUERY_EXT_CTRL, [=](v4l2_query_ext_ctrl& control) {
            EXPECT_EQ(control.id, id);
            control = answer;
            return status;
        });
    }

    static v4l2_query_ext_ctrl range(std::int64_t minimum, std::int64_t maximum, std::uint64_t step,
                                     std::int64_t byDefault) {
        v4l2_query_ext_ctrl control{};
        control.minimum = minimum;
        control.maximum = maximum;
        control.step = step;
        control.default_value = byDefault;
        return control;
    }

    void expectQuery(std::uint8_t code, std::uint8_t selector, const Bytes& before,
                     const Bytes& after, int status = 0, std::uint8_t unit = 16) {
        node.expect<uvc_xu_control_query>(UVCIOC_CTRL_QUERY, [=](uvc_xu_control_query& query) {
            EXPECT_EQ(query.unit, unit);
            EXPECT_EQ(query.selector, selector);
            EXPECT_EQ(query.query, code);
            EXPECT_EQ(query.size, after.size());
            if (!before.empty()) {
                EXPECT_EQ(Bytes(query.data, query.data + query.size), before);
            }
            std::copy_n(after.begin(), std::min<std::size_t>(query.size, after.size()), query.data);
            return status;
        });
    }

    ScriptedNode node;
    Bytes data;
    IOUSBDevRequest request;
};

TEST_F(ControlRequests, ReachEveryStandardControlByItsV4l2Control) {
    struct Case {
        unsigned unit;
        unsigned selector;
        std::vector<std::uint32_t> ids;
        Bytes wire;
        std::vector<std::int32_t> values;
    };
    const Case cases[] = {
        {1, 2, {V4L2_CID_EXPOSURE_AUTO}, {8}, {V4L2_EXPOSURE_APERTURE_PRIORITY}},
        {1, 4, {V4L2_CID_EXPOSURE_ABSOLUTE}, {0x10, 0x27, 0, 0}, {10000}},
        {1, 6, {V4L2_CID_FOCUS_ABSOLUTE}, {0xFF, 0xFF}, {65535}},
        {1, 8, {V4L2_CID_FOCUS_AUTO}, {1}, {1}},
        {1, 11, {V4L2_CID_ZOOM_ABSOLUTE}, {100, 0}, {100}},
        {1,
         13,
         {V4L2_CID_PAN_ABSOLUTE, V4L2_CID_TILT_ABSOLUTE},
         {0xA0, 0x8C, 0, 0, 0xE0, 0xE3, 0xFF, 0xFF},
         {36000, -7200}},
        {3, 1, {V4L2_CID_BACKLIGHT_COMPENSATION}, {2, 0}, {2}},
        {3, 2, {V4L2_CID_BRIGHTNESS}, {0xF6, 0xFF}, {-10}},
        {3, 3, {V4L2_CID_CONTRAST}, {0x00, 0x80}, {32768}},
        {3, 4, {V4L2_CID_GAIN}, {7, 0}, {7}},
        {3, 5, {V4L2_CID_POWER_LINE_FREQUENCY}, {2}, {V4L2_CID_POWER_LINE_FREQUENCY_60HZ}},
        {3, 6, {V4L2_CID_HUE}, {0x00, 0x80}, {-32768}},
        {3, 7, {V4L2_CID_SATURATION}, {64, 0}, {64}},
        {3, 8, {V4L2_CID_SHARPNESS}, {3, 0}, {3}},
        {3, 9, {V4L2_CID_GAMMA}, {0x2C, 0x01}, {300}},
        {3, 10, {V4L2_CID_WHITE_BALANCE_TEMPERATURE}, {0x88, 0x13}, {5000}},
        {3, 11, {V4L2_CID_AUTO_WHITE_BALANCE}, {1}, {1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "unit " << c.unit << ", selector " << c.selector);
        expectControls(VIDIOC_S_EXT_CTRLS, c.ids, c.values);
        EXPECT_EQ(send(setCur, c.unit, c.selector, c.wire), 0);
        EXPECT_EQ(request.wLenDone, c.wire.size());

        expectControls(VIDIOC_G_EXT_CTRLS, c.ids, c.values);
        EXPECT_EQ(send(getCur, c.unit, c.selector, Bytes(c.wire.size(), 0xCC)), 0);
        EXPECT_EQ(data, c.wire);
        EXPECT_EQ(request.wLenDone, c.wire.size());

        expectDescription(c.ids.front(), {});
        EXPECT_EQ(send(getLen, c.unit, c.selector, Bytes(2, 0xCC)), 0);
        EXPECT_THAT(data, ElementsAre(c.wire.size(), 0));
    }
}

TEST_F(ControlRequests, TranslateExposureModesBothWays) {
    const std::pair<std::uint8_t, std::int32_t> modes[] = {{1, 1}, {2, 0}, {4, 2}, {8, 3}};
    for (const auto& [bit, menu] : modes) {
        expectControls(VIDIOC_S_EXT_CTRLS, {V4L2_CID_EXPOSURE_AUTO}, {menu});
        EXPECT_EQ(send(setCur, 1, 2, {bit}), 0);
        expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_EXPOSURE_AUTO}, {menu});
        EXPECT_EQ(send(getCur, 1, 2, {0}), 0);
        EXPECT_EQ(data[0], bit);
    }
    for (const Bytes& none : {Bytes{0}, Bytes{3}, Bytes{16}, Bytes{255}})
        EXPECT_EQ(send(setCur, 1, 2, none), EINVAL) << int{none[0]};
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_EXPOSURE_AUTO}, {4});
    EXPECT_EQ(send(getCur, 1, 2, {0xCC}), EINVAL);
    EXPECT_EQ(data[0], 0xCC);
    EXPECT_EQ(request.wLenDone, 0U);
}

TEST_F(ControlRequests, TellTheExposureModesThatTheCameraKnows) {
    const auto expectItem = [this](std::uint32_t index, int status) {
        node.expect<v4l2_querymenu>(VIDIOC_QUERYMENU, [=](v4l2_querymenu& item) {
            EXPECT_EQ(item.id, static_cast<std::uint32_t>(V4L2_CID_EXPOSURE_AUTO));
            EXPECT_EQ(item.index, index);
            return status;
        });
    };
    expectItem(1, 0);
    expectItem(0, EINVAL);
    expectItem(2, EINVAL);
    expectItem(3, 0);
    EXPECT_EQ(send(getRes, 1, 2, {0}), 0);
    EXPECT_EQ(data[0], 1 | 8);

    expectItem(1, ENODEV);
    EXPECT_EQ(send(getRes, 1, 2, {0}), ENODEV);
    for (const std::uint32_t index : {1U, 0U, 2U, 3U})
        expectItem(index, EINVAL);
    EXPECT_EQ(send(getRes, 1, 2, {0}), EINVAL);

    expectDescription(V4L2_CID_EXPOSURE_AUTO, range(0, 3, 1, V4L2_EXPOSURE_APERTURE_PRIORITY));
    EXPECT_EQ(send(getDef, 1, 2, {0}), 0);
    EXPECT_EQ(data[0], 8);
    EXPECT_EQ(send(getMin, 1, 2, {0}), EBADRQC);
    EXPECT_EQ(send(getMax, 1, 2, {0}), EBADRQC);
}

TEST_F(ControlRequests, ReadRangesFromTheDescriptions) {
    const v4l2_query_ext_ctrl brightness = range(-64, 64, 2, -1);
    const std::pair<std::uint8_t, Bytes> answers[] = {
        {getMin, {0xC0, 0xFF}}, {getMax, {64, 0}}, {getRes, {2, 0}}, {getDef, {0xFF, 0xFF}}};
    for (const auto& [code, wire] : answers) {
        expectDescription(V4L2_CID_BRIGHTNESS, brightness);
        EXPECT_EQ(send(code, 3, 2, {0, 0}), 0);
        EXPECT_EQ(data, wire) << int{code};
    }
    expectDescription(V4L2_CID_PAN_ABSOLUTE, range(-36000, 36000, 3600, 0));
    expectDescription(V4L2_CID_TILT_ABSOLUTE, range(-7200, 7200, 3600, 0));
    EXPECT_EQ(send(getMin, 1, 13, Bytes(8)), 0);
    EXPECT_THAT(data, ElementsAre(0x60, 0x73, 0xFF, 0xFF, 0xE0, 0xE3, 0xFF, 0xFF));

    // The upper half of an unsigned word comes with a sign.
    expectDescription(V4L2_CID_EXPOSURE_ABSOLUTE, range(1, -1, 1, 100));
    EXPECT_EQ(send(getMax, 1, 4, Bytes(4)), 0);
    EXPECT_THAT(data, ElementsAre(0xFF, 0xFF, 0xFF, 0xFF));
}

TEST_F(ControlRequests, TellTheCapabilitiesFromTheFlags) {
    const std::pair<std::uint32_t, std::uint8_t> flags[] = {
        {0, 0x03},
        {V4L2_CTRL_FLAG_READ_ONLY, 0x01},
        {V4L2_CTRL_FLAG_WRITE_ONLY, 0x02},
        {V4L2_CTRL_FLAG_INACTIVE, 0x07},
        {V4L2_CTRL_FLAG_VOLATILE, 0x0B},
    };
    for (const auto& [flag, byte] : flags) {
        v4l2_query_ext_ctrl control{};
        control.flags = flag;
        expectDescription(V4L2_CID_GAIN, control);
        EXPECT_EQ(send(getInfo, 3, 4, Bytes(1)), 0);
        EXPECT_EQ(data[0], byte);
        EXPECT_EQ(request.wLenDone, 1U);
    }
    v4l2_query_ext_ctrl disabled{};
    disabled.flags = V4L2_CTRL_FLAG_DISABLED;
    expectDescription(V4L2_CID_GAIN, disabled);
    EXPECT_EQ(send(getInfo, 3, 4, Bytes(1)), EINVAL);
}

TEST_F(ControlRequests, RefuseWhatV4l2CannotCarry) {
    EXPECT_EQ(send(setCur, 1, 4, {0, 0, 0, 0x80}), ERANGE);
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_CONTRAST}, {65536});
    EXPECT_EQ(send(getCur, 3, 3, {0, 0}), ERANGE);
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_CONTRAST}, {-1});
    EXPECT_EQ(send(getCur, 3, 3, {0, 0}), ERANGE);
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_HUE}, {32768});
    EXPECT_EQ(send(getCur, 3, 6, {0, 0}), ERANGE);
}

TEST_F(ControlRequests, PassTheDriversErrorsOn) {
    for (const int error : {EINVAL, EACCES, EIO, ENODEV}) {
        expectControls(VIDIOC_S_EXT_CTRLS, {V4L2_CID_GAIN}, {1}, error);
        EXPECT_EQ(send(setCur, 3, 4, {1, 0}), error);
        expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_GAIN}, {1}, error);
        EXPECT_EQ(send(getCur, 3, 4, {0xCC, 0xCC}), error);
        EXPECT_THAT(data, ElementsAre(0xCC, 0xCC));
        expectDescription(V4L2_CID_GAIN, {}, error);
        EXPECT_EQ(send(getLen, 3, 4, {0, 0}), error);
        EXPECT_EQ(request.wLenDone, 0U);
    }
}

TEST_F(ControlRequests, TryAgainAfterASignal) {
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_GAIN}, {1}, EINTR);
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_GAIN}, {5});
    EXPECT_EQ(send(getCur, 3, 4, {0, 0}), 0);
    EXPECT_EQ(data[0], 5);
}

TEST_F(ControlRequests, KeepToTheCallersRoom) {
    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_GAIN}, {0x1234});
    EXPECT_EQ(send(getCur, 3, 4, {0xCC}), 0);
    EXPECT_THAT(data, ElementsAre(0x34));
    EXPECT_EQ(request.wLenDone, 1U);

    expectControls(VIDIOC_G_EXT_CTRLS, {V4L2_CID_GAIN}, {0x1234});
    EXPECT_EQ(send(getCur, 3, 4, {0xCC, 0xCC, 0xCC}), 0);
    EXPECT_THAT(data, ElementsAre(0x34, 0x12, 0xCC));
    EXPECT_EQ(request.wLenDone, 2U);

    EXPECT_EQ(send(setCur, 3, 4, {1}), ENOBUFS);
    EXPECT_EQ(send(setCur, 1, 13, Bytes(4)), ENOBUFS);
}

TEST_F(ControlRequests, RefuseWhatIsNoRequestOfAControl) {
    EXPECT_EQ(send(getCur, 1, 3, {0}), EINVAL);
    EXPECT_EQ(send(setCur, 3, 12, {0}), EINVAL);
    EXPECT_EQ(send(0x99, 3, 4, {0, 0}), EBADRQC);
    request.bmRequestType = 0xA1;
    request.bRequest = setCur;
    EXPECT_EQ(performControlRequest(node, request), EBADRQC);
    request.bRequest = getCur;
    request.pData = nullptr;
    EXPECT_EQ(performControlRequest(node, request), EFAULT);
}

TEST_F(ControlRequests, AskTheExtensionUnitsLengthWithTwoBytes) {
    for (const std::size_t room : {24U, 2U, 1U}) {
        expectQuery(getLen, 9, {}, {12, 0});
        EXPECT_EQ(send(getLen, 16, 9, Bytes(room, 0xCC)), 0);
        Bytes expected(room, 0xCC);
        std::copy_n(Bytes{12, 0}.begin(), std::min<std::size_t>(room, 2), expected.begin());
        EXPECT_EQ(data, expected);
        EXPECT_EQ(request.wLenDone, std::min<std::size_t>(room, 2));
    }
    expectQuery(getInfo, 9, {}, {3});
    EXPECT_EQ(send(getInfo, 16, 9, Bytes(4)), 0);
    EXPECT_EQ(request.wLenDone, 1U);
}

TEST_F(ControlRequests, TransferTheExtensionUnitsDataAsItIs) {
    expectQuery(getCur, 9, {}, {'v', '1', 0});
    EXPECT_EQ(send(getCur, 16, 9, Bytes(3)), 0);
    EXPECT_THAT(data, ElementsAre('v', '1', 0));
    EXPECT_EQ(request.wLenDone, 3U);

    expectQuery(setCur, 11, {0xF9, 0xFF}, {0xF9, 0xFF});
    EXPECT_EQ(send(setCur, 16, 11, {0xF9, 0xFF}), 0);
    EXPECT_EQ(request.wLenDone, 2U);

    for (const int error : {ENOENT, ENOBUFS, EPIPE, ERANGE, ENODEV}) {
        expectQuery(getCur, 9, {}, {0, 0}, error);
        EXPECT_EQ(send(getCur, 16, 9, Bytes(2)), error);
        EXPECT_EQ(request.wLenDone, 0U);
        expectQuery(getLen, 9, {}, {5, 0}, error);
        EXPECT_EQ(send(getLen, 16, 9, Bytes(2, 0xCC)), error);
        EXPECT_THAT(data, ElementsAre(0xCC, 0xCC));
    }
    expectQuery(getLen, 9, {}, {0, 0}, ENOENT, 17);
    EXPECT_EQ(send(getLen, 17, 9, Bytes(2)), ENOENT);
}

TEST(VideoNodes, AreCaptureNodesByTheirOwnCapabilities) {
    const auto capture = [](std::uint32_t device, std::uint32_t own) {
        ScriptedNode node;
        node.expect<v4l2_capability>(VIDIOC_QUERYCAP, [=](v4l2_capability& capability) {
            capability.capabilities = device;
            capability.device_caps = own;
            std::memset(capability.card, 'x', sizeof capability.card);
            return 0;
        });
        std::string card;
        const bool answer = capturesVideo(node, card);
        EXPECT_EQ(card, std::string(32, 'x'));
        return answer;
    };
    constexpr std::uint32_t both = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE;
    EXPECT_TRUE(capture(both | V4L2_CAP_DEVICE_CAPS, V4L2_CAP_VIDEO_CAPTURE));
    EXPECT_TRUE(capture(both | V4L2_CAP_DEVICE_CAPS, V4L2_CAP_VIDEO_CAPTURE_MPLANE));
    EXPECT_FALSE(capture(both | V4L2_CAP_DEVICE_CAPS, V4L2_CAP_META_CAPTURE));
    EXPECT_TRUE(capture(V4L2_CAP_VIDEO_CAPTURE, 0));

    ScriptedNode silent;
    silent.expect<v4l2_capability>(VIDIOC_QUERYCAP, [](v4l2_capability&) { return ENODEV; });
    std::string card;
    EXPECT_FALSE(capturesVideo(silent, card));
}

TEST(VideoNodes, AreInUseWhenOnlyTheBuffersAreBusy) {
    for (const int status : {0, EBUSY, EINVAL, ENOTTY}) {
        ScriptedNode node;
        node.expect<v4l2_requestbuffers>(VIDIOC_REQBUFS, [=](v4l2_requestbuffers& buffers) {
            EXPECT_EQ(buffers.count, 0U);
            return status;
        });
        EXPECT_EQ(checkUnused(node), status == EBUSY ? EBUSY : 0);
    }
}

TEST(VideoNodes, SayWhyTheyCannotBeUsed) {
    EXPECT_EQ(whyNotUsable("/nonexistent/video0"), "The camera at /nonexistent/video0 is gone.");
    EXPECT_THAT(openFailure("/dev/video0", EACCES), testing::HasSubstr("permission"));
    EXPECT_THAT(openFailure("/dev/video0", EBUSY), testing::HasSubstr("another program"));
    EXPECT_THAT(openFailure("/dev/video0", EIO), testing::HasSubstr("Input/output error"));
    VideoNode closed;
    v4l2_capability capability{};
    EXPECT_EQ(closed.call(VIDIOC_QUERYCAP, &capability), EBADF);
}

}  // namespace
}  // namespace platform
