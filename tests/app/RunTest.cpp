// The whole program, from its entry to the closing of its window while the preview runs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QWidget>

#include "app/RunQuelvo.h"
#include "camera/UVCCameraControl.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/MainLoop.h"
#include "platform/backend/Backends.h"
#include "tests/support/CameraBench.h"

namespace {

/// Opens a camera as soon as the window is there, waits for a picture and closes the window.
class Visitor : public TestLog {
  public:
    void line(std::string_view text) override {
        TestLog::line(text);
        if (text.starts_with("kkk:"))
            platform::postToMainThread([this] { look(); });
    }

    bool sawVideo() const { return sawVideo_; }

  private:
    void look() {
        for (auto* widget : QApplication::allWidgets())
            if (!g_captureSession && widget->property("action").toString() == "OnBtnOpenCamera:")
                dynamic_cast<QAbstractButton&>(*widget).click();
        sawVideo_ = g_captureSession->latestFrame() != nullptr;
        if (sawVideo_)
            QApplication::closeAllWindows();
        else
            platform::postToMainThread([this] { look(); });
    }

    bool sawVideo_ = false;
};

TEST(RunTest, ClosingTheWindowEndsTheProgramInTheMiddleOfThePreview) {
    CameraBench bench;
    Visitor visitor;
    platform::installBackends({&bench.bus().usb(), &bench.bus().capture(), &visitor});
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::string name = "quelvo";
    std::array<char*, 2> arguments{name.data(), nullptr};
    EXPECT_EQ(runQuelvo(1, arguments.data()), 0);
    EXPECT_TRUE(visitor.sawVideo());
    EXPECT_EQ(g_captureSession, nullptr);
    EXPECT_EQ(g_uvcCamera, nullptr);
    EXPECT_THAT(visitor.take("ERROR"), testing::IsEmpty());
    bench.plugAnother("Late");  // nobody listens any more
    EXPECT_THAT(visitor.take(), testing::IsEmpty());
}

}  // namespace
