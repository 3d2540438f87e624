// The confirmation box, answered by the keyboard, the mouse and the window manager.

#include <QMessageBox>
#include <QPushButton>

#include "platform/CFUserNotification.h"
#include "tests/qt/TestWindow.h"

namespace {

class AlertTest : public WindowTest {
  protected:
    /// Shows a box, lets `answer` work it and returns the response.
    CFOptionFlags ask(const std::optional<std::string>& alternate,
                      const std::function<void(QMessageBox&)>& answer) {
        QTimer::singleShot(0, &root(), [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            answer(*box);
        });
        CFOptionFlags response = 99;
        EXPECT_EQ(CFUserNotificationDisplayAlert(0, kCFUserNotificationNoteAlertLevel, "Notice",
                                                 "<b>Sure?</b>", "OK", alternate, response),
                  0);
        return response;
    }

    static std::function<void(QMessageBox&)> key(Qt::Key pressed) {
        return [pressed](QMessageBox& box) { QTest::keyClick(&box, pressed); };
    }
};

TEST_F(AlertTest, ReturnAgreesEscapeAndClosingDoNot) {
    EXPECT_EQ(ask("Cancel", key(Qt::Key_Return)), kCFUserNotificationDefaultResponse);
    EXPECT_EQ(ask("Cancel", key(Qt::Key_Escape)), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask("Cancel", [](auto& box) { box.close(); }), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask("Cancel", [](auto& box) { QTest::mouseClick(box.buttons()[1], Qt::LeftButton); }),
              kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask(std::nullopt, [](auto& box) { box.close(); }),
              kCFUserNotificationDefaultResponse);
}

TEST_F(AlertTest, ShowsTheTextsAsTheyStand) {
    ask("Cancel", [](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), "Notice");
        EXPECT_EQ(box.text(), "<b>Sure?</b>");
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.buttons().size(), 2);
        QTest::keyClick(&box, Qt::Key_Escape);
    });
}

TEST_F(AlertTest, TimesOutWithItsOwnResponse) {
    CFOptionFlags response = 99;
    EXPECT_EQ(CFUserNotificationDisplayAlert(0.001, 1, "Notice", "?", "OK", {}, response), 0);
    EXPECT_EQ(response, kCFUserNotificationCancelResponse);
}

TEST_F(AlertTest, WithoutAWindowThereIsNoBox) {
    window.reset();
    CFOptionFlags response = 99;
    EXPECT_NE(CFUserNotificationDisplayAlert(0, 1, "Notice", "?", "OK", "Cancel", response), 0);
    EXPECT_EQ(response, 99U);
}

}  // namespace
