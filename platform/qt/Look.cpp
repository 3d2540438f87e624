#include "platform/qt/Look.h"

#include <QApplication>
#include <QHash>
#include <QPalette>
#include <QProxyStyle>
#include <QSlider>
#include <QStyleOption>
#include <algorithm>
#include <cmath>
#include <memory>

namespace platform {

namespace {

// How far colours must be apart by the WCAG 2.1, and somewhat more for lines, which are softened.
constexpr double textContrast = 4.5;
constexpr double lineContrast = 4;

double luminance(const QColor& color) {
    const auto linear = [](float part) {
        return part <= 0.04045F ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& first, const QColor& second) {
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// The colour nearest to the window's, on the way to its text's, that stands out from it.
QColor lineColor(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    QColor line = text;
    for (float part = 0.1F; part < 1; part += 0.05F) {
        const auto mix = [part](float from, float to) { return from + part * (to - from); };
        line =
            QColor::fromRgbF(mix(window.redF(), text.redF()), mix(window.greenF(), text.greenF()),
                             mix(window.blueF(), text.blueF()));
        if (contrast(line, window) >= lineContrast)
            break;
    }
    return line;
}

class Look : public QProxyStyle {
  public:
    Look() : QProxyStyle(QStringLiteral("fusion")) {}

    using QProxyStyle::polish;

    void polish(QPalette& palette) override {
        QProxyStyle::polish(palette);
        const QColor chosen = palette.color(QPalette::Highlight);
        if (contrast(palette.color(QPalette::HighlightedText), chosen) < textContrast)
            palette.setColor(QPalette::HighlightedText,
                             luminance(chosen) > 0.18 ? Qt::black : Qt::white);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option))
            QProxyStyle::drawPrimitive(element, outlined(*button).get(), painter, widget);
        else
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override {
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option))
            QProxyStyle::drawComplexControl(control, outlined(*slider).get(), painter, widget);
        else if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option))
            QProxyStyle::drawComplexControl(control, outlined(*box).get(), painter, widget);
        else
            QProxyStyle::drawComplexControl(control, option, painter, widget);
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override {
        QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
        const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        // The knob is moved up from the tick marks, and needs the room that it loses above.
        if (type == CT_Slider && slider != nullptr && slider->tickPosition != QSlider::NoTicks)
            size.rheight() += 4;
        return size;
    }

  private:
    /// The style draws outlines in the window's colour, darkened. Returns the option of a control
    /// with a window's colour from which that makes a line that stands out, if the control is
    /// enabled.
    template <class Option>
    std::unique_ptr<Option> outlined(const Option& option) const {
        auto changed = std::make_unique<Option>(option);
        if ((option.state & State_Enabled) != 0)
            changed->palette = outlined(option.palette);
        return changed;
    }

    /// Returns the same result for the same palette, because the style keeps pictures of all
    /// controls for each palette that it is given.
    QPalette outlined(const QPalette& palette) const {
        constexpr qsizetype mostPalettes = 32;  // more than are in use at any time
        if (palettes_.size() > mostPalettes)
            palettes_.clear();
        const auto known = palettes_.constFind(palette.cacheKey());
        if (known != palettes_.cend())
            return *known;
        QPalette made = palette;
        made.setColor(QPalette::Window, lineColor(palette).lighter(140));
        return *palettes_.insert(palette.cacheKey(), made);
    }

    mutable QHash<qint64, QPalette> palettes_;  // by the key of what they are made of
};

}  // namespace

void installLook() {
    if (QApplication::style()->name().compare(QLatin1String("fusion"), Qt::CaseInsensitive) == 0)
        QApplication::setStyle(new Look);
}

}  // namespace platform
