#include "platform/MainLoop.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <mutex>
#include <utility>

namespace {

// Threads that the application does not end may post while it ends, so the loop's existence and
// the use of it share a lock.
std::mutex gate;
QObject* mainLoop = nullptr;

void endMainLoop() {
    std::unique_lock lock(gate);
    const std::unique_ptr<QObject> ended(std::exchange(mainLoop, nullptr));
    lock.unlock();  // a task that is dropped here may destroy what posts another
}

void beginMainLoop() {
    const std::lock_guard lock(gate);
    mainLoop = new QObject;
    qAddPostRoutine(endMainLoop);
}

class QtDescriptorWatch : public platform::DescriptorWatch {
  public:
    QtDescriptorWatch(int descriptor, std::function<void()> ready)
        : notifier_(descriptor, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, std::move(ready));
    }

  private:
    QSocketNotifier notifier_;
};

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(beginMainLoop)

void platform::postToMainThread(std::function<void()> task) {
    const std::lock_guard lock(gate);
    if (mainLoop != nullptr)
        QMetaObject::invokeMethod(mainLoop, std::move(task), Qt::QueuedConnection);
}

std::unique_ptr<platform::DescriptorWatch> platform::watchReadable(int descriptor,
                                                                   std::function<void()> ready) {
    return std::make_unique<QtDescriptorWatch>(descriptor, std::move(ready));
}
