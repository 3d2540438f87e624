// In a process of their own that has given up its rights, on the kernel's driver: the window, and
// the program itself. Their camera, with the camera's node, comes only after that.

#include <gtest/gtest.h>

#include <QProcess>
#include <filesystem>
#include <iostream>

#include "platform/linux/Sandbox.h"
#include "tests/kernel/KernelWindow.h"
#include "tests/sandbox/Attempts.h"

namespace {

constexpr const char* asked = "QUELVO_SANDBOXED";

// Before there is a toolkit, which the entry of the tests makes.
const bool entered = qEnvironmentVariableIsSet(asked) && qputenv("HOME", QUELVO_TEST_HOME) &&
                     platform::enterSandbox().empty();

/// Waits until the other process says this line.
bool says(QProcess& other, const QByteArray& line) {
    while (other.canReadLine() || other.waitForReadyRead(60000))
        while (other.canReadLine())
            if (other.readLine() == line + '\n')
                return true;
    return false;
}

}  // namespace

TEST(Sandbox, ACameraThatComesIsShownAndNothingElseCanBeDone) {
    QProcess other;
    other.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    qputenv(asked, "yes");
    other.start(QCoreApplication::applicationFilePath(),
                {"--gtest_filter=*Sandboxed", "--gtest_also_run_disabled_tests"});
    ASSERT_TRUE(says(other, "waiting"));
    {
        const UsbipCamera camera(virtualcam::studioCamera(), 0, "YUY2");
        ASSERT_TRUE(says(other, "shown"));
    }
    EXPECT_TRUE(other.waitForFinished(60000));
    EXPECT_EQ(other.exitCode(), 0) << other.readAll().toStdString();
}

// The other process.
TEST(Sandbox, DISABLED_Sandboxed) {
    ASSERT_TRUE(entered);
    KernelWindow window;
    std::cout << "waiting" << std::endl;
    ASSERT_TRUE(window.waitForCameras(1));
    window.clickOpen();
    EXPECT_EQ(window.shown("m_lableVersion"), "v3 V9.2.4");
    KernelWindow::awaitPicture();
    window.moveSlider("m_sliderBright", 9);
    EXPECT_EQ(window.log.count("CameraControl Error: ") + window.log.count("ERROR"), 0);
    std::cout << "shown" << std::endl;
    EXPECT_TRUE(window.waitForCameras(0));
    EXPECT_FALSE(std::filesystem::is_empty("/run/udev/data"));
    EXPECT_EQ(whatCanBeDone(), "nothing");
}

TEST(Sandbox, TheProgramFollowsTheMachinesCameras) {
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QCoreApplication::applicationDirPath() + "/quelvo");
    ASSERT_TRUE(says(program, "quelvo: kkk:1"));  // a microphone
    {
        const UsbipCamera camera(virtualcam::studioCamera(), 0, "YUY2");
        ASSERT_TRUE(says(program, "quelvo: processAddDeviceEventWithNotification123"));
    }
    EXPECT_TRUE(says(program, "quelvo: processRemoveDeviceEventWithNotification"));
    program.kill();
    program.waitForFinished();
}
