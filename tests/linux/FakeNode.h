#pragma once

#include <gtest/gtest.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <map>
#include <span>
#include <vector>

#include "platform/linux/controls/Ioctl.h"

/// A node that keeps controls as the kernel's driver does, with its checks of an argument's form.
/// A signal breaks each call off once.
class FakeNode : public platform::Ioctl {
  public:
    std::map<std::uint32_t, v4l2_query_ext_ctrl> descriptions;
    std::map<std::uint32_t, std::int32_t> values;
    std::vector<std::uint8_t> vendorValue{'v', '1'};  // of every selector of unit 16
    v4l2_capability capability{};
    int error = 0;

    int call(unsigned long request, void* argument) override {
        interrupted_ = !interrupted_;
        if (interrupted_ || error != 0)
            return interrupted_ ? EINTR : error;
        if (request == UVCIOC_CTRL_QUERY)
            return query(*static_cast<uvc_xu_control_query*>(argument));
        if (request == VIDIOC_QUERY_EXT_CTRL) {
            auto& control = *static_cast<v4l2_query_ext_ctrl*>(argument);
            control = descriptions.at(control.id);
        } else if (request == VIDIOC_QUERYCAP) {
            *static_cast<v4l2_capability*>(argument) = capability;
        } else if (request == VIDIOC_REQBUFS) {
            const auto& buffers = *static_cast<v4l2_requestbuffers*>(argument);
            EXPECT_EQ(buffers.count + buffers.type, V4L2_BUF_TYPE_VIDEO_CAPTURE);
        } else {
            const auto& all = *static_cast<v4l2_ext_controls*>(argument);
            EXPECT_EQ(all.which, static_cast<std::uint32_t>(V4L2_CTRL_WHICH_CUR_VAL));
            EXPECT_EQ(all.count, all.controls->id == V4L2_CID_PAN_ABSOLUTE ? 2U : 1U);
            for (auto& control : std::span(all.controls, all.count))
                (request == VIDIOC_S_EXT_CTRLS ? values.at(control.id) : control.value) =
                    request == VIDIOC_S_EXT_CTRLS ? control.value : values.at(control.id);
        }
        return 0;
    }

  private:
    int query(const uvc_xu_control_query& query) {
        const auto answer =
            query.query == UVC_GET_LEN ? std::vector<std::uint8_t>{2, 0} : vendorValue;
        if (query.unit != 16 || query.size != answer.size())
            return query.unit != 16 ? ENOENT : ENOBUFS;
        if (query.query == UVC_SET_CUR)
            vendorValue.assign(query.data, query.data + query.size);
        else
            std::ranges::copy(answer, query.data);
        return 0;
    }

    bool interrupted_ = false;
};
