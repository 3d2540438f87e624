// Preloaded into a program on Qt Widgets, says how long it took from the program's start until its
// first picture was on the screen: nanoseconds since QUELVO_STARTED on the monotonic clock.

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>

namespace {

class FirstPaint : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType()) {
            parent()->removeEventFilter(this);
            // All widgets are painted, and the picture flushed, before the next timer.
            QTimer::singleShot(0, this, [] {
                const long long now =
                    std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch())
                        .count();
                std::fprintf(stderr, "first paint after %lld ns\n",
                             now - qEnvironmentVariable("QUELVO_STARTED").toLongLong());
            });
        }
        return false;
    }
};

void watch() {
    QCoreApplication* application = QCoreApplication::instance();
    application->installEventFilter(new FirstPaint(application));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)
