#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

class NSViewController;
class QAbstractSlider;
class QWidget;
struct NSAction;

namespace platform {

/// Sends the actions of a window's widgets to its controller, however the user works them. Each
/// blocks the main thread while the camera answers. A slider's next one waits until the input that
/// has come meanwhile has been handled: positions that the hand has left by then are not worth
/// sending. The last one always is, and the order between widgets is kept.
class Actions : public QObject {
  public:
    Actions(NSViewController& controller, QWidget& window);
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;
    ~Actions() override;

    /// From now on sends `action` when the user works `widget`.
    void connectAction(QWidget& widget, const NSAction& action);

    /// Sends what waits, if the action of `widget` is among it.
    void settle(const QWidget* widget);

    /// Sends every action that waits.
    void flush();

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Target;

    void connectSlider(QAbstractSlider& slider, Target& target);
    void sendSoon(Target& target);
    void performAndCatchUp(const Target& target);
    void sendNow(Target& target);
    void perform(const Target& target);

    NSViewController& controller_;
    std::vector<std::unique_ptr<Target>> targets_;
    std::vector<const Target*> waiting_;
    // The turns of the event loop until the input that came during a slider's action is handled.
    int turnsBehind_ = 0;
    QTimer catchingUp_;
};

}  // namespace platform
