// What the window looks like, and what the interface file promises.

#include <gmock/gmock.h>

#include <QApplication>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTabWidget>
#include <cmath>
#include <set>

#include "tests/support/WindowFixture.h"

namespace {

/// The contrast between the lightest and the darkest pixel of a picture, as the WCAG defines it but
/// for the darkest tones.
double contrast(const QImage& picture) {
    const auto linear = [](int part) { return std::pow(part / 255.0, 2.2); };
    const auto luminance = [&](QRgb pixel) {
        return 0.2126 * linear(qRed(pixel)) + 0.7152 * linear(qGreen(pixel)) +
               0.0722 * linear(qBlue(pixel));
    };
    const std::span pixels(reinterpret_cast<const QRgb*>(picture.constBits()),
                           static_cast<std::size_t>(picture.width() * picture.height()));
    const auto [dark, light] = std::ranges::minmax(pixels, {}, luminance);
    return (luminance(light) + 0.05) / (luminance(dark) + 0.05);
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
void onEachPage(WindowFixture& fixture, Check check) {
    for (const int page : {0, 1}) {
        fixture.find<QTabWidget>("pages")->setCurrentIndex(page);
        for (int turn = 0; turn < 3; ++turn)  // a page that scrolls is laid out in several
            QCoreApplication::processEvents();
        const QImage image = fixture.window().grab().toImage();
        for (auto* widget : fixture.window().findChildren<QWidget*>())
            if (SCOPED_TRACE(widget->objectName().toStdString()); widget->isVisible())
                check(*widget, image, QString::number(page));
    }
}

TEST(ViewTest, OutlinesStandOutInLightAndDark) {
    for (const QPalette& palette : {QPalette(QColor(49, 54, 59), QColor(42, 46, 50)),
                                    QPalette(Qt::black, Qt::black), QPalette()}) {
        WindowFixture fixture;
        QApplication::setPalette(palette);
        onEachPage(fixture, [&](const QWidget& widget, const QImage& image, const QString&) {
            if (!widget.isEnabled() || widget.property("action").isNull())
                return;
            const QPoint corner = widget.mapTo(&fixture.window(), QPoint());
            // The edge that is not coloured: of a slider the right one, of all else the left one.
            QRect edge(corner + QPoint(-2, widget.height() / 2 - 4), QSize(12, 8));
            if (qobject_cast<const QSlider*>(&widget) != nullptr)
                edge = {corner + QPoint(widget.width() - 20, 0), QSize(8, 16)};
            EXPECT_GE(contrast(image.copy(edge)), 3);
        });
    }
}

TEST(ViewTest, NothingIsCutOffOnASmallScreenOrInLargeTextAndMnemonicsAreUnique) {
    const QFont usual;
    // The second is a small screen of twice the density: the text is as large as everything else.
    for (const auto& row :
         {std::pair{QSize(1024, 700), 1}, {QSize(624, 352), 1}, {QSize(1264, 752), 2}}) {
        QFont font = usual;
        font.setPointSize(font.pointSize() * row.second);
        QApplication::setFont(font);
        WindowFixture fixture;
        fixture.moveSlider("m_sliderWB", 10000);
        fixture.controller().m_textExposure.setStringValue("-2147483648");
        fixture.window().resize(row.first);
        std::set<QString> mnemonics{"V0", "V1", "S0", "S1"};  // the pages' own
        onEachPage(fixture, [&](QWidget& widget, const QImage&, const QString& page) {
            EXPECT_EQ(fixture.window().size(), row.first);
            const QSize least = textOf(widget).isEmpty() ? QSize() : widget.minimumSizeHint();
            EXPECT_EQ(widget.size(), widget.size().expandedTo(least));
            for (auto* area : fixture.window().findChildren<QScrollArea*>())
                if (area->isAncestorOf(&widget))
                    area->ensureWidgetVisible(&widget, 0, 0);
            if (!widget.property("action").isNull()) {
                EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect());
            }
            const auto found = QRegularExpression("&([^&])").match(textOf(widget));
            EXPECT_TRUE(!found.hasMatch() ||
                        mnemonics.insert(found.captured(1).toUpper() + page).second);
        });
    }
    QApplication::setFont(usual);
}

}  // namespace
