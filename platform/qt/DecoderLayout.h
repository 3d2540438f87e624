#pragma once

#include <QImage>
#include <QRect>
#include <optional>

class QPainter;
class QWidget;

namespace platform {

/// Lets a camera's picture be decoded right where it is seen, in the window's memory. A decoder
/// writes eight pixels, 32 bytes, at once; each write that does not start at a multiple of that
/// takes longer. Nothing but speed depends on it: a window that is laid out otherwise, or was
/// resized to any width, shows the same.
class DecoderLayout {
  public:
    /// Widens `window`, and the margin left of its preview, by less than eight pixels each: all
    /// rows of the window's memory, and the preview within them, start at such a multiple then.
    static void align(QWidget& window);

    /// The place of a picture in `area`: its middle, as large as fits. For a few pixels more it is
    /// not scaled, so that it stays sharp and can be decoded there, and starts at a multiple.
    static QRect placeOf(const QSize& picture, const QRect& area);

    /// The memory of the window behind `painter` where `place` is; none when pixels cannot be
    /// written there as a decoder makes them.
    static std::optional<QImage> memoryAt(const QPainter& painter, const QRect& place);
};

}  // namespace platform
