#include "platform/linux/controls/ControlRequests.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QByteArray>
#include <fstream>
#include <sstream>

#include "platform/linux/SystemLog.h"
#include "platform/linux/devices/VideoNode.h"
#include "tests/linux/FakeNode.h"
#include "tests/support/Footprint.h"

namespace platform {
namespace {

/// Sends a request that is written as in requests.txt, and returns its answer. The sanitizer sees
/// what is written beside the bytes.
std::string ask(FakeNode& node, const std::string& text) {
    std::istringstream words(text);
    std::uint16_t setup[4] = {};
    std::string bytes;
    for (std::uint16_t& field : setup)
        words >> std::hex >> field;
    words >> bytes;
    QByteArray data = QByteArray::fromHex(QByteArray::fromStdString(bytes));
    IOUSBDevRequest request{.wValue = setup[2], .wIndex = setup[3], .pData = data.data()};
    request.bmRequestType = static_cast<std::uint8_t>(setup[0]);
    request.bRequest = static_cast<std::uint8_t>(setup[1]);
    request.wLength = static_cast<std::uint16_t>(data.size());
    const IOReturn status = performControlRequest(node, request);
    std::string there = data.toHex().toStdString();
    EXPECT_TRUE(status == 0 || (there == bytes && request.wLenDone == 0)) << text;
    if (request.wLenDone != request.wLength)
        there.insert(std::size_t{2} * request.wLenDone, "|");
    return status == 0 ? there : strerrorname_np(status);
}

TEST(ControlRequests, GoThroughTheDriverAsTheScriptSays) {
    std::ifstream script(QUELVO_LINUX_TESTS "/requests.txt");
    FakeNode node;
    std::string line;
    while (std::getline(script, line)) {
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string word;
        std::uint32_t id = 0;
        std::int32_t value = 0;
        words >> word >> std::hex >> id >> std::dec >> value;
        if (word == "control") {
            auto& control = node.descriptions[id];
            words >> control.minimum >> control.maximum >> std::hex >> control.flags;
            node.values[id] = value;
        } else if (word == "is") {
            EXPECT_EQ(node.values[id], value);
        } else if (word == "fail") {
            node.error = static_cast<int>(id);
        } else if (!word.empty() && word != "#") {
            const std::size_t answer = line.rfind(' ');
            EXPECT_EQ(ask(node, line.substr(0, answer)), line.substr(answer + 1));
        }
    }
    EXPECT_EQ(node.error, EACCES);  // which the script ends with
}

TEST(VideoNodes, OpenOnlyTheDeviceWithTheirNumberAndSayWhetherItDeliversVideo) {
    struct stat null {};
    ASSERT_EQ(::stat("/dev/null", &null), 0);
    const auto before = Footprint::now().files;
    {
        VideoNode node;
        EXPECT_EQ(node.open("/dev/null", null.st_rdev + 1), ENODEV);
        EXPECT_EQ(Footprint::now().files, before);
        EXPECT_EQ(node.open("/nonexistent/video0"), ENODEV);
        EXPECT_EQ(node.open("/dev/null", null.st_rdev), 0);
        EXPECT_EQ(node.open("/dev/null"), 0);
    }
    EXPECT_EQ(Footprint::now().files, before);
    EXPECT_THAT(openFailure("/dev/video0", EACCES), testing::HasSubstr("permission"));
    EXPECT_THAT(openFailure("/dev/video0", EBUSY), testing::HasSubstr("another program"));

    FakeNode fake;
    std::string card;
    fake.capability = {.capabilities = V4L2_CAP_VIDEO_CAPTURE};
    EXPECT_TRUE(capturesVideo(fake, card));
    fake.capability.capabilities |= V4L2_CAP_DEVICE_CAPS;  // of which this node has none
    EXPECT_FALSE(capturesVideo(fake, card));
    fake.capability.device_caps = V4L2_CAP_VIDEO_CAPTURE;
    EXPECT_TRUE(capturesVideo(fake, card));
    EXPECT_EQ(checkUnused(fake), 0);
    fake.error = EBUSY;
    EXPECT_FALSE(capturesVideo(fake, card));
    EXPECT_EQ(checkUnused(fake), EBUSY);
}

TEST(SystemLog, SendsEachLineAsItIs) {
    testing::internal::CaptureStderr();
    SystemLog().line(std::string_view("100 %s of it, and no more").substr(0, 12));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quelvo: 100 %s of it\n");
}

}  // namespace
}  // namespace platform
