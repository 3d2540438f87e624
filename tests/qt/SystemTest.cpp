// The confirmation box, answered in every way, and the main loop.

#include <gmock/gmock.h>
#include <unistd.h>

#include <QTest>
#include <QThread>
#include <array>
#include <thread>

#include "platform/CFUserNotification.h"
#include "platform/MainLoop.h"
#include "tests/support/WindowBench.h"

namespace {

/// Shows a box, presses `key` in it, or closes it for none, and returns the response.
CFOptionFlags ask(const std::optional<std::string>& alternate, Qt::Key key, double timeout = 0) {
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        answer.stop();
        auto& box = dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget());
        EXPECT_EQ(box.windowTitle() + box.text(), "Notice<b>Sure?</b>");
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        key == Qt::Key_unknown ? static_cast<void>(box.close()) : QTest::keyClick(&box, key);
    });
    answer.start(0);
    CFOptionFlags response = 99;
    const int status = CFUserNotificationDisplayAlert(timeout, 1, "Notice", "<b>Sure?</b>", "OK",
                                                      alternate, response);
    EXPECT_EQ(status != 0, response == 99U);
    return response;
}

TEST(AlertTest, OnlyReturnAndTheLoneButtonAgree) {
    EXPECT_EQ(ask("Cancel", Qt::Key_Return), 99U) << "without a window there is no box";
    WindowBench bench;
    EXPECT_EQ(ask("Cancel", Qt::Key_Return), kCFUserNotificationDefaultResponse);
    EXPECT_EQ(ask("Cancel", Qt::Key_Escape), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask("Cancel", Qt::Key_unknown), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask({}, Qt::Key_unknown), kCFUserNotificationDefaultResponse);
    EXPECT_EQ(ask("Cancel", Qt::Key_Shift, 0.001), kCFUserNotificationCancelResponse);
}

TEST(MainLoopTest, RunsPostedTasksInOrderAndWatchesADescriptorUntilTheWatchEnds) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);  // stays unread, so it is ready again and again
    std::vector<int> ran;
    std::unique_ptr<platform::DescriptorWatch> watch;
    std::thread([&] {
        platform::postToMainThread([&] { ran.push_back(1); });
        platform::postToMainThread([&] {
            ran.push_back(QThread::currentThread() == qApp->thread() ? 2 : -1);
            watch = platform::watchReadable(ends[0], [&] {
                ran.push_back(3);
                if (ran.size() == 4)
                    watch.reset();
            });
        });
    }).join();
    EXPECT_THAT(ran, testing::IsEmpty());
    EXPECT_TRUE(WindowBench::waitUntil([&] { return ran.size() == 4; }));
    QCoreApplication::processEvents();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3, 3));
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
