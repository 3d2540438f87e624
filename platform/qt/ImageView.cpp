#include "platform/qt/ImageView.h"

#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>

#include "platform/CALayer.h"
#include "platform/backend/CaptureBackend.h"

namespace platform {

namespace {

/// Draws `frame` as large as it fits into `area`, in its middle.
void drawFrame(QPainter& painter, const VideoFrame& frame, const QRectF& area) {
    const QImage image(reinterpret_cast<const uchar*>(frame.pixels), frame.width, frame.height,
                       frame.bytesPerLine, QImage::Format_RGB32);
    QRectF target(QPointF(), QSizeF(image.size()).scaled(area.size(), Qt::KeepAspectRatio));
    target.moveCenter(area.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, image);
}

void drawLayer(QPainter& painter, const CALayer& layer) {
    const NSRect& frame = layer.frame();
    const QRectF area(0, 0, frame.width, frame.height);
    painter.save();
    painter.translate(frame.x, frame.y);
    if (const auto& color = layer.backgroundColor())
        painter.fillRect(
            area,
            QColor::fromRgbF(static_cast<float>(color->red), static_cast<float>(color->green),
                             static_cast<float>(color->blue), static_cast<float>(color->alpha)));
    if (const auto contents = layer.contents())
        drawFrame(painter, *contents, area);
    for (const auto& sublayer : layer.sublayers())
        drawLayer(painter, *sublayer);
    painter.restore();
}

}  // namespace

ImageView::ImageView(QWidget* parent)
    : QWidget(parent), hint_(new QLabel(QStringLiteral("Choose a camera and open it"), this)) {
    hint_->setAlignment(Qt::AlignCenter);
    hint_->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(hint_);
    setBackgroundRole(QPalette::Midlight);
    setAutoFillBackground(true);
}

ImageView::~ImageView() {
    if (layer_)
        layer_->setDisplayHandler({});
}

void ImageView::setLayer(const std::shared_ptr<CALayer>& layer) {
    if (layer_)
        layer_->setDisplayHandler({});
    layer_ = layer;
    hint_->setVisible(!layer_);
    if (layer_) {
        layer_->setDisplayHandler([this] { update(); });
        fitLayer();
    }
    update();
}

void ImageView::paintEvent(QPaintEvent* /*event*/) {
    if (!layer_)
        return;
    QPainter painter(this);
    drawLayer(painter, *layer_);
}

void ImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitLayer();
}

void ImageView::fitLayer() {
    if (layer_)
        layer_->setFrame({0, 0, static_cast<double>(width()), static_cast<double>(height())});
}

}  // namespace platform
