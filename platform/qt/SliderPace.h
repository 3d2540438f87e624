#pragma once

#include <QObject>
#include <functional>
#include <vector>

class QAbstractSlider;
class QWidget;

namespace platform {

/// Decides when the sliders of a window send their actions, each of which blocks the main thread
/// until the camera has answered: once the input that is there has been handled, and before
/// anything is painted. So what the hand does while the camera answers is one change, and not one
/// for each position on the way. The last position is always sent, and the order between sliders
/// is kept. Main thread only.
class SliderPace : public QObject {
  public:
    /// Paces the sliders of `window`, which sends what waits when it is closed.
    explicit SliderPace(QWidget& window);

    /// From now on sends `action` when the user moves `slider`.
    void connectAction(QAbstractSlider& slider, std::function<void()> action);

    /// Sends what waits, if the action of `widget` is among it.
    void settle(const QWidget* widget);

    /// Sends every action that waits.
    void flush();

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Move {
        const QWidget* slider;
        std::function<void()> action;
    };

    bool waits(const QWidget* widget) const;
    void sendSoon(const Move& move);

    std::vector<Move> waiting_;
};

}  // namespace platform
