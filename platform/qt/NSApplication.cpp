#include "platform/NSApplication.h"

#include <QApplication>
#include <QIcon>
#include <QScreen>
#include <QWidget>

#include "platform/NSLog.h"
#include "platform/qt/Interface.h"

namespace {

void nameApplication() {
    QApplication::setApplicationName(QStringLiteral("quelvo"));
    QApplication::setDesktopFileName(QStringLiteral("quelvo"));
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128})
        icon.addFile(QStringLiteral(":/quelvo-%1.png").arg(size));
    QApplication::setWindowIcon(icon);
}

/// Shows the window in its own size, or as large as the screen lets it and its frame be.
void show(QWidget& window) {
    constexpr QSize frame(16, 48);  // an estimate: the window manager has not drawn it yet
    window.resize(window.size().boundedTo(window.screen()->availableSize() - frame));
    window.show();
}

/// Shows the window until the application ends; returns the exit status.
int runWindow(NSApplicationDelegate& delegate, NSViewController& controller) {
    const auto window = platform::InterfaceWindow::load(controller);
    if (!window) {
        NSLog("ERROR: the interface file cannot be read");
        return 1;
    }
    controller.viewDidLoad();
    NSApplication running;
    QApplication::setQuitOnLastWindowClosed(
        delegate.applicationShouldTerminateAfterLastWindowClosed(running));
    show(window->widget());
    delegate.applicationDidFinishLaunching({NSApplicationDidFinishLaunchingNotification, {}});
    const int status = QApplication::exec();
    delegate.applicationWillTerminate({NSApplicationWillTerminateNotification, {}});
    return status;
}

}  // namespace

int NSApplicationMain(int argumentCount, char** arguments, const NSApplicationClasses& classes) {
    const QApplication application(argumentCount, arguments);
    nameApplication();
    const auto delegate = classes.makeDelegate();
    const auto controller = classes.makeViewController();
    return runWindow(*delegate, *controller);
}
