#include "platform/qt/DecoderLayout.h"

#include <QLayout>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>
#include <cstddef>

#include "platform/backend/CaptureBackend.h"

namespace platform {

namespace {

constexpr int pixelsAtOnce = 8;

int roundedUp(int pixels) {
    return (pixels + pixelsAtOnce - 1) / pixelsAtOnce * pixelsAtOnce;
}

}  // namespace

void DecoderLayout::align(QWidget& window) {
    QMargins margins = window.layout()->contentsMargins();
    const int left = roundedUp(margins.left());
    const int needed = window.width() + left - margins.left();
    const int width = roundedUp(needed);
    margins.setLeft(left);
    margins.setRight(margins.right() + width - needed);
    window.layout()->setContentsMargins(margins);
    window.resize(width, window.height());
}

QRect DecoderLayout::placeOf(const VideoFrame& picture, const QRect& area) {
    const QSize size(picture.width, picture.height);
    const QSize largest = size.scaled(area.size(), Qt::KeepAspectRatio);
    const int more = largest.width() - size.width();
    const bool isScaled = more < 0 || more >= pixelsAtOnce;
    QRect place(QPoint(), isScaled ? largest : size);
    place.moveCenter(area.center());
    if (!isScaled)
        place.moveLeft(place.left() / pixelsAtOnce * pixelsAtOnce);
    return place;
}

std::optional<QImage> DecoderLayout::memoryAt(const QPainter& painter, const QRect& place) {
    auto* device = painter.paintEngine()->paintDevice();
    const QTransform& transform = painter.deviceTransform();
    if (device->devType() != QInternal::Image || transform.type() > QTransform::TxTranslate)
        return std::nullopt;
    auto& image = *static_cast<QImage*>(device);
    const QRect there = transform.mapRect(place);
    const bool fits = image.format() == QImage::Format_RGB32 ||
                      image.format() == QImage::Format_ARGB32_Premultiplied;
    if (!fits || !image.rect().contains(there))
        return std::nullopt;
    uchar* first = image.scanLine(there.y()) + std::ptrdiff_t{4} * there.x();
    return QImage(first, there.width(), there.height(), image.bytesPerLine(), image.format());
}

}  // namespace platform
