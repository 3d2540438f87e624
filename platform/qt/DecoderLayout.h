#pragma once

#include <QImage>
#include <QRect>
#include <optional>

class QPainter;
class QWidget;

namespace platform {

struct VideoFrame;

/// Lets a camera's picture be decoded right where it is seen, in the window's memory. A decoder
/// writes eight pixels, 32 bytes, at once; each write that does not start at a multiple of that
/// takes longer. Nothing but speed depends on it: a window that is laid out otherwise, or was
/// resized to any width, shows the same.
class DecoderLayout {
  public:
    /// Widens `window` by its outer margins, each by less than eight pixels: all rows of the
    /// window's memory, and the preview within them, start at such a multiple then.
    static void align(QWidget& window);

    /// Where a picture is shown in `area`: in the middle, as large as fits. One that is only a few
    /// pixels smaller keeps its size and starts at a multiple: it stays sharp and is decoded there.
    static QRect placeOf(const VideoFrame& picture, const QRect& area);

    /// The memory of the window that `painter` paints on, where `place` is; none when that memory
    /// is out of reach or keeps its pixels in another form.
    static std::optional<QImage> memoryAt(const QPainter& painter, const QRect& place);
};

}  // namespace platform
