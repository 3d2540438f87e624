#include "platform/NSApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <array>
#include <string>
#include <vector>

#include "platform/MainLoop.h"

namespace {

std::vector<std::string> happened;

class Delegate : public NSApplicationDelegate {
  public:
    void applicationDidFinishLaunching(const NSNotification& /*notification*/) override {
        happened.emplace_back("launched");
        platform::postToMainThread([] {
            for (QWidget* window : QApplication::topLevelWidgets()) {
                if (!window->isVisible())
                    continue;
                happened.push_back("closing " + window->windowTitle().toStdString());
                window->close();
            }
        });
    }
    void applicationWillTerminate(const NSNotification& /*notification*/) override {
        happened.emplace_back("terminating");
    }
    bool applicationShouldTerminateAfterLastWindowClosed(NSApplication& /*sender*/) override {
        return true;
    }
};

class Controller : public NSViewController {
  public:
    void viewDidLoad() override {
        happened.emplace_back("loaded");
        setTitle("Quelvo");
    }
    std::span<const NSAction> actions() const override { return {}; }
};

TEST(Application, RunsFromLoadingUntilTheLastWindowIsClosed) {
    std::string name = "quelvo";
    std::array<char*, 2> arguments{name.data(), nullptr};
    EXPECT_EQ(NSApplicationMain(1, arguments.data(),
                                {[] { return std::make_unique<Delegate>(); },
                                 [] { return std::make_unique<Controller>(); }}),
              0);
    EXPECT_THAT(happened,
                testing::ElementsAre("loaded", "launched", "closing Quelvo", "terminating"));
    platform::postToMainThread([] { ADD_FAILURE() << "there is no loop any more"; });
}

}  // namespace
