// The window in a process that has given up its rights: all of it works, and nothing else does.

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <fstream>
#include <future>

#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/linux/Sandbox.h"
#include "tests/sandbox/Attempts.h"
#include "tests/support/Exchanges.h"
#include "tests/support/WindowFixture.h"

// The search for leaks needs a process of its own, and none can be made.
extern "C" int __lsan_is_turned_off() {
    return 1;
}

namespace {

// Before there is a toolkit, which the entry of the tests makes.
const int hasHome = setenv("HOME", QUELVO_TEST_HOME, 1) + unsetenv("XDG_RUNTIME_DIR");
const auto exchanges = readExchanges({"standard-page.txt", "vendor-page.txt"}, "direct");
const std::string before = whatCanBeDone();
const std::vector<std::string> kept = platform::enterSandbox();

}  // namespace

TEST(SandboxTest, LeavesOnlyWhatTheProgramNeeds) {
    EXPECT_EQ(before, "everything");
    EXPECT_TRUE(kept.empty()) << kept.front();
    EXPECT_EQ(whatCanBeDone(), "nothing");
    EXPECT_EQ(prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0), 1);
    EXPECT_EQ(std::async(std::launch::async, whatCanBeDone).get(), "nothing");
    for (const char* file :
         {".fonts/font", ".Xauthority", ".ICEauthority", ".config/kdeglobals",
          ".local/share/icons/icon", ".cache/fontconfig/cache", ".config/ibus/bus/address"})
        EXPECT_TRUE(std::ifstream(QUELVO_TEST_HOME "/" + std::string(file))) << file;
    EXPECT_TRUE(std::fstream(QUELVO_TEST_HOME "/.cache/dconf/user")) << "to be written";
}

TEST(SandboxTest, TheWindowWorks) {
    for (const auto& exchange : exchanges) {
        WindowFixture fixture;
        setInCamera(fixture.camera(), {3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
        setInCamera(fixture.camera(), {1, CT_FOCUS_AUTO_CONTROL}, {0});
        setInCamera(fixture.camera(), {1, CT_AE_MODE_CONTROL}, {1});
        const auto open = [&] {
            fixture.pressOpen();
            LiveWindow::awaitPicture();
            g_captureSession->stopRunning();  // with each picture automatic values may move
        };
        open();
        perform(exchange, {fixture, fixture.camera(), fixture.log(), open,
                           [](const auto&) { return false; }});
    }
}
