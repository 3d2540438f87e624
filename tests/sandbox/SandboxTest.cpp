// A process that has given up its rights keeps those that the program needs, and no others.

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <fstream>
#include <future>

#include "platform/linux/Sandbox.h"
#include "tests/sandbox/Attempts.h"

// The search for leaks needs a process of its own, and none can be made.
extern "C" int __lsan_is_turned_off() {
    return 1;
}

TEST(SandboxTest, LeavesOnlyWhatTheProgramNeeds) {
    setenv("HOME", QUELVO_TEST_HOME, 1);
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(whatCanBeDone(), "everything");
    EXPECT_EQ(platform::enterSandbox(), std::vector<std::string>()) << "what is kept all the same";
    EXPECT_EQ(whatCanBeDone(), "nothing");
    EXPECT_EQ(prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0), 1);
    EXPECT_EQ(std::async(std::launch::async, whatCanBeDone).get(), "nothing");
    for (const char* file :
         {".fonts/font", ".Xauthority", ".ICEauthority", ".config/kdeglobals",
          ".local/share/icons/icon", ".cache/fontconfig/cache", ".config/ibus/bus/address"})
        EXPECT_TRUE(std::ifstream(QUELVO_TEST_HOME "/" + std::string(file))) << file;
    EXPECT_TRUE(std::fstream(QUELVO_TEST_HOME "/.cache/dconf/user")) << "to be written";
}
