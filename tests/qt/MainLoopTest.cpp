#include "platform/MainLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <array>
#include <thread>
#include <vector>

namespace {

TEST(MainLoop, RunsPostedTasksOnTheMainThreadInOrder) {
    QEventLoop loop;
    std::vector<int> ran;
    std::thread([&] {
        platform::postToMainThread([&] { ran.push_back(1); });
        platform::postToMainThread([&] {
            ran.push_back(QThread::currentThread() == loop.thread() ? 2 : -1);
            loop.quit();
        });
    }).join();
    EXPECT_THAT(ran, testing::IsEmpty());
    loop.exec();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));
}

TEST(MainLoop, WatchesADescriptorUntilTheWatchEnds) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    QEventLoop loop;
    int called = 0;
    std::unique_ptr<platform::DescriptorWatch> watch;
    watch = platform::watchReadable(ends[0], [&] {
        if (++called == 2) {
            watch.reset();
            platform::postToMainThread([&] { loop.quit(); });
        }
    });
    ASSERT_EQ(write(ends[1], "x", 1), 1);  // stays unread, so it is ready again and again
    loop.exec();
    QCoreApplication::processEvents();
    EXPECT_EQ(called, 2);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
