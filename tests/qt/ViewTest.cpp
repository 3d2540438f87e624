// What the window looks like, and what the interface file promises.

#include <gmock/gmock.h>

#include <QApplication>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTabWidget>
#include <cmath>
#include <set>

#include "tests/support/WindowBench.h"

namespace {

double luminance(QRgb pixel) {
    const auto linear = [](int part) {
        return part <= 10 ? part / 255.0 / 12.92 : std::pow((part / 255.0 + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(pixel)) + 0.7152 * linear(qGreen(pixel)) +
           0.0722 * linear(qBlue(pixel));
}

/// The contrast between the lightest and the darkest pixel of a picture, by the WCAG.
double contrast(const QImage& picture) {
    std::set<double> light;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            light.insert(luminance(picture.pixel(x, y)));
    return (*light.rbegin() + 0.05) / (*light.begin() + 0.05);
}

/// What a widget says; its title for a group, "-" for a list.
QString textOf(const QWidget& widget) {
    if (qobject_cast<const QComboBox*>(&widget) != nullptr)
        return QStringLiteral("-");
    if (widget.objectName().isEmpty() || widget.objectName().startsWith("qt_"))
        return {};  // a part of another one
    return widget.property("text").toString() + widget.property("title").toString();
}

/// Runs `check` on each widget that is visible on either page.
template <class Check>
void onEachPage(WindowBench& bench, Check check) {
    for (const int page : {0, 1}) {
        bench.find<QTabWidget>("pages")->setCurrentIndex(page);
        QCoreApplication::processEvents();
        const QImage image = bench.window().grab().toImage();
        for (auto* widget : bench.window().findChildren<QWidget*>())
            if (SCOPED_TRACE(widget->objectName().toStdString()); widget->isVisible())
                check(*widget, image);
    }
}

TEST(ViewTest, TextsAndOutlinesStandOutInLightAndDark) {
    for (const QPalette& palette : {QPalette(QColor(49, 54, 59), QColor(42, 46, 50)), QPalette()}) {
        WindowBench bench;
        QApplication::setPalette(palette);
        QImage selection(2, 1, QImage::Format_RGB32);
        selection.setPixelColor(0, 0, QApplication::palette().color(QPalette::Highlight));
        selection.setPixelColor(1, 0, QApplication::palette().color(QPalette::HighlightedText));
        EXPECT_GE(contrast(selection), 4.5);
        onEachPage(bench, [&](const QWidget& widget, const QImage& image) {
            const QPoint corner = widget.mapTo(&bench.window(), QPoint());
            if (widget.isEnabled() && !textOf(widget).isEmpty()) {
                EXPECT_GE(contrast(image.copy(QRect(corner, widget.size()))), 4.5);
            }
            // The edge that is not coloured: of a slider the right one, of all else the left one.
            QRect edge(corner + QPoint(-2, widget.height() / 2 - 4), QSize(12, 8));
            const bool slider = qobject_cast<const QSlider*>(&widget) != nullptr;
            if (slider)
                edge = {corner + QPoint(widget.width() - 20, 0), QSize(8, 16)};
            if (widget.isEnabled() && !widget.property("action").isNull()) {
                EXPECT_GE(contrast(image.copy(edge)), 3);
            }
        });
    }
}

TEST(ViewTest, NothingIsCutOffOnASmallScreenOrInLargeText) {
    const QFont usual;
    // The second is a small screen when everything is twice as large, not the text alone.
    const struct {
        QSize size;
        int factor;
    } rows[] = {{{1024, 700}, 1}, {{624, 352}, 1}, {{1264, 752}, 2}};
    for (const auto& row : rows) {
        QFont font = usual;
        font.setPointSize(font.pointSize() * row.factor);
        QApplication::setFont(font);
        WindowBench bench;
        bench.moveSlider("m_sliderWB", 10000);
        bench.window().resize(row.size);
        onEachPage(bench, [&](QWidget& widget, const QImage&) {
            EXPECT_EQ(bench.window().size(), row.size);
            const QSize least = textOf(widget).isEmpty() ? QSize() : widget.minimumSizeHint();
            EXPECT_EQ(widget.size(), widget.size().expandedTo(least));
            for (auto* area : bench.window().findChildren<QScrollArea*>())
                if (area->isAncestorOf(&widget))
                    area->ensureWidgetVisible(&widget, 0, 0);
            if (!widget.property("action").isNull()) {
                EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect());
            }
        });
    }
    QApplication::setFont(usual);
}

TEST(ViewTest, MnemonicsAreUniqueOnEachPage) {
    WindowBench bench;
    std::set<QString> seen{"V0", "V1", "S0", "S1"};  // the pages' own, and the page's number
    onEachPage(bench, [&](const QWidget& widget, const QImage&) {
        const auto match = QRegularExpression("&([^&])").match(textOf(widget));
        const int page = bench.find<QTabWidget>("pages")->currentIndex();
        EXPECT_TRUE(!match.hasMatch() ||
                    seen.insert(match.captured(1).toUpper() + QString::number(page)).second);
    });
}

}  // namespace
