#pragma once

#include <QLabel>
#include <QWidget>
#include <memory>

class CALayer;

namespace platform {

/// A widget that shows a layer and the layers on it; until these have a picture, a hint what to do.
class ImageView : public QWidget {
  public:
    explicit ImageView(QWidget* parent = nullptr);
    ImageView(const ImageView&) = delete;
    ImageView& operator=(const ImageView&) = delete;
    ~ImageView() override;

    void setLayer(const std::shared_ptr<CALayer>& layer);
    const std::shared_ptr<CALayer>& layer() const { return layer_; }

    /// Room for each pixel of a camera's picture.
    QSize sizeHint() const override { return {640, 480}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fitLayer();
    void showChange(const CALayer& changed);
    void findPicture();

    std::shared_ptr<CALayer> layer_;
    QRect picture_;  // where the latest picture is; empty before the first
    QLabel* hint_;
};

}  // namespace platform
