#pragma once

#include <QLabel>
#include <QWidget>
#include <memory>

class CALayer;

namespace platform {

/// A widget that shows a layer and the layers below it; until it has one, a hint what to do.
class ImageView : public QWidget {
  public:
    explicit ImageView(QWidget* parent = nullptr);
    ImageView(const ImageView&) = delete;
    ImageView& operator=(const ImageView&) = delete;
    ~ImageView() override;

    void setLayer(const std::shared_ptr<CALayer>& layer);
    const std::shared_ptr<CALayer>& layer() const { return layer_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fitLayer();

    std::shared_ptr<CALayer> layer_;
    QLabel* hint_;
};

}  // namespace platform
