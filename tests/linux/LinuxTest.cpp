#include "platform/linux/SystemLog.h"
#include "tests/linux/Rows.h"
#include "tests/linux/Session.h"

namespace platform {
namespace {

TEST(Linux, DoesWhatTheScriptsSay) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    for (const char* scripts : {"captures.txt", "usb.txt", "opened.txt", "requests.txt"})
        checkRows(scripts, saidIn);
}

TEST(SystemLog, SendsEachLineAsItIs) {
    testing::internal::CaptureStderr();
    SystemLog().line(std::string_view("100 %s of it, and no more").substr(0, 12));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quelvo: 100 %s of it\n");
}

}  // namespace
}  // namespace platform
