#include "platform/qt/ImageView.h"

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QVBoxLayout>
#include <utility>

#include "platform/CALayer.h"
#include "platform/backend/CaptureBackend.h"
#include "platform/qt/DecoderLayout.h"

namespace platform {

namespace {

/// Draws a picture into `place`, as far as that is in `open`.
void drawFrame(QPainter& painter, const VideoFrame& frame, const QRect& place,
               const QRegion& open) {
    const auto write = [&](QImage& image) {
        frame.write(reinterpret_cast<std::byte*>(image.bits()),
                    static_cast<int>(image.bytesPerLine()));
    };
    const QSize size(frame.width, frame.height);
    const bool isAllOpen = QRegion(place).subtracted(open).isEmpty();
    if (auto memory = DecoderLayout::memoryAt(painter, place);
        memory && place.size() == size && isAllOpen)
        return write(*memory);
    QImage image(size, QImage::Format_RGB32);
    write(image);
    painter.setClipRegion(open);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, image);
    painter.setClipping(false);
}

/// The rectangle of a layer whose superlayer starts at `origin`.
QRect areaOf(const CALayer& layer, QPoint origin) {
    const NSRect& frame = layer.frame();
    return QRectF(frame.x, frame.y, frame.width, frame.height).toRect().translated(origin);
}

/// Where the topmost picture is of a layer and those above it; empty when there is none.
QRect pictureIn(const CALayer& layer, QPoint origin) {
    const QRect area = areaOf(layer, origin);
    const auto& above = layer.sublayers();
    for (auto sublayer = above.rbegin(); sublayer != above.rend(); ++sublayer)
        if (const QRect picture = pictureIn(**sublayer, area.topLeft()); !picture.isEmpty())
            return picture;
    const auto contents = layer.contents();
    return contents ? DecoderLayout::placeOf(*contents, area) : QRect();
}

QColor colorOf(const CGColor& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

/// Black or white, whichever stands out more: from this grey on (a luminance of 0.18) it is black.
QColor textColorOn(const QColor& color) {
    return qGray(color.rgb()) >= 118 ? Qt::black : Qt::white;
}

void fill(QPainter& painter, const QRegion& region, const QColor& color) {
    for (const QRect& part : region)
        painter.fillRect(part, color);
}

/// Draws a layer, whose superlayer starts at `origin`, and the layers on it where nothing has been
/// drawn yet, in `open`; returns where that is still so. The topmost layer comes first, so that no
/// pixel is drawn twice: each picture of a camera comes through here.
QRegion drawLayer(QPainter& painter, const CALayer& layer, QPoint origin, QRegion open) {
    const QRect area = areaOf(layer, origin);
    const auto& above = layer.sublayers();
    for (auto sublayer = above.rbegin(); sublayer != above.rend(); ++sublayer)
        open = drawLayer(painter, **sublayer, area.topLeft(), std::move(open));
    if (const auto contents = layer.contents()) {
        const QRect place = DecoderLayout::placeOf(*contents, area);
        if (open.intersects(place))
            drawFrame(painter, *contents, place, open);
        open -= place;
    }
    if (const auto& color = layer.backgroundColor()) {
        fill(painter, open & area, colorOf(*color));
        open -= area;
    }
    return open;
}

}  // namespace

ImageView::ImageView(QWidget* parent)
    : QWidget(parent), hint_(new QLabel(QStringLiteral("Choose a camera and open it"), this)) {
    hint_->setAlignment(Qt::AlignCenter);
    hint_->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(hint_);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

ImageView::~ImageView() {
    if (layer_)
        layer_->setDisplayHandler({});
}

void ImageView::setLayer(const std::shared_ptr<CALayer>& layer) {
    if (layer_)
        layer_->setDisplayHandler({});
    layer_ = layer;
    if (layer_) {
        layer_->setDisplayHandler([this](const CALayer& changed) { showChange(changed); });
        fitLayer();
    }
    findPicture();
    update();
}

void ImageView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    QRegion open = event->region();
    if (layer_)
        open = drawLayer(painter, *layer_, QPoint(), std::move(open));
    fill(painter, open, palette().color(QPalette::Midlight));
}

void ImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitLayer();
}

void ImageView::showChange(const CALayer& changed) {
    const QRect before = picture_;
    findPicture();
    // Around a picture in the place of the one before it nothing has changed.
    update(changed.contents() && picture_ == before ? picture_ : rect());
}

void ImageView::findPicture() {
    picture_ = layer_ ? pictureIn(*layer_, QPoint()) : QRect();
    hint_->setVisible(picture_.isEmpty());
    if (!picture_.isEmpty())
        return;
    QPalette colors;  // of which only what is set here differs from the view's
    if (layer_ && layer_->backgroundColor())
        colors.setColor(QPalette::WindowText, textColorOn(colorOf(*layer_->backgroundColor())));
    hint_->setPalette(colors);
}

void ImageView::fitLayer() {
    if (layer_)
        layer_->setFrame({0, 0, static_cast<double>(width()), static_cast<double>(height())});
}

}  // namespace platform
